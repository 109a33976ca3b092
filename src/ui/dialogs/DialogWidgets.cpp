#include "ui/dialogs/DialogWidgets.h"

#include <FL/Fl_Box.H>
#include <FL/Fl_Browser.H>
#include <FL/Fl_Button.H>
#include <FL/Fl_Check_Button.H>
#include <FL/Fl_Choice.H>
#include <FL/Fl_Counter.H>
#include <FL/Fl_Group.H>
#include <FL/Fl_Help_View.H>
#include <FL/Fl_Menu_Bar.H>
#include <FL/Fl_Menu_Button.H>
#include <FL/Fl_Round_Button.H>
#include <FL/Fl_Scroll.H>
#include <FL/Fl_Scrollbar.H>
#include <FL/Fl_Slider.H>
#include <FL/Fl_Tabs.H>
#include <FL/Fl_Text_Display.H>
#include <FL/Fl_Value_Slider.H>

#include <string>

#include "ui/fltk/LineInput.h"

namespace {

template <typename Kind>
Fl_Widget* Plain(const LayoutLine&, int x, int y, int w, int h) {
  return new Kind(x, y, w, h, "");
}

template <typename Kind>
Fl_Widget* Closed(const LayoutLine&, int x, int y, int w, int h) {
  auto* group = new Kind(x, y, w, h, "");
  group->end();
  return group;
}

template <typename Kind>
Fl_Widget* WithDownBox(const LayoutLine& line, int x, int y, int w, int h) {
  auto* widget = new Kind(x, y, w, h, "");
  widget->down_box(static_cast<Fl_Boxtype>(line.downBox));
  return widget;
}

struct WidgetKind {
  const char* typeName;
  Fl_Widget* (*make)(const LayoutLine& line, int x, int y, int w, int h);
};

const WidgetKind kKinds[] = {
    {"Fl_Button", WithDownBox<Fl_Button>},
    {"Fl_Box", Plain<Fl_Box>},
    {"Fl_Input", Plain<LineInput>},
    {"Fl_Group", Closed<Fl_Group>},
    {"Fl_Check_Button", WithDownBox<Fl_Check_Button>},
    {"Fl_Round_Button", WithDownBox<Fl_Round_Button>},
    {"Fl_Choice", WithDownBox<Fl_Choice>},
    {"Fl_Browser", Closed<Fl_Browser>},
    {"Fl_Scrollbar", Plain<Fl_Scrollbar>},
    {"Fl_Scroll", Closed<Fl_Scroll>},
    {"Fl_Slider", Plain<Fl_Slider>},
    {"Fl_Tabs", Closed<Fl_Tabs>},
    {"Fl_Text_Display", Closed<Fl_Text_Display>},
    {"Fl_Counter", Plain<Fl_Counter>},
    {"Fl_Value_Slider", Plain<Fl_Value_Slider>},
    {"Fl_Menu_Button", Plain<Fl_Menu_Button>},
    {"Fl_Help_View", Closed<Fl_Help_View>},
    {"Fl_Menu_Bar", Plain<Fl_Menu_Bar>},
};

}  // namespace

Fl_Widget* MakeDialogWidget(const LayoutLine& line, int x, int y, int width, int height) {
  for (const WidgetKind& kind : kKinds) {
    if (line.typeName == kind.typeName) return kind.make(line, x, y, width, height);
  }
  return nullptr;
}
