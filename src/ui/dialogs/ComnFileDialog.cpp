#include "ui/dialogs/ComnFileDialog.h"

#include <algorithm>

#include "ui/fltk/FileChooser.h"
#include "ui/text/Encoding.h"
#include "util/files/FileDirWrapper.h"
#include "util/text/StrWrapper.h"

namespace {

// "*.dyn;*.k" becomes "*.{dyn,k}". "*.*" means all files, also those without an ending.
std::string ToolkitPattern(const std::string& patterns) {
  if (patterns == "*.*") return "*";
  std::vector<std::string> pieces;
  StrWrapperTxt::SeparateString(patterns, pieces, ';');
  if (pieces.size() == 1) return pieces.front();
  const bool endings = std::all_of(pieces.begin(), pieces.end(), [](const std::string& piece) {
    return piece.compare(0, 2, "*.") == 0;
  });
  std::string out;
  for (const std::string& piece : pieces)
    out += (out.empty() ? "{" : ",") + (endings ? piece.substr(2) : piece);
  return (endings ? "*." : "") + out + "}";
}

// Without a folder the toolkit's own chooser would begin with a list of what is mounted.
std::string ExistingFolder(std::string folder) {
  if (folder.empty()) FileDirWrapper::DocumentsDir(folder);
  while (!folder.empty() && !FileDirWrapper::IsFolder(folder)) {
    std::string parent;
    if (!FileDirWrapper::DirOf(folder, parent) || parent == folder) return {};
    folder = parent;
  }
  return folder;
}

}  // namespace

std::string ComnFileDialog::ProgramFilter(const std::string& filter) {
  constexpr bool kProgramsHaveEndings = FileDirWrapper::kSeparator == '\\';
  return kProgramsHaveEndings ? filter + kAllFiles : kAllFiles + filter;
}

std::string ComnFileDialog::ToolkitFilter(const std::string& filter) {
  std::vector<std::string> pieces;
  StrWrapperTxt::SeparateString(filter, pieces, '|');
  std::string out;
  for (std::size_t i = 0; i + 1 < pieces.size(); i += 2) {
    // The toolkit shows the pattern behind the description.
    std::string description = pieces[i].substr(0, pieces[i].find(" ("));
    out += description + " \t" + ToolkitPattern(pieces[i + 1]) + "\n";
  }
  return out;
}

bool ComnFileDialog::DoModal() {
  paths_.clear();
  FileChoice choice = FileChoice::kSave;
  if (open_) choice = multiple_ ? FileChoice::kOpenSeveral : FileChoice::kOpen;
  const FileChooserTexts texts = {caption_, ToolkitFilter(filter_), ToUi(ExistingFolder(folder_)),
                                  ToUi(file_)};
  for (const std::string& chosen : ChooseFiles(choice, texts, parent_)) {
    std::string path = FromUi(chosen);
    std::string ending;
    if (!open_ && !extension_.empty() && !FileDirWrapper::ExtensionOf(path, ending))
      path += "." + extension_;
    paths_.push_back(path);
  }
  return !paths_.empty();
}

bool ComnFolder::DoModal() {
  path_.clear();
  const FileChooserTexts texts = {title_, {}, ToUi(ExistingFolder(folder_)), {}};
  const std::vector<std::string> chosen = ChooseFiles(FileChoice::kFolder, texts, parent_);
  if (chosen.empty()) return false;
  FileDirWrapper::TrimTrailingSeparator(FromUi(chosen.front()), path_);
  if (path_.empty()) path_ = FromUi(chosen.front());  // a root
  return true;
}
