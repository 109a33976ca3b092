#include "ui/fltk/Flx_TableRows.h"

#include <FL/Fl.H>
#include <FL/fl_draw.H>
#include <FL/Fl_Window.H>

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "ui/fltk/Sizes.h"
#include "ui/fltk/Theme.h"
#include "ui/fltk/Tip.h"
#include "ui/text/FileText.h"

namespace {

constexpr int kWheelRows = 3;

constexpr int kBandStart = 5;        // pixels that the mouse moves before it pulls a band
constexpr double kBandEvery = 0.04;  // seconds between two rows that a band scrolls

int FirstOf(const std::vector<bool>& selected) {
  const auto first = std::find(selected.begin(), selected.end(), true);
  return first == selected.end() ? -1 : static_cast<int>(first - selected.begin());
}

bool IsHeld(int modifiers) {
  return (Fl::event_state() & (FL_CTRL | FL_ALT | FL_META | FL_SHIFT)) == modifiers;
}

}  // namespace

Flx_Table::Extent::Extent(Flx_Table& table, int x, int y, int w, int h)
    : Fl_Widget(x, y, w, h), table_(table) {
  clear_visible();
}

void Flx_Table::Extent::resize(int x, int y, int w, int h) {
  const bool sideways = x != this->x();
  Fl_Widget::resize(x, y, w, h);
  if (sideways) table_.PlaceHeads();
}

Flx_Table::Rows::Rows(Flx_Table& table, int x, int y, int w, int h)
    : Fl_Widget(x, y, w, h), table_(table) {}

Flx_Table::Rows::~Rows() {
  Fl::remove_timeout(ScrollBand, this);
}

void Flx_Table::Rows::resize(int, int, int, int) {
  Pin();
}

void Flx_Table::Rows::Pin() {
  Fl_Widget::resize(table_.ViewX(), table_.ViewY(), table_.viewWidth_, table_.viewHeight_);
}

void Flx_Table::Rows::RedrawRow(int row) {
  if (row < 0 || !visible_r()) return;
  const int top = table_.OriginY() + row * Sizes::kRowHeight;
  const int from = std::max(top, y());
  const int to = std::min(top + Sizes::kRowHeight, y() + h());
  if (to > from) damage(FL_DAMAGE_USER1, x(), from, w(), to - from);
}

void Flx_Table::Rows::draw() {
  int clipX, clipY, clipW, clipH;
  fl_clip_box(x(), y(), w(), h(), clipX, clipY, clipW, clipH);
  if (clipW <= 0 || clipH <= 0) return;
  fl_color(Theme::kSurface);
  fl_rectf(clipX, clipY, clipW, clipH);
  if (table_.RowCount() == 0) {
    table_.DrawEmpty(x(), y(), w(), h());
    return;
  }
  const int first = (clipY - table_.OriginY()) / Sizes::kRowHeight;
  const int last =
      std::min((clipY + clipH - table_.OriginY() + Sizes::kRowHeight - 1) / Sizes::kRowHeight,
               table_.RowCount());
  if (first >= last) return;
  table_.PrepareRows(first, last);
  for (int row = first; row < last; ++row) DrawRow(row, clipX + clipW);
  if (banding_) DrawBand();
}

