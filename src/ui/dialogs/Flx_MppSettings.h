// How LS-DYNA jobs run under MPI, on which hosts, and how a running job is asked to stop.
#ifndef KR_UI_DIALOGS_FLX_MPPSETTINGS_H
#define KR_UI_DIALOGS_FLX_MPPSETTINGS_H

#include <FL/Fl_Check_Button.H>
#include <FL/Fl_Choice.H>
#include <FL/Fl_Input.H>

#include <functional>
#include <future>
#include <memory>
#include <string>
#include <vector>

#include "core/Application.h"
#include "core/SenseSwitch.h"
#include "ui/dialogs/Flx_Base_Dialog.h"
#include "ui/dialogs/HostEditor.h"
#include "ui/fltk/ChoiceEntries.h"

// A field is stored when it is left, a choice at once. The group that is chosen becomes the current
// one, so that what is shown and what "Stop Running" stops belong together.
class Flx_MppSettings : public Flx_Base_Dialog {
 public:
  // The widgets by their ids in the layout.
  static constexpr WidgetName<Fl_Check_Button> kUseMpp{"ID_CHECKBOX1"};
  static constexpr WidgetName<Fl_Choice> kMpi{"ID_CHOICE2"}, kGroup{"ID_CHOICE1"};
  static constexpr WidgetName<Fl_Box> kMemoryLabel{"ID_LABEL2"};
  static constexpr WidgetName<Fl_Input> kMemory{"ID_INPUT1"}, kMpiParam{"ID_INPUT2"},
      kMppParam{"ID_INPUT3"}, kSingleSolver{"ID_INPUT4"}, kDoubleSolver{"ID_INPUT5"};
  static constexpr WidgetName<Fl_Button> kChooseSingle{"ID_BUTTON5"}, kChooseDouble{"ID_BUTTON6"},
      kEditHosts{"ID_BUTTON2"}, kReloadHosts{"ID_BUTTON4"}, kStop{"ID_BUTTON1"},
      kClose{"ID_BUTTON3"};
  static constexpr WidgetName<Fl_Scroll> kHosts{"ID_SCROLL1"};

  Flx_MppSettings(Fl_Window* parent, Application& application);
  ~Flx_MppSettings() override;

  bool Initialise() override;
  int HandleWidget(Fl_Widget* widget) override;
  void QueueChanged() override;
  void HostsChanged() override;

  // Another group has become the current one.
  std::function<void()> OnGroup;
  // Something to tell that needs no answer; UTF-8.
  std::function<void(const std::string& text)> OnNote;

 private:
  // A field and the setting that it shows.
  struct TextField {
    WidgetName<Fl_Input> input;
    std::string Settings::*setting;
    bool path;
  };
  static const TextField kTextFields[];

  void ShowSettings();
  void ShowGroups();
  void ShowCurrentGroup();
  void ChooseGroup();
  void ChooseMpi();
  void StoreMemory();
  void StoreText(const TextField& field);
  void ChooseProgram(WidgetName<Fl_Input> input, std::string Settings::*setting,
                     const char* titleKey);
  void EditHostFile();
  void ReloadHostFile();
  void StopRunning();
  static void LookAtAnswer(void* dialog);

  Application& application_;
  SettingsAndPaths& settings_;
  ChoiceEntries groupEntries_, mpiEntries_;
  std::unique_ptr<HostEditor> hosts_;
  StopRequest request_;
  std::future<SenseSwitch> answer_;  // valid while it is waited for
};

#endif
