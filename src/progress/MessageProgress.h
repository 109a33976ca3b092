// How far a keyword solver's run has come, by the lines of its message file.
#ifndef KR_PROGRESS_MESSAGEPROGRESS_H
#define KR_PROGRESS_MESSAGEPROGRESS_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "progress/TimeLeft.h"
#include "util/files/GrowingFile.h"

// What a run says of its own end, in "status.out" and in the message file. Seconds.
struct SolverEstimate {
  std::optional<double> endTime;  // in the deck's unit of time
  std::optional<double> clockTotal;
  std::optional<double> clockLeft;
  std::optional<double> cpuTotal;
  std::optional<double> cpuLeft;

  // Takes one line of the block; false when it is none of it.
  bool TakeLine(std::string_view line);
};

// One moment of a run.
struct ProgressPoint {
  std::int64_t cycle = 0;
  double time = 0;         // problem time, in the deck's unit
  double step = 0;         // 0 where none is told
  std::int64_t clock = 0;  // seconds, as progress/SolverClock.h has them
};

enum class RunEnd {
  kRunning,  // no line of an end
  kNormal,   // the end time was reached, or there is nothing that says otherwise
  kStopped,  // a normal end before the end time
  kError,
};

// Takes the lines as the file grows. Memory is bounded: of a long run every second, fourth, ...
// point is kept, and always the last one. One thread at a time.
class MessageProgress : public LineTaker {
 public:
  static constexpr std::size_t kMostPoints = 1 << 16;

  void BeginAnew() override { *this = MessageProgress(); }
  void TakeLines(std::string_view block) override;

  // In the order of the file. A restart goes on behind the points of the run before it when the
  // solver writes both into one file.
  const std::vector<ProgressPoint>& Points() const { return points_; }
  const ProgressPoint* Last() const { return points_.empty() ? nullptr : &points_.back(); }
  const std::string& LastEvent() const { return event_; }  // "write d3plot file"

  // Seconds on the solver's clock between two points, of all that were taken.
  double LongestPause() const { return longestPause_; }

  // The first value that was NaN or infinite: "dt", "kinetic energy"; empty: none.
  const std::string& NotFinite() const { return notFinite_; }

  const TimeLeft& Left() const { return left_; }

  // What the solver believes.
  const SolverEstimate& Estimate() const { return estimate_; }
  // Of an implicit run: the step that was begun last, its iterations so far; 0 before.
  std::int64_t ImplicitStep() const { return implicitStep_; }
  int Iterations() const { return iterations_; }

  // By the lines alone: kNormal or kError once the file tells of an end, kStopped when it names a
  // stop request. ReachedEnd: "termination time reached".
  RunEnd End() const { return end_; }
  bool ReachedEnd() const { return reachedEnd_; }

  // Of the command line that the file begins with; empty where it is not told.
  const std::string& DeckName() const { return deck_; }

 private:
  void TakeLine(std::string_view line);
  bool TakeProgress(std::string_view line);
  void TakeImplicitBegin(std::string_view line);
  void TakeConverged(std::string_view line);
  void TakeOption(std::string_view word);
  void TakeEnd(RunEnd end, std::string_view line);
  void GoOn();
  void NoteNotFinite(std::string_view name);
  void AddConverged(std::int64_t clock);
  void Add(const ProgressPoint& point);

  std::vector<ProgressPoint> points_;
  std::uint64_t stride_ = 1;  // of the points that are kept
  std::uint64_t seen_ = 0;
  bool lastIsExtra_ = false;  // the last point is there only because it is the last
  TimeLeft left_;
  double longestPause_ = 0;
  std::string event_;
  std::string notFinite_;
  SolverEstimate estimate_;
  std::int64_t implicitStep_ = 0;
  double implicitTime_ = 0;  // that the step leads to
  double implicitSize_ = 0;
  int iterations_ = 0;
  bool converged_ = false;  // and no point for it yet
  bool afterEnd_ = false;   // the next point is a restart's
  bool stopAsked_ = false;
  bool reachedEnd_ = false;
  bool inOptions_ = false;
  RunEnd end_ = RunEnd::kRunning;
  std::string deck_;
};

// "status.out": the newest block. One thread at a time.
class StatusProgress : public LineTaker {
 public:
  void BeginAnew() override { estimate_ = {}; }
  void TakeLines(std::string_view block) override;
  const SolverEstimate& Estimate() const { return estimate_; }

 private:
  SolverEstimate estimate_;
};

#endif
