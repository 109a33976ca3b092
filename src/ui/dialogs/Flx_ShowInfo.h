// Shows what a finished or aborted job left behind.
#ifndef KR_UI_DIALOGS_FLX_SHOWINFO_H
#define KR_UI_DIALOGS_FLX_SHOWINFO_H

#include <FL/Fl_Button.H>
#include <FL/Fl_Progress.H>

#include <memory>

#include "core/JobInformation.h"
#include "ui/dialogs/Flx_Base_Dialog.h"

class Fl_Box;
class Fl_Browser;

// The files are read on a thread of its own, since they may be big; a bar shows how far it is and
// the button cancels it.
class Flx_ShowInfo : public Flx_Base_Dialog {
 public:
  // The widgets by their ids in the layout.
  static constexpr WidgetName<Fl_Box> kLamp{"ID_LABEL1"}, kResult{"ID_LABEL2"};
  static constexpr WidgetName<Fl_Browser> kLines{"ID_LIST1"};
  static constexpr WidgetName<Fl_Button> kClose{"ID_BUTTON1"};

  Flx_ShowInfo(Fl_Window* parent, int language, JobOutput output);
  ~Flx_ShowInfo() override;

  bool Initialise() override;
  int HandleWidget(Fl_Widget* widget) override;

 private:
  struct Reading;  // shared with the thread, which may outlive the dialog
  void MakeBar(const Fl_Button& close);
  void StartReading();
  static void Look(void* self);
  bool ShowWhenRead();
  void ShowProgress();

  const JobOutput output_;
  std::shared_ptr<Reading> reading_;
  Fl_Progress* bar_ = nullptr;  // the window's
};

#endif
