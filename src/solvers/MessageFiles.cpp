#include "solvers/MessageFiles.h"

#include <algorithm>
#include <cstdio>
#include <set>
#include <string_view>
#include <vector>

#include "solvers/RunSteps.h"
#include "util/files/FileDirWrapper.h"
#include "util/files/LineBlocks.h"
#include "util/text/PlainText.h"

namespace {

constexpr std::string_view kKept = ".krb";
constexpr std::size_t kLongestReason = 200;

std::string NameOf(const std::string& path) {
  std::string name;
  FileDirWrapper::FileNameOf(path, name, true);
  return name;
}

// A file's name without what this program puts behind the name of a deck.
std::string WithoutOurEnding(const std::string& name) {
  for (const std::string_view ending : {".console.txt", ".bak", "~~"}) {
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

// By name, with numbers by their value.
bool ComesBefore(const std::string& a, const std::string& b) {
  std::size_t i = 0;
  std::size_t j = 0;
  while (i < a.size() && j < b.size()) {
    if (!IsDigit(a[i]) || !IsDigit(b[j])) {
      if (a[i] != b[j]) return static_cast<unsigned char>(a[i]) < static_cast<unsigned char>(b[j]);
      ++i, ++j;
      continue;
    }
    i = std::min(a.find_first_not_of('0', i), a.size());
    j = std::min(b.find_first_not_of('0', j), b.size());
    const std::size_t iEnd = std::min(a.find_first_not_of("0123456789", i), a.size());
    const std::size_t jEnd = std::min(b.find_first_not_of("0123456789", j), b.size());
    if (iEnd - i != jEnd - j) return iEnd - i < jEnd - j;
    const int order = a.compare(i, iEnd - i, b, j, jEnd - j);
    if (order != 0) return order < 0;
    i = iEnd, j = jEnd;
  }
  return i == a.size() && j < b.size();
}

// Files whose name holds `part`, in that order.
std::vector<std::string> FilesInFolder(const JobFile& job, std::string_view part) {
  std::vector<std::string> files;
  std::vector<std::string> folders;
  FileDirWrapper::ListDir(job.Folder(), files, folders, false);
  std::erase_if(files, [&](const std::string& file) {
    return !Holds(NameOf(file), part) || IsInput(job, file);
  });
  std::sort(files.begin(), files.end(), ComesBefore);
  return files;
}

std::vector<std::string> MessageFiles(const JobFile& job) {
  std::vector<std::string> files = FilesInFolder(job, "mes");
  std::erase_if(files, [](const std::string& file) {
    const std::string name = NameOf(file);
    return (!Holds(name, "mes0") && !Holds(name, "messag")) || Lower(name).ends_with(kKept);
  });
  return files;
}

// What stands in front of the kind of file: "CASE1." of "CASE1.messag".
std::string CaseOf(const std::string& file) {
  const std::string name = NameOf(file);
  return name.substr(0, std::min(name.find("mes0"), name.find("messag")));
}

// One line of a message file as words for people: no bytes that are not text, not too long.
std::string Words(std::string_view line) {
  std::string text(line.substr(0, kLongestReason));
  for (char& c : text) {
    if (static_cast<unsigned char>(c) < ' ') c = ' ';
  }
  return std::string(Trimmed(text));
}

std::size_t LineStart(std::string_view block, std::size_t at) {
  return block.substr(0, at).rfind('\n') + 1;
}

// Looks for the line of normal termination in the blocks of a file, in their order.
class NormalLine {
 public:
  // True when the block holds it, or is the piece of a long line that makes it whole.
  bool IsIn(std::string_view block, bool endsInsideLine) {
    if (endsInsideLine || insideLine_) {
      const std::string_view piece = block.substr(0, block.find('\n'));
      normal_ = normal_ || Holds(piece, kNormal);
      termination_ = termination_ || Holds(piece, kTermination);
      insideLine_ = endsInsideLine;
      if (normal_ && termination_) return true;
      if (!insideLine_) normal_ = termination_ = false;
      return false;
    }
    for (std::size_t at = 0; (at = block.find(kNormal, at)) != std::string_view::npos;) {
      at = LineStart(block, at);
      const std::string_view line = TakeLine(block, at);
      if (line.size() < kWithBothWords || Holds(line, kTermination)) return true;
    }
    return false;
  }

 private:
  static constexpr std::string_view kNormal = "N o r m a l";
  static constexpr std::string_view kTermination = "t e r m i n a t i o n";
  static constexpr std::size_t kWithBothWords = kTermination.size();

  bool insideLine_ = false;  // the last block was a piece of a line, and so is the next
  bool normal_ = false;
  bool termination_ = false;
};

// The first error's line and the one below it.
Message FirstError(std::string_view block) {
  std::size_t at = block.find("*** Error");
  if (at == std::string_view::npos) return {};
  at = LineStart(block, at);
  std::string words = Words(TakeLine(block, at));
  const std::string more = Words(TakeLine(block, at));
  if (!more.empty()) words += ": " + more;
  return Message(MessageId::kForeignWords, words);
}

bool Rename(const std::string& from, const std::string& to) {
  return std::rename(from.c_str(), to.c_str()) == 0;
}

// Where it is kept; where it stays when it cannot be renamed.
std::string KeepMessageFile(JobFile& job, const std::string& messageFile) {
  const std::string kept = messageFile + std::string(kKept);
  const bool isFree = !IsInput(job, kept);
  if (isFree) RemoveOldFile(job, kept, MessageId::kOldMessageFileStays);
  if (!isFree || !Rename(messageFile, kept)) {
    Report(job, Message(MessageId::kMessageFileNotKept, messageFile));
    return messageFile;
  }
  return kept;
}

// Why there is nothing to judge by.
JobStatus NoMessageFile(JobFile& job) {
  job.SetMessageFile({});
  const std::string folder = job.Folder();
  if (!folder.empty() && !FileDirWrapper::IsDirWritable(folder))
    Report(job, Message(MessageId::kFolderNotWritable, folder));
  const std::vector<std::string> old = MessageFiles(job);
  Fail(job, RunError::kNoMessageFile,
       old.empty() ? Message(MessageId::kNoMessageFile, job.jobFile)
                   : Message(MessageId::kOnlyOldMessageFile, job.jobFile, old.front()));
  return JobStatus::kAborted;
}

}  // namespace

std::vector<std::string> CaseMessageFiles(const JobFile& job) {
  std::vector<std::string> files;
  std::set<std::string> cases;
  for (const std::string& file : MessageFiles(job)) {
    if (job.folderBefore.HoldsUnchanged(file) || !cases.insert(CaseOf(file)).second) continue;
    files.push_back(file);
  }
  return files;
}

std::string FindMessageFile(const JobFile& job, const std::string& name) {
  const std::string file = FileDirWrapper::Join(job.Folder(), name);
  return FileDirWrapper::FileExists(file) && !IsInput(job, file) ? file : std::string();
}

void RemoveMessageFiles(const JobFile& job) {
  for (const std::string& file : MessageFiles(job))
    RemoveOldFile(job, file, MessageId::kOldMessageFileStays);
}

void RemoveAdaptDumps(const JobFile& job) {
  for (const std::string& file : FilesInFolder(job, ".adaptdmp")) {
    if (!FileDirWrapper::RemoveFile(file)) {
      Report(job, Message(MessageId::kAdaptDumpStays, file));
    }
  }
}

MessageVerdict ReadVerdict(const std::string& messageFile) {
  MessageVerdict verdict;
  LineBlocks blocks(LineBlocks::LongLines::kInPieces);
  NormalLine normalLine;
  if (!blocks.Open(messageFile)) {
    verdict.reason = Message(MessageId::kMessageFileUnreadable);
    return verdict;
  }
  bool errorEnd = false;
  for (std::string_view block; blocks.Next(block);) {
    if (normalLine.IsIn(block, blocks.EndsInsideLine())) return {true, {}};
    if (verdict.reason.Empty()) verdict.reason = FirstError(block);
    errorEnd = errorEnd || Holds(block, "E r r o r");
  }
  if (verdict.reason.Empty()) {
    verdict.reason =
        errorEnd ? Message(MessageId::kErrorTermination) : Message(MessageId::kNoNormalLine);
  }
  return verdict;
}

JobStatus JudgeRun(JobFile& job, const std::vector<std::string>& messageFiles) {
  std::string decisive;
  Message reason;
  for (const std::string& file : messageFiles) {
    if (job.folderBefore.HoldsUnchanged(file)) continue;
    MessageVerdict verdict = ReadVerdict(file);
    const std::string kept = KeepMessageFile(job, file);
    const bool isFirstBad = !verdict.normal && reason.Empty();
    if (decisive.empty() || isFirstBad) decisive = kept;
    if (!isFirstBad) continue;
    reason = messageFiles.size() == 1 ? verdict.reason
                                      : Message(MessageId::kOfFile, NameOf(file), verdict.reason);
  }
  if (decisive.empty()) return NoMessageFile(job);
  job.SetMessageFile(decisive);
  return reason.Empty() ? JobStatus::kFinished : NotNormal(job, reason);
}