void Flx_Table::Rows::DrawRow(int row, int last) {
  const int top = table_.OriginY() + row * Sizes::kRowHeight;
  const bool focused = Fl::focus() == this;
  Fl_Color fill = Theme::kSurface;
  if (row == hoverRow_) fill = Theme::kRowHover;
  if (table_.IsSelected(row)) fill = focused ? Theme::kSelected : Theme::kSelectedUnfocused;
  fl_color(fill);
  fl_rectf(x(), top, w(), Sizes::kRowHeight - 1);
  fl_color(Theme::kFaintLine);
  fl_xyline(x(), top + Sizes::kRowHeight - 1, x() + w() - 1);
  int left = table_.OriginX();
  for (const int column : table_.order_) {
    const int width = table_.widths_[static_cast<std::size_t>(column)];
    if (left >= last) break;
    if (fl_not_clipped(left, top, width, Sizes::kRowHeight)) {
      fl_push_clip(left, top, width, Sizes::kRowHeight);
      table_.DrawCell({row, column, left, top, width, Sizes::kRowHeight - 1,
                       row == hoverRow_ && column == hoverColumn_});
      fl_pop_clip();
    }
    left += width;
  }
  // Which of the selected ones the keys go on from.
  if (row != table_.current_ || !focused || !table_.SelectsSeveral()) return;
  if (table_.IsSelected(row - 1) || table_.IsSelected(row + 1) || table_.SelectedCount() > 1)
    fl_rect(x(), top, w(), Sizes::kRowHeight - 1, Theme::kFocus);
}

void Flx_Table::Rows::DrawBand() const {
  const auto [left, right] = std::minmax(table_.OriginX() + bandX_, Fl::event_x());
  const auto [top, bottom] = std::minmax(table_.OriginY() + bandY_, Fl::event_y());
  fl_push_clip(x(), y(), w(), h());
  fl_rect(left, top, right - left + 1, bottom - top + 1, Theme::kAccent);
  fl_pop_clip();
}

int Flx_Table::Rows::RowAtMouse() const {
  const int row = (Fl::event_y() - table_.OriginY()) / Sizes::kRowHeight;
  return Fl::event_y() >= y() && row < table_.RowCount() ? row : -1;
}

void Flx_Table::Rows::Hover(int row, int column) {
  if (row == hoverRow_ && column == hoverColumn_) return;
  RedrawRow(hoverRow_);
  hoverRow_ = row;
  hoverColumn_ = column;
  RedrawRow(hoverRow_);
  ShowTip();
}

void Flx_Table::Rows::ShowTip() {
  if (hoverRow_ < 0 || hoverColumn_ < 0) return ::ShowTip(*this, 0, 0, 0, 0, {});
  ::ShowTip(*this, table_.ColumnX(hoverColumn_),
            table_.OriginY() + hoverRow_ * Sizes::kRowHeight - y(),
            table_.widths_[static_cast<std::size_t>(hoverColumn_)], Sizes::kRowHeight,
            table_.CellTip(hoverRow_, hoverColumn_));
}

void Flx_Table::Rows::RefreshTip(int row) {
  if (row < 0 || row != hoverRow_ || hoverColumn_ < 0) return;
  ChangeTip(*this, table_.CellTip(hoverRow_, hoverColumn_));
}

void Flx_Table::Rows::OpenMenu(int x, int y) {
  Hover(-1, -1);
  if (table_.OnMenu) table_.OnMenu(x, y);
}

int Flx_Table::Rows::HandlePush() {
  take_focus();
  const int row = RowAtMouse();
  const int column = table_.ColumnAt(Fl::event_x());
  if (table_.RowCount() == 0 && Fl::event_button() == FL_LEFT_MOUSE) table_.EmptyPressed();
  SelectByPush(row);
  pushedRow_ = -1;
  if (Fl::event_button() == FL_RIGHT_MOUSE) {
    OpenMenu(Fl::event_x(), Fl::event_y());
    return 1;
  }
  if (!canBand_ || row < 0 || column < 0 || !IsHeld(0)) return 1;
  const int end = table_.ColumnX(column) + table_.widths_[static_cast<std::size_t>(column)];
  if (table_.IsButton(row, column) && table_.PressesAt(column, end - Fl::event_x())) {
    pushedRow_ = row;
    pushedColumn_ = column;
  } else if (Fl::event_clicks() > 0) {
    Fl::event_clicks(0);
    if (table_.OnDoubleClick) table_.OnDoubleClick(row, column);
  }
  return 1;
}

