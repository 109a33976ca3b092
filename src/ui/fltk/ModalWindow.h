// A small modal window in the middle of its parent.
#ifndef KR_UI_FLTK_MODALWINDOW_H
#define KR_UI_FLTK_MODALWINDOW_H

#include <FL/Fl_Double_Window.H>

// Lives on the stack of the function that runs it. Stays on the parent's screen. Interface thread.
class ModalWindow : public Fl_Double_Window {
 public:
  ModalWindow(int w, int h);

  // Shows the window over the parent (or the screen's middle) and handles events until it is
  // hidden.
  void Run(Fl_Window* parent, Fl_Widget* focus);

  // The first half of Run, for those that look at something while events are handled.
  void Open(Fl_Window* parent, Fl_Widget* focus);
};

// Whether windows that wait for an answer may open. Not any more when the program ends, since
// nobody would give one: then Run returns at once.
void AllowModalWindows(bool allow);
bool ModalWindowsAllowed();

// What of a screen is free for windows below their title bars: of the one that the parent's middle
// is on, or of the one that the mouse is on.
struct ScreenArea {
  int x, y, w, h;
};
ScreenArea ScreenOf(Fl_Window* parent);

// Moves a window so that its middle lies over the parent's.
void CentreOver(Fl_Window& window, Fl_Window* parent);

// Moves a window as far onto the parent's screen as it fits there.
void MoveOntoScreen(Fl_Window& window, Fl_Window* parent);

// The same, and makes it smaller than it is when the screen has no room for it.
void FitScreen(Fl_Window& window, Fl_Window* parent);

#endif
