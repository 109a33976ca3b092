#include "ui/fltk/Flx_Table.h"

#include <FL/Fl.H>
#include <FL/fl_draw.H>

#include <algorithm>
#include <numeric>
#include <tuple>
#include <utility>

#include "ui/fltk/CellDrawing.h"
#include "ui/fltk/Flx_TableRows.h"
#include "ui/fltk/Sizes.h"
#include "ui/fltk/Theme.h"

namespace {

constexpr int kFrame = 1;
constexpr int kNarrowest = 28;     // pixels that a dragged column keeps
constexpr int kNarrowestFit = 60;  // that one keeps which is fitted to its texts

// Hands `missing` pixels (negative: to give up) to the columns by their shares. Columns that would
// become narrower than they may be stay at that width and the others give more.
void Distribute(int missing, const std::vector<TableColumn>& columns, const std::vector<int>& shown,
                std::vector<int>& widths) {
  std::vector<bool> open(columns.size());
  for (const int column : shown) {
    const auto i = static_cast<std::size_t>(column);
    open[i] = columns[i].stretch > 0;
  }
  for (bool again = true; again && missing != 0;) {
    again = false;
    int shares = 0;
    for (std::size_t i = 0; i < columns.size(); ++i) shares += open[i] ? columns[i].stretch : 0;
    for (std::size_t i = 0; i < columns.size(); ++i) {
      if (!open[i]) continue;
      const int part = missing * columns[i].stretch / shares;  // the last one takes the rest
      shares -= columns[i].stretch;
      const int least = std::min(columns[i].minWidth, widths[i]);
      const int width = std::max(widths[i] + part, least);
      if (width != widths[i] + part) {
        open[i] = false;
        again = true;
      }
      missing -= width - widths[i];
      widths[i] = width;
    }
  }
}

// Scrolls by moving what is on the screen. While it draws the strip that comes into sight the
// toolkit forgets what else was to be drawn again; so when something was, everything is.
class Area : public Fl_Scroll {
 public:
  using Fl_Scroll::Fl_Scroll;

  void draw() override {
    bool changed = false;
    for (int i = 0; i < children(); ++i) {
      const bool bar = child(i) == &scrollbar || child(i) == &hscrollbar;
      changed = changed || (!bar && child(i)->damage() != 0);
    }
    if (changed && (damage() & FL_DAMAGE_SCROLL))
      clear_damage(static_cast<uchar>(damage() | FL_DAMAGE_ALL));
    Fl_Scroll::draw();
  }
};

}  // namespace

Flx_Table::Flx_Table(int x, int y, int w, int h) : Fl_Group(x, y, w, h) {
  box(FL_DOWN_FRAME);
  heads_ = new Fl_Group(x + kFrame, y + kFrame, w - 2 * kFrame, Sizes::kHeaderHeight);
  heads_->box(FL_FLAT_BOX);
  heads_->color(Theme::kHeader);
  heads_->clip_children(1);
  heads_->resizable(nullptr);
  heads_->end();
  // Its frame lies on the table's and on the line below the heads.
  scroll_ = new Area(x, y + Sizes::kHeaderHeight, w, h - Sizes::kHeaderHeight);
  scroll_->box(FL_DOWN_FRAME);
  scroll_->type(Fl_Scroll::BOTH);
  scroll_->scrollbar.linesize(Sizes::kRowHeight);
  scroll_->hscrollbar.linesize(Sizes::kRowHeight);
  scroll_->color(Theme::kSurface);
  extent_ = new Extent(*this, scroll_->x(), scroll_->y(), scroll_->w(), scroll_->h());
  rows_ = new Rows(*this, scroll_->x(), scroll_->y(), scroll_->w(), scroll_->h());
  scroll_->end();
  end();
  resizable(scroll_);
}

void Flx_Table::AddColumn(const TableColumn& column) {
  Fl_Group* const open = Fl_Group::current();
  Fl_Group::current(heads_);
  auto* button = new Flx_HeaderButton(*this, ColumnCount(), column.title);
  Fl_Group::current(open);
  buttons_.push_back(button);
  columns_.push_back(column);
  widths_.push_back(column.width);
  if (column.isExtra) return button->hide();
  order_.push_back(ColumnCount() - 1);
  wantedFor_ += column.width;
}

