#include "solvers/HowItFailed.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "solvers/LastWords.h"
#include "solvers/RunSteps.h"
#include "util/files/FreeSpace.h"
#include "util/files/InputFile.h"
#include "util/files/LineBlocks.h"
#include "util/process/ConsoleLines.h"
#include "util/text/PlainText.h"

namespace {

constexpr std::size_t kEndBytes = 8192;
constexpr std::size_t kMostLines = 20;
constexpr std::size_t kLongestLine = 200;
constexpr std::uint64_t kNoSpace = 1024 * 1024;  // with less no solver can go on

// All in small letters.
constexpr std::array<std::string_view, 8> kDiskWords = {
    "no space left",       "disk full",          "disk is full",         "quota exceeded",
    "not enough space on", "not enough disk sp", "insufficient disk sp", "out of disk"};
constexpr std::array<std::string_view, 16> kRefusals = {
    "error",  "fail",    "denied", "expired", "no ",     "not ",    "cannot",    "can't",
    "unable", "unavail", "refuse", "reject",  "invalid", "missing", "timed out", "exceeded"};
constexpr std::array<std::string_view, 8> kTooSmall = {"too small",    "below",    "less than",
                                                       "smaller than", "minimum",  "collapse",
                                                       "dropped",      "underflow"};

bool HoldsAny(std::string_view line, const auto& words) {
  return std::any_of(words.begin(), words.end(),
                     [line](std::string_view word) { return Holds(line, word); });
}

// By a line that tells why the solver ends.
FailureKind KindIn(std::string_view text) {
  const std::string line = Lower(text);
  if (HoldsAny(line, kDiskWords)) return FailureKind::kDiskFull;
  const bool isLicence = Holds(line, "licence") || Holds(line, "license");
  if (isLicence && HoldsAny(line, kRefusals)) return FailureKind::kLicence;
  const bool isStep = Holds(line, "time step") || Holds(line, "timestep");
  if (isStep && HoldsAny(line, kTooSmall)) return FailureKind::kTimeStep;
  return FailureKind::kNone;
}

// 0: there is none.
int NumberOfError(std::string_view line) {
  const std::size_t at = line.find(kErrorLine);
  if (at == std::string_view::npos) return 0;
  std::string_view rest = Trimmed(line.substr(at + kErrorLine.size()));
  std::size_t digits = 0;
  while (digits < rest.size() && IsDigit(rest[digits])) ++digits;
  constexpr long long kMost = 99999999;
  return static_cast<int>(WholeNumber(rest.substr(0, digits), 1, kMost).value_or(0));
}

// Lines that only warn, and those of a banner, say nothing of an end.
bool TellsOfEnd(std::string_view text) {
  const std::string line = Lower(text);
  return !Holds(line, "warning") && (Holds(line, "error") || Holds(line, "terminat") ||
                                     Holds(line, "***") || HoldsAny(line, kDiskWords));
}

// What the solver printed last, whether or not it wrote a message file.
Failure FailureInConsole(const JobFile& job) {
  const std::string file = ConsoleFileOf(job);
  Failure found;
  if (job.folderBefore.HoldsUnchanged(file)) return found;
  for (const std::string& line : LastConsoleLines(file, kMostLines, kLongestLine)) {
    if (const FailureKind kind = KindIn(line); kind != FailureKind::kNone) return {kind};
    const int number = NumberOfError(line);
    if (number != 0 && found.number == 0) found = {FailureKind::kSolverError, number};
  }
  return found;
}

bool DiskIsFull(const JobFile& job) {
  const std::optional<std::uint64_t> free = FreeSpace(job.Folder());
  return free && *free < kNoSpace;
}

}  // namespace

Failure FailureInError(std::string_view words) {
  const FailureKind kind = KindIn(words);
  if (kind != FailureKind::kNone) return {kind};
  return {FailureKind::kSolverError, NumberOfError(words)};
}

Failure FailureInEnd(const std::string& messageFile) {
  InputFile file;
  if (!file.Open(messageFile)) return {};
  std::string end(kEndBytes, '\0');
  const std::uint64_t from = file.Size() > kEndBytes ? file.Size() - kEndBytes : 0;
  const std::ptrdiff_t count = file.ReadAt(from, end.data(), end.size());
  const std::string_view text =
      std::string_view(end).substr(0, count > 0 ? static_cast<std::size_t>(count) : 0);
  for (std::size_t at = 0; at < text.size();) {
    const std::string_view line = TakeLine(text, at);
    const FailureKind kind = TellsOfEnd(line) ? KindIn(line) : FailureKind::kNone;
    if (kind != FailureKind::kNone) return {kind};
  }
  return {};
}

Failure HowItFailed(const JobFile& job, std::optional<int> exitCode, bool stepFell) {
  if (job.abort) return {FailureKind::kStopped};
  const Failure said = job.HowFailed();
  const bool isOld = said.kind == FailureKind::kOldOutput;
  const bool isPlain =
      isOld || said.kind == FailureKind::kNone || said.kind == FailureKind::kSolverError;
  if (!isPlain) return said;
  const Failure printed = said.number == 0 ? FailureInConsole(job) : Failure();
  if (printed.kind != FailureKind::kNone && printed.kind != FailureKind::kSolverError) {
    return printed;
  }
  // Whatever number the solver gives to a file that it could not write.
  const Failure& numbered = said.number != 0 ? said : printed;
  if (numbered.number != 0 && DiskIsFull(job)) return {FailureKind::kDiskFull};
  if (stepFell) return {FailureKind::kTimeStep};
  if (numbered.number != 0) return numbered;
  const int code = exitCode.value_or(0);
  const bool hasNoFile = job.RunErrorCode() == RunError::kNoMessageFile;
  if (hasNoFile && TellsOfMissingProgram(code)) {
    return {FailureKind::kCannotStart, RunError::kNotStarted};
  }
  if (const int signal = PTWrapperProcess::SignalOf(code); signal != 0) {
    return {FailureKind::kKilled, signal};
  }
  if (code < 0) return {FailureKind::kKilled, code};
  if (DiskIsFull(job)) return {FailureKind::kDiskFull};
  if (hasNoFile && !isOld) return {FailureKind::kNoMessageFile, code};
  return said.kind == FailureKind::kNone ? Failure{FailureKind::kNoNormalEnd} : said;
}
