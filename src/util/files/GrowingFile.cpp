#include "util/files/GrowingFile.h"

#include <algorithm>

#include "util/files/FileSystemCalls.h"
#include "util/files/InputFile.h"
#include "util/files/LineBlocks.h"

namespace {

constexpr std::uint64_t kBytesCompared = 128;

}  // namespace

GrowingFile::News GrowingFile::Look(
    LineTaker& taker, const std::function<bool(std::uint64_t, std::uint64_t)>& progress) {
  file_system::FileState now;
  if (!file_system::StateOf(file_system::ForSystem(path_), now)) return News::kMissing;
  const bool sameState = known_ && now.id == id_ && now.size == size_ && now.written == written_;
  if (sameState && !stopped_) return News::kNone;

  LineBlocks blocks;
  blocks.LeaveOpenLine();
  blocks.SetProgress(progress);
  const bool anew = !known_ || now.id != id_ || now.size < position_ ||
                    (writing_ == Writing::kWhole && !sameState) || IsAnother();
  if (!blocks.Open(path_, anew ? 0 : position_, !anew && insideLongLine_)) return News::kMissing;
  if (anew && known_) taker.BeginAnew();
  known_ = true;
  id_ = now.id;
  size_ = now.size;
  written_ = now.written;
  News news = News::kNone;
  for (std::string_view block; blocks.Next(block); news = News::kRead) {
    taker.TakeLines(block);
  }
  position_ = blocks.Position();
  insideLongLine_ = blocks.InsideLongLine();
  lastBytes_ = BytesBefore();
  stopped_ = blocks.Stopped() || blocks.Failed();
  return blocks.Stopped() ? News::kStopped : news;
}

void GrowingFile::TakeOpenLine(LineTaker& taker) {
  LineBlocks blocks;
  if (insideLongLine_ || !blocks.Open(path_, position_)) return;
  for (std::string_view block; blocks.Next(block);) taker.TakeLines(block);
}

bool GrowingFile::IsAnother() const {
  return BytesBefore() != lastBytes_;
}

std::string GrowingFile::BytesBefore() const {
  InputFile file;
  std::string bytes(static_cast<std::size_t>(std::min(position_, kBytesCompared)), '\0');
  if (bytes.empty() || !file.Open(path_)) return {};
  const std::ptrdiff_t count = file.ReadAt(position_ - bytes.size(), bytes.data(), bytes.size());
  bytes.resize(static_cast<std::size_t>(std::max<std::ptrdiff_t>(count, 0)));
  return bytes;
}
