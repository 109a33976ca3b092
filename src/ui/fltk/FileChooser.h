// The window in which files and folders are chosen: the system's own where it has one.
#ifndef KR_UI_FLTK_FILECHOOSER_H
#define KR_UI_FLTK_FILECHOOSER_H

#include <FL/Fl_Window.H>

#include <string>
#include <vector>

enum class FileChoice { kOpen, kOpenSeveral, kSave, kFolder };

// UTF-8 throughout; the filter in FLTK's form. Empty: the user's choice or nothing special.
struct FileChooserTexts {
  std::string title;
  std::string filter;
  std::string folder;
  std::string file;
};

// Opens over the parent and returns what was chosen; empty when nothing was. Interface thread;
// events of the program go on meanwhile.
std::vector<std::string> ChooseFiles(FileChoice choice, const FileChooserTexts& texts,
                                     Fl_Window* parent);

#endif
