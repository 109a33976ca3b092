#include "util/files/LineBlocks.h"

#include <algorithm>
#include <cstring>

namespace {

// Stays in the processor's cache while it is searched.
constexpr std::size_t kBlock = 128 * 1024;
static_assert(kBlock > LineBlocks::kLongestLine);

constexpr std::uint64_t kProgressStep = std::uint64_t{8} << 20;

}  // namespace

bool LineBlocks::Open(const std::string& path, std::uint64_t from, bool insideLongLine) {
  if (!file_.Open(path)) return false;
  done_ = reported_ = from;
  insideLongLine_ = insideLongLine;
  buffer_ = std::make_unique_for_overwrite<char[]>(kBlock);
  return true;
}

void LineBlocks::SetProgress(
    const std::function<bool(std::uint64_t done, std::uint64_t size)>& progress) {
  progress_ = progress;
}

bool LineBlocks::Next(std::string_view& block) {
  while (Fill()) {
    const bool inPieces = longLines_ == LongLines::kInPieces;
    if (insideLongLine_ && !inPieces) DropRestOfLongLine();
    const std::string_view text(buffer_.get() + begin_, end_ - begin_);
    // 0 without a line end. What ends a line in pieces comes alone.
    std::size_t length = (insideLongLine_ ? text.find('\n') : text.rfind('\n')) + 1;
    const bool lineMayGrow = !atEnd_ || leaveOpenLine_;
    insideLongLine_ = insideLongLine_ && length == 0 && lineMayGrow;
    if (length == 0) {
      if (!lineMayGrow) {
        length = text.size();
      } else if (text.size() >= kLongestLine) {
        length = kLongestLine;
        insideLongLine_ = true;
      }
    }
    if (length == 0) {
      if (atEnd_) return false;
      continue;
    }
    block = text.substr(0, length);
    begin_ += EndsInsideLine() ? length - kOverlap : length;
    return true;
  }
  return false;
}

// Moves the rest to the front and reads behind it. False when there is nothing left.
bool LineBlocks::Fill() {
  if (stopped_ || !GoOn()) return false;
  std::memmove(buffer_.get(), buffer_.get() + begin_, end_ - begin_);
  end_ -= begin_;
  begin_ = 0;
  if (!atEnd_) {
    const std::ptrdiff_t count = file_.ReadAt(done_, buffer_.get() + end_, kBlock - end_);
    failed_ = count < 0;
    atEnd_ = count <= 0;
    if (count > 0) {
      end_ += static_cast<std::size_t>(count);
      done_ += static_cast<std::uint64_t>(count);
    }
  }
  return end_ > 0;
}

void LineBlocks::DropRestOfLongLine() {
  const void* lineEnd = std::memchr(buffer_.get() + begin_, '\n', end_ - begin_);
  insideLongLine_ = lineEnd == nullptr;
  begin_ = insideLongLine_
               ? end_
               : static_cast<std::size_t>(static_cast<const char*>(lineEnd) - buffer_.get()) + 1;
}

bool LineBlocks::GoOn() {
  if (!progress_ || done_ - reported_ < kProgressStep) return true;
  reported_ = done_;
  stopped_ = !progress_(done_, file_.Size());
  return !stopped_;
}

std::string_view TakeLine(std::string_view block, std::size_t& position) {
  const std::size_t end = std::min(block.find('\n', position), block.size());
  std::string_view line = block.substr(position, end - position);
  position = std::min(end + 1, block.size());
  if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
  return line;
}
