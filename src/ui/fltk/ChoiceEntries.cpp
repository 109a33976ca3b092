#include "ui/fltk/ChoiceEntries.h"

#include "ui/fltk/Labels.h"

void ChoiceEntries::Show(Fl_Choice& choice, const std::vector<std::string>& texts, int chosen) {
  labels_.clear();
  for (const std::string& text : texts) labels_.push_back(PlainItem(text));
  items_.clear();
  for (const std::string& label : labels_) {
    Fl_Menu_Item item = {};
    item.text = label.c_str();
    items_.push_back(item);
  }
  items_.push_back(Fl_Menu_Item{});
  choice.menu(items_.data());
  choice.value(chosen >= 0 && chosen < static_cast<int>(texts.size()) ? chosen : -1);
  choice.redraw();
}
