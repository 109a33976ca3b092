// The monitor: a window that shows one run, while it goes on and afterwards.
#ifndef KR_UI_MONITOR_MONITORWINDOW_H
#define KR_UI_MONITOR_MONITORWINDOW_H

#include <FL/Fl_Box.H>
#include <FL/Fl_Button.H>
#include <FL/Fl_Choice.H>
#include <FL/Fl_Double_Window.H>
#include <FL/Fl_Progress.H>
#include <FL/Fl_Text_Buffer.H>
#include <FL/Fl_Text_Display.H>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/Application.h"
#include "ui/fltk/ChoiceEntries.h"
#include "ui/monitor/MonitorCharts.h"
#include "ui/monitor/MonitoredRun.h"
#include "ui/monitor/RunHeading.h"
#include "ui/monitor/SwitchPanel.h"
#include "ui/text/TextTable.h"

// Stays beside the main window, one for each run. Reads on a thread of its own. Deletes itself when
// it is closed. Interface thread.
class MonitorWindow : public Fl_Double_Window {
 public:
  // Opens it over the other window, or brings the one that shows this run to the front. The
  // application and the texts outlive it.
  static void Show(Application& application, const TextTable& texts, MonitoredRun run,
                   Fl_Window* over);

  // Before the program ends.
  static void CloseAll();

  ~MonitorWindow() override;
  int handle(int event) override;
  void resize(int x, int y, int w, int h) override;

 private:
  class Tail;
  struct Saving;

  MonitorWindow(Application& application, const TextTable& texts, MonitoredRun run);
  void MakeControls();
  void MakeFoot();
  Fl_Choice* MakeChoice(int& x, const char* label, int width);
  Fl_Button* MakeButton(int& x, int width, const char* label, const char* tip,
                        void (*press)(MonitorWindow&));
  void LayOut();
  static void Tick(void* self);
  void Look();
  void ShowTitle();
  void ShowStages();
  void ShowCases();
  void ShowTail();
  void ShowReading();
  void ShowSaved();
  std::string WhyEmpty() const;
  void SavePicture();
  void SaveTable();
  std::string AskWhere(const char* caption, const std::string& ending);
  void Save(const std::string& path, std::function<std::string()> bytes);
  void Note(const std::string& text, Fl_Color color);
  bool TakeKey();

  Application& application_;
  const TextTable& texts_;
  MonitoredRun run_;
  RunReader reader_;
  MonitoredRun::State state_;
  std::shared_ptr<const RunPicture> picture_;
  const std::chrono::steady_clock::time_point opened_;
  std::vector<std::string> stages_;  // that the choice has
  std::vector<int> cases_;           // that the choice has
  std::shared_ptr<Saving> saving_;

  ChoiceEntries stageEntries_, caseEntries_, overEntries_, chartEntries_;
  Fl_Group* controls_ = nullptr;
  Fl_Choice* stage_ = nullptr;
  Fl_Choice* case_ = nullptr;
  Fl_Choice* over_ = nullptr;
  Fl_Choice* chart_ = nullptr;
  Fl_Progress* bar_ = nullptr;
  Fl_Button* cancel_ = nullptr;
  Fl_Box* note_ = nullptr;
  Fl_Group* pane_ = nullptr;  // what a picture shows
  RunHeading* heading_ = nullptr;
  MonitorCharts* charts_ = nullptr;
  Fl_Box* tailTitle_ = nullptr;
  Tail* tail_ = nullptr;
  Fl_Text_Buffer lines_;
  SwitchPanel* switches_ = nullptr;
};

#endif
