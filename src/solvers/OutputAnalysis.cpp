#include "solvers/OutputAnalysis.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

#include "solvers/Hints.h"
#include "solvers/ReportText.h"
#include "util/files/LineBlocks.h"
#include "util/text/PlainText.h"
#include "util/text/StrWrapper.h"

namespace {

constexpr std::int64_t kMostWarnings = 20;

constexpr std::string_view kWarning = "*** Warning";
constexpr std::string_view kError = "*** Error";
constexpr std::string_view kInputError = "*** Error input data failed with:";
constexpr std::string_view kLineNumber = "At line#";
constexpr std::string_view kCpuTime = "Total CPU time";
constexpr std::string_view kExpanding = "expanding   memory to";
constexpr std::string_view kContracting = "contracting memory to";

std::string RuleShort() {
  return std::string(63, '=');
}

std::string RuleLong() {
  return std::string(64, '=');
}

// Finds the lines that matter outside of messages, without looking at lines one by one. Each
// token is searched by a letter of it that is rare in the lines of a running solver.
class CandidateSearch {
 public:
  explicit CandidateSearch(std::string_view block) : block_(block) {}

  // The first token at or behind `from`, npos when there is none. `from` never goes back.
  std::size_t Next(std::size_t from) {
    std::size_t nearest = std::string_view::npos;
    for (Token& token : tokens_) {
      if (token.found == kUnknown || token.found < from) token.found = Find(token, from);
      nearest = std::min(nearest, token.found);
    }
    return nearest;
  }

 private:
  static constexpr std::size_t kUnknown = std::string_view::npos - 1;
  struct Token {
    std::string_view text;
    std::size_t rare;  // index of the letter
    std::size_t found = kUnknown;
  };

  std::size_t Find(const Token& token, std::size_t from) const {
    for (std::size_t at = from + token.rare; at < block_.size(); ++at) {
      const void* hit = std::memchr(block_.data() + at, token.text[token.rare], block_.size() - at);
      if (hit == nullptr) break;
      at = static_cast<std::size_t>(static_cast<const char*>(hit) - block_.data());
      if (block_.compare(at - token.rare, token.text.size(), token.text) == 0) {
        return at - token.rare;
      }
    }
    return std::string_view::npos;
  }

  std::string_view block_;
  std::array<Token, 3> tokens_ = {{{kWarning.substr(0, 4), 0}, {kCpuTime, 8}, {kLineNumber, 7}}};
};

// Gathers what a message file says, block by block.
class MessageScan {
 public:
  explicit MessageScan(const AnalysisHooks& hooks) : hooks_(hooks) {}

  void Take(std::string_view block) {
    CandidateSearch search(block);
    std::size_t position = 0;
    while (position < block.size()) {
      if (message_ == nullptr) {
        const std::size_t found = search.Next(position);
        if (found == std::string_view::npos) return;
        const std::size_t lineEnd = block.substr(position, found - position).rfind('\n');
        if (lineEnd != std::string_view::npos) position += lineEnd + 1;
      }
      TakeTextLine(Trimmed(TakeLine(block, position)));
    }
  }

  AnalysisReport Report(const std::string& messageFile) const {
    AnalysisReport report;
    report.errors = errorCount_;
    report.warnings = warningCount_;
    report.cpuTime = cpuTime_;
    std::vector<std::string>& lines = report.lines;
    lines = {RuleShort(),
             Said(hooks_, Message(MessageId::kReportFileName, messageFile)),
             "",
             Said(hooks_, Message(MessageId::kReportCpuTime, cpuTime_)),
             "",
             Said(hooks_, Message(MessageId::kReportErrors, errorCount_)),
             Said(hooks_, warningCount_ < kMostWarnings
                              ? Message(MessageId::kReportWarnings, warningCount_)
                              : Message(MessageId::kReportManyWarnings)),
             ""};
    AddList(MessageId::kReportErrorList, errors_, lines);
    AddList(MessageId::kReportWarningList, warnings_, lines);
    return report;
  }

