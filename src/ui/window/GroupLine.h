// How far the current group is, beside the tabs.
#ifndef KR_UI_WINDOW_GROUPLINE_H
#define KR_UI_WINDOW_GROUPLINE_H

#include <FL/Fl_Widget.H>

#include <string>

#include "ui/window/JobRows.h"

// A bar with a part for each class of jobs, and words behind it. Interface thread.
class GroupLine : public Fl_Widget {
 public:
  GroupLine(int x, int y, int w, int h);

  // Without jobs nothing is drawn. Texts are UTF-8.
  void Show(const StatusCounts& counts, const std::string& words, const std::string& tip);

  void draw() override;

 private:
  StatusCounts counts_{};
  std::string words_;
};

#endif