void Flx_Table::ShowExtraColumns(const std::vector<int>& columns) {
  const std::vector<int> before = std::exchange(order_, {});
  const auto isShown = [this](int column) { return std::ranges::count(order_, column) > 0; };
  for (int column = 0; column < ColumnCount(); ++column)
    if (!Wanted(column).isExtra) order_.push_back(column);
  for (const int column : columns) {
    const bool isExtra = column >= 0 && column < ColumnCount() && Wanted(column).isExtra;
    if (isExtra && !isShown(column)) order_.push_back(column);
  }
  if (order_ == before) return;
  for (const int column : before) wantedFor_ -= isShown(column) ? 0 : Wanted(column).width;
  for (const int column : order_)
    wantedFor_ += std::ranges::count(before, column) > 0 ? 0 : Wanted(column).width;
  for (int column = 0; column < ColumnCount(); ++column) {
    Flx_HeaderButton* const button = buttons_[static_cast<std::size_t>(column)];
    isShown(column) ? button->show() : button->hide();
  }
  LayOut();
}

std::optional<int> Flx_Table::GivenWidth(int column) const {
  const TableColumn& wanted = columns_[static_cast<std::size_t>(column)];
  return wanted.isGiven ? std::optional(wanted.width) : std::nullopt;
}

void Flx_Table::GiveWidth(int column, int width) {
  TableColumn& wanted = Wanted(column);
  width = std::max(width, kNarrowest);
  if (std::ranges::count(order_, column) > 0) wantedFor_ += width - wanted.width;
  wanted.width = width;
  wanted.stretch = 0;
  wanted.minWidth = std::min(wanted.minWidth, width);
  wanted.isGiven = true;
  LayOut();
}

int Flx_Table::ColumnX(int column) const {
  int x = OriginX();
  for (const int one : order_) {
    if (one == column) break;
    x += widths_[static_cast<std::size_t>(one)];
  }
  return x;
}

int Flx_Table::ColumnBefore(int column) const {
  const auto found = std::ranges::find(order_, column);
  return found == order_.begin() || found == order_.end() ? -1 : *(found - 1);
}

// The column goes to the other side of one whose middle the mouse has passed.
void Flx_Table::DragColumn(int column, int mouseX) {
  if (!Wanted(column).isExtra) return;
  std::vector<int> extra;
  for (const int one : order_)
    if (Wanted(one).isExtra) extra.push_back(one);
  const auto at = std::ranges::find(extra, column);
  const auto middle = [this](int one) { return ColumnX(one) + Width(one) / 2; };
  if (at != extra.begin() && mouseX < middle(*(at - 1))) {
    std::iter_swap(at, at - 1);
  } else if (at + 1 != extra.end() && mouseX > middle(*(at + 1))) {
    std::iter_swap(at, at + 1);
  }
  ShowExtraColumns(extra);
}

void Flx_Table::EndColumnDrag() {
  if (OnColumns) OnColumns();
}

void Flx_Table::HeadMenu(int column) {
  if (OnHeadMenu) OnHeadMenu(column, Fl::event_x(), Fl::event_y());
}

int Flx_Table::ColumnAt(int x) const {
  int right = OriginX();
  for (const int column : order_) {
    right += widths_[static_cast<std::size_t>(column)];
    if (x < right) return x < OriginX() ? -1 : column;
  }
  return -1;
}

int Flx_Table::SpreadColumns() {
  for (std::size_t i = 0; i < columns_.size(); ++i) widths_[i] = columns_[i].width;
  const auto sum = [this] {
    return std::accumulate(order_.begin(), order_.end(), 0,
                           [this](int all, int column) { return all + Width(column); });
  };
  int total = sum();
  int missing = viewWidth_ - wantedFor_;
  // A wider window first shows what had no room until now.
  if (missing > 0) missing = std::clamp(viewWidth_ - total, 0, missing);
  if (resized_ < 0) Distribute(missing, columns_, order_, widths_);
  total = sum();
  filler_ = std::max(0, viewWidth_ - total);
  Width(order_.back()) += filler_;
  return std::max(total, viewWidth_);
}

