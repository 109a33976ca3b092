#include "progress/RunCases.h"

#include <algorithm>
#include <string>
#include <utility>

#include "jobs/JobFile.h"

namespace {

constexpr double kLongest = 1e9;      // seconds: what cases far apart in length come to, not a run
constexpr double kLeastSpread = 1.3;  // of an estimate that one case makes for others

// Without what is put behind its name after the run.
std::string OwnName(const std::string& messageFile) {
  const bool kept = messageFile.ends_with(kKeptEnding);
  return messageFile.substr(0, messageFile.size() - (kept ? kKeptEnding.size() : 0));
}

}  // namespace

RunCases::Began RunCases::TakeFiles(const std::vector<RunFiles>& found) {
  const auto isOf = [](const RunFiles& files, const RunProgress& one) {
    const std::string& output = one.Files().output;
    return output.empty() || OwnName(output) == OwnName(files.output);
  };
  const bool isKnown = std::any_of(found.begin(), found.end(), [&](const RunFiles& files) {
    return files.output.empty() || std::any_of(cases_.begin(), cases_.end(),
                                               [&](const auto& one) { return isOf(files, one); });
  });
  if (!isKnown) *this = RunCases();
  Began began = isKnown ? Began::kNothing : Began::kRun;
  for (const RunFiles& files : found) {
    const bool isEmpty = files.output.empty() && files.glstat.empty() && files.status.empty();
    if (isEmpty && Newest().Files().kind == RunFiles::Kind::kNone) continue;
    const auto known = std::find_if(cases_.begin(), cases_.end(),
                                    [&](const RunProgress& one) { return isOf(files, one); });
    if (known != cases_.end() || files.output.empty()) {
      (known == cases_.end() ? cases_.back() : *known).AddFiles(files);
      continue;
    }
    cases_.emplace_back(files);
    if (began == Began::kNothing) began = Began::kCase;
  }
  for (std::size_t i = 0; i < cases_.size(); ++i) TellDeckEnd(i);
  closed_ = closed_ && began == Began::kNothing;
  return began;
}

void RunCases::FollowKeptFile() {
  for (std::size_t i = read_; i < cases_.size(); ++i) cases_[i].FollowKeptFile();
}

bool RunCases::WantsDeck() const {
  return !hasDeck_ && HasRead() && Newest().Files().kind == RunFiles::Kind::kKeyword;
}

void RunCases::SetDeck(DeckEndTime deck) {
  deck_ = std::move(deck);
  hasDeck_ = true;
  for (std::size_t i = 0; i < cases_.size(); ++i) TellDeckEnd(i);
}

void RunCases::TellDeckEnd(std::size_t index) {
  cases_[index].SetDeckEndTime(EndTimeOf(index));
}

std::optional<double> RunCases::EndTimeOf(std::size_t index) const {
  if (deck_.cases.empty()) return deck_.value;
  const int number = CaseNumberOf(cases_[index].Files().output);
  for (const DeckCase& one : deck_.cases) {
    if (one.number == number) return one.endTime;
  }
  const bool byPlace = number == 0 && index < deck_.cases.size();
  return byPlace ? deck_.cases[index].endTime : deck_.value;
}

bool RunCases::Look(const RunProgress::Progress& progress) {
  bool news = false;
  stopped_ = false;
  for (; read_ + 1 < cases_.size(); ++read_) {
    RunProgress& one = cases_[read_];
    news = one.Look(progress) || news;
    stopped_ = one.Stopped();
    if (stopped_) return true;
    one.TakeOpenLines();
    one.ForgetStates();
  }
  news = cases_.back().Look(progress) || news;
  stopped_ = cases_.back().Stopped();
  return news;
}

void RunCases::TakeOpenLines() {
  cases_.back().TakeOpenLines();
  closed_ = true;
}

