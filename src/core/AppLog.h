// The application log, "kr.log" in the work folder.
#ifndef KR_CORE_APPLOG_H
#define KR_CORE_APPLOG_H

#include <functional>
#include <mutex>
#include <string>

// Any thread.
class AppLog {
 public:
  explicit AppLog(const std::string& path) : path_(path) {}

  // Appends "DATE TIME>> MESSAGE". The formatted text is cut below 4,096 bytes.
#if defined(__GNUC__)
  __attribute__((format(printf, 2, 3)))
#endif
  void Report(const char* format, ...);

  // The message as it stands, any length.
  void ReportLine(const std::string& message);

  // Called with each message after it was written, on the reporting thread.
  void SetListener(std::function<void(const std::string& message)> listener);

  const std::string& Path() const { return path_; }

 private:
  std::string path_;
  std::mutex mutex_;
  std::function<void(const std::string&)> listener_;
};

// For a "%s" argument: "Null" for an empty text.
inline const char* OrNull(const std::string& text) { return text.empty() ? "Null" : text.c_str(); }

#endif
