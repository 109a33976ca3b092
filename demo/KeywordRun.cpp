#include "KeywordRun.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <thread>
#include <utility>

#include "Behaviour.h"
#include "BehaviourActs.h"
#include "D3plotWriter.h"
#include "Deck.h"
#include "GlobalStates.h"
#include "Launcher.h"
#include "MessageFile.h"
#include "SideFiles.h"
#include "System.h"
#include "Text.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kPollInterval = std::chrono::milliseconds(20);
// The other ranks look for the sense switch themselves; the first one leaves it for them so long.
constexpr auto kSwitchGrace = std::chrono::milliseconds(500);

constexpr int kFewestLines = 10;
constexpr int kMostLines = 2000;
constexpr double kLinesASecond = 5;
constexpr double kTimeNoise = 1e-9;  // of the way to the end
constexpr int kIterations = 3;       // of an implicit step
constexpr int kPlotIntervals = 5;
constexpr long long kDefaultWords = 127121;

constexpr int kErrorCommandLine = 10001;
constexpr int kErrorFile = 10101;
constexpr int kWarningDuplicateNode = 10170;

enum class Ending { kNone, kTime, kSwitch, kError };

class KeywordRun {
 public:
  // `loadCase` null: the whole deck at once.
  KeywordRun(const Options& options, const std::string& programName, const LoadCase* loadCase)
      : options_(options), programName_(programName), loadCase_(loadCase) {}

  int Run();
  bool ReachedItsEnd() const { return ending_ == Ending::kTime; }

 private:
  bool OpenMessageFile();
  void WriteHead();
  bool ReadInput();
  bool ReadModel();
  bool ReadRestart();
  void WriteWarnings();
  bool WriteAskedErrors();
  bool StartOutput();
  Ending Step();
  void March();
  void Wait(Clock::time_point until);
  void ObeySwitch(const SenseSwitch& asked);
  void TakeEndTime(double endTime);
  double TotalSeconds() const;
  void MidRun();
  void Plot();
  void Dump();
  void WriteDumpTo(const std::string& name);
  void DumpNowAndThen();
  void HandOn();
  int End();
  void Error(int number, const std::string& text);
  double TimeAt(int line) const;
  std::string Controlled() const;
  void TellState();
  void FillDisk();
  bool WritesResults() const { return rank_.First(); }

  const Options& options_;
  const std::string programName_;
  const LoadCase* const loadCase_;
  const Clock::time_point start_ = Clock::now();
  const Rank rank_ = FindRank();
  Behaviour behaviour_;
  MessageFile message_;
  Deck deck_;
  D3plotWriter plot_;
  GlobalStates states_;
  double startTime_ = 0;
  double endTime_ = 0;
  double plannedEnd_ = 0;  // as the run began
  double time_ = 0;
  double timeStep_ = 0;
  int cycle_ = 0;
  int line_ = 0;  // of progress
  int lines_ = kFewestLines;
  int dumps_ = 0;
  Ending ending_ = Ending::kNone;
};

int KeywordRun::Run() {
  const bool restart = options_.deck.empty() && !options_.restart.empty();
  behaviour_ = ReadBehaviour(restart ? options_.restart + ".standin" : options_.deck, loadCase_);
  behaviour_.KeepFor(rank_.number);
  ActAtStart(behaviour_, options_, rank_.First());
  if (!OpenMessageFile()) return 1;
  WriteHead();
  if (ReadInput() && WriteAskedErrors() && StartOutput()) March();
  return End();
}

bool KeywordRun::OpenMessageFile() {
  std::string path =
      options_.prefix + (rank_.parallel ? Format("mes%04d", rank_.number) : "messag");
  if (behaviour_.noMessage) path.clear();
  if (message_.Open(path, behaviour_.crlf, rank_.First())) return true;
  std::fprintf(stderr, "%s: the message file %s cannot be written\n", programName_.c_str(),
               path.c_str());
  return false;
}

void KeywordRun::WriteHead() {
  const Version version = behaviour_.version ? *behaviour_.version : ConfiguredVersion();
  message_.Banner(version, options_.doublePrecision, rank_);
  message_.OptionsEcho(options_.words);
  message_.MemoryLines(options_.memoryWords > 0 ? options_.memoryWords : kDefaultWords,
                       options_.doublePrecision);
  for (const std::string& command : behaviour_.refused) {
    message_.Line(" stand-in: not understood: " + command);
  }
}

void KeywordRun::Error(int number, const std::string& text) {
  message_.Error(number, text);
  ending_ = Ending::kError;
}

bool KeywordRun::ReadInput() {
  if (!options_.error.empty()) {
    Error(kErrorCommandLine, options_.error);
  } else if (options_.deck.empty() && options_.restart.empty()) {
    Error(kErrorCommandLine, "there is no input file: give i=DECK or r=DUMP");
  } else if (options_.restart.empty() || ReadRestart()) {
    return options_.deck.empty() || ReadModel();
  }
  return false;
}

