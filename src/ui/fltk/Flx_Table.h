// A table of rows of cells under a row of column heads, in a scrolling area.
#ifndef KR_UI_FLTK_FLX_TABLE_H
#define KR_UI_FLTK_FLX_TABLE_H

#include <FL/Fl_Group.H>
#include <FL/Fl_Scroll.H>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "ui/fltk/Flx_HeaderButton.h"

struct TableColumn {
  std::string title;
  int width = 0;     // wanted, in pixels
  int minWidth = 0;  // what the table shrinks it to; the user may make it narrower
  int stretch = 0;   // share of the space that is left over or missing; 0: keeps its width
};

// Base of the tables. Rows are not widgets: only those that can be seen are drawn, so the number of
// rows does not matter. One row is current, or none. A derived class gives the rows and draws the
// cells; its owner hears of what the user does through the functions below. Interface thread.
class Flx_Table : public Fl_Group, private ColumnSizer {
 public:
  Flx_Table(int x, int y, int w, int h);

  void AddColumn(const TableColumn& column);
  int ColumnCount() const { return static_cast<int>(columns_.size()); }

  // -1: none.
  int CurrentRow() const { return current_; }
  // Scrolls to the row; -1 selects none. Tells `OnSelect` when the current row changes.
  void SelectRow(int row);

  // The number of rows or all their contents changed.
  void RowsChanged();
  void RowChanged(int row);

  // Shows that the rows are sorted by a column; -1: by none.
  void ShowSorted(int column, bool descending);

  // Takes over the widths that the user gave to another table with the same columns.
  void CopyColumns(const Flx_Table& other);

  // Moves the keyboard focus to the rows.
  void TakeFocus();

  std::function<void()> OnSelect;
  // A right click or the menu key; the row, if any, is current then. Window coordinates.
  std::function<void(int x, int y)> OnMenu;
  std::function<void(int row, int column)> OnCell;         // a button cell was pressed
  std::function<void(int column)> OnHead;                  // a column's head was pressed
  std::function<void(int row, int column)> OnDoubleClick;  // on a cell that is no button

  void draw() override;
  void resize(int x, int y, int w, int h) override;

 protected:
  struct Cell {
    int row, column;
    int x, y, w, h;
    bool hovered;  // the mouse is over this cell
  };

  virtual int RowCount() const = 0;
  // Rows first to last (not included) are drawn next.
  virtual void PrepareRows(int first, int last) = 0;
  virtual void DrawCell(const Cell& cell) = 0;
  // Over the empty area when there are no rows.
  virtual void DrawEmpty(int x, int y, int w, int h) = 0;
  virtual bool IsButton(int row, int column) = 0;
  // Of a button cell: whether a press this many pixels before its right edge counts.
  virtual bool PressesAt(int /*column*/, int /*beforeEnd*/) const { return true; }
  virtual std::string CellTip(int row, int column) = 0;
  // Whether Escape selects no row; else the window has it.
  virtual bool EscapeDeselects() const { return true; }
  // What a cell says now.
  virtual std::string CellText(int row, int column) = 0;
  // Pixels that a column needs beside its texts, for an icon or a box.
  virtual int IconWidth(int) const { return 0; }

  // The rows that can be seen, at least partly: first to last (not included).
  int FirstVisibleRow() const;
  int LastVisibleRow() const;

 private:
  class Rows;
  class Extent;
  void HeadPressed(int column) override;
  void BeginColumnResize(int column) override;
  void ResizeColumn(int byPixels) override;
  void EndColumnResize() override;
  void FitColumn(int column) override;
  void LayOut();
  void PlaceHeads();
  int SpreadColumns();          // over the view; returns the width of all
  void ScrollTo(int x, int y);  // as far as there is something to see
  // The view: what the frame and the scrollbars leave.
  int ViewX() const { return scroll_->x() + 1; }
  int ViewY() const { return scroll_->y() + 1; }
  // Where the first row and column begin, scrolled out or not.
  int OriginX() const { return ViewX() - scroll_->xposition(); }
  int OriginY() const { return ViewY() - scroll_->yposition(); }
  int ColumnAt(int x) const;
  int ColumnX(int column) const;

  Fl_Group* heads_;
  Fl_Scroll* scroll_;
  Extent* extent_;  // as big as all rows together; gives the scrollbars their range
  Rows* rows_;      // as big as the view
  std::vector<TableColumn> columns_;
  std::vector<Flx_HeaderButton*> buttons_;
  std::vector<int> widths_;  // as laid out
  int viewWidth_ = 0;
  int viewHeight_ = 0;
  int totalWidth_ = 0;  // of all columns; at least the view's
  int wantedFor_ = 0;   // the view width that the wanted widths were made for
  int filler_ = 0;      // what the last column has beyond its width
  int resized_ = -1;    // the column being resized
  int widthAtPush_ = 0;
  std::pair<std::vector<TableColumn>, int> atPush_;  // columns_ and wantedFor_ until then
  int current_ = -1;
};

#endif
