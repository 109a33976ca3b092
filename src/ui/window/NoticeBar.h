// A bar above the table that says something and offers what can be done, without a box.
#ifndef KR_UI_WINDOW_NOTICEBAR_H
#define KR_UI_WINDOW_NOTICEBAR_H

#include <FL/Fl_Button.H>
#include <FL/Fl_Group.H>

#include <functional>
#include <list>
#include <string>

// A line of text and some buttons at its end. Interface thread.
class NoticeBar : public Fl_Group {
 public:
  NoticeBar(int x, int y, int w, int h);

  // The next one to the right. Texts in UTF-8.
  void AddButton(const std::string& label, const std::string& tip, std::function<void()> press);

  // "12 jobs of Fri 18:40: 9 queued, 2 were running, 1 still runs."; UTF-8; empty: it has nothing
  // to say.
  void SetText(const std::string& text);
  bool Asks() const { return !text_.empty(); }
  // Before the buttons, "and 2 more" that have no room beside it.
  void SetMore(const std::string& more);

  void draw() override;
  void resize(int x, int y, int w, int h) override;

 private:
  struct Button {
    Fl_Button* widget;
    std::function<void()> press;
  };
  void LayOut();
  int TextEnd() const;

  std::list<Button> buttons_;  // callbacks have their address
  std::string text_, more_;
};

#endif
