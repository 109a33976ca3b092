// A bar above the tabs that offers something, as a box would that nobody has to answer at once.
#ifndef KR_UI_WINDOW_OFFERBAR_H
#define KR_UI_WINDOW_OFFERBAR_H

#include <FL/Fl_Button.H>
#include <FL/Fl_Group.H>

#include <functional>
#include <string>
#include <vector>

// A line of text and buttons at its right end. Texts are UTF-8. Interface thread.
class OfferBar : public Fl_Group {
 public:
  struct Offer {
    std::string label;
    std::string tip;
    std::function<void()> press;
  };
  // Hidden at first.
  OfferBar(int x, int y, int w, int h, std::vector<Offer> offers);

  // "12 jobs of Fri 18:40: 9 queued, 2 were running, 1 still runs."; an empty one hides the bar.
  void SetText(const std::string& text);

  void draw() override;
  void resize(int x, int y, int w, int h) override;

 private:
  Fl_Button* AddButton(const Offer& offer);
  void LayOut();

  const std::vector<Offer> offers_;
  std::vector<Fl_Button*> buttons_;
  std::string text_;
};

#endif
