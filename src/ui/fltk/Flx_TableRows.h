// The part of a Flx_Table that is scrolled. Included by the table's own files only.
#ifndef KR_UI_FLTK_FLX_TABLEROWS_H
#define KR_UI_FLTK_FLX_TABLEROWS_H

#include <FL/Fl_Widget.H>

#include <chrono>
#include <string>

#include "ui/fltk/Flx_Table.h"

// Never drawn: its size and position tell the scrolling area where all rows together are. They are
// far too tall for the window system to draw or clip.
class Flx_Table::Extent : public Fl_Widget {
 public:
  Extent(Flx_Table& table, int x, int y, int w, int h);

  void draw() override {}
  void resize(int x, int y, int w, int h) override;

 private:
  Flx_Table& table_;
};

// Stays where the view is; draws the rows that can be seen and turns the user's mouse and keys into
// the table's events.
class Flx_Table::Rows : public Fl_Widget {
 public:
  Rows(Flx_Table& table, int x, int y, int w, int h);
  ~Rows() override;

  void draw() override;
  int handle(int event) override;
  // The scrolling area moves what it holds; this does not follow.
  void resize(int x, int y, int w, int h) override;
  void Pin();
  void RedrawRow(int row);
  // The row says something else now, and so may its tip that is shown.
  void RefreshTip(int row);

 private:
  int RowAtMouse() const;
  void Hover(int row, int column);
  void ShowTip();
  int HandlePush();
  void SelectByPush(int row);
  void DragBand();
  void EndBand();
  static void ScrollBand(void* self);  // while the mouse is above or below the rows
  void DrawBand() const;
  int HandleKey();
  bool GoToTyped();
  int RowOfKey(int key) const;  // that a key leads to; -1: none of these keys
  int HandleWheel();
  void OpenMenu(int x, int y);
  void DrawRow(int row, int last);

  Flx_Table& table_;
  int hoverRow_ = -1;
  int hoverColumn_ = -1;
  int pushedRow_ = -1;  // a button cell that the mouse went down on
  int pushedColumn_ = -1;
  // A band that is pulled over the rows, from a place in them.
  bool canBand_ = false;  // the mouse went down where one may begin
  bool banding_ = false;
  int bandX_ = 0, bandY_ = 0;  // from the beginning of the first row and column
  Selection besideBand_;       // what stays selected
  // What was typed to find a row; folded.
  std::string typed_;
  std::chrono::steady_clock::time_point typedUntil_;
};

#endif
