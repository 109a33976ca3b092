#include "ui/fltk/Flx_HeaderButton.h"

#include <FL/Fl.H>
#include <FL/fl_draw.H>
#include <FL/Fl_Window.H>

#include <cstdlib>
#include <utility>

#include "ui/fltk/Labels.h"
#include "ui/fltk/Theme.h"

namespace {

constexpr int kEdge = 5;       // pixels on each side of a column's border that take hold of it
constexpr int kDragStart = 6;  // pixels that the mouse moves before it takes the column along
constexpr int kTextPadding = 8;
constexpr int kMarkWidth = 12;

}  // namespace

Flx_HeaderButton::Flx_HeaderButton(ColumnSizer& sizer, int column, const std::string& title)
    : Fl_Button(0, 0, 10, 10), sizer_(sizer), column_(column), title_(title) {
  visible_focus(0);
}

int Flx_HeaderButton::ColumnAtEdge() const {
  const int mouse = Fl::event_x();
  if (mouse >= x() + w() - kEdge) return column_;
  return mouse < x() + kEdge ? sizer_.ColumnBefore(column_) : -1;
}

void Flx_HeaderButton::ShowResizeCursor() {
  resizeCursor_ = true;
  if (window()) window()->cursor(FL_CURSOR_WE, FL_BLACK, FL_WHITE);
}

void Flx_HeaderButton::ShowDefaultCursor() {
  if (resizeCursor_ && window()) window()->cursor(FL_CURSOR_DEFAULT);
  resizeCursor_ = false;
}

int Flx_HeaderButton::handle(int event) {
  switch (event) {
    case FL_ENTER:
    case FL_MOVE:
      ColumnAtEdge() >= 0 ? ShowResizeCursor() : ShowDefaultCursor();
      return 1;
    case FL_LEAVE:
    case FL_HIDE:
      ShowDefaultCursor();
      return 1;
    case FL_PUSH:
      pushX_ = Fl::event_x();
      if (Fl::event_button() == FL_RIGHT_MOUSE) sizer_.HeadMenu(column_);
      pressed_ = Fl::event_button() == FL_LEFT_MOUSE && ColumnAtEdge() < 0;
      if (Fl::event_button() != FL_LEFT_MOUSE || pressed_) return 1;
      if (Fl::event_clicks() > 0) {
        Fl::event_clicks(0);
        sizer_.FitColumn(ColumnAtEdge());
        return 1;
      }
      sizer_.BeginColumnResize(ColumnAtEdge());
      ShowResizeCursor();
      return 1;
    case FL_DRAG:
      dragged_ = dragged_ || (pressed_ && std::abs(Fl::event_x() - pushX_) > kDragStart);
      if (dragged_) sizer_.DragColumn(column_, Fl::event_x());
      sizer_.ResizeColumn(Fl::event_x() - pushX_);
      return 1;
    case FL_RELEASE:
      if (std::exchange(dragged_, false)) {
        pressed_ = false;
        sizer_.EndColumnDrag();
      }
      sizer_.EndColumnResize();
      if (std::exchange(pressed_, false) && Fl::event_inside(this)) sizer_.HeadPressed(column_);
      return 1;
    default:
      return Fl_Widget::handle(event);
  }
}

void Flx_HeaderButton::SetMark(Mark mark) {
  if (std::exchange(mark_, mark) != mark) redraw();
}

void Flx_HeaderButton::DrawMark() const {
  constexpr int kHalf = 4;
  const int middle = x() + w() - kTextPadding - kHalf;
  const int tip = mark_ == Mark::kAscending ? -2 : 2;
  const int centre = y() + h() / 2;
  fl_polygon(middle - kHalf, centre - tip, middle + kHalf, centre - tip, middle, centre + tip);
}

void Flx_HeaderButton::draw() {
  fl_color(Theme::kHeader);
  fl_rectf(x(), y(), w(), h());
  fl_color(Theme::kLine);
  fl_yxline(x() + w() - 1, y() + 6, y() + h() - 8);
  fl_xyline(x(), y() + h() - 1, x() + w() - 1);
  fl_font(FL_HELVETICA, labelsize());
  fl_color(Theme::kMuted);
  const int mark = mark_ == Mark::kNone ? 0 : kMarkWidth;
  const std::string text = FitHead(title_, w() - kTextPadding - 3 - mark);
  fl_push_clip(x(), y(), w() - 2, h());
  fl_draw(text.c_str(), x() + kTextPadding, y(), w(), h() - 1, FL_ALIGN_LEFT, nullptr, 0);
  if (mark_ != Mark::kNone) DrawMark();
  fl_pop_clip();
}
