#include "solvers/MessageFiles.h"

#include <algorithm>
#include <cstdio>
#include <set>
#include <string_view>
#include <vector>

#include "jobs/JobArguments.h"
#include "jobs/OutputPrefix.h"
#include "solvers/RunSteps.h"
#include "util/files/FileDirWrapper.h"
#include "util/files/InputFile.h"
#include "util/files/LineBlocks.h"
#include "util/text/PlainText.h"

namespace {

constexpr std::size_t kHeadBytes = 64 * 1024;

const auto NameOf = &FileDirWrapper::NameOf;

// A file's name without what this program puts behind the name of a deck.
std::string WithoutOurEnding(const std::string& name) {
  const std::size_t console = name.rfind(".console.txt");  // or what was there before: ".old1"
  if (console != std::string::npos) return name.substr(0, console);
  for (const std::string_view ending : {".bak", "~~"}) {
    if (name.ends_with(ending)) return name.substr(0, name.size() - ending.size());
  }
  return name;
}

bool IsInput(const JobFile& job, const std::string& file) {
  if (FileDirWrapper::IsSameFile(file, job.jobFile)) return true;
  const std::string name = WithoutOurEnding(NameOf(file));
  const std::string lower = Lower(name);
  for (const std::string_view ending : {".k", ".dyn", ".key"}) {
    if (lower.ends_with(ending)) return true;
  }
  if (name == NameOf(job.jobFile) || name == NameOf(job.restartFile)) return true;
  const auto* const dyna = dynamic_cast<const JobFileDyna*>(&job);
  return dyna != nullptr &&
         std::any_of(dyna->includes.begin(), dyna->includes.end(),
                     [&](const std::string& path) { return name == NameOf(path); });
}

// Files that the job's solver may call so whose name holds `part` behind the job's prefix, in that
// order.
std::vector<std::string> FilesInFolder(const JobFile& job, std::string_view prefix,
                                       std::string_view part) {
  std::vector<std::string> files;
  std::vector<std::string> folders;
  FileDirWrapper::ListDir(job.Folder(), files, folders, false);
  std::erase_if(files, [&](const std::string& file) {
    const std::string name = NameOf(file);
    return !IsOutputName(job, name, prefix) || !Holds(*BehindPrefix(name, prefix), part) ||
           IsInput(job, file);
  });
  std::sort(files.begin(), files.end(), ComesBeforeByNumbers);
  return files;
}

bool IsKept(const std::string& file) {
  return EndsInAnyCase(file, kKeptEnding);
}

// "messag" or "mes0001", alone or behind a prefix that ends in a dot: not the "frames001.png" that
// another program has put there.
bool IsNamedAsOne(const std::string& file) {
  const std::string name = NameOf(file);
  const std::string kind = name.substr(name.rfind('.') + 1);
  return kind == "messag" ||
         (kind.starts_with("mes0") && kind.find_first_not_of("0123456789", 3) == std::string::npos);
}

// The name holds the word, but its ending is one of another kind of file: "names0.csv".
bool HasOtherEnding(const std::string& file) {
  const std::string name = NameOf(file);
  const std::string_view ending = std::string_view(name).substr(name.rfind('.') + 1);
  return !Holds(ending, "mes0") && !Holds(ending, "messag");
}

// One file of each case.
void KeepFirstOfEachCase(std::vector<std::string>& files) {
  std::set<std::string> cases;
  std::erase_if(files, [&](const std::string& file) { return !cases.insert(CaseOf(file)).second; });
}

// The head of the file says that its solver was given the name it is called by, and not this
// prefix's: of a job that may have left the queue.
bool IsOfOtherName(const std::string& file, std::string_view prefix) {
  const std::string before = CaseOf(file);
  if (!before.ends_with('.') || before == prefix) return false;
  InputFile opened;
  std::string head(kHeadBytes, '\0');
  if (!opened.Open(file)) return false;
  head.resize(static_cast<std::size_t>(
      std::max<std::ptrdiff_t>(opened.ReadAt(0, head.data(), head.size()), 0)));
  const std::string said = "jobid=" + before.substr(0, before.size() - 1);
  for (std::size_t at = 0; at < head.size();) {
    const std::string_view line = Trimmed(TakeLine(head, at));
    if (SameButForCase(line, said) || EndsInAnyCase(line, ' ' + said)) return true;
  }
  return false;
}

std::vector<std::string> MessageAndKeptFiles(const JobFile& job, std::string_view prefix) {
  std::vector<std::string> files = FilesInFolder(job, prefix, "mes");
  std::erase_if(files, [&](const std::string& file) {
    const std::string name = *BehindPrefix(NameOf(file), prefix);
    return !Holds(name, "mes0") && !Holds(name, "messag");
  });
  return files;
}

std::vector<std::string> WrittenMessageFiles(const JobFile& job, std::string_view prefix) {
  std::vector<std::string> written = MessageAndKeptFiles(job, prefix);
  std::erase_if(written, [&](const std::string& file) {
    return IsKept(file) || job.folderBefore.HoldsUnchanged(file);
  });
  // Where one has the name of a message file, what only holds the word is something else.
  if (std::any_of(written.begin(), written.end(), IsNamedAsOne)) {
    std::erase_if(written, [](const std::string& file) { return !IsNamedAsOne(file); });
  } else {
    KeepFirstOfEachCase(written);
  }
  return written;
}

// What the name of the stage's deck puts in front.
std::string DeckMark(const JobFile& stage) {
  return NameOf(stage.MainFile()) + '.';
}

void NameAfterDeck(JobFile& stage, const std::string& kept) {
  const std::string mark = DeckMark(stage);
  if (NameOf(kept).starts_with(mark)) return;
  const std::string named = FileDirWrapper::Join(FolderOf(kept), mark + NameOf(kept));
  RemoveOldFile(stage, named, MessageId::kOldMessageFileStays);
  if (!FileDirWrapper::MoveFileOver(kept, named)) {
    return Report(stage, Message(MessageId::kMessageFileNotKept, kept));
  }
  if (stage.MessageFile() == kept) stage.SetMessageFile(named);
}

}  // namespace

