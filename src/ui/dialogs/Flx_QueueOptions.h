// What the queue can do beyond the other dialogs: which jobs it keeps, when it pauses, what it
// marks and writes, which programs it uses.
#ifndef KR_UI_DIALOGS_FLX_QUEUEOPTIONS_H
#define KR_UI_DIALOGS_FLX_QUEUEOPTIONS_H

#include <FL/Fl_Box.H>
#include <FL/Fl_Button.H>
#include <FL/Fl_Check_Button.H>
#include <FL/Fl_Choice.H>
#include <FL/Fl_Input.H>

#include <array>
#include <string>
#include <utility>
#include <vector>

#include "core/Application.h"
#include "ui/dialogs/Flx_Base_Dialog.h"
#include "ui/fltk/ChoiceEntries.h"

// A choice is stored at once, a field when it is left. What cannot be stored stays in its field, in
// red; a line says why, and the dialog does not close over it.
class Flx_QueueOptions : public Flx_Base_Dialog {
 public:
  // The widgets by their ids in the layout.
  static constexpr WidgetName<Fl_Choice> kJobs{"ID_CHOICE1"}, kApart{"ID_CHOICE2"},
      kConsole{"ID_CHOICE3"};
  static constexpr WidgetName<Fl_Input> kFailures{"ID_INPUT1"}, kFree{"ID_INPUT2"},
      kReport{"ID_INPUT3"}, kPost{"ID_INPUT4"}, kViewer{"ID_INPUT5"}, kTerminal{"ID_INPUT6"},
      kSilence{"ID_INPUT7"}, kStep{"ID_INPUT8"}, kEnergy{"ID_INPUT9"}, kHourglass{"ID_INPUT10"},
      kMass{"ID_INPUT11"}, kDisk{"ID_INPUT12"};
  static constexpr WidgetName<Fl_Button> kChooseReport{"ID_BUTTON1"}, kChoosePost{"ID_BUTTON2"},
      kChooseViewer{"ID_BUTTON3"}, kChooseTerminal{"ID_BUTTON4"}, kClose{"ID_BUTTON5"};
  static constexpr WidgetName<Fl_Check_Button> kFinite{"ID_CHECKBOX1"};
  static constexpr WidgetName<Fl_Box> kHint{"ID_LABEL20"};

  Flx_QueueOptions(Fl_Window* parent, Application& application);

  bool Initialise() override;
  int HandleWidget(Fl_Widget* widget) override;
  void QueueChanged() override { ShowSettings(); }

 private:
  void ShowSettings();
  void Say(const std::string& text, bool isWrong);
  void Judge(Fl_Input& input, const std::string& why);
  std::string FillNumber(const std::string& least, const std::string& most) const;
  std::string RefusalOf(const std::string& path, bool isProgram) const;
  void TakePath(Fl_Input& input, std::string Settings::*setting, bool isProgram);
  void ChoosePath(Fl_Input& input, std::string Settings::*setting, bool isProgram);

  SettingsAndPaths& settings_;
  std::array<ChoiceEntries, 3> choices_;
  // What was not stored, and why; the last one last.
  std::vector<std::pair<Fl_Input*, std::string>> wrong_;
};

#endif
