#include "ui/ComnFileDialog.h"

#include <FL/Fl_Native_File_Chooser.H>

#include <algorithm>
#include <filesystem>

#include "ui/Text.h"
#include "util/FileDirWrapper.h"
#include "util/StrWrapper.h"

namespace {

// "*.dyn;*.k" becomes "*.{dyn,k}".
std::string ToolkitPattern(const std::string& patterns) {
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

std::string ExistingFolder(std::string folder) {
  std::error_code error;
  while (!folder.empty() && !std::filesystem::is_directory(folder, error)) {
    std::string parent;
    if (!FileDirWrapper::DirOf(folder, parent) || parent == folder) return {};
    folder = parent;
  }
  return folder;
}

}  // namespace

std::string ComnFileDialog::ProgramFilter(const std::string& filter, const std::string& allFiles) {
  constexpr bool kProgramsHaveEndings = FileDirWrapper::kSeparator == '\\';
  return kProgramsHaveEndings ? filter + allFiles : allFiles + filter;
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
  Fl_Native_File_Chooser chooser;
  if (open_) {
    chooser.type(multiple_ ? Fl_Native_File_Chooser::BROWSE_MULTI_FILE
                           : Fl_Native_File_Chooser::BROWSE_FILE);
  } else {
    chooser.type(Fl_Native_File_Chooser::BROWSE_SAVE_FILE);
    chooser.options(Fl_Native_File_Chooser::SAVEAS_CONFIRM);
  }
  const std::string filter = ToolkitFilter(filter_);
  const std::string folder = ToUi(ExistingFolder(folder_));
  const std::string file = ToUi(file_);
  chooser.title(caption_.c_str());
  chooser.filter(filter.c_str());
  if (!folder.empty()) chooser.directory(folder.c_str());
  if (!file.empty()) chooser.preset_file(file.c_str());
  if (chooser.show() != 0) return false;
  for (int i = 0; i < chooser.count(); ++i) {
    std::string path = FromUi(chooser.filename(i));
    std::string ending;
    if (!open_ && !extension_.empty() && !FileDirWrapper::ExtensionOf(path, ending))
      path += "." + extension_;
    paths_.push_back(path);
  }
  if (parent_) parent_->show();
  return !paths_.empty();
}

bool ComnFolder::DoModal() {
  path_.clear();
  Fl_Native_File_Chooser chooser(Fl_Native_File_Chooser::BROWSE_DIRECTORY);
  const std::string folder = ToUi(ExistingFolder(folder_));
  chooser.title(title_.c_str());
  if (!folder.empty()) chooser.directory(folder.c_str());
  if (chooser.show() != 0 || chooser.count() < 1) return false;
  FileDirWrapper::TrimTrailingSeparator(FromUi(chooser.filename(0)), path_);
  if (path_.empty()) path_ = FromUi(chooser.filename(0));  // a root
  if (parent_) parent_->show();
  return true;
}
