// One run, watched through the files that its solver writes.
#ifndef KR_PROGRESS_RUNPROGRESS_H
#define KR_PROGRESS_RUNPROGRESS_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "jobs/JobFile.h"
#include "progress/GlobalStates.h"
#include "progress/MessageProgress.h"
#include "progress/RunFiles.h"
#include "progress/TextOutput.h"
#include "progress/TimeLeft.h"
#include "util/files/GrowingFile.h"

// How the run stands. What is not known is empty. Problem times are in the deck's unit.
struct RunNews {
  RunEnd ended = RunEnd::kRunning;
  std::optional<std::int64_t> cycle;
  std::optional<double> time;
  std::optional<double> timeStep;
  std::optional<double> endTime;
  std::optional<double> percent;      // of the end time, 0 to 100
  std::optional<double> secondsLeft;  // 0 for a run that has ended
  double spread = 1;                  // see TimeLeft::Estimate
  std::string controlledBy;           // what the time step is controlled by
  std::string event;                  // what the solver did last
  std::int64_t implicitStep = 0;      // of an implicit run, and its iterations so far
  int iterations = 0;
  // In the seconds of progress/SolverClock.h.
  std::optional<std::int64_t> started;
  std::optional<std::int64_t> lastTold;
  // Of a deck with cases: which one these figures are of, and how many the deck has. Percent and
  // seconds left are those of all. 0: none, or not known.
  int caseNumber = 0;
  int cases = 0;
  std::optional<double> caseSecondsLeft;  // of this case alone; the same without cases
};

// Where a run stopped that ended normally before its end time: a RunStop. The one place that says
// so, with RunNews::ended, for every window and report.
int StoppedAt(const RunNews& news);

// Looks at the files when it is asked to and keeps what it read. A look that finds nothing new
// costs one question to the system a file. One thread at a time.
class RunProgress {
 public:
  explicit RunProgress(const RunFiles& files);

  // Files that were found later; one that is known already stays.
  void AddFiles(const RunFiles& files);
  // After a run its message file has another name, with ".krb" behind it.
  void FollowKeptFile();

  // Of the deck, where the caller knows it; what the run itself tells goes before.
  void SetDeckEndTime(std::optional<double> endTime) { deckEndTime_ = endTime; }

  // True when something was new. `progress` as GrowingFile::Look has it, for the big files
  // together, on several threads but one at a time; when it returns false the rest is left for the
  // next look.
  using Progress = std::function<bool(std::uint64_t done, std::uint64_t size)>;
  bool Look(const Progress& progress = {});
  bool HasRead() const { return hasRead_; }  // any of the files
  bool Stopped() const { return stopped_; }  // the last look, by its hook

  // For a run that nobody writes any more: a last line without an end counts too.
  void TakeOpenLines();

  // Forgets the states, which take most of the memory: for a run of which only the end matters.
  void ForgetStates();

  // `now` in the seconds of progress/SolverClock.h; without it, the moment of the newest line.
  RunNews News(std::optional<std::int64_t> now = std::nullopt) const;

  const RunFiles& Files() const { return files_; }
  const MessageProgress& Message() const { return message_; }
  const GlobalStates& States() const { return states_; }

 private:
  std::optional<double> EndTime() const;
  void TellEnd(RunNews& news) const;

  RunFiles files_;
  std::optional<double> deckEndTime_;
  std::optional<GrowingFile> output_;
  std::optional<GrowingFile> glstat_;
  std::optional<GrowingFile> statusOut_;
  MessageProgress message_;
  TextOutput text_;
  GlobalStates states_;
  StatusProgress status_;
  bool stopped_ = false;
  bool hasRead_ = false;
};

#endif
