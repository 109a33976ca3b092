#include <FL/Fl_Native_File_Chooser.H>

#include "ui/fltk/FileChooser.h"
#include "ui/fltk/ModalWindow.h"

namespace {

int KindOf(FileChoice choice) {
  switch (choice) {
    case FileChoice::kOpenSeveral:
      return Fl_Native_File_Chooser::BROWSE_MULTI_FILE;
    case FileChoice::kSave:
      return Fl_Native_File_Chooser::BROWSE_SAVE_FILE;
    case FileChoice::kFolder:
      return Fl_Native_File_Chooser::BROWSE_DIRECTORY;
    default:
      return Fl_Native_File_Chooser::BROWSE_FILE;
  }
}

}  // namespace

// The system places its dialog over the window that has the focus.
std::vector<std::string> ChooseFiles(FileChoice choice, const FileChooserTexts& texts, Fl_Window*) {
  if (!ModalWindowsAllowed()) return {};
  Fl_Native_File_Chooser chooser(KindOf(choice));
  if (choice == FileChoice::kSave) chooser.options(Fl_Native_File_Chooser::SAVEAS_CONFIRM);
  chooser.title(texts.title.c_str());
  chooser.filter(texts.filter.c_str());
  if (!texts.folder.empty()) chooser.directory(texts.folder.c_str());
  if (!texts.file.empty()) chooser.preset_file(texts.file.c_str());
  std::vector<std::string> chosen;
  if (chooser.show() != 0) return chosen;
  for (int i = 0; i < chooser.count(); ++i) chosen.emplace_back(chooser.filename(i));
  return chosen;
}
