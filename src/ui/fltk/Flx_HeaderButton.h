// The head of one column of a Flx_Table.
#ifndef KR_UI_FLTK_FLX_HEADERBUTTON_H
#define KR_UI_FLTK_FLX_HEADERBUTTON_H

#include <FL/Fl_Button.H>

#include <string>

// What a head asks of its table while the user drags the right edge of a column.
class ColumnSizer {
 public:
  virtual void BeginColumnResize(int column) = 0;
  virtual void ResizeColumn(int byPixels) = 0;  // since the beginning
  virtual void EndColumnResize() = 0;
  virtual void FitColumn(int column) = 0;  // to its texts

 protected:
  ~ColumnSizer() = default;
};

// Its edges resize columns by dragging; a double click on an edge fits the column to its texts.
class Flx_HeaderButton : public Fl_Button {
 public:
  Flx_HeaderButton(ColumnSizer& sizer, int column, const std::string& title);

  int handle(int event) override;
  void draw() override;

 private:
  // The column whose right edge is under the mouse; -1 when none is.
  int ColumnAtEdge() const;
  void ShowResizeCursor();
  void ShowDefaultCursor();

  ColumnSizer& sizer_;
  const int column_;
  const std::string title_;
  int pushX_ = 0;
  bool resizeCursor_ = false;
};

#endif
