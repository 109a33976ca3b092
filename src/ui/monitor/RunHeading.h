// The head of a monitor: how its run stands.
#ifndef KR_UI_MONITOR_RUNHEADING_H
#define KR_UI_MONITOR_RUNHEADING_H

#include <FL/Fl_Widget.H>

#include "ui/monitor/HeadingTexts.h"

// Interface thread.
class RunHeading : public Fl_Widget {
 public:
  RunHeading(int x, int y, int w);

  // True when it has another height now.
  bool Show(HeadingTexts texts);
  void draw() override;

 private:
  HeadingTexts texts_;
};

#endif
