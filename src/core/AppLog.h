// The application log, "kr.log" in the work folder.
#ifndef KR_CORE_APPLOG_H
#define KR_CORE_APPLOG_H

#include <cstdint>
#include <functional>
#include <mutex>
#include <string>

// Any thread. A missing folder is made anew; a log that cannot be written is silently done without.
class AppLog {
 public:
  static constexpr std::int64_t kKeptBytes = 10 * 1024 * 1024;

  explicit AppLog(const std::string& path) : path_(path) {}

  // Appends "DATE TIME>> MESSAGE". The formatted text is cut below 4,096 bytes.
#if defined(__clang__)
  __attribute__((format(printf, 2, 3)))
#elif defined(__GNUC__)
  __attribute__((format(gnu_printf, 2, 3)))
#endif
  void
  Report(const char* format, ...);

  // The message as it stands, any length. Line breaks in it become blanks: one line a message.
  void ReportLine(const std::string& message);

  // Writes a line that nobody needs to be told of now.
  void NoteLine(const std::string& line);

  // Called with each reported message after it was written, on the reporting thread. Once this
  // returns, the former listener is not running any more. A listener must not wait for another
  // reporting thread.
  void SetListener(std::function<void(const std::string& message)> listener);

  // A log of more than kKeptBytes becomes "kr.log.old", in place of an older one. For the start.
  void StartNewWhenBig();

  const std::string& Path() const {
    return path_;
  }

 private:
  std::string path_;
  std::mutex mutex_;                    // the file
  std::recursive_mutex listenerMutex_;  // held during calls; a listener may report something too
  std::function<void(const std::string&)> listener_;
};

// For a "%s" argument: "Null" for an empty text.
inline const char* OrNull(const std::string& text) {
  return text.empty() ? "Null" : text.c_str();
}

#endif
