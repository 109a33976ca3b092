// Asking the user for files, and paths that the user gives.
#ifndef KR_UI_DIALOGS_FILEQUESTIONS_H
#define KR_UI_DIALOGS_FILEQUESTIONS_H

#include <FL/Fl_Input.H>
#include <FL/Fl_Window.H>

#include <string>
#include <vector>

#include "core/SettingsAndPaths.h"

// Caption and filter (see ComnFileDialog) are UTF-8; paths are in the system's code page.
struct FileQuestion {
  Fl_Window* parent;
  std::string caption;
  std::string filter;
  std::string folder;  // where to begin
};

// Existing files; empty when the user has chosen none.
std::string AskForFile(const FileQuestion& question);
std::vector<std::string> AskForFiles(const FileQuestion& question);

// A program, looked for where the last one was chosen, else where the one of now is.
std::string AskForProgram(FileQuestion question, SettingsAndPaths& settings,
                          const std::string& programNow);

// Begins there the next time.
void KeepFolderOf(const std::string& path, SettingsAndPaths& settings,
                  std::string Settings::*folder);

// A path as it was typed or pasted, without the double quotes that often come with it; in the
// system's code page.
std::string TypedPath(const std::string& uiText);
std::string PathIn(const Fl_Input& input);

#endif
