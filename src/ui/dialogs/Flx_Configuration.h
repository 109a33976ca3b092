// The text editor, the language, and two switches for what LS-DYNA leaves behind.
#ifndef KR_UI_DIALOGS_FLX_CONFIGURATION_H
#define KR_UI_DIALOGS_FLX_CONFIGURATION_H

#include <functional>

#include "core/Application.h"
#include "ui/dialogs/Flx_Base_Dialog.h"
#include "ui/fltk/ChoiceEntries.h"

class Fl_Button;
class Fl_Check_Button;
class Fl_Choice;
class Fl_Input;

// What is changed is stored at once, a text when its field is left.
class Flx_Configuration : public Flx_Base_Dialog {
 public:
  // The widgets by their ids in the layout.
  static constexpr WidgetName<Fl_Choice> kLanguage{"ID_CHOICE1"};
  static constexpr WidgetName<Fl_Input> kEditor{"ID_INPUT1"};
  static constexpr WidgetName<Fl_Button> kChooseEditor{"ID_BUTTON1"}, kClose{"ID_BUTTON2"};
  static constexpr WidgetName<Fl_Check_Button> kOutputDump{"ID_CHECKBOX1"},
      kDeleteAdaptive{"ID_CHECKBOX2"};

  Flx_Configuration(Fl_Window* parent, Application& application);

  bool Initialise() override;
  int HandleWidget(Fl_Widget* widget) override;
  void QueueChanged() override { ShowSettings(); }

  // The output of restart files has been switched.
  std::function<void()> OnSwitched;

 private:
  void ShowSettings();
  void ChooseLanguage();
  void ChooseEditor();

  Application& application_;
  SettingsAndPaths& settings_;
  ChoiceEntries languages_;
  int endCode_ = 0;  // positive: the dialog ends
};

#endif
