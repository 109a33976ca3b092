#include "progress/MessageProgress.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

#include "progress/LineWords.h"
#include "progress/SolverClock.h"
#include "util/files/LineBlocks.h"

namespace {

constexpr std::size_t kLongestEvent = 100;
constexpr std::size_t kLongestPath = 4096;
// Options stand below each other, far to the right.
constexpr std::ptrdiff_t kOptionIndent = 8;

constexpr std::string_view kOptions = "Command line options:";

// The number behind the sign of equality; nothing when there is none.
std::optional<double> NumberBehindEquals(std::string_view line) {
  const std::size_t at = line.find('=');
  if (at == std::string_view::npos) return std::nullopt;
  const std::optional<double> value = LineWords(line.substr(at + 1)).NextNumber();
  return value && std::isfinite(*value) ? value : std::nullopt;
}

// The text before the sign of equality is these words, whatever blanks are between them.
bool Names(std::string_view line, std::string_view words) {
  LineWords said(line.substr(0, line.find('=')));
  LineWords wanted(words);
  for (std::string_view word = wanted.Next(); !word.empty(); word = wanted.Next()) {
    if (said.Next() != word) return false;
  }
  return said.Next().empty();
}

// "1 t 0.0000E+00 ...": digits, then the letter.
bool LooksLikeProgress(std::string_view line) {
  std::size_t at = 0;
  while (at < line.size() && IsDigit(line[at])) ++at;
  const std::size_t digits = at;
  while (at < line.size() && line[at] == ' ') ++at;
  return digits > 0 && at > digits && line.substr(at).starts_with("t ");
}

constexpr std::string_view kBeginnings[] = {
    "BEGIN implicit",    kOptions,      "E r r o r",       "Equilibrium",
    "Iteration:",        "N o r m a l", "Problem time",    "***",
    "current step size", "estimated ",  "internal energy", "kinetic energy",
    "termination time",  "total energy"};

// What a line may be, by its first character that is no blank. Most lines of a big file are
// nothing.
enum class Kind : char { kNothing, kEmpty, kProgress, kTelling };

constexpr std::array<Kind, 256> MakeKinds() {
  std::array<Kind, 256> kinds{};
  for (char c = '0'; c <= '9'; ++c) kinds[static_cast<unsigned char>(c)] = Kind::kProgress;
  for (const std::string_view beginning : kBeginnings)
    kinds[static_cast<unsigned char>(beginning[0])] = Kind::kTelling;
  kinds['\r'] = kinds['\n'] = Kind::kEmpty;
  return kinds;
}
constexpr std::array<Kind, 256> kKinds = MakeKinds();

// Whether another line tells something.
bool IsTelling(std::string_view line) {
  return std::any_of(std::begin(kBeginnings), std::end(kBeginnings), [line](auto beginning) {
    return beginning[0] == line[0] && line.starts_with(beginning);
  });
}

std::optional<double> FiniteNumber(LineWords& words) {
  const std::optional<double> value = words.NextNumber();
  return value && std::isfinite(*value) ? value : std::nullopt;
}

// Any of the words is NaN or infinite.
bool HoldsNotFinite(std::string_view line) {
  LineWords words(line);
  for (std::string_view word = words.Next(); !word.empty(); word = words.Next()) {
    const std::optional<double> value = AnyNumber(word);
    if (value && !std::isfinite(*value)) return true;
  }
  return false;
}

}  // namespace

bool SolverEstimate::TakeLine(std::string_view line) {
  constexpr std::string_view kEnd = "termination time";
  constexpr std::string_view kEstimated = "estimated ";
  const bool isEnd = line.starts_with(kEnd);
  if (!isEnd && !line.starts_with(kEstimated)) return false;
  std::optional<double>* const value = Names(line, kEnd)                           ? &endTime
                                       : Names(line, "estimated total clock time") ? &clockTotal
                                       : Names(line, "estimated clock time to complete")
                                           ? &clockLeft
                                       : Names(line, "estimated total cpu time")       ? &cpuTotal
                                       : Names(line, "estimated cpu time to complete") ? &cpuLeft
                                                                                       : nullptr;
  if (value == nullptr) return false;
  if (const std::optional<double> number = NumberBehindEquals(line)) *value = number;
  return true;
}

void StatusProgress::TakeLines(std::string_view block) {
  for (std::size_t position = 0; position < block.size();) {
    estimate_.TakeLine(Trimmed(::TakeLine(block, position)));
  }
}

