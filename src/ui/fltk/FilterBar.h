// The line over a table by which its rows are found.
#ifndef KR_UI_FLTK_FILTERBAR_H
#define KR_UI_FLTK_FILTERBAR_H

#include <FL/Fl_Group.H>

#include <cstddef>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "ui/text/TextTable.h"

// A field for words, a switch with a count for each class of rows, another switch if there is one,
// and at the right what is shown and in which order. All texts are UTF-8. Interface thread.
class FilterBar : public Fl_Group {
 public:
  struct Label {
    const char* icon = "";  // see Icons.h; empty: none
    std::string words;
    std::string tip;
    bool isRare = false;  // takes no room while it counts nothing
  };
  struct Labels {
    std::string fieldTip;
    std::vector<Label> classes;
    Label follow = {};          // no words: there is no such switch
    std::string orderTip = {};  // of View::order
  };

  // Classes by their places in Labels::classes; none of them: all are shown.
  using Places = std::set<std::size_t>;
  // Of and from the values of an enum whose places they are.
  template <typename Class>
  static Places PlacesOf(const std::set<Class>& classes) {
    Places places;
    for (const Class one : classes) places.insert(static_cast<std::size_t>(one));
    return places;
  }
  template <typename Class>
  static std::set<Class> ClassesAt(const Places& places) {
    std::set<Class> classes;
    for (const std::size_t place : places) classes.insert(static_cast<Class>(place));
    return classes;
  }

  struct View {
    std::string words;
    Places classes;
    std::vector<int> counts;  // of each class
    std::string said = {};    // how much is shown
    std::string order = {};   // in which order; it can be pressed
    bool operator==(const View&) const = default;
  };

  FilterBar(int x, int y, int w, int h, const TextTable& texts, const Labels& labels);

  // Redraws only when something differs.
  void Show(const View& view);
  void TakeFocus();  // to the field
  void Clear();      // shows all rows

  std::function<void(const std::string& words, const Places& classes)> OnFilter;
  std::function<void()> OnOrder;  // the order was pressed
  std::function<void(bool follow)> OnFollow;
  std::function<void()> OnLeave;  // the focus goes back to the table

  void resize(int x, int y, int w, int h) override;

 private:
  class WordField;
  class Switch;
  class Words;
  void Tell();
  void LayOut();

  View view_;
  WordField* field_;
  std::vector<Switch*> switches_;
  std::vector<bool> rare_;  // of the switches
  Switch* follow_ = nullptr;
  Words* said_;
  Words* order_;
};

#endif
