// A menu that opens where the user asked for it.
#ifndef KR_UI_FLTK_POPUPMENU_H
#define KR_UI_FLTK_POPUPMENU_H

#include <string>
#include <vector>

struct PopupEntry {
  std::string text;  // UTF-8
  bool active = true;
  bool isSwitch = false;  // has a box that is checked or not
  bool on = false;
  bool endsPart = false;  // a line follows
  int shortcut = 0;       // shown beside the text
};

// Waits for the user. The place of the entry that was picked; -1: none. Coordinates of the window
// that has the event; the menu opens higher up where it would go on below the screen. Interface
// thread.
int PickFromMenu(const std::vector<PopupEntry>& entries, int x, int y);

#endif