RunNews RunCases::News(std::optional<std::int64_t> now) const {
  RunNews news = Newest().News(now);
  if (cases_.size() == 1 && deck_.cases.size() <= 1) return news;
  std::vector<RunNews> all;
  for (std::size_t i = 0; i + 1 < cases_.size(); ++i) all.push_back(cases_[i].News());
  all.push_back(news);
  news.caseNumber = static_cast<int>(all.size());
  const bool knowsCases = deck_.cases.size() >= all.size();
  news.cases = knowsCases ? static_cast<int>(deck_.cases.size()) : 0;
  const bool hasRest = knowsCases && all.size() < deck_.cases.size() && !closed_;
  if (news.ended != RunEnd::kRunning && !hasRest) {
    news.ended = EndOfAll(all);
    if (news.ended == RunEnd::kNormal && news.percent) news.percent = 100;
    const auto stopped = std::find_if(
        all.begin(), all.end(), [](const RunNews& one) { return one.ended == RunEnd::kStopped; });
    if (news.ended == RunEnd::kStopped) news.percent = stopped->percent;
    return news;
  }
  if (!knowsCases) return news;
  const Weights weights = Weigh(all);
  const double here = news.ended == RunEnd::kRunning ? news.percent.value_or(0) / 100 : 1;
  news.percent = 100 * (weights.done + here * weights.newest) /
                 (weights.done + weights.newest + weights.ahead);
  AddTimeOfRest(all, weights, news);
  news.ended = RunEnd::kRunning;
  return news;
}

// By the end times where all are known, else all cases alike.
RunCases::Weights RunCases::Weigh(const std::vector<RunNews>& all) const {
  std::vector<double> found;
  for (const RunNews& one : all) found.push_back(one.endTime.value_or(0));
  std::vector<double> ahead;
  for (const DeckCase& one : deck_.cases) {
    const bool isFound = std::any_of(cases_.begin(), cases_.end(), [&](const RunProgress& known) {
      return CaseNumberOf(known.Files().output) == one.number;
    });
    if (!isFound) ahead.push_back(one.endTime.value_or(0));
  }
  // Where the names tell no numbers the last ones are ahead.
  const std::size_t count = deck_.cases.size() - std::min(all.size(), deck_.cases.size());
  if (ahead.size() > count)
    ahead.erase(ahead.begin(), ahead.end() - static_cast<std::ptrdiff_t>(count));
  constexpr double kMost = 1e100;  // sums and quotients of longer ones would have no value
  const auto isUnknown = [](double endTime) { return !(endTime > 1 / kMost && endTime < kMost); };
  const bool alike = std::any_of(found.begin(), found.end(), isUnknown) ||
                     std::any_of(ahead.begin(), ahead.end(), isUnknown);
  const auto sum = [&](const std::vector<double>& values) {
    double total = 0;
    for (const double value : values) total += alike ? 1 : value;
    return total;
  };
  Weights weights;
  weights.newest = alike ? 1 : found.back();
  weights.done = sum(found) - weights.newest;
  weights.ahead = sum(ahead);
  return weights;
}

// The cases ahead take as long as the newest does, or as those before it did; so does the newest
// while it tells nothing itself.
void RunCases::AddTimeOfRest(const std::vector<RunNews>& all, const Weights& weights,
                             RunNews& news) {
  const bool runs = news.ended == RunEnd::kRunning;
  if (weights.ahead <= 0 && (!runs || news.secondsLeft)) return;
  const auto took = [](const RunNews& one) {
    return one.started && one.lastTold ? static_cast<double>(*one.lastTold - *one.started) : 0.0;
  };
  double perWeight = 0;
  if (runs && news.secondsLeft) {
    perWeight = (took(news) + *news.secondsLeft) / weights.newest;
  } else {
    double seconds = runs ? 0 : took(all.back());
    for (std::size_t i = 0; i + 1 < all.size(); ++i) seconds += took(all[i]);
    const double weight = weights.done + (runs ? 0 : weights.newest);
    if (weight > 0) perWeight = seconds / weight;
    if (runs) news.secondsLeft = std::max(perWeight * weights.newest - took(news), 0.0);
  }
  if (perWeight <= 0 || perWeight * weights.ahead > kLongest) {
    news.secondsLeft.reset();
    return;
  }
  if (runs) news.caseSecondsLeft = news.secondsLeft;
  news.secondsLeft = news.secondsLeft.value_or(0) + perWeight * weights.ahead;
  news.spread = std::max(news.spread, kLeastSpread);
}

RunEnd RunCases::EndOfAll(const std::vector<RunNews>& all) {
  RunEnd worst = RunEnd::kNormal;
  for (const RunNews& one : all) {
    // The solver went on to the next case without a word.
    const RunEnd end = one.ended == RunEnd::kRunning ? RunEnd::kError : one.ended;
    worst = std::max(worst, end);
  }
  return worst;
}
