// Shows what the solvers of jobs will be started with.
#ifndef KR_UI_DIALOGS_FLX_SHOWCOMMAND_H
#define KR_UI_DIALOGS_FLX_SHOWCOMMAND_H

#include <FL/Fl_Button.H>
#include <FL/Fl_Text_Buffer.H>
#include <FL/Fl_Text_Display.H>

#include <string>
#include <vector>

#include "core/JobCommand.h"
#include "ui/dialogs/BackgroundWork.h"
#include "ui/dialogs/Flx_Base_Dialog.h"

// The text can be selected; a button copies all of it. Made on a thread of its own, since it is
// looked whether the files are there.
class Flx_ShowCommand : public Flx_Base_Dialog {
 public:
  static constexpr WidgetName<Fl_Text_Display> kText{"ID_TEXT1"};
  static constexpr WidgetName<Fl_Button> kCopy{"ID_BUTTON1"}, kClose{"ID_BUTTON2"};

  Flx_ShowCommand(Fl_Window* parent, int language, std::vector<CommandRequest> requests);
  ~Flx_ShowCommand() override;

  bool Initialise() override;
  int HandleWidget(Fl_Widget* widget) override;

 private:
  using Commands = std::vector<JobCommand>;
  static void Look(void* self);
  bool ShowWhenRead(std::chrono::milliseconds patience = {});
  std::string TextOf(const JobCommand& command) const;
  std::string Line(const char* key, const std::string& text) const;
  std::string Filled(const char* key, const std::vector<std::string>& values) const;

  const std::vector<CommandRequest> requests_;
  BackgroundWork<Commands> work_;
  Fl_Text_Buffer buffer_;
};

#endif
