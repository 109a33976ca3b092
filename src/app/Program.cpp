#include "app/Program.h"

#include <cstdio>

#include "core/Application.h"
#include "ui/window/ProgramOptions.h"
#include "ui/window/QueueNotes.h"
#include "ui/window/WindowLoop.h"
#include "util/files/FileDirWrapper.h"

namespace {

// What went wrong before there was a window to tell it: jobs of the command line do not arrive, or
// nothing can be kept, not even the log. Empty when all is well.
std::string StartFailure(Application& application) {
  const SettingsAndPaths& settings = application.SettingsAndFiles();
  if (application.exitCode != 0) return "Write tmp file [" + settings.handOverFile + "] failed";
  if (FileDirWrapper::IsDirWritable(settings.workFolder)) return {};
  return "Directory [" + settings.workFolder + "] is not writable";
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
  if (first) RunWindow(application, notes, options, failure);
  return application.Shutdown();
}
