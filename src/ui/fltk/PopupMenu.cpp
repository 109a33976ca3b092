#include "ui/fltk/PopupMenu.h"

#include <FL/Fl.H>
#include <FL/Fl_Menu_Item.H>

#include <algorithm>
#include <list>

#include "ui/fltk/Labels.h"
#include "ui/fltk/Sizes.h"
#include "ui/fltk/Theme.h"

namespace {

// Higher up where the menu would go on below the screen, which the toolkit lets it do when it has
// no room above its place either. Coordinates of the window.
int PlaceOf(const std::vector<Fl_Menu_Item>& items, int y) {
  constexpr int kLineGap = 4;  // as the toolkit has it
  constexpr int kFrame = 12;
  int line = 0;
  int lines = 0;
  for (; items[static_cast<std::size_t>(lines)].text != nullptr; ++lines) {
    int height = 0;
    items[static_cast<std::size_t>(lines)].measure(&height, nullptr);
    line = std::max(line, height + kLineGap);
  }
  int left = 0, top = 0, width = 0, height = 0;
  Fl::screen_work_area(left, top, width, height, Fl::event_x_root(), Fl::event_y_root());
  const int toRoot = Fl::event_y_root() - Fl::event_y();
  const int lowest = top + height - (lines * line + kFrame) - toRoot;
  return std::min(y, std::max(lowest, top - toRoot));
}

}  // namespace

int PickFromMenu(const std::vector<PopupEntry>& entries, int x, int y) {
  std::list<std::string> words;
  std::vector<Fl_Menu_Item> items;
  for (const PopupEntry& entry : entries) {
    Fl_Menu_Item item = {};
    item.text = words.emplace_back(PlainItem(entry.text)).c_str();
    item.flags = (entry.active ? 0 : FL_MENU_INACTIVE) | (entry.isSwitch ? FL_MENU_TOGGLE : 0) |
                 (entry.on ? FL_MENU_VALUE : 0) | (entry.endsPart ? FL_MENU_DIVIDER : 0);
    item.shortcut_ = entry.shortcut;
    item.labeltype_ = Theme::kMenuLabel;
    item.labelsize_ = Sizes::kFontSize;
    items.push_back(item);
  }
  items.push_back(Fl_Menu_Item{});
  const int place = PlaceOf(items, y);
  // Beside the pointer, where it would lie over an entry.
  constexpr int kAside = 8;
  const Fl_Menu_Item* const picked = items.front().popup(place < y ? x + kAside : x, place);
  return picked && picked->text ? static_cast<int>(picked - items.data()) : -1;
}