bool IsOutputName(const JobFile& job, std::string_view name, std::string_view prefix) {
  if (!BehindPrefix(name, prefix)) return false;
  if (job.run == nullptr) return true;
  const std::vector<std::string>& others = job.run->otherPrefixes;
  return std::none_of(others.begin(), others.end(), [&](const std::string& other) {
    return other.size() > prefix.size() && BehindPrefix(name, other);
  });
}

std::vector<std::string> MessageAndKeptFiles(const JobFile& job) {
  return MessageAndKeptFiles(job, OutputPrefix(job));
}

std::string KeptName(const std::string& messageFile) {
  return messageFile + std::string(kKeptEnding);
}

std::vector<std::string> AllMessageFiles(const JobFile& job) {
  std::vector<std::string> files = MessageAndKeptFiles(job);
  std::erase_if(files, IsKept);
  return files;
}

std::string CaseOf(const std::string& messageFile) {
  const std::string name = NameOf(messageFile);
  if (IsNamedAsOne(messageFile)) return name.substr(0, name.rfind('.') + 1);
  return name.substr(0, std::min(name.find("mes0"), name.find("messag")));
}

std::vector<std::string> WrittenMessageFiles(const JobFile& job) {
  const std::string prefix = OutputPrefix(job);
  std::vector<std::string> written = WrittenMessageFiles(job, prefix);
  const auto* const dyna = dynamic_cast<const JobFileDyna*>(&job);
  const bool hasCases = dyna != nullptr && dyna->caseRun;
  // Some solvers call the files of a case by the case alone.
  return written.empty() && hasCases && !prefix.empty() ? WrittenMessageFiles(job, "") : written;
}

std::vector<std::string> CaseMessageFiles(const JobFile& job) {
  std::vector<std::string> files = WrittenMessageFiles(job);
  KeepFirstOfEachCase(files);
  return files;
}

std::vector<std::string> KeptCaseFiles(const JobFile& job) {
  std::vector<std::string> files = MessageAndKeptFiles(job);
  std::erase_if(files, [&](const std::string& file) {
    return !IsKept(file) || job.folderBefore.HoldsUnchanged(file);
  });
  KeepFirstOfEachCase(files);
  return files;
}

std::string FindMessageFile(const JobFile& job, const std::string& name) {
  const std::string file = FileDirWrapper::Join(job.Folder(), name);
  return FileDirWrapper::FileExists(file) && !IsInput(job, file) ? file : std::string();
}

std::vector<std::string> RemovableMessageFiles(const JobFile& job) {
  const std::string prefix = OutputPrefix(job);
  std::vector<std::string> files = AllMessageFiles(job);
  std::erase_if(files, [&](const std::string& file) {
    return HasOtherEnding(file) || IsOfOtherName(file, prefix);
  });
  return files;
}

void RemoveMessageFiles(const JobFile& job) {
  for (const std::string& file : RemovableMessageFiles(job)) {
    RemoveOldFile(job, file, MessageId::kOldMessageFileStays);
  }
}

void TakeBackMessageFiles(const JobFile& job) {
  if (dynamic_cast<const JobFileDyna*>(&job) == nullptr) return;
  for (const std::string& kept : MessageAndKeptFiles(job)) {
    if (!IsKept(kept) || job.folderBefore.HoldsUnchanged(kept)) continue;
    std::string file = kept.substr(0, kept.size() - kKeptEnding.size());
    const std::string mark = DeckMark(job);
    const std::string name = NameOf(file);
    if (name.starts_with(mark)) {
      file = FileDirWrapper::Join(FolderOf(file), name.substr(mark.size()));
    }
    if (!FileDirWrapper::FileExists(file)) std::rename(kept.c_str(), file.c_str());
  }
}

void RemoveAdaptDumps(const JobFile& job) {
  for (const std::string& file : FilesInFolder(job, OutputPrefix(job), ".adaptdmp")) {
    if (!FileDirWrapper::RemoveFile(file)) {
      Report(job, Message(MessageId::kAdaptDumpStays, file));
    }
  }
}

std::string KeepMessageFile(JobFile& job, const std::string& messageFile) {
  const std::string kept = KeptName(messageFile);
  const bool isFree = !IsInput(job, kept);
  if (isFree) RemoveOldFile(job, kept, MessageId::kOldMessageFileStays);
  if (!isFree || !FileDirWrapper::MoveFileOver(messageFile, kept)) {
    Report(job, Message(MessageId::kMessageFileNotKept, messageFile));
    return messageFile;
  }
  return kept;
}

void NameMessageFileAfterDeck(JobFile& stage) {
  const std::string file = stage.MessageFile();
  if (IsKept(file) && FileDirWrapper::FileExists(file)) NameAfterDeck(stage, file);
}

void NameMessageFilesAfterDeck(JobFile& stage) {
  for (const std::string& kept : MessageAndKeptFiles(stage)) {
    if (IsKept(kept) && !stage.folderBefore.HoldsUnchanged(kept)) NameAfterDeck(stage, kept);
  }
}
