// Choosers for files and folders, over the system's own.
#ifndef KR_UI_DIALOGS_COMNFILEDIALOG_H
#define KR_UI_DIALOGS_COMNFILEDIALOG_H

#include <FL/Fl_Window.H>

#include <string>
#include <vector>

// Captions and filters are UTF-8, paths are byte strings in the system's code page. Interface
// thread; events of the program go on while the chooser is open.
class ComnFileDialog {
 public:
  void SetParentWindow(Fl_Window* parent) { parent_ = parent; }
  void SetOpen(bool open) { open_ = open; }  // false: choose a file to write
  void SetMultiple(bool multiple) { multiple_ = multiple; }
  void SetCaption(const std::string& caption) { caption_ = caption; }
  // "Description|pattern;pattern|" pairs. Patterns match without regard to case.
  void SetFilter(const std::string& filter) { filter_ = filter; }
  // Put behind a name without an ending that is to be written; without the dot.
  void SetDefExt(const std::string& extension) { extension_ = extension; }
  void SetDefFile(const std::string& file) { file_ = file; }
  void SetInitDir(const std::string& folder) { folder_ = folder; }

  // True when something was chosen.
  bool DoModal();

  std::string GetPathName() const { return paths_.empty() ? std::string() : paths_.front(); }
  const std::vector<std::string>& GetPathNames() const { return paths_; }

  // Filters are the same in both languages.
  static constexpr char kAllFiles[] = "All Files (*.*)|*.*|";

  // A filter for programs: on systems whose programs have no ending, any file first.
  static std::string ProgramFilter(const std::string& filter);

  // FLTK's form of a filter: lines of description, tab and pattern.
  static std::string ToolkitFilter(const std::string& filter);

 private:
  Fl_Window* parent_ = nullptr;
  bool open_ = true;
  bool multiple_ = false;
  std::string caption_, filter_, extension_, file_, folder_;
  std::vector<std::string> paths_;
};

class ComnFolder {
 public:
  void SetParentWindow(Fl_Window* parent) { parent_ = parent; }
  void SetTitle(const std::string& title) { title_ = title; }
  void SetInitDir(const std::string& folder) { folder_ = folder; }
  bool DoModal();
  const std::string& GetPath() const { return path_; }

 private:
  Fl_Window* parent_ = nullptr;
  std::string title_, folder_, path_;
};

#endif