bool KeywordRun::ReadModel() {
  std::vector<DeckError> errors;
  deck_ = ReadDeck(options_.deck, errors, loadCase_);
  for (const DeckError& error : errors) Error(error.number, error.text);
  if (!errors.empty()) return false;
  if (deck_.endTime || options_.restart.empty()) endTime_ = deck_.endTime.value_or(0);
  message_.Line(" title: " + deck_.title);
  message_.Line(Format(" nodes    %12zu", deck_.nodes.size()));
  message_.Line(Format(" elements %12zu", deck_.ElementCount()));
  for (const std::string& keyword : deck_.skipped) message_.Line(" not read: *" + keyword);
  message_.Line();
  WriteWarnings();
  return true;
}

bool KeywordRun::ReadRestart() {
  if (IsFolder(options_.restart)) {
    Error(kErrorFile, "the restart file is a folder: " + options_.restart);
    return false;
  }
  const std::string path = RankFile(options_.restart, rank_);
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (file == nullptr) {
    Error(kErrorFile, "the restart file cannot be read: " + path);
    return false;
  }
  std::fclose(file);
  RestartState state{0, 1, 0};
  if (const auto dump = ReadDump(path)) {
    state = *dump;
  } else {
    message_.Line(" stand-in: the restart file is none of ours; the run begins at time 0");
  }
  startTime_ = state.time;
  endTime_ = state.endTime;
  dumps_ = state.dumps;
  if (options_.deck.empty()) WriteWarnings();
  return true;
}

void KeywordRun::WriteWarnings() {
  if (deck_.duplicateNodes > 0) {
    message_.Warning(kWarningDuplicateNode,
                     Format("%zu nodes are defined more than once", deck_.duplicateNodes), true);
  }
  for (const Notices& notices : behaviour_.warnings) {
    for (int i = 1; i <= notices.count; ++i) {
      message_.Warning(notices.number, NoticeText("warning", i, notices.count),
                       !behaviour_.warningsWithoutBlank);
      if (behaviour_.warningsWithoutBlank) {
        message_.MemoryLines(kDefaultWords, options_.doublePrecision);
      }
    }
  }
}

bool KeywordRun::WriteAskedErrors() {
  for (const Notices& notices : behaviour_.errors) {
    for (int i = 1; i <= notices.count; ++i) {
      Error(notices.number, NoticeText("error", i, notices.count));
    }
  }
  return ending_ != Ending::kError;
}

bool KeywordRun::StartOutput() {
  if (!WritesResults()) return true;
  if (!WriteListing(options_, deck_)) {
    Error(kErrorFile, "the file d3hsp cannot be written");
    return false;
  }
  const Version version = behaviour_.version ? *behaviour_.version : ConfiguredVersion();
  const std::string solver = Format(
      "stand-in %s %c %s %s date 01/01/2016", rank_.parallel ? "mpp" : "smp",
      options_.doublePrecision ? 'd' : 's', version.release.c_str(), version.revision.c_str());
  if (!states_.Begin(options_.prefix + "glstat", deck_.title, solver)) {
    Error(kErrorFile, "the file glstat cannot be written");
    return false;
  }
  if (!options_.restart.empty()) return true;
  if (!plot_.Begin(options_.prefix + "d3plot", deck_, options_.doublePrecision)) {
    Error(kErrorFile, "the file d3plot cannot be written");
    return false;
  }
  return true;
}

void KeywordRun::March() {
  lines_ = behaviour_.lines > 0
               ? behaviour_.lines
               : std::clamp(static_cast<int>(behaviour_.runSeconds * kLinesASecond), kFewestLines,
                            kMostLines);
  time_ = startTime_;
  plannedEnd_ = endTime_;
  timeStep_ = (TimeAt(1) - TimeAt(0)) * lines_ / std::max(behaviour_.cycles, lines_);
  for (const std::string& text : EstimateLines(endTime_, 0, behaviour_.runSeconds)) {
    message_.Line(text);
  }
  message_.Line();
  message_.Progress(1, time_, timeStep_, "flush i/o buffers");
  Plot();
  TellState();
  while (ending_ == Ending::kNone) {
    ++line_;
    if (behaviour_.implicit) {
      message_.ImplicitBegin(line_, TimeAt(line_), TimeAt(line_) - TimeAt(line_ - 1));
    }
    const double share = static_cast<double>(line_) / lines_;
    Wait(start_ + std::chrono::duration_cast<Clock::duration>(
                      std::chrono::duration<double>(behaviour_.runSeconds * share)));
    if (ending_ != Ending::kNone) break;
    ending_ = Step();
  }
}

