#include "progress/RunFiles.h"

#include <cstdint>
#include <string_view>
#include <vector>

#include "jobs/DeckEndTime.h"
#include "jobs/DeckScan.h"
#include "util/files/FileDirWrapper.h"
#include "util/text/PlainText.h"

namespace {

constexpr std::string_view kKept = ".krb";

std::string NameOf(const std::string& path) {
  std::string name;
  FileDirWrapper::FileNameOf(path, name, true);
  return name;
}

std::string FolderOf(const std::string& path) {
  std::string folder;
  FileDirWrapper::DirOf(path, folder);
  return folder.empty() ? "." : folder;
}

// What stands in front of the kind of file, "CASE1." of "CASE1.messag"; nothing for other names.
// Of a distributed run the first rank's file stands for all.
std::optional<std::string> MessagePrefix(std::string name) {
  if (name.ends_with(kKept)) name.resize(name.size() - kKept.size());
  for (const std::string_view kind : {"messag", "mes0000"}) {
    if (name.ends_with(kind)) return name.substr(0, name.size() - kind.size());
  }
  return std::nullopt;
}

RunFiles::Kind KindOf(const std::string& file) {
  const std::string name = NameOf(file);
  if (MessagePrefix(name)) return RunFiles::Kind::kKeyword;
  const std::string upper = Upper(name);
  if (upper.ends_with("_INFO.OUT")) return RunFiles::Kind::kInc;
  return upper.ends_with(".OUT") && upper != "STATUS.OUT" && !upper.ends_with(".STATUS.OUT")
             ? RunFiles::Kind::kVorel
             : RunFiles::Kind::kNone;
}

std::string ExistingBeside(const std::string& file, const std::string& name) {
  std::string path = FileDirWrapper::Join(FolderOf(file), name);
  return FileDirWrapper::FileExists(path) && !FileDirWrapper::IsFolder(path) ? path : std::string();
}

void FindBeside(const std::string& prefix, const std::function<bool(const std::string&)>& isOld,
                RunFiles& files, const std::string& anyFile) {
  files.glstat = ExistingBeside(anyFile, prefix + "glstat");
  files.status = ExistingBeside(anyFile, prefix + "status.out");
  if (files.status.empty()) files.status = ExistingBeside(anyFile, "status.out");
  for (std::string* file : {&files.glstat, &files.status}) {
    if (isOld && !file->empty() && isOld(*file)) file->clear();
  }
}

RunFiles OfFolder(const std::string& folder, const std::function<bool(const std::string&)>& isOld) {
  std::vector<std::string> entries;
  std::vector<std::string> folders;
  FileDirWrapper::ListDir(folder, entries, folders, false);
  RunFiles found;
  std::int64_t newest = 0;
  for (const std::string& file : entries) {
    const RunFiles::Kind kind = KindOf(file);
    if (kind == RunFiles::Kind::kNone || (isOld && isOld(file))) continue;
    const bool isKeyword = kind == RunFiles::Kind::kKeyword;
    const bool hasKeyword = found.kind == RunFiles::Kind::kKeyword;
    const std::int64_t written = FileDirWrapper::WriteTime(file);
    const bool better = isKeyword == hasKeyword ? written > newest : isKeyword;
    if (found.kind != RunFiles::Kind::kNone && !better) continue;
    found.kind = kind;
    found.output = file;
    newest = written;
  }
  return found;
}

RunFiles OfFile(const std::string& path) {
  RunFiles files;
  const std::string upper = Upper(NameOf(path));
  std::string prefix = NameOf(path);
  for (const std::string_view kind : {"glstat", "status.out"}) {
    if (!prefix.ends_with(kind)) continue;
    prefix.resize(prefix.size() - kind.size());
    for (const char* name : {"messag", "mes0000", "messag.krb", "mes0000.krb"}) {
      if (files.output.empty()) files.output = ExistingBeside(path, prefix + name);
    }
    files.kind = RunFiles::Kind::kKeyword;
    FindBeside(prefix, {}, files, path);
    return files;
  }
  files.output = path;
  files.kind = KindOf(path);
  if (upper.ends_with(".FIN") || upper.ends_with(".DAT")) {
    const bool inc = upper.ends_with(".FIN");
    const std::string job = NameOf(path).substr(0, upper.size() - 4);
    files.output = FileDirWrapper::Join(FolderOf(path), job + (inc ? "_INFO.OUT" : ".OUT"));
    files.kind = inc ? RunFiles::Kind::kInc : RunFiles::Kind::kVorel;
  } else if (files.kind == RunFiles::Kind::kNone) {
    files.kind = RunFiles::Kind::kKeyword;
  }
  return files;
}

}  // namespace

RunFiles FindRunFiles(const std::string& path,
                      const std::function<bool(const std::string&)>& isOld) {
  const bool isFolder = FileDirWrapper::IsFolder(path);
  RunFiles files = isFolder ? OfFolder(path, isOld) : OfFile(path);
  if (files.kind == RunFiles::Kind::kNone && isFolder) {
    // A run of which only its states are there.
    FindBeside("", isOld, files, FileDirWrapper::Join(path, "glstat"));
    if (!files.glstat.empty() || !files.status.empty()) files.kind = RunFiles::Kind::kKeyword;
  } else if (files.kind == RunFiles::Kind::kKeyword && !files.output.empty()) {
    const std::optional<std::string> prefix = MessagePrefix(NameOf(files.output));
    if (prefix) FindBeside(*prefix, isOld, files, files.output);
  }
  return files;
}

std::optional<double> EndTimeOfDeck(const std::string& folder, const std::string& deck) {
  if (deck.empty()) return std::nullopt;
  const bool absolute =
      deck.starts_with('/') || deck.starts_with('\\') || (deck.size() > 1 && deck[1] == ':');
  JobFileDyna job{Settings()};
  job.jobFile = absolute ? deck : FileDirWrapper::Join(folder, deck);
  if (!FileDirWrapper::FileExists(job.jobFile)) {
    // The run may have been moved, or have come from another system.
    job.jobFile = FileDirWrapper::Join(folder, deck.substr(deck.find_last_of("/\\") + 1));
  }
  if (!FileDirWrapper::FileExists(job.jobFile) || !ScanDeck(job, {})) return std::nullopt;
  return FindEndTime(job).value;
}
