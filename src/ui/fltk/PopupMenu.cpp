#include "ui/fltk/PopupMenu.h"

#include <FL/Fl_Menu_Item.H>

#include <list>

#include "ui/fltk/Labels.h"
#include "ui/fltk/Sizes.h"
#include "ui/fltk/Theme.h"

int PickFromMenu(const std::vector<PopupEntry>& entries, int x, int y) {
  std::list<std::string> words;
  std::vector<Fl_Menu_Item> items;
  for (const PopupEntry& entry : entries) {
    Fl_Menu_Item item = {};
    item.text = words.emplace_back(PlainItem(entry.text)).c_str();
    item.flags = (entry.active ? 0 : FL_MENU_INACTIVE) | (entry.isSwitch ? FL_MENU_TOGGLE : 0) |
                 (entry.on ? FL_MENU_VALUE : 0) | (entry.endsPart ? FL_MENU_DIVIDER : 0);
    item.labeltype_ = Theme::kMenuLabel;
    item.labelsize_ = Sizes::kFontSize;
    items.push_back(item);
  }
  items.push_back(Fl_Menu_Item{});
  const Fl_Menu_Item* const picked = items.front().popup(x, y);
  return picked && picked->text ? static_cast<int>(picked - items.data()) : -1;
}