void Flx_Table::LayOut() {
  if (columns_.empty()) return;
  const int width = std::max(0, scroll_->w() - 2 * kFrame);
  const int height = std::max(0, scroll_->h() - 2 * kFrame);
  const int rowsHeight = RowCount() * Sizes::kRowHeight;
  const auto leaveRoomBeside = [&] { viewWidth_ = std::max(0, width - Sizes::kScrollbarSize); };
  viewWidth_ = width;
  viewHeight_ = height;
  if (rowsHeight > height) leaveRoomBeside();
  totalWidth_ = SpreadColumns();
  if (totalWidth_ > viewWidth_) {
    viewHeight_ = std::max(0, height - Sizes::kScrollbarSize);
    if (rowsHeight > viewHeight_) leaveRoomBeside();
    totalWidth_ = SpreadColumns();
  }
  extent_->resize(OriginX(), OriginY(), totalWidth_, std::max(rowsHeight, viewHeight_));
  rows_->Pin();
  ScrollTo(scroll_->xposition(), scroll_->yposition());
  PlaceHeads();
  scroll_->redraw();
}

void Flx_Table::PlaceHeads() {
  int x = OriginX();
  for (const int column : order_) {
    buttons_[static_cast<std::size_t>(column)]->resize(x, heads_->y(), Width(column), heads_->h());
    x += Width(column);
  }
  heads_->redraw();
}

void Flx_Table::ScrollTo(int x, int y) {
  x = std::clamp(x, 0, totalWidth_ - viewWidth_);
  y = std::clamp(y, 0, extent_->h() - viewHeight_);
  if (x != scroll_->xposition() || y != scroll_->yposition()) scroll_->scroll_to(x, y);
}

void Flx_Table::resize(int x, int y, int w, int h) {
  Fl_Widget::resize(x, y, w, h);
  heads_->resize(x + kFrame, y + kFrame, w - 2 * kFrame, Sizes::kHeaderHeight);
  scroll_->resize(x, y + Sizes::kHeaderHeight, w, std::max(0, h - Sizes::kHeaderHeight));
  LayOut();
}

int Flx_Table::FirstVisibleRow() const {
  return scroll_->yposition() / Sizes::kRowHeight;
}

int Flx_Table::LastVisibleRow() const {
  const int end = (scroll_->yposition() + viewHeight_ + Sizes::kRowHeight - 1) / Sizes::kRowHeight;
  return std::min(end, RowCount());
}

void Flx_Table::ScrollToRow(int row) {
  if (row < 0) return;
  const int top = row * Sizes::kRowHeight;
  const int bottom = top + Sizes::kRowHeight - viewHeight_;
  ScrollTo(scroll_->xposition(), std::min(std::max(scroll_->yposition(), bottom), top));
}

bool Flx_Table::IsSelected(int row) const {
  const auto index = static_cast<std::size_t>(row);
  return row >= 0 && index < selected_.size() && selected_[index];
}

void Flx_Table::SelectRow(int row) {
  row = std::clamp(row, -1, RowCount() - 1);
  anchor_ = row;
  ScrollToRow(row);
  SelectRange(row, row, {});
}

void Flx_Table::SelectRows(const std::vector<int>& rows, int current) {
  Selection selected(static_cast<std::size_t>(RowCount()));
  bool holdsCurrent = false;
  for (const int row : rows) {
    selected[static_cast<std::size_t>(row)] = true;
    holdsCurrent = holdsCurrent || row == current;
  }
  if (!holdsCurrent) current = rows.empty() ? -1 : *std::min_element(rows.begin(), rows.end());
  anchor_ = current;
  SetSelection(std::move(selected), current);
}

void Flx_Table::SelectAllRows() {
  if (!SelectsSeveral() || RowCount() == 0) return;
  SetSelection(Selection(static_cast<std::size_t>(RowCount()), true), std::max(current_, 0));
}

void Flx_Table::SelectRange(int from, int to, const Selection& rest) {
  Selection selected = rest;
  selected.resize(static_cast<std::size_t>(RowCount()));
  if (to >= 0) {
    const auto [first, last] = std::minmax(from, to);
    std::fill(selected.begin() + std::max(first, 0), selected.begin() + last + 1, true);
  }
  SetSelection(std::move(selected), to);
}

void Flx_Table::ExtendTo(int row) {
  if (RowCount() == 0) return;
  row = std::clamp(row, 0, RowCount() - 1);
  anchor_ = std::clamp(anchor_, 0, RowCount() - 1);
  ScrollToRow(row);
  SelectRange(anchor_, row, {});
}

