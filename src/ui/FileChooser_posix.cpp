#include "ui/FileChooser.h"

#include <FL/Fl.H>
#include <FL/fl_ask.H>
#include <FL/Fl_File_Chooser.H>
#include <FL/Fl_File_Input.H>
#include <FL/Fl_Native_File_Chooser.H>

#include <filesystem>
#include <optional>

#include "ui/ModalWindow.h"

namespace {

int KindOf(FileChoice choice) {
  switch (choice) {
    case FileChoice::kOpenSeveral:
      return Fl_File_Chooser::MULTI;
    case FileChoice::kSave:
      return Fl_File_Chooser::CREATE;
    case FileChoice::kFolder:
      return Fl_File_Chooser::DIRECTORY;
    default:
      return Fl_File_Chooser::SINGLE;
  }
}

// Lines of description, tab and pattern become "description(pattern)" between tabs.
std::string ChooserFilter(const std::string& filter) {
  std::string out;
  for (const char c : filter) {
    if (c == '\t') {
      out += '(';
    } else if (c == '\n') {
      out += ")\t";
    } else {
      out += c;
    }
  }
  if (!out.empty()) out.pop_back();
  return out;
}

Fl_File_Input* FileNameInput(Fl_Group& group) {
  for (int i = 0; i < group.children(); ++i) {
    if (auto* input = dynamic_cast<Fl_File_Input*>(group.child(i))) return input;
    Fl_Group* inner = group.child(i)->as_group();
    if (Fl_File_Input* found = inner ? FileNameInput(*inner) : nullptr) return found;
  }
  return nullptr;
}

// Typing an absolute path begins with a slash alone, which the chooser takes for no folder at all
// and drops. Lives as long as the chooser.
class RootInput {
 public:
  RootInput(Fl_File_Chooser& chooser, Fl_File_Input& input)
      : chooser_(chooser), next_(input.callback()), data_(input.user_data()) {
    input.callback(
        [](Fl_Widget* widget, void* self) {
          static_cast<RootInput*>(self)->Take(*static_cast<Fl_File_Input*>(widget));
        },
        this);
  }

 private:
  void Take(Fl_File_Input& input) {
    if (std::string(input.value()) != "/") return next_(&input, data_);
    chooser_.directory("/");
    input.position(1);
  }

  Fl_File_Chooser& chooser_;
  Fl_Callback* const next_;
  void* const data_;
};

// The chooser's own way of showing itself puts its list under the mouse.
void ShowOver(Fl_Window* parent, Fl_File_Chooser& chooser, Fl_File_Input* input) {
  Fl_Window& window = *chooser.newButton->window();
  window.xclass("KestrunChooser");
  window.set_modal();
  CentreOver(window, parent);
  window.show();
  chooser.rescan_keep_filename();
  if (input) input->take_focus();
}

bool MayReplace(const char* path) {
  std::error_code error;
  return !std::filesystem::exists(path, error) ||
         fl_choice("%s", fl_cancel, fl_ok, nullptr, Fl_Native_File_Chooser::file_exists_message);
}

}  // namespace

std::vector<std::string> ChooseFiles(FileChoice choice, const FileChooserTexts& texts,
                                     Fl_Window* parent) {
  const std::string filter = ChooserFilter(texts.filter);
  Fl_File_Chooser chooser(texts.folder.c_str(), filter.c_str(), KindOf(choice),
                          texts.title.c_str());
  texts.file.empty() ? chooser.rescan() : chooser.value((texts.folder + "/" + texts.file).c_str());
  Fl_File_Input* input = FileNameInput(*chooser.newButton->window());
  std::optional<RootInput> root;
  if (input) root.emplace(chooser, *input);
  ShowOver(parent, chooser, input);
  while (chooser.shown()) Fl::wait();
  std::vector<std::string> chosen;
  // Hidden together with its parent: the program ends, nothing was chosen.
  if (parent && !parent->shown()) return chosen;
  for (int i = 1; i <= chooser.count(); ++i) {
    if (const char* path = chooser.value(i); path && *path) chosen.emplace_back(path);
  }
  if (choice == FileChoice::kSave && !chosen.empty() && !MayReplace(chosen.front().c_str()))
    chosen.clear();
  return chosen;
}
