#include "app/Program.h"

#include <cstdio>

#include "core/Application.h"
#include "ui/window/EndRequests.h"
#include "ui/window/ProgramOptions.h"
#include "ui/window/QueueNotes.h"
#include "ui/window/WindowLoop.h"
#include "util/files/FileDirWrapper.h"

namespace {

// What went wrong before there was a window to tell it: jobs of the command line do not arrive, or
// nothing can be kept, not even the log. Empty when all is well.
std::vector<Message> StartFailures(Application& application) {
  std::vector<Message> failures = application.Failures();
  const std::string& folder = application.SettingsAndFiles().workFolder;
  if (failures.empty() && !FileDirWrapper::IsDirWritable(folder)) {
    failures.push_back(Message(MessageId::kFolderNotWritable, folder));
  }
  return failures;
}

void Print(const std::vector<Message>& failures) {
  for (const Message& failure : failures) std::fprintf(stderr, "%s\n", failure.English().c_str());
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
  OnEndRequest(nullptr, nullptr);  // from here on jobs may wait in a file
  std::vector<const char*> argv;
  for (const std::string& argument : arguments) argv.push_back(argument.c_str());
  const StartRequest request = {
      .hasWindow = true,
      .ownRun = options.IsForOwnRun(),
      .restore = options.restore,
      .endRequested = EndRequestWaits,
      .refusal = options.LackSubmit() ? Message(MessageId::kOptionsNeedSubmit) : Message()};
  const bool first = application.Initialise(static_cast<int>(argv.size()), argv.data(), request);
  const std::vector<Message> failures = StartFailures(application);
  Print(failures);
  // A script waits for the end.
  const bool nothingToRun =
      options.quitWhenDone && application.exitCode != 0 && !application.JobsWait();
  if (first && !nothingToRun) {
    RunWindow(application, notes, options, failures.empty() ? Message() : failures.back());
  }
  const bool waited = application.JobsWait();
  const int code = application.Shutdown();
  if (waited) Print(application.Failures());
  return code;
}
