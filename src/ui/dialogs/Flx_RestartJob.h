// Asks for the files of an LS-DYNA restart job.
#ifndef KR_UI_DIALOGS_FLX_RESTARTJOB_H
#define KR_UI_DIALOGS_FLX_RESTARTJOB_H

#include <string>

#include "core/Application.h"
#include "ui/dialogs/Flx_Base_Dialog.h"

// The input file belongs to the job only while its box is ticked. Files may come into being later:
// paths of files that are not there now are red, but taken.
class Flx_RestartJob : public Flx_Base_Dialog {
 public:
  Flx_RestartJob(Fl_Window* parent, Application& application);

  bool Initialise() override;
  int HandleWidget(Fl_Widget* widget) override;

  // Both empty unless OK was pressed; the input file may be empty then. In the system's code page.
  const std::string& RestartFile() const { return restartFile_; }
  const std::string& InputFile() const { return inputFile_; }

 private:
  void Choose(const char* inputId, const char* titleKey, const std::string& filter);
  void ShowInputUse();
  void MarkMissing(const char* inputId);
  bool TakeFiles();
  void AskFor(const char* inputId, const char* key);

  Application& application_;
  std::string restartFile_;
  std::string inputFile_;
  int endCode_ = 0;
};

#endif
