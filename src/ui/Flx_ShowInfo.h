// Shows what a finished or aborted job left behind.
#ifndef KR_UI_FLX_SHOWINFO_H
#define KR_UI_FLX_SHOWINFO_H

#include <memory>

#include "core/JobInformation.h"
#include "ui/Flx_Base_Dialog.h"

// The files are read on a thread of its own, since they may be big; the window shows how far it is
// and can be closed at any time.
class Flx_ShowInfo : public Flx_Base_Dialog {
 public:
  Flx_ShowInfo(Fl_Window* parent, int language, JobOutput output);
  ~Flx_ShowInfo() override;

  bool Initialise() override;
  int HandleWidget(Fl_Widget* widget) override;

 private:
  struct Reading;  // shared with the thread, which may outlive the dialog
  void StartReading();
  static void Look(void* self);
  bool ShowWhenRead();
  void ShowProgress();

  const JobOutput output_;
  std::shared_ptr<Reading> reading_;
};

#endif
