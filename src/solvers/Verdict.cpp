#include "solvers/Verdict.h"

#include <map>
#include <optional>
#include <string_view>

#include "solvers/HowItFailed.h"
#include "solvers/MessageFiles.h"
#include "solvers/RunSteps.h"
#include "util/files/FileDirWrapper.h"
#include "util/files/LineBlocks.h"
#include "util/text/PlainText.h"

namespace {

constexpr std::size_t kLongestReason = 200;

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
void TakeFirstError(std::string_view block, MessageVerdict& verdict) {
  std::size_t at = block.find(kErrorLine);
  if (at == std::string_view::npos) return;
  at = LineStart(block, at);
  std::string words = Words(TakeLine(block, at));
  const std::string more = Words(TakeLine(block, at));
  if (!more.empty()) words += ": " + more;
  verdict.reason = Message(MessageId::kForeignWords, words);
  verdict.failure = FailureInError(words);
}

// Why there is nothing to judge by. `files`: those that were looked at.
JobStatus NoMessageFile(JobFile& job, const std::vector<std::string>& files) {
  job.SetMessageFile({});
  const std::string folder = job.Folder();
  if (!folder.empty() && !FileDirWrapper::IsDirWritable(folder))
    Report(job, Message(MessageId::kFolderNotWritable, folder));
  std::vector<std::string> old = files.empty() ? RemovableMessageFiles(job) : files;
  std::erase_if(old, [&](const std::string& one) { return !job.folderBefore.HoldsUnchanged(one); });
  Fail(job, RunError::kNoMessageFile,
       old.empty() ? Message(MessageId::kNoMessageFile, job.jobFile)
       : job.folderBefore.IsUnknown(old.front())
           ? Message(MessageId::kMaybeOldMessageFile, job.jobFile, old.front())
           : Message(MessageId::kOnlyOldMessageFile, job.jobFile, old.front()));
  if (!old.empty()) job.SetHowFailed({FailureKind::kOldOutput});
  return JobStatus::kAborted;
}

}  // namespace

MessageVerdict ReadVerdict(const std::string& messageFile) {
  using Tells = MessageVerdict::Tells;
  MessageVerdict verdict;
  LineBlocks blocks(LineBlocks::LongLines::kInPieces);
  NormalLine normalLine;
  if (!blocks.Open(messageFile)) {
    verdict.reason = Message(MessageId::kMessageFileUnreadable);
    return verdict;
  }
  for (std::string_view block; blocks.Next(block);) {
    if (normalLine.IsIn(block, blocks.EndsInsideLine())) return {.normal = true};
    if (verdict.reason.Empty()) TakeFirstError(block, verdict);
    verdict.errorEnd = verdict.errorEnd || Holds(block, "E r r o r");
  }
  if (const Failure last = FailureInEnd(messageFile); last.kind != FailureKind::kNone) {
    verdict.failure = last;
  }
  if (!verdict.reason.Empty()) {
    verdict.tells = Tells::kWhy;
  } else if (verdict.errorEnd) {
    verdict.tells = Tells::kError;
    verdict.reason = Message(MessageId::kErrorTermination);
    if (verdict.failure.kind == FailureKind::kNone) verdict.failure = {FailureKind::kSolverError};
  } else {
    verdict.reason = Message(MessageId::kNoNormalLine);
  }
  return verdict;
}

JobStatus JudgeRun(JobFile& job, const std::vector<std::string>& messageFiles) {
  struct Decisive {
    std::string kept;  // where it is now
    std::string name;
    std::string caseName;
    MessageVerdict verdict;
  };
  std::optional<Decisive> decisive;
  std::map<std::string, bool> normalCases;  // by what their first ranks say
  for (const std::string& file : messageFiles) {
    if (job.folderBefore.HoldsUnchanged(file)) continue;
    const MessageVerdict verdict = ReadVerdict(file);
    const auto [itsCase, isFirstRank] = normalCases.emplace(CaseOf(file), verdict.normal);
    const bool hasWords = verdict.tells == MessageVerdict::Tells::kWhy && !itsCase->second;
    if (!isFirstRank && !verdict.errorEnd && !hasWords) continue;
    Decisive found = {KeepMessageFile(job, file), FileDirWrapper::NameOf(file), itsCase->first,
                      verdict};
    const bool isBetter =
        decisive && decisive->caseName == found.caseName && decisive->verdict.tells < verdict.tells;
    if (!decisive || (!verdict.normal && (decisive->verdict.normal || isBetter)))
      decisive = std::move(found);
  }
  if (!decisive) return NoMessageFile(job, messageFiles);
  job.SetMessageFile(decisive->kept);
  const Message& reason = decisive->verdict.reason;
  if (decisive->verdict.normal) return JobStatus::kFinished;
  const JobStatus status = NotNormal(
      job, messageFiles.size() == 1 ? reason : Message(MessageId::kOfFile, decisive->name, reason));
  job.SetHowFailed(decisive->verdict.failure);
  return status;
}
