// The entries of a choice.
#ifndef KR_UI_FLTK_CHOICEENTRIES_H
#define KR_UI_FLTK_CHOICEENTRIES_H

#include <FL/Fl_Choice.H>

#include <string>
#include <vector>

// Entries that are shown as they stand, also those that are equal. Lives as long as the choice.
// Texts are UTF-8.
class ChoiceEntries {
 public:
  void Show(Fl_Choice& choice, const std::vector<std::string>& texts, int chosen);

 private:
  std::vector<std::string> labels_;
  std::vector<Fl_Menu_Item> items_;
};

#endif
