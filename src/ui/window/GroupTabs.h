// The row of group tabs over the job table.
#ifndef KR_UI_WINDOW_GROUPTABS_H
#define KR_UI_WINDOW_GROUPTABS_H

#include <FL/Fl_Widget.H>

#include <functional>
#include <string>
#include <vector>

// Tabs are as wide as their names, shrink when there are many, and scroll by the wheel and by two
// arrows when that is not enough. Interface thread.
class GroupTabs : public Fl_Widget {
 public:
  struct Tab {
    std::string name;  // UTF-8
    std::string note;  // behind the name; UTF-8
    std::string tip;   // in UTF-8
    int jobs = 0;
    bool running = false;
    bool paused = false;
    bool operator==(const Tab&) const = default;
  };

  GroupTabs(int x, int y, int w, int h);

  // Redraws only when something differs.
  void SetTabs(const std::vector<Tab>& tabs, int current);

  std::function<void(int tab)> OnSelect;
  std::function<void(int tab)> OnRename;              // a double click
  std::function<void(int tab, int x, int y)> OnMenu;  // a right click

  void draw() override;
  int handle(int event) override;
  void resize(int x, int y, int w, int h) override;

 private:
  int WantedWidth(const Tab& tab) const;
  void LayOut();
  void Reveal(int tab);
  void ScrollBy(int pixels);
  bool Overflows() const { return total_ > w(); }
  int StripWidth() const;  // what the arrows leave
  int TabAt(int x) const;  // -1: none; -2 and -3: the left and the right arrow
  void DrawTab(int tab) const;
  void DrawArrow(int x, bool left) const;
  std::string TipOf(int tab) const;
  void ShowTipOf(int tab);

  std::vector<Tab> tabs_;
  std::vector<int> starts_;  // left edges from the strip's beginning, and the end of the last
  int total_ = 0;
  int offset_ = 0;  // pixels scrolled out at the left
  int current_ = -1;
  int hovered_ = -1;
};

#endif