// A right click leaves what is selected when it is on one of it.
void Flx_Table::Rows::SelectByPush(int row) {
  const bool several = table_.SelectsSeveral() && row >= 0;
  canBand_ = Fl::event_button() == FL_LEFT_MOUSE;
  if (several && canBand_ && Fl::event_state(FL_SHIFT)) {
    table_.ExtendTo(row);
  } else if (several && canBand_ && Fl::event_state(FL_CTRL)) {
    table_.ToggleRow(row);
  } else if (several && !canBand_ && table_.IsSelected(row)) {
    table_.SetSelection(table_.selected_, row);
  } else if (row >= 0 || !Fl::event_state(FL_SHIFT | FL_CTRL)) {
    table_.SelectRow(row);
  }
  bandX_ = Fl::event_x() - table_.OriginX();
  bandY_ = Fl::event_y() - table_.OriginY();
  besideBand_ = Selection(static_cast<std::size_t>(table_.RowCount()));
  if (Fl::event_state(FL_CTRL)) besideBand_ = table_.selected_;
}

// Selects the rows between where it began and the mouse.
void Flx_Table::Rows::DragBand() {
  const int mouseY = Fl::event_y() - table_.OriginY();
  const bool moved = std::abs(mouseY - bandY_) >= kBandStart ||
                     std::abs(Fl::event_x() - table_.OriginX() - bandX_) >= kBandStart;
  if (!canBand_ || !table_.SelectsSeveral() || (!banding_ && !moved)) return;
  if (!std::exchange(banding_, true)) {
    pushedRow_ = -1;
    Hover(-1, -1);
  }
  const int rows = table_.RowCount();
  const auto rowAt = [](int place) { return place < 0 ? -1 : place / Sizes::kRowHeight; };
  const int from = rowAt(bandY_);
  const int to = rowAt(mouseY);
  if (std::min(from, to) < rows && std::max(from, to) >= 0) {
    table_.SelectRange(std::clamp(from, 0, rows - 1), std::clamp(to, 0, rows - 1), besideBand_);
  } else {
    table_.SetSelection(besideBand_, FirstOf(besideBand_));
  }
  const bool outside = Fl::event_y() < y() || Fl::event_y() >= y() + h();
  if (outside && !Fl::has_timeout(ScrollBand, this)) Fl::add_timeout(kBandEvery, ScrollBand, this);
  redraw();
}

void Flx_Table::Rows::ScrollBand(void* self) {
  auto* rows = static_cast<Rows*>(self);
  const bool above = Fl::event_y() < rows->y();
  if (!rows->banding_ || (!above && Fl::event_y() < rows->y() + rows->h())) return;
  const Flx_Table& table = rows->table_;
  rows->table_.ScrollTo(table.scroll_->xposition(),
                        table.scroll_->yposition() + (above ? -1 : 1) * Sizes::kRowHeight);
  rows->DragBand();
}

void Flx_Table::Rows::EndBand() {
  canBand_ = false;
  if (std::exchange(banding_, false)) redraw();
}

int Flx_Table::Rows::RowOfKey(int key) const {
  const int current = table_.current_;
  const int page = std::max(1, h() / Sizes::kRowHeight - 1);
  const int last = std::max(0, table_.RowCount() - 1);
  switch (key) {
    case FL_Up:
      return std::max(0, current - 1);
    case FL_Down:
      return std::min(current + 1, last);
    case FL_Home:
      return 0;
    case FL_End:
      return last;
    case FL_Page_Up:
      return std::max(0, current - page);
    case FL_Page_Down:
      return std::min(std::max(0, current) + page, last);
    default:
      return -1;
  }
}

