#include "Behaviour.h"

#include <fstream>

#include "System.h"
#include "Text.h"

namespace {

constexpr int kLinesLookedAt = 1000;
constexpr double kLongestRun = 86400;  // seconds
constexpr int kMostNotices = 100000;
constexpr int kMostDumps = 99;
constexpr int kMostNumber = 999999;  // of a message
constexpr int kMostLines = 1000000;
constexpr int kMostCycles = 2000000000;
constexpr int kErrorSolution = 40509;

// The text behind "$ standin:"; nothing when the line is none of ours.
std::optional<std::string_view> CommandText(std::string_view line) {
  if (line.empty() || line[0] != '$') return std::nullopt;
  line = Trim(line.substr(1));
  constexpr std::string_view kMark = "STANDIN:";
  if (Upper(line.substr(0, kMark.size())) != kMark) return std::nullopt;
  return Trim(line.substr(kMark.size()));
}

bool ReadNumber(const std::vector<std::string>& words, std::size_t index, int low, int high,
                int& out) {
  const auto number = index < words.size() ? ToInteger(words[index]) : std::nullopt;
  if (!number || *number < low || *number > high) return false;
  out = static_cast<int>(*number);
  return true;
}

bool ReadShare(const std::vector<std::string>& words, double low, double high, double& out) {
  const auto number = words.size() > 1 ? ToReal(words[1]) : std::nullopt;
  if (!number || *number < low || *number > high) return false;
  out = *number;
  return true;
}

bool ReadNotices(const std::vector<std::string>& words, std::vector<Notices>& list) {
  Notices notices;
  if (!ReadNumber(words, 1, 0, kMostNotices, notices.count) ||
      !ReadNumber(words, 2, 0, kMostNumber, notices.number)) {
    return false;
  }
  list.push_back(notices);
  return true;
}

bool* Flag(Behaviour& behaviour, const std::string& name) {
  if (name == "CRASH") return &behaviour.crash;
  if (name == "HANG") return &behaviour.hang;
  if (name == "NO-LICENCE") return &behaviour.noLicence;
  if (name == "WINDOW-SIZE") return &behaviour.windowSize;
  if (name == "NO-MESSAGE") return &behaviour.noMessage;
  if (name == "NO-RESULT") return &behaviour.noResult;
  if (name == "EMPTY-RESULT") return &behaviour.emptyResult;
  if (name == "IMPLICIT") return &behaviour.implicit;
  if (name == "DISK-FULL") return &behaviour.diskFull;
  if (name == "NAN") return &behaviour.sickness.nan;
  if (name == "IGNORE-TERM") return &behaviour.ignoreTerm;
  if (name == "CHILD") return &behaviour.child;
  if (name == "ECHO") return &behaviour.echo;
  if (name == "CRLF") return &behaviour.crlf;
  if (name == "WARN-BLOCK-WITHOUT-BLANK-LINE") return &behaviour.warningsWithoutBlank;
  return nullptr;
}

bool ReadValue(Behaviour& behaviour, const std::string& name,
               const std::vector<std::string>& words) {
  if (name == "RUN") {
    const auto seconds = words.size() > 1 ? ToReal(words[1]) : std::nullopt;
    if (!seconds || *seconds < 0 || *seconds > kLongestRun) return false;
    behaviour.runSeconds = *seconds;
    return true;
  }
  if (name == "LINES") return ReadNumber(words, 1, 1, kMostLines, behaviour.lines);
  if (name == "CHATTER") return ReadNumber(words, 1, 1, kMostLines, behaviour.chatter);
  if (name == "KILL") {
    constexpr int kLastSignal = 31;
    int number = 0;
    if (!ReadNumber(words, 1, 1, kLastSignal, number)) return false;
    behaviour.killSignal = number;
    return true;
  }
  if (name == "CYCLES") return ReadNumber(words, 1, 1, kMostCycles, behaviour.cycles);
  Sickness& sickness = behaviour.sickness;
  if (name == "FALLING-STEP") return ReadShare(words, 1e-6, 1, sickness.stepShare);
  if (name == "ENERGY-RATIO") return ReadShare(words, 0, 1e6, sickness.energyRatio);
  if (name == "HOURGLASS") return ReadShare(words, 0, 1e6, sickness.hourglassPercent);
  if (name == "ADDED-MASS") return ReadShare(words, 0, 1e6, sickness.addedMassPercent);
  if (name == "WARNINGS") return ReadNotices(words, behaviour.warnings);
  if (name == "ERRORS") return ReadNotices(words, behaviour.errors);
  if (name == "FAIL") {
    int number = kErrorSolution;
    if (words.size() > 1 && !ReadNumber(words, 1, 1, kMostNumber, number)) return false;
    behaviour.fail = number;
    return true;
  }
  if (name == "FAILING-RANK") {
    int rank = 0;
    if (!ReadNumber(words, 1, 0, kMostNumber, rank)) return false;
    behaviour.failingRank = rank;
    return true;
  }
  if (name == "ADAPTDUMP") return ReadNumber(words, 1, 0, kMostDumps, behaviour.adaptDumps);
  if (name == "DUMPS") return ReadNumber(words, 1, 0, kMostDumps - 1, behaviour.dumps);
  if (name == "RUNNING-DUMPS") {
    return ReadNumber(words, 1, 0, kMostDumps, behaviour.runningDumps);
  }
  if (name == "EXIT") {
    int code = 0;
    if (!ReadNumber(words, 1, 0, 255, code)) return false;
    behaviour.exitCode = code;
    return true;
  }
  if (name == "CASE-NAMES") {
    behaviour.caseNames = words.size() > 1 ? Upper(words[1]) : std::string();
    return behaviour.caseNames == "ALONE" || behaviour.caseNames == "FIRST";
  }
  if (name == "VERSION" && words.size() > 1) {
    behaviour.version = ParseVersion({words.begin() + 1, words.end()});
    return true;
  }
  return false;
}

}  // namespace

void Behaviour::Read(std::string_view line) {
  const auto text = CommandText(line);
  if (!text) return;
  const std::vector<std::string> words = Words(*text);
  if (words.empty()) return;
  const std::string name = Upper(words[0]);
  if (bool* flag = Flag(*this, name)) {
    *flag = true;
  } else if (!ReadValue(*this, name, words)) {
    refused.emplace_back(*text);
  }
}

void Behaviour::KeepFor(int rank) {
  if (!failingRank || *failingRank == rank) return;
  fail.reset();
  errors.clear();
  crash = false;
  killSignal.reset();
  exitCode.reset();
}

Behaviour ReadBehaviour(const std::string& path, const LoadCase* loadCase) {
  Behaviour behaviour;
  if (IsFolder(path)) return behaviour;
  std::ifstream file(path, std::ios::binary);
  std::string line;
  int block = 0;
  for (int i = 0; i < kLinesLookedAt && std::getline(file, line); ++i) {
    if (line.starts_with('*')) block = CaseEdge(Upper(Trim(line.substr(1)))).value_or(block);
    if (block == 0 || loadCase == nullptr || loadCase->blocks.contains(block)) behaviour.Read(line);
  }
  return behaviour;
}
