#include "ui/window/WindowLoop.h"

#include <FL/Fl.H>

#include "core/Application.h"
#include "ui/fltk/Icons.h"
#include "ui/fltk/Theme.h"
#include "ui/fltk/ToolkitTexts.h"
#include "ui/text/TextTable.h"
#include "ui/window/AutoRun.h"
#include "ui/window/EndRequests.h"
#include "ui/window/Flx_AppWnd.h"
#include "ui/window/ProgramOptions.h"
#include "ui/window/QueueNotes.h"

namespace {

struct PollData {
  Application& application;
  AutoRun& autoRun;
};

void Poll(void* data) {
  auto* poll = static_cast<PollData*>(data);
  if (!poll->application.Tick()) return;
  poll->autoRun.AfterTick();
  Fl::repeat_timeout(Application::kPollSeconds, Poll, data);
}

}  // namespace

void RunWindow(Application& application, QueueNotes& notes, const ProgramOptions& options,
               const Message& failure) {
  Fl::lock();  // other threads wake the event loop
  Theme::Apply(application.language);
  SetProgramIcon();
  TextTable texts;
  FillTexts(application.language, application.Title(), texts);
  SetToolkitTexts(texts);
  Flx_AppWnd window(application, notes, texts);
  AutoRun autoRun(application, window, options);
  OnEndRequest(
      [&window, &autoRun] {
        autoRun.Interrupted();
        window.Leave();
      },
      [&application, &window, &autoRun] {
        autoRun.Interrupted();
        window.StoreTyped();
        application.LeaveRunning();
      });
  PollData poll{application, autoRun};
  Fl::add_timeout(Application::kPollSeconds, Poll, &poll);
  window.show();
  if (!failure.Empty()) application.Manager().Observer().Logged(failure);
  OnDisplayLost([&application, &window] {
    window.KeepTexts();
    application.SettingsAndFiles().Log().Note(Message(MessageId::kDisplayGone));
    application.exitCode = ExitCode::kNoDisplay;
    application.LeaveRunning();
  });
  Fl::run();
  autoRun.Conclude();
  Fl::remove_timeout(Poll, &poll);
  OnEndRequest(nullptr, nullptr);
  OnDisplayLost(nullptr);
}
