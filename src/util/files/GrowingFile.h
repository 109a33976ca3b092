// A text file that another program goes on writing, read a little at a time.
#ifndef KR_UTIL_FILES_GROWINGFILE_H
#define KR_UTIL_FILES_GROWINGFILE_H

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

// Takes what a growing file holds.
class LineTaker {
 public:
  virtual ~LineTaker() = default;
  // The file is another one, or it begins anew: forget what was taken.
  virtual void BeginAnew() = 0;
  // The next whole lines with their ends (LF or CRLF), as util/files/LineBlocks.h cuts them.
  virtual void TakeLines(std::string_view block) = 0;
};

// Reads only what was added since the last look. The file is looked at by its name and never held
// open, so its writer may remove, replace and rename it. A file is taken for another one when its
// identity has changed, when it has become shorter, and when the bytes before the place where the
// reading stopped are not those that were read. One thread at a time.
class GrowingFile {
 public:
  // A file that is written whole again and again is read from its begin whenever it has changed.
  enum class Writing { kAppended, kWhole };
  explicit GrowingFile(std::string path, Writing writing = Writing::kAppended)
      : path_(std::move(path)), writing_(writing) {}

  enum class News {
    kNone,     // nothing was added, or no line became whole
    kRead,     // the taker has it
    kMissing,  // not there, or not to be read now; what was taken stays true
    kStopped,  // by the progress hook; the next look goes on there
  };
  // Hands what is new to the taker. `progress` is called now and then with the bytes read and the
  // file's size; returning false ends the look. Without news it costs one question to the system.
  News Look(LineTaker& taker,
            const std::function<bool(std::uint64_t done, std::uint64_t size)>& progress = {});

  // Hands out a last line that has no end: for a file that nobody writes any more.
  void TakeOpenLine(LineTaker& taker);

  // It has another name now; the reading goes on when it is the same file.
  void MovedTo(std::string path) { path_ = std::move(path); }
  const std::string& Path() const { return path_; }

 private:
  bool IsAnother() const;
  std::string BytesBefore() const;

  std::string path_;
  Writing writing_;
  std::pair<std::uint64_t, std::uint64_t> id_;
  std::uint64_t size_ = 0;
  std::int64_t written_ = 0;
  std::uint64_t position_ = 0;  // of the first byte that was not taken
  bool insideLongLine_ = false;
  bool known_ = false;
  bool stopped_ = false;   // the last look did not come to the end
  std::string lastBytes_;  // before position_
};

#endif
