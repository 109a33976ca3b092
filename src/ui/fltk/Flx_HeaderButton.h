// The head of one column of a Flx_Table.
#ifndef KR_UI_FLTK_FLX_HEADERBUTTON_H
#define KR_UI_FLTK_FLX_HEADERBUTTON_H

#include <FL/Fl_Button.H>

#include <string>

// What a head asks of its table when it is pressed or dragged, and while the user drags the right
// edge of a column.
class ColumnSizer {
 public:
  virtual void HeadPressed(int column) = 0;
  virtual void BeginColumnResize(int column) = 0;
  virtual void ResizeColumn(int byPixels) = 0;  // since the beginning
  virtual void EndColumnResize() = 0;
  virtual void FitColumn(int column) = 0;  // to its texts
  // The one at its left; -1: none.
  virtual int ColumnBefore(int column) const = 0;
  // To where the mouse is, among those that can be moved.
  virtual void DragColumn(int column, int mouseX) = 0;
  virtual void EndColumnDrag() = 0;
  virtual void HeadMenu(int column) = 0;

 protected:
  ~ColumnSizer() = default;
};

// Its edges resize columns by dragging; a double click on an edge fits the column to its texts. The
// head itself can be dragged as well.
class Flx_HeaderButton : public Fl_Button {
 public:
  Flx_HeaderButton(ColumnSizer& sizer, int column, const std::string& title);

  enum class Mark { kNone, kAscending, kDescending };
  // How the rows are sorted by this column.
  void SetMark(Mark mark);

  int handle(int event) override;
  void draw() override;

 private:
  void DrawMark() const;
  // The column whose right edge is under the mouse; -1 when none is.
  int ColumnAtEdge() const;
  void ShowResizeCursor();
  void ShowDefaultCursor();

  ColumnSizer& sizer_;
  const int column_;
  const std::string title_;
  Mark mark_ = Mark::kNone;
  bool pressed_ = false;
  bool dragged_ = false;
  int pushX_ = 0;
  bool resizeCursor_ = false;
};

#endif
