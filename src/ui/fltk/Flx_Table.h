// A table of rows of cells under a row of column heads, in a scrolling area.
#ifndef KR_UI_FLTK_FLX_TABLE_H
#define KR_UI_FLTK_FLX_TABLE_H

#include <FL/Fl_Group.H>
#include <FL/Fl_Scroll.H>

#include <algorithm>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ui/fltk/Flx_HeaderButton.h"

struct TableColumn {
  std::string title;
  int width = 0;         // wanted, in pixels
  int minWidth = 0;      // what the table shrinks it to; the user may make it narrower
  int stretch = 0;       // share of the space that is left over or missing; 0: keeps its width
  bool isExtra = false;  // can be shown or not, and moved among such ones; hidden at first
  bool isGiven = false;  // the user gave it this width
};

// Base of the tables. Rows are not widgets: only those that can be seen are drawn, so the number of
// rows does not matter. One row is current and selected, or none is; in a table that says so others
// may be selected beside it. A derived class gives the rows and draws the cells; its owner hears of
// what the user does through the functions below. Interface thread.
class Flx_Table : public Fl_Group, private ColumnSizer {
 public:
  Flx_Table(int x, int y, int w, int h);

  void AddColumn(const TableColumn& column);
  int ColumnCount() const { return static_cast<int>(columns_.size()); }
  const std::string& ColumnTitle(int column) const {
    return columns_[static_cast<std::size_t>(column)].title;
  }

  // -1: none.
  int CurrentRow() const { return current_; }
  // Scrolls to the row and selects it alone; -1 selects none. This and the next tell `OnSelect`
  // once when they change something.
  void SelectRow(int row);
  // Does not scroll. The first of the rows is the current one when `current` is none of them.
  void SelectRows(const std::vector<int>& rows, int current);
  // All of them where several may be.
  void SelectAllRows();
  bool IsSelected(int row) const;
  int SelectedCount() const { return static_cast<int>(std::ranges::count(selected_, true)); }

  // The number of rows or all their contents changed.
  void RowsChanged();
  void RowChanged(int row);

  // The columns that are shown, from the left. The extra ones stand behind the others in the order
  // that is given; unknown ones and others than extra ones are passed over.
  const std::vector<int>& ShownColumns() const { return order_; }
  void ShowExtraColumns(const std::vector<int>& columns);
  // Nothing as long as the user has not given it one.
  std::optional<int> GivenWidth(int column) const;
  void GiveWidth(int column, int width);

  // Shows that the rows are sorted by a column; -1: by none.
  void ShowSorted(int column, bool descending);

  // Takes over from another table with the same columns which are shown, and the widths that the
  // user gave.
  void CopyColumns(const Flx_Table& other);

  // Moves the keyboard focus to the rows.
  void TakeFocus();

  std::function<void()> OnSelect;  // the selection or the current row is another one
  // A right click or the menu key; the row, if any, is current then. Window coordinates.
  std::function<void(int x, int y)> OnMenu;
  std::function<void(int row, int column)> OnCell;           // a button cell was pressed
  std::function<void(int column)> OnHead;                    // a column's head was pressed
  std::function<void(int column, int x, int y)> OnHeadMenu;  // a right click on a head
  std::function<void()> OnColumns;                           // the user changed widths or order
  std::function<void(int row, int column)> OnDoubleClick;    // on a cell that is no button
  std::function<void()> OnEnter;                             // the Enter key; a row is current

  void draw() override;
  void resize(int x, int y, int w, int h) override;

 protected:
  struct Cell {
    int row, column;
    int x, y, w, h;
    bool hovered;  // the mouse is over this cell
  };

  using Selection = std::vector<bool>;  // by row

  virtual int RowCount() const = 0;
  virtual bool SelectsSeveral() const { return false; }
  // Rows first to last (not included) are drawn next.
  virtual void PrepareRows(int first, int last) = 0;
  virtual void DrawCell(const Cell& cell) = 0;
  // Over the empty area when there are no rows.
  virtual void DrawEmpty(int x, int y, int w, int h) = 0;
  virtual bool IsButton(int row, int column) = 0;
  // Of a button cell: whether a press this many pixels before its right edge counts.
  virtual bool PressesAt(int /*column*/, int /*beforeEnd*/) const { return true; }
  virtual std::string CellTip(int row, int column) = 0;
  // The mouse was pressed in the area that has no rows.
  virtual void EmptyPressed() {}
  // Whether the name of a row begins with what was typed, which is folded (see Folded); for a table
  // in which rows are found by typing.
  virtual bool NameBegins(int /*row*/, const std::string& /*folded*/) const { return false; }
  // Whether Escape selects no row; else the window has it.
  virtual bool EscapeDeselects() const { return true; }
  // What a cell says now.
  virtual std::string CellText(int row, int column) = 0;
  // Pixels that a column needs beside its texts, for an icon or a box.
  virtual int IconWidth(int) const { return 0; }

  // The rows are other ones, or stand in another order, and are selected like this. `current` is
  // one of these, or -1. Scrolls only to keep the current row in sight. Does not tell.
  void RowsReplaced(Selection selected, int current);
  void ScrollToRow(int row);

  // The rows that can be seen, at least partly: first to last (not included).
  int FirstVisibleRow() const;
  int LastVisibleRow() const;

 private:
  class Rows;
  class Extent;
  // Selects from one row to another, both included, beside what is selected in `rest`; the second
  // one becomes current.
  void SelectRange(int from, int to, const Selection& rest);
  void ExtendTo(int row);   // from where the selection began, and scrolls there
  void ToggleRow(int row);  // and goes on from there
  void SetSelection(Selection selected, int current);
  void HeadPressed(int column) override;
  void BeginColumnResize(int column) override;
  void ResizeColumn(int byPixels) override;
  void EndColumnResize() override;
  void FitColumn(int column) override;
  int ColumnBefore(int column) const override;
  void DragColumn(int column, int mouseX) override;
  void EndColumnDrag() override;
  void HeadMenu(int column) override;
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
  int ColumnX(int column) const;  // of one that is shown
  int& Width(int column) { return widths_[static_cast<std::size_t>(column)]; }
  TableColumn& Wanted(int column) { return columns_[static_cast<std::size_t>(column)]; }

  Fl_Group* heads_;
  Fl_Scroll* scroll_;
  Extent* extent_;  // as big as all rows together; gives the scrollbars their range
  Rows* rows_;      // as big as the view
  std::vector<TableColumn> columns_;
  std::vector<Flx_HeaderButton*> buttons_;
  std::vector<int> widths_;  // as laid out
  std::vector<int> order_;   // those that are shown, from the left
  int viewWidth_ = 0;
  int viewHeight_ = 0;
  int totalWidth_ = 0;  // of all columns; at least the view's
  int wantedFor_ = 0;   // the view width that the wanted widths were made for
  int filler_ = 0;      // what the last column has beyond its width
  int resized_ = -1;    // the column being resized
  int widthAtPush_ = 0;
  std::pair<std::vector<TableColumn>, int> atPush_;  // columns_ and wantedFor_ until then
  int current_ = -1;
  int anchor_ = -1;  // where a range begins
  Selection selected_;
};

#endif