void MessageProgress::TakeLines(std::string_view block) {
  std::string_view passed;  // the last progress line that was not taken
  const char* const blockEnd = block.data() + block.size();
  for (const char* at = block.data(); at < blockEnd;) {
    const char* const lineBegin = at;
    while (at < blockEnd && (*at == ' ' || *at == '\t')) ++at;
    const char* const begin = at;
    const void* const found = std::memchr(at, '\n', static_cast<std::size_t>(blockEnd - at));
    const char* const lineEnd = found ? static_cast<const char*>(found) : blockEnd;
    at = found ? lineEnd + 1 : blockEnd;
    const Kind kind = begin < blockEnd ? kKinds[static_cast<unsigned char>(*begin)] : Kind::kEmpty;
    if (kind == Kind::kNothing && !inOptions_) continue;
    std::string_view text(begin, static_cast<std::size_t>(lineEnd - begin));
    if (text.ends_with('\r')) text.remove_suffix(1);
    if (text.empty()) {
      inOptions_ = false;
      continue;
    }
    if (kind == Kind::kProgress) {
      if (!LooksLikeProgress(text)) continue;
      // Of very many lines most are only counted.
      if ((seen_++ & (stride_ - 1)) != 0 && end_ == RunEnd::kRunning) {
        passed = text;
        continue;
      }
      passed = {};
      TakeProgress(text);
      continue;
    }
    if (inOptions_) {
      if (begin - lineBegin >= kOptionIndent) {
        TakeOption(Trimmed(text));
        continue;
      }
      inOptions_ = false;
    }
    if (kind != Kind::kTelling || !IsTelling(text)) continue;
    if (!passed.empty() && TakeProgress(passed)) lastIsExtra_ = true;
    passed = {};
    // Of a line that may have been cut only words count.
    if (found || Holds(text, " t e r m i n a t i o n")) TakeLine(Trimmed(text));
  }
  if (!passed.empty() && TakeProgress(passed)) lastIsExtra_ = true;
}

void MessageProgress::TakeLine(std::string_view line) {
  if (line.starts_with("BEGIN implicit")) return TakeImplicitBegin(line);
  if (line.starts_with("Iteration:")) {
    LineWords words(line.substr(line.find(':') + 1));
    const std::optional<std::int64_t> count = Count(words.Next());
    iterations_ = static_cast<int>(std::min<std::int64_t>(count.value_or(iterations_), 1000000));
    if (HoldsNotFinite(line)) NoteNotFinite("Iteration");
    return;
  }
  if (const std::size_t energy = line.find(" energy."); energy != std::string_view::npos) {
    if (HoldsNotFinite(line.substr(line.find_last_of('.') + 1)))
      NoteNotFinite(line.substr(0, energy + 7));
    return;
  }
  if (line.starts_with("Equilibrium")) return TakeConverged(line);
  if (line.starts_with("current step size") && implicitStep_ > 0) {
    if (const auto size = NumberBehindEquals(line)) implicitSize_ = *size;
    return;
  }
  if (line.starts_with("***")) {
    if (!Holds(line, "termination")) return;
    reachedEnd_ = reachedEnd_ || Holds(line, "termination time reached");
    stopAsked_ = stopAsked_ || Holds(line, "sense switch");
    return;
  }
  if (line.starts_with("N o r m a l")) {
    if (Holds(line, "t e r m i n a t i o n")) TakeEnd(RunEnd::kNormal, line);
    return;
  }
  if (line.starts_with("E r r o r")) {
    if (Holds(line, "t e r m i n a t i o n")) TakeEnd(RunEnd::kError, line);
    return;
  }
  if (line.starts_with("Problem time") && Names(line, "Problem time")) {
    const std::optional<double> time = NumberBehindEquals(line);
    if (time && !points_.empty() && *time > points_.back().time) points_.back().time = *time;
    return;
  }
  if (line.starts_with(kOptions)) {
    inOptions_ = true;
    return TakeOption(Trimmed(line.substr(kOptions.size())));
  }
  estimate_.TakeLine(line);
}

