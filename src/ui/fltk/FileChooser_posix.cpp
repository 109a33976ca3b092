#include "ui/fltk/FileChooser.h"

#include <FL/Fl.H>
#include <FL/fl_ask.H>
#include <FL/Fl_Choice.H>
#include <FL/Fl_File_Browser.H>
#include <FL/Fl_File_Chooser.H>
#include <FL/Fl_File_Input.H>
#include <FL/Fl_Native_File_Chooser.H>

#include <filesystem>
#include <functional>

#include "ui/fltk/ModalWindow.h"

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

template <typename Kind>
Kind* FindIn(Fl_Group& group) {
  for (int i = 0; i < group.children(); ++i) {
    if (auto* found = dynamic_cast<Kind*>(group.child(i))) return found;
    Fl_Group* inner = group.child(i)->as_group();
    if (Kind* found = inner ? FindIn<Kind>(*inner) : nullptr) return found;
  }
  return nullptr;
}

Fl_Window& WindowOf(Fl_File_Chooser& chooser) {
  return *chooser.newButton->window();
}

// Comes before a widget's callback. Both live as long as the chooser.
class Before {
 public:
  Before(Fl_Widget& widget, std::function<bool()> handled)
      : widget_(widget),
        handled_(std::move(handled)),
        next_(widget.callback()),
        data_(widget.user_data()) {
    widget.callback([](Fl_Widget*, void* self) { static_cast<Before*>(self)->Call(); }, this);
  }
  Before(const Before&) = delete;
  Before& operator=(const Before&) = delete;

 private:
  void Call() {
    if (!handled_()) next_(&widget_, data_);
  }

  Fl_Widget& widget_;
  const std::function<bool()> handled_;
  Fl_Callback* const next_;
  void* const data_;
};

// The toolkit's chooser without three faults: it drops the slash that an absolute path begins with
// while it is typed, it takes a name that is typed alone for one in the program's own folder, once
// more with each letter, and it reloads its list from within the list's own handling of a double
// click or key, which then goes on with lines that are gone.
class Chooser : public Fl_File_Chooser {
 public:
  Chooser(const FileChooserTexts& texts, const std::string& filter, int kind)
      : Fl_File_Chooser(texts.folder.c_str(), filter.c_str(), kind, texts.title.c_str()),
        input_(*FindIn<Fl_File_Input>(WindowOf(*this))),
        list_(*FindIn<Fl_File_Browser>(WindowOf(*this))),
        kinds_(*FindIn<Fl_Choice>(WindowOf(*this))),
        beforeInput_(input_, [this] { return TakeTyped(); }),
        beforeList_(list_, [this] { return TakeFolder(); }),
        beforeKind_(kinds_, [this] { return TakeKind(); }) {
    texts.file.empty() ? rescan() : value((texts.folder + "/" + texts.file).c_str());
  }
  ~Chooser() { Fl::remove_timeout(EnterFolder, this); }

  // The toolkit's own way puts the list under the mouse.
  void ShowOver(Fl_Window* parent) {
    Fl_Window& shell = WindowOf(*this);
    shell.xclass("KestrunChooser");
    shell.set_modal();
    CentreOver(shell, parent);
    shell.show();
    rescan_keep_filename();
    input_.take_focus();
  }

 private:
  bool TakeTyped() {
    const std::string typed = input_.value();
    if (typed == "/") {
      directory("/");
      input_.position(1);
      return true;
    }
    const bool isName = !typed.empty() && typed.find_first_of("/~$") != 0;
    if (isName && directory() != nullptr) {
      std::string path = directory();
      if (!path.ends_with('/')) path += '/';
      const int at = input_.position() + static_cast<int>(path.size());
      input_.value((path + typed).c_str());
      input_.position(at);
    }
    return false;
  }

  bool TakeFolder() {
    const char* name = list_.text(list_.value());
    if (!name || Fl::event_clicks() <= 0) return false;
    const std::string current = directory() ? directory() : "";
    folder_ = current.empty() ? name : current + "/" + name;
    std::error_code error;
    if (!std::filesystem::is_directory(folder_, error)) return false;
    // Keys that are repeated count as clicks too; they only move through the list.
    const bool clicked = Fl::event() != FL_KEYBOARD;
    Fl::event_clicks(0);
    if (!clicked) return false;
    if (!Fl::has_timeout(EnterFolder, this)) Fl::add_timeout(0, EnterFolder, this);
    return true;
  }

  // A file that is to be saved gets the first ending of the kind that is chosen.
  bool TakeKind() {
    const std::string kind = kinds_.text() ? kinds_.text() : "";
    const std::size_t pattern = kind.rfind("(*.");
    if (!(type() & CREATE) || pattern == std::string::npos) return false;
    const std::size_t begin = pattern + (kind[pattern + 3] == '{' ? 4 : 3);
    const std::string ending = kind.substr(begin, kind.find_first_of(",})", begin) - begin);
    std::filesystem::path path(input_.value());
    if (path.has_extension()) input_.value(path.replace_extension(ending).c_str());
    return false;
  }

  static void EnterFolder(void* self) {
    if (Fl::pushed()) return Fl::repeat_timeout(kLook, EnterFolder, self);
    auto* chooser = static_cast<Chooser*>(self);
    chooser->directory(chooser->folder_.c_str());
  }

  static constexpr double kLook = 0.02;  // seconds, while the mouse button is held

  Fl_File_Input& input_;
  Fl_File_Browser& list_;
  Fl_Choice& kinds_;
  Before beforeInput_;
  Before beforeList_;
  Before beforeKind_;
  std::string folder_;  // to be entered
};

bool MayReplace(const char* path) {
  std::error_code error;
  return !std::filesystem::exists(path, error) ||
         fl_choice("%s", fl_cancel, fl_ok, nullptr, Fl_Native_File_Chooser::file_exists_message);
}

}  // namespace

std::vector<std::string> ChooseFiles(FileChoice choice, const FileChooserTexts& texts,
                                     Fl_Window* parent) {
  if (!ModalWindowsAllowed()) return {};
  const std::string filter = ChooserFilter(texts.filter);
  Chooser chooser(texts, filter, KindOf(choice));
  chooser.ShowOver(parent);
  while (chooser.shown()) Fl::wait();
  std::vector<std::string> chosen;
  if (!ModalWindowsAllowed()) return chosen;  // hidden by the program's end
  for (int i = 1; i <= chooser.count(); ++i) {
    if (const char* path = chooser.value(i); path && *path) chosen.emplace_back(path);
  }
  if (choice == FileChoice::kSave && !chosen.empty() && !MayReplace(chosen.front().c_str()))
    chosen.clear();
  return chosen;
}