 private:
  void TakeTextLine(std::string_view line) {
    const std::size_t warning = line.find(kWarning);
    if (warning != std::string_view::npos) return BeginWarning(line.substr(warning));
    if (Holds(line, kInputError)) {
      message_ = &errors_;
      return Gather(line);
    }
    const std::size_t error = line.find(kError);
    if (error != std::string_view::npos) return BeginError(line.substr(error));
    if (Holds(line, kCpuTime)) ReadCpuTime(line);
    if (message_ != nullptr) {
      ReadMessageLine(line);
    } else if (afterError_ && Holds(line, kLineNumber)) {
      errors_.Add(line);
    }
  }

  void BeginWarning(std::string_view text) {
    const bool listed = warningCount_++ < kMostWarnings;
    afterError_ = false;
    message_ = listed ? &warnings_ : nullptr;
    if (listed) GatherHint(text, kWarning.size() + 1);
  }

  void BeginError(std::string_view text) {
    ++errorCount_;
    afterError_ = true;
    message_ = &errors_;
    GatherHint(text, kError.size() + 1);
  }

  void GatherHint(std::string_view text, std::size_t numberAt) {
    constexpr std::size_t kLongestNumber = 32;
    if (text.size() <= numberAt) return;
    const std::string number(text.substr(numberAt, kLongestNumber));
    Message hint;
    if (LookUpHint(StrWrapperTxt::LeadingInt(number), hint)) {
      message_->AddWords(Said(hooks_, hint));
    }
  }

  // A message ends at an empty line or where the next one begins.
  void ReadMessageLine(std::string_view line) {
    if (line.empty()) {
      message_ = nullptr;
    } else if (!Holds(line, kExpanding) && !Holds(line, kContracting)) {
      Gather(line);
    }
  }

  void Gather(std::string_view line) {
    message_->Add(line);
    if (message_->Full()) message_ = nullptr;
  }

  void ReadCpuTime(std::string_view line) {
    const std::size_t open = line.find('(');
    const std::size_t close = line.find(')');
    if (open >= close || close == std::string_view::npos) return;
    cpuTime_ = line.substr(open + 1, close - open - 1);
  }

  void AddList(PlainMessageId title, const GatheredLines& list,
               std::vector<std::string>& lines) const {
    if (list.Empty()) return;
    lines.push_back(RuleLong());
    lines.push_back(Said(hooks_, Message(title)));
    lines.emplace_back();
    AppendLines(list, hooks_, lines);
  }

  const AnalysisHooks& hooks_;
  GatheredLines errors_;
  GatheredLines warnings_;
  GatheredLines* message_ = nullptr;  // where the lines of the current message go
  bool afterError_ = false;           // the last message was an error
  std::int64_t errorCount_ = 0;
  std::int64_t warningCount_ = 0;
  std::string cpuTime_;
};

AnalysisReport Refused(const AnalysisHooks& hooks, const Message& reason) {
  AnalysisReport report;
  report.lines = {RuleShort(), Said(hooks, reason), "", RuleLong()};
  return report;
}

}  // namespace

AnalysisReport AnalyseMessageFile(const std::string& messageFile, const AnalysisHooks& hooks) {
  if (messageFile.empty()) return Refused(hooks, Message(MessageId::kReportNoName));
  LineBlocks blocks;
  if (!blocks.Open(messageFile))
    return Refused(hooks, Message(MessageId::kReportUnreadable, messageFile));
  blocks.SetProgress(hooks.progress);
  MessageScan scan(hooks);
  std::string_view block;
  while (blocks.Next(block)) scan.Take(block);
  AnalysisReport report;
  if (blocks.Stopped()) {
    report.outcome = AnalysisReport::Outcome::kEnded;
    return report;
  }
  report = scan.Report(messageFile);
  if (!blocks.Failed()) report.outcome = AnalysisReport::Outcome::kRead;
  return report;
}
