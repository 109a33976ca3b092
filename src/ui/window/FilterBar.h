// The line over the job table by which jobs are found.
#ifndef KR_UI_WINDOW_FILTERBAR_H
#define KR_UI_WINDOW_FILTERBAR_H

#include <FL/Fl_Button.H>
#include <FL/Fl_Group.H>

#include <array>
#include <functional>
#include <string>

#include "ui/text/TextTable.h"
#include "ui/window/JobRows.h"

// A field for words, a switch with a count for each class of jobs, one to follow the running job,
// and at the right how many jobs are shown and in which order. Interface thread.
class FilterBar : public Fl_Group {
 public:
  struct View {
    std::string words;  // UTF-8
    StatusClasses classes;
    StatusCounts counts{};
    int shown = 0, all = 0;
    std::string sortedBy;  // the title of a column; empty: in the order of running
    bool operator==(const View&) const = default;
  };

  // The texts outlive the bar.
  FilterBar(int x, int y, int w, int h, const TextTable& texts);

  // Redraws only when something differs.
  void Show(const View& view);
  void ShowFollow(bool follow);
  void TakeFocus();  // to the field
  void Clear();      // shows all jobs

  std::function<void(const std::string& words, const StatusClasses& classes)> OnFilter;
  std::function<void()> OnRunningOrder;
  std::function<void(bool follow)> OnFollow;
  std::function<void()> OnLeave;  // the focus goes back to the table

  void resize(int x, int y, int w, int h) override;

 private:
  class WordField;
  class Switch;
  class Words;
  void Tell();
  void LayOut();
  std::string CountWords() const;

  const TextTable& texts_;
  View view_;
  WordField* field_;
  std::array<Switch*, kStatusClasses> switches_{};
  Switch* follow_;
  Words* count_;
  Words* order_;  // leads back to the order of running
};

#endif