int Flx_Table::Rows::HandleKey() {
  const int key = Fl::event_key();
  const int current = table_.current_;
  if (key == FL_Menu || (key == FL_F + 10 && Fl::event_state(FL_SHIFT))) {
    table_.ScrollToRow(current);
    OpenMenu(x() + Sizes::kRowHeight,
             current < 0 ? y() : table_.OriginY() + (current + 1) * Sizes::kRowHeight);
    return 1;
  }
  const int row = RowOfKey(key);
  if (table_.SelectsSeveral() && row >= 0 && IsHeld(FL_SHIFT)) {
    table_.ExtendTo(row);
    return 1;
  }
  if (table_.SelectsSeveral() && key == 'a' && IsHeld(FL_CTRL)) {
    table_.SelectAllRows();
    return 1;
  }
  if (IsHeld(FL_SHIFT) && GoToTyped()) return 1;
  if (!IsHeld(0)) return 0;
  if (row >= 0) {
    table_.SelectRow(row);
    return 1;
  }
  switch (key) {
    case FL_Left:
      table_.ScrollTo(table_.scroll_->xposition() - Sizes::kRowHeight, table_.scroll_->yposition());
      return 1;
    case FL_Right:
      table_.ScrollTo(table_.scroll_->xposition() + Sizes::kRowHeight, table_.scroll_->yposition());
      return 1;
    case FL_Escape:
      if (!table_.EscapeDeselects()) return 0;
      table_.SelectRow(-1);
      return 1;
    case FL_Enter:
    case FL_KP_Enter:
      if (!table_.OnEnter || current < 0) return 0;
      table_.OnEnter();
      return 1;
    default:
      return GoToTyped() ? 1 : 0;
  }
}

// To the next row whose name begins with what was typed within a short time; a letter alone, or the
// same one again, goes on from row to row.
bool Flx_Table::Rows::GoToTyped() {
  constexpr std::chrono::milliseconds kPatience{1200};
  const std::string text = Folded(std::string(Fl::event_text(), Fl::event_length()));
  const bool isPrintable =
      !text.empty() && static_cast<unsigned char>(text.front()) >= ' ' && text.front() != '\x7F';
  const auto now = std::chrono::steady_clock::now();
  if (now > typedUntil_) typed_.clear();
  if (!isPrintable || (typed_.empty() && text == " ")) return false;
  typedUntil_ = now + kPatience;
  const bool again = typed_ == text;
  if (!again) typed_ += text;
  const int rows = table_.RowCount();
  const int first = table_.current_ + (typed_ == text ? 1 : 0);
  for (int i = 0; i < rows; ++i) {
    const int row = (std::max(first, 0) + i) % rows;
    if (!table_.NameBegins(row, typed_)) continue;
    table_.SelectRow(row);
    return true;
  }
  return false;
}

int Flx_Table::Rows::HandleWheel() {
  const bool sideways = Fl::event_dx() != 0 || Fl::event_state(FL_SHIFT);
  const int steps = (Fl::event_dy() + Fl::event_dx()) * kWheelRows * Sizes::kRowHeight;
  table_.ScrollTo(table_.scroll_->xposition() + (sideways ? steps : 0),
                  table_.scroll_->yposition() + (sideways ? 0 : steps));
  Hover(RowAtMouse(), table_.ColumnAt(Fl::event_x()));
  return 1;
}

int Flx_Table::Rows::handle(int event) {
  switch (event) {
    case FL_ENTER:
    case FL_MOVE:
      Hover(RowAtMouse(), table_.ColumnAt(Fl::event_x()));
      return 1;
    case FL_LEAVE:
      Hover(-1, -1);
      return 1;
    case FL_PUSH:
      return HandlePush();
    case FL_DRAG:
      DragBand();
      return 1;
    case FL_RELEASE: {
      EndBand();
      const bool same = pushedRow_ >= 0 && RowAtMouse() == pushedRow_ &&
                        table_.ColumnAt(Fl::event_x()) == pushedColumn_;
      pushedRow_ = -1;
      if (same && table_.OnCell) table_.OnCell(RowAtMouse(), pushedColumn_);
      return 1;
    }
    case FL_MOUSEWHEEL:
      return HandleWheel();
    case FL_FOCUS:
    case FL_UNFOCUS:
      table_.redraw();
      return 1;
    case FL_KEYBOARD:
      return HandleKey();
    default:
      return Fl_Widget::handle(event);
  }
}
