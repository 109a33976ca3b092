#include "ui/help/FileSearch.h"

#include <algorithm>
#include <utility>

#include "ui/text/FileText.h"

FileSearch::FileSearch(const std::string& path, const std::string& words, bool back,
                       std::vector<Range> ranges)
    : open_(file_.Open(path)), words_(words), back_(back), ranges_(std::move(ranges)) {
  for (const Range& range : ranges_) all_ += std::max<std::int64_t>(range.end - range.begin, 0);
}

FileSearch::State FileSearch::Step() {
  // Words that lie across the border of two pieces begin in the overlap.
  const auto overlap = static_cast<std::int64_t>(words_.size()) - 1;
  while (range_ < ranges_.size() && ranges_[range_].end - ranges_[range_].begin <= overlap)
    ++range_;
  if (range_ == ranges_.size() || !open_) return State::kNotThere;
  Range& range = ranges_[range_];
  const std::int64_t length = std::min(range.end - range.begin, kPiece + overlap);
  const std::int64_t begin = back_ ? range.end - length : range.begin;

  std::string bytes(static_cast<std::size_t>(length), '\0');
  const std::ptrdiff_t got =
      file_.ReadAt(static_cast<std::uint64_t>(begin), bytes.data(), bytes.size());
  bytes.resize(static_cast<std::size_t>(std::max<std::ptrdiff_t>(got, 0)));
  std::string rest;
  const std::string text = Folded(ShownText(bytes, rest));
  const std::size_t at = back_ ? text.rfind(words_) : text.find(words_);
  if (at != std::string::npos) {
    found_ = begin + static_cast<std::int64_t>(BytesOfShown(bytes, at));
    return State::kFound;
  }
  if (back_ ? begin == range.begin : begin + length == range.end) {
    range.begin = range.end;
  } else if (back_) {
    range.end = begin + overlap;
  } else {
    range.begin = begin + length - overlap;
  }
  return State::kGoesOn;
}

int FileSearch::Done() const {
  std::int64_t left = 0;
  for (std::size_t i = range_; i < ranges_.size(); ++i)
    left += std::max<std::int64_t>(ranges_[i].end - ranges_[i].begin, 0);
  return all_ > 0 ? static_cast<int>((all_ - left) * 100 / all_) : 100;
}
