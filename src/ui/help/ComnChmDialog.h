// The viewer of compiled-help files.
#ifndef KR_UI_HELP_COMNCHMDIALOG_H
#define KR_UI_HELP_COMNCHMDIALOG_H

#include <FL/Fl_Window.H>

#include <string>

#include "ui/text/TextTable.h"

// On Windows the system's viewer, else a window of our own. It stays open beside the program's
// windows and outlives this object. Interface thread.
class ComnChmDialog {
 public:
  // `texts` outlives the viewer; a table without texts makes it speak English.
  explicit ComnChmDialog(const TextTable& texts) : texts_(texts) {}

  void SetParentWindow(Fl_Window* parent) { parent_ = parent; }
  void SetChmFile(const std::string& path) { path_ = path; }

  // Opens the file at the page ("1.htm"), or turns to the page when the viewer shows the file
  // already. On failure tells the user why and returns false.
  bool Show(const std::string& page);

  // Closes the viewer: before the program ends.
  static void CloseViewer();

 private:
  bool Fail(const char* key);
  bool Display(const std::string& page);  // the system's part

  const TextTable& texts_;
  Fl_Window* parent_ = nullptr;
  std::string path_;
};

#endif