// "9 t 1.0000E-01 dt 0.00E+00 write d3plot file            05/15/26 13:26:17". A line that was cut
// has no clock and counts for nothing.
bool MessageProgress::TakeProgress(std::string_view line) {
  std::string_view before;
  const std::optional<std::int64_t> clock = ClockAtEnd(line, before);
  if (!clock) return false;
  LineWords words(before);
  const std::optional<std::int64_t> cycle = Count(words.Next());
  if (!cycle || !words.NextIs("t")) return false;
  const std::optional<double> time = words.NextNumber();
  if (!time || !words.NextIs("dt")) return false;
  const std::optional<double> step = words.NextNumber();
  if (!step) return false;
  if (!std::isfinite(*step)) NoteNotFinite("dt");
  if (!std::isfinite(*time)) {
    NoteNotFinite("t");
    return false;
  }
  event_ = words.Rest().substr(0, kLongestEvent);
  GoOn();
  converged_ = false;
  Add({*cycle, *time, *step, *clock});
  return true;
}

void MessageProgress::NoteNotFinite(std::string_view name) {
  if (notFinite_.empty()) notFinite_ = name;
}

// A restart goes on in the same file.
void MessageProgress::GoOn() {
  if (end_ == RunEnd::kRunning) return;
  end_ = RunEnd::kRunning;
  stopAsked_ = reachedEnd_ = converged_ = false;
  afterEnd_ = true;
}

// "BEGIN implicit statics  step     22 t= 1.1000E-02             11/28/19 09:27:30"
void MessageProgress::TakeImplicitBegin(std::string_view line) {
  std::string_view before;
  const std::optional<std::int64_t> clock = ClockAtEnd(line, before);
  if (!clock) return;
  const std::size_t at = before.find("step");
  const std::size_t equals = before.find("t=", at);
  if (at == std::string_view::npos || equals == std::string_view::npos) return;
  const std::optional<std::int64_t> step = Count(LineWords(before.substr(at + 4)).Next());
  LineWords behind(before.substr(equals + 2));
  const std::optional<double> time = FiniteNumber(behind);
  if (!step || !time) return;
  GoOn();
  if (points_.empty()) Add({0, 0, 0, *clock});  // the begin, for a file that tells of no other
  AddConverged(*clock);
  implicitStep_ = *step;
  implicitTime_ = *time;
  implicitSize_ = std::max(*time - (points_.empty() ? 0 : points_.back().time), 0.0);
  iterations_ = 0;
}

// "Equilibrium established after     5 iterations", or
// "Equilibrium iterations summary step      1 t= 1.0000E-01      05/15/26 13:26:13"
void MessageProgress::TakeConverged(std::string_view line) {
  if (implicitStep_ == 0) return;
  std::string_view before;
  const std::optional<std::int64_t> clock = ClockAtEnd(line, before);
  const bool isSummary = Holds(line, "iterations summary");
  if (!isSummary && !Holds(line, "established")) return;
  if (isSummary && clock && !points_.empty()) {
    Add({points_.back().cycle, implicitTime_, implicitSize_, *clock});
    return;
  }
  converged_ = true;
}

void MessageProgress::AddConverged(std::int64_t clock) {
  if (converged_) Add({points_.back().cycle, implicitTime_, implicitSize_, clock});
  converged_ = false;
}

void MessageProgress::TakeOption(std::string_view word) {
  const std::string key = Lower(word.substr(0, 2));
  if (word.size() > kLongestPath) return;
  if (key == "i=") deck_ = word.substr(2);
}

void MessageProgress::TakeEnd(RunEnd end, std::string_view line) {
  std::string_view before;
  if (!points_.empty()) AddConverged(ClockAtEnd(line, before).value_or(points_.back().clock));
  if (end_ == RunEnd::kError) return;
  const bool stopped = end == RunEnd::kNormal && stopAsked_ && !reachedEnd_;
  end_ = stopped ? RunEnd::kStopped : end;
}

void MessageProgress::Add(const ProgressPoint& point) {
  if (!points_.empty()) {
    const auto pause = static_cast<double>(point.clock - points_.back().clock);
    if (!afterEnd_) longestPause_ = std::max(longestPause_, pause);
  }
  afterEnd_ = false;
  if (lastIsExtra_) points_.pop_back();
  lastIsExtra_ = false;
  points_.push_back(point);
  left_.Add(static_cast<double>(point.clock), point.time);
  if (points_.size() < kMostPoints) return;
  // The newest stays.
  std::size_t kept = 0;
  for (std::size_t i = points_.size() % 2 == 0 ? 1 : 0; i < points_.size(); i += 2) {
    points_[kept++] = points_[i];
  }
  points_.resize(kept);
  stride_ *= 2;
}
