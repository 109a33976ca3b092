#include "ui/dialogs/FileQuestions.h"

#include "ui/dialogs/ComnFileDialog.h"
#include "ui/text/Encoding.h"
#include "util/files/FileDirWrapper.h"

namespace {

std::vector<std::string> Ask(const FileQuestion& question, bool several) {
  ComnFileDialog dialog;
  dialog.SetParentWindow(question.parent);
  dialog.SetOpen(true);
  dialog.SetMultiple(several);
  dialog.SetCaption(question.caption);
  dialog.SetFilter(question.filter);
  dialog.SetInitDir(question.folder);
  dialog.DoModal();
  return dialog.GetPathNames();
}

}  // namespace

std::string AskForFile(const FileQuestion& question) {
  const std::vector<std::string> paths = Ask(question, false);
  return paths.empty() ? std::string() : paths.front();
}

std::vector<std::string> AskForFiles(const FileQuestion& question) {
  return Ask(question, true);
}

std::string AskForProgram(FileQuestion question, SettingsAndPaths& settings,
                          const std::string& programNow) {
  question.folder = settings.Get().last_solver_path;
  if (question.folder.empty()) FileDirWrapper::DirOf(programNow, question.folder);
  const std::string path = AskForFile(question);
  KeepFolderOf(path, settings, &Settings::last_solver_path);
  return path;
}

void KeepFolderOf(const std::string& path, SettingsAndPaths& settings,
                  std::string Settings::*folder) {
  std::string found;
  if (FileDirWrapper::DirOf(path, found)) settings.Set(folder, found);
}

std::string PathIn(const Fl_Input& input) {
  return TypedPath(input.value());
}

std::string TypedPath(const std::string& uiText) {
  const std::string text = FromUi(uiText);
  const bool quoted = text.size() >= 2 && text.front() == '"' && text.back() == '"';
  return quoted ? text.substr(1, text.size() - 2) : text;
}
