// The text window's part that finds words: in what it shows at once, in the rest of a big file
// piece by piece between other events.
#include "ui/help/TextViewer.h"

#include <FL/Fl.H>
#include <FL/fl_draw.H>

#include <algorithm>

#include "ui/fltk/Labels.h"

namespace {

// The last place that begins before `from`.
std::size_t LastBefore(const std::string& text, const std::string& words, std::size_t from) {
  return from == 0 ? std::string::npos : text.rfind(words, from - 1);
}

}  // namespace

void TextViewer::GoToFind() {
  find_->take_focus();
  find_->position(find_->size(), 0);
}

void TextViewer::SayFound(const std::string& text) {
  found_->copy_label(PlainLabel(text).c_str());
  found_->redraw();
}

void TextViewer::Find(bool back) {
  StopSearch();
  words_ = Folded(find_->value());
  if (words_.empty()) return GoToFind();
  if (!editable_) Follow();
  int begin = display_->insert_position(), end = 0;
  const bool marked = buffer_.selection_position(&begin, &end) != 0;
  const auto from = static_cast<std::size_t>(begin);
  const std::string text = Folded(Text());
  const std::size_t at =
      back ? LastBefore(text, words_, from) : text.find(words_, marked ? from + 1 : from);
  if (at != std::string::npos) return ShowFound(at, "");
  const auto overlap = static_cast<std::int64_t>(words_.size()) - 1;
  const FileSearch::Range before{0, std::min(begin_ + overlap, size_)};
  const FileSearch::Range behind{std::max<std::int64_t>(end_ - overlap, 0), size_};
  if (editable_ || gone_ || (begin_ == 0 && end_ == size_)) return FindAround(back);
  search_ = std::make_unique<FileSearch>(
      path_, words_, back, back ? std::vector{before, behind} : std::vector{behind, before});
  Fl::add_idle(SearchOn, this);
}

void TextViewer::SearchOn(void* self) {
  auto* window = static_cast<TextViewer*>(self);
  switch (window->search_->Step()) {
    case FileSearch::State::kGoesOn:
      window->SayFound(
          window->texts_.Format("ui_find_searching", std::to_string(window->search_->Done())));
      return;
    case FileSearch::State::kFound:
      return window->ShowFoundInFile();
    case FileSearch::State::kNotThere: {
      const bool back = window->search_->Back();
      window->StopSearch();
      return window->FindAround(back);
    }
  }
}

void TextViewer::StopSearch() {
  if (search_) SayFound("");
  Fl::remove_idle(SearchOn, this);
  search_.reset();
}

// From the other end of what is shown.
void TextViewer::FindAround(bool back) {
  const std::string text = Folded(Text());
  const std::size_t at = back ? text.rfind(words_) : text.find(words_);
  if (at == std::string::npos) return SayFound(texts_.Format("ui_find_none", find_->value()));
  ShowFound(at, back ? "ui_find_from_end" : "ui_find_from_start");
}

void TextViewer::ShowFoundInFile() {
  const std::int64_t place = search_->Found();
  const bool around = search_->FoundRange() > 0;
  const bool back = search_->Back();
  StopSearch();
  std::int64_t from = std::max<std::int64_t>(place - kMostBytes / 2, 0);
  const std::int64_t to = std::min(from + kMostBytes, size_);
  if (to == size_) from = std::max<std::int64_t>(size_ - kMostBytes, 0);
  if (!ShowPart(from, to)) return Follow();
  ShowNote();
  // What was found may have been written over meanwhile.
  const std::string text = Folded(Text());
  std::string bytes, rest;
  Read(begin_, place, bytes);
  const std::size_t at = ShownText(bytes, rest).size();
  if (text.compare(std::min(at, text.size()), words_.size(), words_) != 0)
    return SayFound(texts_.Format("ui_find_none", find_->value()));
  ShowFound(at, !around ? "" : back ? "ui_find_from_end" : "ui_find_from_start");
}

// `around` is the text that tells of going round an end of the file; empty without.
void TextViewer::ShowFound(std::size_t found, const std::string& around) {
  const int at = static_cast<int>(found);
  buffer_.select(at, at + static_cast<int>(words_.size()));
  display_->insert_position(at);
  int x, y;
  if (display_->position_to_xy(at, &x, &y) == 0) {
    fl_font(display_->textfont(), display_->textsize());
    const int lines = display_->h() / fl_height();
    display_->scroll(std::max(buffer_.count_lines(0, at) + 1 - lines / 3, 1), 0);
  }
  display_->show_insert_position();
  std::string place;
  if (begin_ == 0) {
    place = texts_.Format("ui_find_line", std::to_string(buffer_.count_lines(0, at) + 1));
  } else {
    place = texts_.Format("ui_find_percent", std::to_string((begin_ + at) * 100 / size_));
  }
  SayFound(around.empty() ? place : texts_.Format(around, place));
}
