#include "ui/window/ProgramOptions.h"

#include "util/files/FileDirWrapper.h"

ProgramOptions TakeOptions(std::vector<std::string>& arguments) {
  constexpr char kReport[] = "--report=";
  constexpr std::size_t kReportLength = sizeof kReport - 1;
  ProgramOptions options;
  std::vector<std::string> rest;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string& argument = arguments[i];
    if (i == 0) {
      rest.push_back(argument);
    } else if (argument == "--submit") {
      options.submit = true;
    } else if (argument == "--quit-when-done") {
      options.quitWhenDone = true;
    } else if (argument == "--restore") {
      options.restore = true;
    } else if (argument == "--help") {
      options.help = true;
    } else if (argument == "--version") {
      options.version = true;
    } else if (argument.compare(0, kReportLength, kReport) == 0) {
      options.report = FileDirWrapper::AbsolutePath(argument.substr(kReportLength));
    } else {
      rest.push_back(argument);
    }
  }
  arguments.swap(rest);
  return options;
}

std::string UsageText(const std::string& title) {
  return title +
         "\n"
         "Usage: kestrun [options] [#solver=dyna|inc] [job files]\n"
         "Job files are added to the current group. When the program runs already, it takes them.\n"
         "\n"
         "  --submit           run the current group once the job files are in it\n"
         "  --restore          bring back the jobs that the last session left; with --submit, run "
         "all\n"
         "                     groups that have some\n"
         "  --report=FILE      with --submit: when the jobs have ended, write one line for each:\n"
         "                     file, status, solver, message file or reason, start, end, seconds\n"
         "                     and how it failed, between tabs; FILE.html: a page with their\n"
         "                     curves, FILE.csv: a table\n"
         "  --quit-when-done   with --submit: end the program when the jobs have ended\n"
         "  --help             print this text\n"
         "  --version          print the version\n"
         "\n"
         "Exit code: 0 all is well; 1 no window can be shown; 4 not every job has finished, or "
         "the\n"
         "report cannot be written; 8 --submit or --restore, but the program runs already, or "
         "--report\n"
         "or --quit-when-done without --submit; 9 not every job file could be handed over.\n";
}