// The time step stays for half of the lines, then falls evenly to its last share; the end time is
// reached all the same.
double KeywordRun::TimeAt(int line) const {
  const int steady = lines_ / 2;
  const double last = behaviour_.sickness.stepShare;
  const auto sum = [&](int count) {
    const int falling = std::max(count - steady, 0);
    const double lost = (1 - last) / std::max(lines_ - steady, 1);  // with each line
    return count - lost * falling * (falling + 1) / 2;
  };
  const double way = std::max(plannedEnd_ - startTime_, 0.0) / sum(lines_);
  return startTime_ + way * (sum(std::min(line, lines_)) + last * std::max(line - lines_, 0));
}

// By the way to the end time at the speed that was planned.
double KeywordRun::TotalSeconds() const {
  const double planned = plannedEnd_ - startTime_;
  const double share = planned > 0 ? (endTime_ - startTime_) / planned : 1;
  return behaviour_.runSeconds * std::max(share, 0.0);
}

Ending KeywordRun::Step() {
  const double before = time_;
  const int cycleBefore = cycle_;
  const double next = TimeAt(line_);
  // Without a way to go the lines alone lead to the end.
  const bool moves = plannedEnd_ > startTime_;
  const bool last =
      moves ? next >= endTime_ - kTimeNoise * (plannedEnd_ - startTime_) : line_ >= lines_;
  time_ = std::max(before, std::min(next, endTime_));
  cycle_ =
      static_cast<int>(static_cast<double>(std::max(behaviour_.cycles, lines_)) * line_ / lines_);
  timeStep_ = (time_ - before) / std::max(cycle_ - cycleBefore, 1);
  if (line_ == lines_ / 2) MidRun();
  if (ending_ != Ending::kNone) return ending_;
  if (behaviour_.implicit) message_.ImplicitEnd(kIterations);
  if (last || line_ % std::max(lines_ / kPlotIntervals, 1) == 0) {
    Plot();
  } else if (!behaviour_.implicit) {
    message_.Progress(cycle_, time_, timeStep_, "flush i/o buffers");
  }
  TellState();
  DumpNowAndThen();
  if (ending_ != Ending::kNone) return ending_;
  return last ? Ending::kTime : Ending::kNone;
}

std::string KeywordRun::Controlled() const {
  if (behaviour_.implicit) return "load curve";
  constexpr std::pair<ElementKind, const char*> kKinds[] = {{ElementKind::kShell, "shell"},
                                                            {ElementKind::kSolid, "solid"},
                                                            {ElementKind::kThickShell, "tshell"},
                                                            {ElementKind::kBeam, "beam"}};
  for (const auto& [kind, name] : kKinds) {
    const std::vector<Element>& elements = deck_.Of(kind);
    if (elements.empty()) continue;
    const Element& element = elements[static_cast<std::size_t>(line_) % elements.size()];
    return Format("%s %8lld of part %8lld", name, static_cast<long long>(element.id),
                  static_cast<long long>(element.part));
  }
  return "load curve";
}

// Energies and the run's own guess of its end.
void KeywordRun::TellState() {
  if (!WritesResults()) return;
  const double share = std::min(static_cast<double>(line_) / lines_, 1.0);
  const bool written = states_.Write({std::max(cycle_, 1), time_, timeStep_, share, Controlled()},
                                     behaviour_.sickness);
  const double elapsed = std::chrono::duration<double>(Clock::now() - start_).count();
  std::string status;
  for (const std::string& text : EstimateLines(endTime_, elapsed, TotalSeconds())) {
    status += text + "\n";
  }
  if (!written || !WriteTextFile(options_.prefix + "status.out", status)) {
    Error(kErrorFile, "the files glstat and status.out cannot be written");
  }
}

// Looks for the sense switch at least once, then until the time has come.
void KeywordRun::Wait(Clock::time_point until) {
  while (true) {
    if (const auto asked = ReadSenseSwitch(options_.prefix)) ObeySwitch(*asked);
    const auto now = Clock::now();
    if (ending_ != Ending::kNone || now >= until) return;
    std::this_thread::sleep_for(std::min<Clock::duration>(kPollInterval, until - now));
  }
}

void KeywordRun::ObeySwitch(const SenseSwitch& asked) {
  const int number = asked.number;
  // It lies there until the first rank takes it away, so the others obey what ends the run only.
  if (!rank_.First() && number > 1) return;
  if (number == 0) {
    if (asked.endTime != endTime_) TakeEndTime(asked.endTime);
  } else {
    message_.Line(Format(" *** sense switch %d", number));
  }
  if (number == 1 || number == 3) Dump();
  if (number == 2) message_.Progress(cycle_, time_, timeStep_, "time step information");
  if (number == 4) Plot();
  if (rank_.First()) {
    if (rank_.parallel) std::this_thread::sleep_for(kSwitchGrace);
    RemoveSenseSwitch(options_.prefix);
  }
  if (number == 1) ending_ = Ending::kSwitch;
}

