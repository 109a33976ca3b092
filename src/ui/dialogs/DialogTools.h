// What several dialogs need beside their layouts.
#ifndef KR_UI_DIALOGS_DIALOGTOOLS_H
#define KR_UI_DIALOGS_DIALOGTOOLS_H

#include <FL/Fl_Choice.H>
#include <FL/Fl_Group.H>
#include <FL/Fl_Input.H>
#include <FL/Fl_Window.H>

#include <initializer_list>
#include <string>
#include <vector>

// The entries of a choice, shown as they stand, also those that are equal. Lives as long as the
// choice. Texts are UTF-8.
class ChoiceEntries {
 public:
  void Show(Fl_Choice& choice, const std::vector<std::string>& texts, int chosen);

 private:
  std::vector<std::string> labels_;
  std::vector<Fl_Menu_Item> items_;
};

// Reaches the children of the group with the Tab key in this order, before all others.
void SetTabOrder(Fl_Group& group, std::initializer_list<Fl_Widget*> children);

// Shows a stored text, unless the user has changed the field and is still in it.
void ShowStored(Fl_Input& input, const std::string& uiText);

// A tooltip that the widget keeps; empty: none. One that is on the screen with another text goes
// away.
void ShowTip(Fl_Widget& widget, const std::string& uiText);

// A message box with one button. UTF-8.
void InformOver(Fl_Window* parent, const std::string& caption, const std::string& text,
                const std::string& button);

// A path as it was typed or pasted, without the double quotes that often come with it; in the
// system's code page.
std::string TypedPath(const std::string& uiText);
std::string PathIn(const Fl_Input& input);

#endif
