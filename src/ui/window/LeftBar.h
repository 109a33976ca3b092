// The bar that offers the jobs of the last session.
#ifndef KR_UI_WINDOW_LEFTBAR_H
#define KR_UI_WINDOW_LEFTBAR_H

#include <FL/Fl_Button.H>
#include <FL/Fl_Group.H>

#include <functional>
#include <string>

#include "ui/text/TextTable.h"

// A line of text and two buttons. Interface thread.
class LeftBar : public Fl_Group {
 public:
  LeftBar(int x, int y, int w, int h, const TextTable& texts);

  // "12 jobs of Fri 18:40: 9 queued, 2 were running, 1 still runs."; UTF-8.
  void SetText(const std::string& text);

  std::function<void()> OnRestore;
  std::function<void()> OnForget;

  void draw() override;
  void resize(int x, int y, int w, int h) override;

 private:
  Fl_Button* AddButton(const std::string& label, std::function<void()> LeftBar::*press);
  void LayOut();

  Fl_Button* restore_;
  Fl_Button* forget_;
  std::string text_;
};

#endif
