// How LS-DYNA jobs run under MPI, on which hosts, and how a running job is asked to stop.
#ifndef KR_UI_DIALOGS_FLX_MPPSETTINGS_H
#define KR_UI_DIALOGS_FLX_MPPSETTINGS_H

#include <FL/Fl_Check_Button.H>
#include <FL/Fl_Choice.H>
#include <FL/Fl_Input.H>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/Application.h"
#include "ui/dialogs/DialogTools.h"
#include "ui/dialogs/Flx_Base_Dialog.h"
#include "ui/dialogs/HostEditor.h"

// A field is stored when it is left, a choice at once. The group that is chosen becomes the current
// one, so that what is shown and what "Stop Running" stops belong together.
class Flx_MppSettings : public Flx_Base_Dialog {
 public:
  Flx_MppSettings(Fl_Window* parent, Application& application);

  bool Initialise() override;
  int HandleWidget(Fl_Widget* widget) override;
  void QueueChanged() override;

  // Another group has become the current one.
  std::function<void()> OnGroup;
  // Something to tell that needs no answer; UTF-8.
  std::function<void(const std::string& text)> OnNote;

 private:
  struct PathOrText {
    const char* id;
    std::string Settings::*field;
    bool path;
  };
  static const PathOrText kTexts[];

  void SetAllTexts();
  bool FindWidgets();
  void ShowSettings();
  void ShowGroups();
  void ShowCurrentGroup();
  void ChooseGroup();
  void ChooseMpi();
  void StoreMemory();
  void StoreText(const PathOrText& text);
  void ChooseProgram(const PathOrText& text, const char* titleKey);
  void EditHostFile();
  void ReloadHostFile();
  void StopRunning();

  Application& application_;
  SettingsAndPaths& settings_;
  Fl_Check_Button* useMpp_ = nullptr;
  Fl_Choice* groups_ = nullptr;
  Fl_Choice* mpi_ = nullptr;
  Fl_Input* memory_ = nullptr;
  ChoiceEntries groupEntries_, mpiEntries_;
  std::unique_ptr<HostEditor> hosts_;
};

#endif