// The run keeps its speed.
void KeywordRun::TakeEndTime(double endTime) {
  endTime_ = endTime;
  message_.Line(" *** sense switch: new termination time");
  const double elapsed = std::chrono::duration<double>(Clock::now() - start_).count();
  for (const std::string& text : EstimateLines(endTime_, elapsed, TotalSeconds())) {
    message_.Line(text);
  }
  message_.Line();
}

void KeywordRun::MidRun() {
  if (rank_.First()) {
    for (int i = 1; i <= behaviour_.adaptDumps; ++i) WriteAdaptDump(options_.prefix, i);
  }
  ActInTheMiddle(behaviour_);
  if (behaviour_.diskFull) FillDisk();
  if (behaviour_.fail) Error(*behaviour_.fail, "the deck asked the stand-in to fail");
}

// From here on nothing reaches the disk; the console still hears of it.
void KeywordRun::FillDisk() {
  states_.BreakOff();
  message_.BreakOff();
  Error(kErrorFile, "no space left on device");
}

void KeywordRun::Plot() {
  message_.Progress(std::max(cycle_, 1), time_, timeStep_, "write d3plot file");
  if (!WritesResults() || !plot_.Begun()) return;
  if (!plot_.WriteState(time_)) Error(kErrorFile, "the d3plot files cannot be written");
}

void KeywordRun::Dump() {
  if (!options_.noDump) WriteDumpTo(Format("d3dump%02d", ++dumps_));
}

void KeywordRun::WriteDumpTo(const std::string& name) {
  message_.Progress(std::max(cycle_, 1), time_, timeStep_, "write " + name + " file");
  if (!WriteDump(RankFile(options_.prefix + name, rank_), {time_, endTime_, dumps_})) {
    Error(kErrorFile, "the restart dump cannot be written");
  }
}

// As evenly as the lines of progress allow.
void KeywordRun::DumpNowAndThen() {
  const auto isTimeFor = [this](int dumps) {
    return line_ * dumps / lines_ != (line_ - 1) * dumps / lines_;
  };
  if (line_ == lines_) return;
  if (isTimeFor(behaviour_.dumps + 1)) Dump();
  if (isTimeFor(behaviour_.runningDumps + 1) && !options_.noDump) WriteDumpTo("runrsf");
}

void KeywordRun::HandOn() {
  if (!WritesResults() || !deck_.formedSet) return;
  message_.Progress(cycle_, time_, timeStep_, "write dynain file");
  if (!WriteFormedResult(options_.prefix, deck_))
    Error(kErrorFile, "the file dynain cannot be written");
}

int KeywordRun::End() {
  if (ending_ == Ending::kTime) {
    Dump();
    HandOn();
  }
  if (ending_ == Ending::kTime) {
    message_.Line();
    message_.Line(" *** termination time reached ***");
  } else if (ending_ == Ending::kSwitch) {
    message_.Line();
    message_.Line(" *** termination by sense switch ***");
  }
  const bool normal = ending_ != Ending::kError;
  const auto writeTermination = [&] {
    normal ? message_.NormalTermination() : message_.ErrorTermination();
  };
  writeTermination();
  message_.Timing(time_, cycle_, static_cast<double>(std::clock()) / CLOCKS_PER_SEC,
                  std::chrono::duration<double>(Clock::now() - start_).count());
  writeTermination();
  if (!message_.Good()) {
    std::fprintf(stderr, "%s: the message file could not be written whole\n", programName_.c_str());
  }
  return behaviour_.exitCode.value_or(normal && message_.Good() ? 0 : 1);
}

// What stands in front of the names of a case's files.
std::string CasePrefix(const Options& options, int number) {
  const std::string name = Format("CASE%d.", number);
  const std::string order = ReadBehaviour(options.deck).caseNames;
  if (order == "ALONE") return name;
  return order == "FIRST" ? name + options.prefix : options.prefix + name;
}

}  // namespace

int RunKeywordSolver(const Options& options, const std::string& programName) {
  std::vector<LoadCase> cases;
  std::vector<DeckError> errors;
  if (options.cases && !options.deck.empty()) cases = ReadDeck(options.deck, errors).cases;
  if (cases.empty()) return KeywordRun(options, programName, nullptr).Run();
  for (const LoadCase& one : cases) {
    Options ofCase = options;
    ofCase.prefix = CasePrefix(options, one.number);
    KeywordRun run(ofCase, programName, &one);
    const int exitCode = run.Run();
    if (exitCode != 0 || !run.ReachedItsEnd()) return exitCode;
  }
  return 0;
}
