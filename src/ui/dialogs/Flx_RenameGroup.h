// Asks for the new name of a group.
#ifndef KR_UI_DIALOGS_FLX_RENAMEGROUP_H
#define KR_UI_DIALOGS_FLX_RENAMEGROUP_H

#include <functional>
#include <string>

#include "ui/dialogs/Flx_Base_Dialog.h"

class Fl_Button;
class Fl_Input;

// Names are byte strings in the system's code page.
class Flx_RenameGroup : public Flx_Base_Dialog {
 public:
  // The widgets by their ids in the layout.
  static constexpr WidgetName<Fl_Input> kName{"ID_INPUT1"};
  static constexpr WidgetName<Fl_Button> kOk{"ID_BUTTON1"}, kCancel{"ID_BUTTON2"};

  Flx_RenameGroup(Fl_Window* parent, int language, const std::string& name);

  // False, after telling the user why, for a name that cannot be taken: the dialog stays open.
  std::function<bool(const std::string& name)> Accepts;

  bool Initialise() override;
  int HandleWidget(Fl_Widget* widget) override;

  // Empty when the dialog was cancelled.
  const std::string& NewName() const { return newName_; }

 private:
  const std::string name_;
  std::string newName_;
};

#endif