// The current row is always a selected one: when it goes, the nearest becomes current.
void Flx_Table::ToggleRow(int row) {
  Selection selected = selected_;
  selected.resize(static_cast<std::size_t>(RowCount()));
  const auto at = selected.begin() + row;
  *at = !*at;
  anchor_ = row;
  int current = row;
  if (!*at) {
    current = -1;
    for (int i = 0; i < RowCount(); ++i) {
      const bool nearer = current < 0 || std::abs(i - row) < std::abs(current - row);
      if (selected[static_cast<std::size_t>(i)] && nearer) current = i;
    }
  }
  SetSelection(std::move(selected), current);
}

void Flx_Table::SetSelection(Selection selected, int current) {
  if (current == current_ && selected == selected_) return;
  const int old = std::exchange(current_, current);
  selected_.resize(selected.size());
  for (int row = FirstVisibleRow(); row < LastVisibleRow(); ++row) {
    const auto index = static_cast<std::size_t>(row);
    if (selected[index] != selected_[index]) RowChanged(row);
  }
  selected_ = std::move(selected);
  RowChanged(old);
  RowChanged(current);
  if (OnSelect) OnSelect();
}

void Flx_Table::RowsChanged() {
  LayOut();
  selected_.resize(static_cast<std::size_t>(RowCount()));
  if (current_ >= RowCount()) SelectRow(RowCount() - 1);
}

void Flx_Table::RowsReplaced(Selection selected, int current) {
  const int top = current_ * Sizes::kRowHeight - scroll_->yposition();
  const bool inSight = current_ >= 0 && top > -Sizes::kRowHeight && top < viewHeight_;
  const bool moved = std::exchange(current_, current) != current;
  selected_ = std::move(selected);
  if (anchor_ >= RowCount() || !IsSelected(anchor_)) anchor_ = current;
  LayOut();
  if (moved && inSight) ScrollToRow(current);
}

void Flx_Table::RowChanged(int row) {
  rows_->RedrawRow(row);
  rows_->RefreshTip(row);
}

void Flx_Table::CopyColumns(const Flx_Table& other) {
  ShowExtraColumns(other.order_);
  columns_ = other.columns_;
  wantedFor_ = other.wantedFor_;
  LayOut();
}

void Flx_Table::ShowSorted(int column, bool descending) {
  using Mark = Flx_HeaderButton::Mark;
  for (int i = 0; i < ColumnCount(); ++i) {
    const Mark mark = descending ? Mark::kDescending : Mark::kAscending;
    buttons_[static_cast<std::size_t>(i)]->SetMark(i == column ? mark : Mark::kNone);
  }
}

void Flx_Table::HeadPressed(int column) {
  if (OnHead) OnHead(column);
}

void Flx_Table::BeginColumnResize(int column) {
  // What is on the screen becomes what is wanted, so that only this column changes.
  atPush_ = {columns_, wantedFor_};
  for (const int one : order_) Wanted(one).width = Width(one);
  if (column != order_.back()) Wanted(order_.back()).width -= filler_;
  wantedFor_ = viewWidth_;
  resized_ = column;
  widthAtPush_ = widths_[static_cast<std::size_t>(column)];
}

void Flx_Table::ResizeColumn(int byPixels) {
  if (resized_ < 0) return;
  columns_[static_cast<std::size_t>(resized_)].width =
      std::max(kNarrowest, widthAtPush_ + byPixels);
  LayOut();
}

void Flx_Table::EndColumnResize() {
  if (resized_ < 0) return;
  // A width that the user chose stays; the others share what a new window width brings.
  TableColumn& column = columns_[static_cast<std::size_t>(resized_)];
  const bool changed = column.width != widthAtPush_;
  resized_ = -1;
  if (changed) {
    column.stretch = 0;
    column.minWidth = std::min(column.minWidth, column.width);
    column.isGiven = true;
    wantedFor_ = viewWidth_;
  } else {
    std::tie(columns_, wantedFor_) = atPush_;
  }
  LayOut();
  if (changed && OnColumns) OnColumns();
}

// To the rows that can be seen.
void Flx_Table::FitColumn(int column) {
  int needed = 0;
  for (int row = FirstVisibleRow(); row < LastVisibleRow(); ++row)
    needed = std::max(needed, CellDrawing::Width(CellText(row, column)));
  BeginColumnResize(column);
  ResizeColumn(std::max(needed + IconWidth(column), kNarrowestFit) - widthAtPush_);
  EndColumnResize();
}

void Flx_Table::draw() {
  Fl_Group::draw();
  if (Fl::focus() == rows_) Theme::DrawFocus(x(), y(), w(), h());
}

void Flx_Table::TakeFocus() {
  rows_->take_focus();
}
