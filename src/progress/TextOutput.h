// What the outputs of INC and Vorel tell of a run: when it began and how it ended. They tell of no
// end time, so the rest is unknown. One thread at a time.
#ifndef KR_PROGRESS_TEXTOUTPUT_H
#define KR_PROGRESS_TEXTOUTPUT_H

#include <cstdint>
#include <optional>
#include <string_view>

#include "progress/MessageProgress.h"
#include "util/files/GrowingFile.h"

class TextOutput : public LineTaker {
 public:
  void BeginAnew() override { *this = TextOutput(); }
  void TakeLines(std::string_view block) override;

  // INC tells its total time at a normal end. Vorel writes date and time at the begin and at the
  // end of a run; one with lines of errors has failed.
  RunEnd End() const;
  // Of Vorel, in the seconds of progress/SolverClock.h.
  std::optional<std::int64_t> Started() const { return started_; }
  std::optional<std::int64_t> Ended() const { return ended_; }

 private:
  std::optional<std::int64_t> started_;
  std::optional<std::int64_t> ended_;
  std::string date_;
  int stamps_ = 0;
  bool totalTime_ = false;
  bool error_ = false;
};

#endif
