// Asks for the files of an LS-DYNA restart job.
#ifndef KR_UI_DIALOGS_FLX_RESTARTJOB_H
#define KR_UI_DIALOGS_FLX_RESTARTJOB_H

#include <string>

#include "core/Application.h"
#include "ui/dialogs/Flx_Base_Dialog.h"

class Fl_Button;
class Fl_Check_Button;
class Fl_Input;

// The input file belongs to the job only while its box is ticked. Files may come into being later:
// paths of files that are not there now are red, but taken.
class Flx_RestartJob : public Flx_Base_Dialog {
 public:
  // The widgets by their ids in the layout.
  static constexpr WidgetName<Fl_Input> kRestart{"ID_INPUT1"}, kInput{"ID_INPUT2"};
  static constexpr WidgetName<Fl_Button> kChooseRestart{"ID_BUTTON1"}, kChooseInput{"ID_BUTTON2"},
      kOk{"ID_BUTTON3"}, kCancel{"ID_BUTTON4"};
  static constexpr WidgetName<Fl_Check_Button> kUseInput{"ID_CHECKBOX1"};

  Flx_RestartJob(Fl_Window* parent, Application& application);

  bool Initialise() override;
  int HandleWidget(Fl_Widget* widget) override;

  // Both empty unless OK was pressed; the input file may be empty then. In the system's code page.
  const std::string& RestartFile() const { return restartFile_; }
  const std::string& InputFile() const { return inputFile_; }

 private:
  void Choose(WidgetName<Fl_Input> input, const char* titleKey, const std::string& filter);
  void ShowInputUse();
  void MarkMissing(Fl_Input& input);
  bool TakeFiles();
  void AskFor(WidgetName<Fl_Input> input, const char* key);

  Application& application_;
  std::string restartFile_;
  std::string inputFile_;
  int endCode_ = 0;
};

#endif
