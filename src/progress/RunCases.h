// A run with the cases of its deck, which the solver works off one after another.
#ifndef KR_PROGRESS_RUNCASES_H
#define KR_PROGRESS_RUNCASES_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "jobs/DeckEndTime.h"
#include "progress/RunFiles.h"
#include "progress/RunProgress.h"

// A run without cases is one with a single case. All cases are read, so a late look knows how each
// of them ended; of those before the newest only the end is kept. One thread at a time.
class RunCases {
 public:
  // What was found now, as FindCaseFiles tells it; known ones stay. When none of them is among it,
  // another run has begun, and all is forgotten. After all but kNothing Newest is another object.
  enum class Began { kNothing, kCase, kRun };
  Began TakeFiles(const std::vector<RunFiles>& found);
  void FollowKeptFile();

  // A case follows only when the one before it has ended: no need to search earlier.
  bool MayBeFollowed() const { return Newest().Message().End() != RunEnd::kRunning; }

  // Of the deck, where the caller knows it. WantsDeck: not set yet, and of use.
  bool WantsDeck() const;
  void SetDeck(DeckEndTime deck);

  // As RunProgress has them, of all cases.
  bool Look(const RunProgress::Progress& progress = {});
  bool HasRead() const { return Newest().HasRead(); }
  bool Stopped() const { return stopped_; }
  void TakeOpenLines();
  // Cases differ in what `ended` and `percent` say: a run is stopped when any of its cases was, at
  // the percentage of that case. All other figures are the newest case's.
  RunNews News(std::optional<std::int64_t> now = std::nullopt) const;

  const RunProgress& Newest() const { return cases_.back(); }
  const std::vector<RunProgress>& All() const { return cases_; }  // the newest last
  // By the deck, of the case in this place.
  std::optional<double> EndTimeOf(std::size_t index) const;

 private:
  struct Weights {
    double done = 0, newest = 0, ahead = 0;
  };
  Weights Weigh(const std::vector<RunNews>& all) const;
  void TellDeckEnd(std::size_t index);
  static RunEnd EndOfAll(const std::vector<RunNews>& all);
  static void AddTimeOfRest(const std::vector<RunNews>& all, const Weights& weights, RunNews& news);

  std::vector<RunProgress> cases_ = {RunProgress(RunFiles())};  // never empty
  std::size_t read_ = 0;                                        // so many were read to their end
  DeckEndTime deck_;
  bool hasDeck_ = false;
  bool closed_ = false;
  bool stopped_ = false;
};

#endif
