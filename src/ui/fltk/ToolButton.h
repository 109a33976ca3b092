// A flat button with an icon, as in the tool row.
#ifndef KR_UI_FLTK_TOOLBUTTON_H
#define KR_UI_FLTK_TOOLBUTTON_H

#include <FL/Fl_Button.H>

#include <string>

// Raised only while the mouse is over it. Disabled, it shows a greyed icon and keeps its tooltip.
class ToolButton : public Fl_Button {
 public:
  ToolButton(int x, int y, int w, int h, const char* icon);

  int handle(int event) override;
  void draw() override;

 private:
  const std::string icon_;
  bool hovered_ = false;
};

// A button with a text that stands out from the others: filled, white on the accent colour.
class PrimaryButton : public Fl_Button {
 public:
  PrimaryButton(int x, int y, int w, int h);
  void SetText(const std::string& uiText, const std::string& tip);

  int handle(int event) override;
  void draw() override;

 private:
  bool hovered_ = false;
};

// A button that says how something is set. Its text stays readable while it is disabled.
class StateButton : public Fl_Button {
 public:
  StateButton(int x, int y, int w, int h);
  void SetState(const std::string& uiText, bool on, const std::string& tip);

  void draw() override;

 private:
  std::string text_;
  bool on_ = false;
};

#endif
