// The head of one column of a Flx_Table.
#ifndef KR_UI_FLTK_FLX_HEADERBUTTON_H
#define KR_UI_FLTK_FLX_HEADERBUTTON_H

#include <FL/Fl_Button.H>

#include <string>

class Flx_Table;

// Its edges resize columns by dragging; a double click on an edge fits the column to its texts.
class Flx_HeaderButton : public Fl_Button {
 public:
  Flx_HeaderButton(Flx_Table& table, int column, const std::string& title);

  int handle(int event) override;
  void draw() override;

 private:
  // The column whose right edge is under the mouse; -1 when none is.
  int ColumnAtEdge() const;
  void ShowResizeCursor();
  void ShowDefaultCursor();

  Flx_Table& table_;
  const int column_;
  const std::string title_;
  int pushX_ = 0;
  bool resizeCursor_ = false;
};

#endif
