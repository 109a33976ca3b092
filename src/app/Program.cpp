#include "app/Program.h"

#include <FL/Fl.H>

#include <cstdio>

#include "core/Application.h"
#include "ui/AutoRun.h"
#include "ui/Flx_AppWnd.h"
#include "ui/Icons.h"
#include "ui/Language.h"
#include "ui/ProgramOptions.h"
#include "ui/QueueNotes.h"
#include "ui/Termination.h"
#include "ui/Theme.h"
#include "ui/ToolkitTexts.h"
#include "util/FileDirWrapper.h"

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

// What went wrong before there was a window to tell it: jobs of the command line do not arrive, or
// nothing can be kept, not even the log. Empty when all is well.
std::string StartFailure(Application& application) {
  const SettingsAndPaths& settings = application.SettingsAndFiles();
  if (application.exitCode != 0) return "Write tmp file [" + settings.handOverFile + "] failed";
  if (FileDirWrapper::IsDirWritable(settings.workFolder)) return {};
  return "Directory [" + settings.workFolder + "] is not writable";
}

void ShowWindow(Application& application, QueueNotes& notes, const ProgramOptions& options,
                const std::string& failure) {
  Fl::lock();  // other threads wake the event loop
  Theme::Apply(application.language);
  SetProgramIcon();
  TextTable texts;
  FillTexts(application.language, application.Title(), texts);
  SetToolkitTexts(texts);
  Flx_AppWnd window(application, notes, texts);
  AutoRun autoRun(application, window, options);
  OnTermination([&window] { window.Leave(); });
  PollData poll{application, autoRun};
  Fl::add_timeout(Application::kPollSeconds, Poll, &poll);
  window.show();
  if (!failure.empty()) application.Manager().Observer().Logged(failure);
  OnDisplayLost([&application] {
    application.SettingsAndFiles().Log().NoteLine("The display is gone; Kestrun ends");
    application.Shutdown();
  });
  Fl::run();
  Fl::remove_timeout(Poll, &poll);
  OnTermination(nullptr);
  OnDisplayLost(nullptr);
}

}  // namespace

int RunProgram(std::vector<std::string> arguments) {
  const ProgramOptions options = TakeOptions(arguments);
  QueueNotes notes;  // outlives the groups that tell it things
  Application application;
  if (options.help || options.version) {
    const std::string text =
        options.help ? UsageText(application.Title()) : application.Title() + "\n";
    std::fputs(text.c_str(), stdout);
    return 0;
  }
  std::vector<const char*> argv;
  for (const std::string& argument : arguments) argv.push_back(argument.c_str());
  const bool first = application.Initialise(static_cast<int>(argv.size()), argv.data());
  const std::string failure = StartFailure(application);
  if (!failure.empty()) std::fprintf(stderr, "%s\n", failure.c_str());
  if (first) ShowWindow(application, notes, options, failure);
  return application.Shutdown();
}
