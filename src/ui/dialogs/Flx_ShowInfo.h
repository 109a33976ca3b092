// Shows what finished or aborted jobs left behind.
#ifndef KR_UI_DIALOGS_FLX_SHOWINFO_H
#define KR_UI_DIALOGS_FLX_SHOWINFO_H

#include <FL/Fl_Box.H>
#include <FL/Fl_Browser.H>
#include <FL/Fl_Button.H>
#include <FL/Fl_Progress.H>

#include <string>
#include <vector>

#include "core/JobInformation.h"
#include "ui/dialogs/BackgroundWork.h"
#include "ui/dialogs/Flx_Base_Dialog.h"

// Of several jobs each has a column. The files are read on a thread of its own, since they may be
// big; a bar shows how far it is and the button cancels it.
class Flx_ShowInfo : public Flx_Base_Dialog {
 public:
  static constexpr std::size_t kMostColumns = 8;

  // The widgets by their ids in the layout; of the first job.
  static constexpr WidgetName<Fl_Box> kLamp{"ID_LABEL1"}, kResult{"ID_LABEL2"};
  static constexpr WidgetName<Fl_Browser> kLines{"ID_LIST1"};
  static constexpr WidgetName<Fl_Button> kClose{"ID_BUTTON1"};

  Flx_ShowInfo(Fl_Window* parent, int language, JobOutput output);
  // At least one, at most kMostColumns.
  Flx_ShowInfo(Fl_Window* parent, int language, std::vector<JobOutput> outputs);
  ~Flx_ShowInfo() override;

  bool Initialise() override;
  int HandleWidget(Fl_Widget* widget) override;

 private:
  struct Column {
    Fl_Box* lamp;
    Fl_Box* result;
    Fl_Browser* lines;
  };
  using Lines = std::vector<std::string>;
  void MakeColumns();
  void ShowResult(const Column& column, const JobOutput& output);
  void MakeBar(const Fl_Button& close);
  void StartReading();
  static void Look(void* self);
  bool ShowWhenRead(std::chrono::milliseconds patience = {});
  void ShowProgress();

  const std::vector<JobOutput> outputs_;
  BackgroundWork<std::vector<Lines>> reading_;  // of each job
  std::vector<Column> columns_;                 // the window's
  Fl_Progress* bar_ = nullptr;                  // the window's
};

#endif
