// A flat bar that fills up.
#ifndef KR_UI_FLTK_PROGRESSBAR_H
#define KR_UI_FLTK_PROGRESSBAR_H

#include <FL/Fl_Progress.H>

#include "ui/fltk/Theme.h"

// From 0 to 100, where no other maximum is set. Interface thread.
class ProgressBar : public Fl_Progress {
 public:
  ProgressBar(int x, int y, int w, int h) : Fl_Progress(x, y, w, h) {
    maximum(100);
    box(FL_FLAT_BOX);
    color(Theme::kPressed, Theme::kAccent);
  }
};

#endif
