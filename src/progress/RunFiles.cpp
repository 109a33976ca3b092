#include "progress/RunFiles.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <map>
#include <string_view>
#include <vector>

#include "jobs/DeckScan.h"
#include "jobs/JobArguments.h"
#include "util/files/FileDirWrapper.h"
#include "util/text/PlainText.h"

namespace {

constexpr char kStatus[] = "status.out";

const auto NameOf = &FileDirWrapper::NameOf;

std::string FolderBeside(const std::string& path) {
  std::string folder;
  FileDirWrapper::DirOf(path, folder);
  return folder.empty() ? "." : folder;
}

// What stands in front of the kind of file, "CASE1." of "CASE1.messag"; nothing for other names.
// Of a distributed run the first rank's file stands for all.
std::optional<std::string> MessagePrefix(std::string name) {
  if (name.ends_with(kKeptEnding)) name.resize(name.size() - kKeptEnding.size());
  for (const std::string_view kind : {"messag", "mes0000"}) {
    if (name.ends_with(kind)) return name.substr(0, name.size() - kind.size());
  }
  return std::nullopt;
}

// The digits of a case's number in a prefix: "CASE12.", "NAME.CASE12.", "CASE12.NAME."; none where
// it is of no case.
std::string_view CaseDigits(std::string_view prefix) {
  if (!prefix.ends_with('.')) return {};
  const std::size_t length = CaseLength(prefix);
  const std::string_view name = prefix.substr(0, (length == 0 ? prefix.size() : length) - 1);
  const std::size_t begin = name.find_last_not_of("0123456789") + 1;
  const bool isCase = begin < name.size() && EndsInAnyCase(name.substr(0, begin), "case");
  return isCase ? name.substr(begin) : std::string_view();
}

// What all cases of one deck have in common; empty for a name that is none of a case.
std::string FormOfCase(const std::string& prefix) {
  const std::string_view digits = CaseDigits(prefix);
  if (digits.empty()) return {};
  std::string form = prefix;
  return form.replace(static_cast<std::size_t>(digits.data() - prefix.data()), digits.size(), "#");
}

RunFiles::Kind KindOf(const std::string& file) {
  const std::string name = NameOf(file);
  if (MessagePrefix(name)) return RunFiles::Kind::kKeyword;
  // Of LS-DYNA, though other solvers' texts end so too.
  if (SameButForCase(name, kStatus) || EndsInAnyCase(name, std::string(".") + kStatus))
    return RunFiles::Kind::kNone;
  const bool isText =
      std::any_of(std::begin(kTextOutputs), std::end(kTextOutputs),
                  [&](const auto& names) { return EndsInAnyCase(name, names.outputEnding); });
  return isText ? RunFiles::Kind::kText : RunFiles::Kind::kNone;
}

std::string ExistingBeside(const std::string& file, const std::string& name) {
  std::string path = FileDirWrapper::Join(FolderBeside(file), name);
  return FileDirWrapper::FileExists(path) && !FileDirWrapper::IsFolder(path) ? path : std::string();
}

// `isNamed`: the run has a prefix of its own; what has none is of another one.
void FindBeside(const std::string& prefix, const std::function<bool(const std::string&)>& isOld,
                bool isNamed, RunFiles& files, const std::string& anyFile) {
  files.glstat = ExistingBeside(anyFile, prefix + "glstat");
  files.status = ExistingBeside(anyFile, prefix + kStatus);
  if (files.status.empty() && !isNamed) files.status = ExistingBeside(anyFile, kStatus);
  for (std::string* file : {&files.glstat, &files.status}) {
    if (isOld && !file->empty() && isOld(*file)) file->clear();
  }
}

// Whether a solver of the run calls its files so. `byCase`: by the case alone.
bool IsNameOf(const OutputNames& names, const std::string& name, bool byCase) {
  if (!byCase) return BehindPrefix(name, names.prefix).has_value();
  const std::optional<std::string> prefix = MessagePrefix(name);
  return prefix && !prefix->empty() && CaseLength(*prefix) == prefix->size();
}

RunFiles OfFolder(const std::string& folder, const std::function<bool(const std::string&)>& isOld,
                  const OutputNames& names, bool byCase) {
  std::vector<std::string> entries;
  std::vector<std::string> folders;
  FileDirWrapper::ListDir(folder, entries, folders, false);
  RunFiles found;
  std::int64_t newest = 0;
  for (const std::string& file : entries) {
    const RunFiles::Kind kind = KindOf(file);
    if (kind == RunFiles::Kind::kNone || !IsNameOf(names, NameOf(file), byCase)) continue;
    if (isOld && isOld(file)) continue;
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
  std::string prefix = NameOf(path);
  for (const std::string_view kind : {"glstat", kStatus}) {
    if (!prefix.ends_with(kind)) continue;
    prefix.resize(prefix.size() - kind.size());
    for (const std::string_view kept : {std::string_view(), kKeptEnding}) {
      for (const char* name : {"messag", "mes0000"}) {
        if (!files.output.empty()) continue;
        files.output = ExistingBeside(path, prefix + name + std::string(kept));
      }
    }
    files.kind = RunFiles::Kind::kKeyword;
    FindBeside(prefix, {}, false, files, path);
    return files;
  }
  files.output = path;
  files.kind = KindOf(path);
  if (files.kind == RunFiles::Kind::kNone) files.kind = RunFiles::Kind::kKeyword;
  for (const auto& [extension, ending] : kTextOutputs) {
    if (!EndsInAnyCase(path, std::string(".") + extension)) continue;
    files.output = PathWithoutExtension(path) + ending;
    files.kind = RunFiles::Kind::kText;
  }
  return files;
}

}  // namespace

RunFiles FindRunFiles(const std::string& path, const std::function<bool(const std::string&)>& isOld,
                      const OutputNames& names) {
  const bool isFolder = FileDirWrapper::IsFolder(path);
  const bool isNamed = !names.prefix.empty();
  RunFiles files = isFolder ? OfFolder(path, isOld, names, false) : OfFile(path);
  if (files.kind == RunFiles::Kind::kNone && isFolder && isNamed && names.hasCases)
    files = OfFolder(path, isOld, names, true);
  if (files.kind == RunFiles::Kind::kNone && isFolder) {
    // A run of which only its states are there.
    FindBeside(names.prefix, isOld, isNamed, files, FileDirWrapper::Join(path, "glstat"));
    if (!files.glstat.empty() || !files.status.empty()) files.kind = RunFiles::Kind::kKeyword;
  } else if (files.kind == RunFiles::Kind::kKeyword && !files.output.empty()) {
    const std::optional<std::string> found = MessagePrefix(NameOf(files.output));
    if (found) FindBeside(*found, isOld, isNamed, files, files.output);
  }
  return files;
}

std::vector<RunFiles> FindCaseFiles(const std::string& path, CasesBy by,
                                    const std::function<bool(const std::string&)>& isOld,
                                    const OutputNames& names) {
  std::vector<RunFiles> found = {FindRunFiles(path, isOld, names)};
  const std::string newest = found.front().output;
  const std::optional<std::string> prefix = MessagePrefix(NameOf(newest));
  if (found.front().kind != RunFiles::Kind::kKeyword || newest.empty() || !prefix) return found;
  const bool byCase = !IsNameOf(names, NameOf(newest), false);
  const std::string form = FormOfCase(*prefix);
  if (form.empty() && by == CasesBy::kName) return found;
  // Of a case that lies there under several names the one that was written last.
  std::map<std::string, std::string, decltype(&ComesBeforeByNumbers)> others(&ComesBeforeByNumbers);
  std::vector<std::string> entries;
  std::vector<std::string> folders;
  FileDirWrapper::ListDir(FolderBeside(newest), entries, folders, false);
  for (const std::string& file : entries) {
    const std::optional<std::string> other = MessagePrefix(NameOf(file));
    if (!other || *other == *prefix || !IsNameOf(names, NameOf(file), byCase)) continue;
    if (isOld && isOld(file)) continue;
    if (by == CasesBy::kName && FormOfCase(*other) != form) continue;
    std::string& known = others[*other];
    if (known.empty() || FileDirWrapper::WriteTime(file) > FileDirWrapper::WriteTime(known))
      known = file;
  }
  for (const auto& [name, file] : others) {
    RunFiles files;
    files.kind = RunFiles::Kind::kKeyword;
    files.output = file;
    FindBeside(name, isOld, !names.prefix.empty(), files, file);
    found.insert(found.end() - 1, std::move(files));
  }
  return found;
}

int CaseNumberOf(const std::string& messageFile) {
  const std::string prefix = MessagePrefix(NameOf(messageFile)).value_or(std::string());
  return static_cast<int>(WholeNumber(CaseDigits(prefix), 1, 1000000000).value_or(0));
}

std::vector<std::string> SwitchFiles(const std::string& folder, const OutputNames& names,
                                     const std::string& messageFile) {
  constexpr char kSwitch[] = "d3kil";
  std::vector<std::string> files = {FileDirWrapper::Join(folder, names.prefix + kSwitch)};
  const std::optional<std::string> ofCase = MessagePrefix(NameOf(messageFile));
  if (names.hasCases && ofCase && CaseNumberOf(messageFile) > 0)
    files.push_back(FileDirWrapper::Join(folder, *ofCase + kSwitch));
  return files;
}

DeckEndTime EndTimeOfDeck(const std::string& folder, const std::string& deck) {
  if (deck.empty()) return {};
  const bool absolute =
      deck.starts_with('/') || deck.starts_with('\\') || (deck.size() > 1 && deck[1] == ':');
  JobFileDyna job{Settings()};
  job.jobFile = absolute ? deck : FileDirWrapper::Join(folder, deck);
  if (!FileDirWrapper::FileExists(job.jobFile)) {
    // The run may have been moved, or have come from another system.
    job.jobFile = FileDirWrapper::Join(folder, deck.substr(deck.find_last_of("/\\") + 1));
  }
  if (!FileDirWrapper::FileExists(job.jobFile) || !ScanDeck(job, {})) return {};
  return FindEndTime(job);
}
