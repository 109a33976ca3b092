// The application log, "kr.log" in the work folder.
#ifndef KR_CORE_APPLOG_H
#define KR_CORE_APPLOG_H

#include <cstdint>
#include <string>

#include "messages/Message.h"
#include "util/signals/Mutex.h"

// Any thread. A missing folder is made anew; a log that cannot be written is silently done without.
class AppLog {
 public:
  static constexpr std::int64_t kKeptBytes = 10 * 1024 * 1024;

  explicit AppLog(const std::string& path) : path_(path) {}

  // Appends "DATE TIME>> MESSAGE" in English, cut below 4,096 bytes. Line breaks in it become
  // blanks: one line a message.
  void Report(const Message& message);

  // The same for what nobody needs to be told of now: the listener does not hear of it.
  void Note(const Message& message);

  // What other rooms are handed to report to.
  MessageSink Sink();

  // Called with each reported message after it was written, on the reporting thread. Once this
  // returns, the former listener is not running any more. A listener must not wait for another
  // reporting thread.
  void SetListener(MessageSink listener);

  // A log of more than kKeptBytes becomes "kr.log.old", in place of an older one. For the start.
  void StartNewWhenBig();

  const std::string& Path() const { return path_; }

 private:
  const std::string path_;
  Mutex mutex_;                   // of the file
  RecursiveMutex listenerMutex_;  // held during calls; a listener may report something too
  MessageSink listener_ KR_GUARDED_BY(listenerMutex_);
};

#endif
