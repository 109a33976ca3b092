// Reads a text file of any size in blocks of whole lines.
#ifndef KR_UTIL_FILES_LINEBLOCKS_H
#define KR_UTIL_FILES_LINEBLOCKS_H

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "util/files/InputFile.h"

// Memory is bounded whatever the file holds. One thread at a time.
class LineBlocks {
 public:
  // A longer line is cut to so much, or handed out in pieces of so much.
  static constexpr std::size_t kLongestLine = 64 * 1024;
  // A piece begins with this much of the one before, so that words lie whole in one of them.
  static constexpr std::size_t kOverlap = 64;

  enum class LongLines { kCut, kInPieces };
  explicit LineBlocks(LongLines longLines = LongLines::kCut) : longLines_(longLines) {}

  // From that byte of the file on. With `insideLongLine` what follows up to the next line end is
  // the rest of a line that was cut.
  bool Open(const std::string& path, std::uint64_t from = 0, bool insideLongLine = false);

  // The file is still being written: a last line without an end is not handed out, until it has
  // become too long.
  void LeaveOpenLine() { leaveOpenLine_ = true; }

  // Bytes read and the file's size, now and then. Returning false ends the reading.
  void SetProgress(const std::function<bool(std::uint64_t done, std::uint64_t size)>& progress);

  // The next lines with their ends; the file's last line may have none. Valid until the next call.
  // False at the end of the file, when it cannot be read further and when the reading was ended.
  bool Next(std::string_view& block);

  // The last block is a piece of a line, and so is the next: kInPieces only.
  bool EndsInsideLine() const { return insideLongLine_ && longLines_ == LongLines::kInPieces; }

  // For another reader to go on with: the first byte that was not handed out, and whether it lies
  // inside a line that was cut (kCut only).
  std::uint64_t Position() const { return done_ - (end_ - begin_); }
  bool InsideLongLine() const { return insideLongLine_; }

  bool Failed() const { return failed_; }
  bool Stopped() const { return stopped_; }

 private:
  bool Fill();
  void DropRestOfLongLine();
  bool GoOn();

  const LongLines longLines_;
  InputFile file_;
  std::function<bool(std::uint64_t, std::uint64_t)> progress_;
  std::unique_ptr<char[]> buffer_;
  std::size_t begin_ = 0;  // of what has not been handed out
  std::size_t end_ = 0;
  std::uint64_t done_ = 0;  // where the next read begins
  std::uint64_t reported_ = 0;
  bool leaveOpenLine_ = false;
  bool insideLongLine_ = false;
  bool atEnd_ = false;
  bool failed_ = false;
  bool stopped_ = false;
};

// Takes the line at `position` of a block, without its end (LF or CRLF), and moves behind it.
std::string_view TakeLine(std::string_view block, std::size_t& position);

#endif
