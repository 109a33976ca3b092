// The part of a Flx_Table that is scrolled. Included by the table's own files only.
#ifndef KR_UI_FLTK_FLX_TABLEROWS_H
#define KR_UI_FLTK_FLX_TABLEROWS_H

#include <FL/Fl_Widget.H>

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

  void draw() override;
  int handle(int event) override;
  // The scrolling area moves what it holds; this does not follow.
  void resize(int x, int y, int w, int h) override;
  void Pin();
  void RedrawRow(int row);

 private:
  int RowAtMouse() const;
  void Hover(int row, int column);
  void ShowTip();
  int HandlePush();
  int HandleKey();
  int HandleWheel();
  void OpenMenu(int x, int y);
  void DrawRow(int row, int last);

  Flx_Table& table_;
  int hoverRow_ = -1;
  int hoverColumn_ = -1;
  int pushedRow_ = -1;  // a button cell that the mouse went down on
  int pushedColumn_ = -1;
};

#endif
