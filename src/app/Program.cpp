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
Message StartFailure(Application& application) {
  const SettingsAndPaths& settings = application.SettingsAndFiles();
  if (application.exitCode != 0)
    return Message(MessageId::kHandOverNotWritten, settings.handOverFile);
  if (FileDirWrapper::IsDirWritable(settings.workFolder)) return {};
  return Message(MessageId::kFolderNotWritable, settings.workFolder);
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
  const Message failure = StartFailure(application);
  if (!failure.Empty()) std::fprintf(stderr, "%s\n", failure.English().c_str());
  if (first) RunWindow(application, notes, options, failure);
  return application.Shutdown();
}
