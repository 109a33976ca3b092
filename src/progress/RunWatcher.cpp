#include "progress/RunWatcher.h"

#include <algorithm>
#include <set>
#include <utility>

#include "progress/SolverClock.h"
#include "util/files/FileDirWrapper.h"
#include "util/files/FolderSnapshot.h"
#include "util/files/FreeSpace.h"
#include "util/files/WrittenFiles.h"
#include "util/process/ProcessUse.h"

namespace {

constexpr std::size_t kMostEnded = 1000;
constexpr int kLooksBetweenSearches = 5;  // for files that are not there yet
constexpr std::chrono::seconds kLastLookPatience{30};

// What costs more than the news of a run is asked for less often, and the rarer the longer it
// takes.
constexpr std::chrono::seconds kSampleEvery{5};
constexpr int kRestFactor = 100;
constexpr double kLeastGrowth = 30;  // seconds

using Clock = std::chrono::steady_clock;

double Seconds() {
  const auto now = Clock::now().time_since_epoch();
  return std::chrono::duration<double>(now).count();
}

}  // namespace

// One run while it is looked at.
struct RunWatcher::Watch {
  Watch(WatchedRun watched, const Settings& settings)
      : run(std::move(watched)), health(settings), progress(RunFiles()) {
    std::vector<std::string> files, folders;
    FileDirWrapper::ListDir(run.folder, files, folders, false);
    std::set<std::string> written;
    for (WrittenFile& file : FilesWrittenSince(run.folder, run.started)) {
      written.insert(std::move(file.path));
    }
    std::erase_if(files, [&](const std::string& file) { return written.contains(file); });
    before.Take(files);
    // What was written in the very second of the start, but before it, only this one tells.
    atStart.Read(run.filesBefore);
  }

  // Files that lay there before the run and have not been written since are none of it.
  bool IsOld(const std::string& file) const {
    return before.HoldsUnchanged(file) || atStart.HoldsUnchanged(file);
  }

  void FindFiles() {
    if (run.kind == RunFiles::Kind::kNone) return;
    if (looks++ % kLooksBetweenSearches != 0 && !progress.Files().output.empty()) return;
    const RunFiles& known = progress.Files();
    if (!known.output.empty() && !known.glstat.empty() && !known.status.empty()) return;
    const bool isKeyword = run.kind == RunFiles::Kind::kKeyword;
    progress.AddFiles(FindRunFiles(isKeyword ? run.folder : run.jobFile,
                                   [this](const std::string& file) { return IsOld(file); }));
  }

  // What was found wrong for the first time.
  std::vector<HealthFinding> Look() {
    FindFiles();
    const bool news = progress.Look();
    if (!askedDeck && progress.HasRead() && run.kind == RunFiles::Kind::kKeyword) {
      askedDeck = true;
      const std::string& told = progress.Message().DeckName();
      const std::string& deck = run.jobFile.empty() ? told : run.jobFile;
      progress.SetDeckEndTime(EndTimeOfDeck(run.folder, deck));
    }
    // What others write does not tell whether they work.
    if (run.kind != RunFiles::Kind::kKeyword) return {};
    return health.Look(progress.States(), progress.Message(), news, Seconds());
  }

  void SampleResults() {
    const Clock::time_point begin = Clock::now();
    if (begin < nextResults) return;
    use.results = 0;
    for (const WrittenFile& file : FilesWrittenSince(run.folder, run.started)) {
      if (!atStart.HoldsUnchanged(file.path)) use.results += file.size;
    }
    LookAtDisk();
    nextResults = Clock::now() + (Clock::now() - begin) * kRestFactor;
  }

  // By the growth since the first sample.
  void LookAtDisk() {
    const double clock = Seconds();
    if (firstSampleAt == 0) {
      firstSampleAt = clock;
      firstResults = use.results;
    }
    const std::optional<double> left = progress.News(LocalClockNow()).secondsLeft;
    const double elapsed = clock - firstSampleAt;
    if (!left || elapsed < kLeastGrowth || use.results <= firstResults) return;
    const std::optional<std::uint64_t> free = FreeSpace(run.folder);
    if (!free) return;
    const double needed = static_cast<double>(use.results - firstResults) / elapsed * *left;
    health.LookAtDisk(needed, static_cast<double>(*free));
  }

  void TakeUse(const std::optional<ProcessUse>& now) {
    const double clock = Seconds();
    use.processors.reset();
    use.memory.reset();
    if (now) use.memory = now->memory;
    if (now && used && clock > usedAt) {
      const double spent = now->processorSeconds - used->processorSeconds;
      use.processors = std::max(spent, 0.0) / (clock - usedAt);
    }
    used = now;
    usedAt = clock;
  }

  const WatchedRun run;
  FolderSnapshot before, atStart;
  RunUse use;
  std::optional<ProcessUse> used;  // at the sample before
  double usedAt = 0;
  Clock::time_point nextResults;
  double firstSampleAt = 0;  // 0: none yet
  std::uint64_t firstResults = 0;
  Health health;
  RunProgress progress;
  int looks = 0;
  bool askedDeck = false;
};

// Somebody waits for it.
struct RunWatcher::LastLook {
  WatchedRun run;
  bool done = false;  // under the watcher's lock
};

int RunState::StoppedAt() const {
  // A run without a single step, an eigenvalue analysis say, has nowhere to stop.
  const bool hasMoved = news.percent.value_or(0) > 0;
  if (news.ended != RunEnd::kStopped || (news.percent && !hasMoved)) return kNotStopped;
  return news.percent ? static_cast<int>(*news.percent) : kStoppedSomewhere;
}

RunWatcher::RunWatcher(Hooks hooks, std::chrono::milliseconds every)
    : hooks_(std::move(hooks)), every_(every), thread_([this] { Work(); }) {}

RunWatcher::~RunWatcher() {
  {
    const MutexLock lock(mutex_);
    end_ = true;
  }
  woken_.notify_all();
  thread_.join();
}

std::optional<RunState> RunWatcher::StateOf(JobId job) const {
  const MutexLock lock(mutex_);
  const auto found = states_.find(job);
  if (found == states_.end()) return std::nullopt;
  return found->second;
}

std::optional<RunState> RunWatcher::LookLast(const WatchedRun& run) {
  const auto look = std::make_shared<LastLook>(LastLook{run});
  const Clock::time_point limit = Clock::now() + kLastLookPatience;
  MutexLock lock(mutex_);
  lastLooks_.push_back(look);
  woken_.notify_all();
  while (!look->done && Clock::now() < limit) lock.WaitUntil(looked_, limit);
  const auto found = states_.find(run.job);
  if (!look->done || found == states_.end() || !found->second.run.IsSameAs(run)) {
    return std::nullopt;
  }
  return found->second;
}

void RunWatcher::Work() {
  Clock::time_point next = Clock::now();
  for (;;) {
    {
      MutexLock lock(mutex_);
      while (!end_ && lastLooks_.empty() && Clock::now() < next) lock.WaitUntil(woken_, next);
      if (end_) return;
    }
    TakeLastLooks();
    if (Clock::now() < next) continue;
    LookAtAll();
    next = Clock::now() + every_;
  }
}

void RunWatcher::TakeLastLooks() {
  std::vector<std::shared_ptr<LastLook>> looks;
  {
    const MutexLock lock(mutex_);
    looks.swap(lastLooks_);
  }
  for (const std::shared_ptr<LastLook>& look : looks) {
    const auto known = watches_.find(look->run.job);
    std::unique_ptr<Watch> watch;
    if (known != watches_.end()) {
      watch = std::move(known->second);
      watches_.erase(known);
    }
    if (!watch || !watch->run.IsSameAs(look->run)) {
      watch = std::make_unique<Watch>(look->run, hooks_.settings());
    }
    EndWatch(std::move(watch));
    const MutexLock lock(mutex_);
    look->done = true;
    looked_.notify_all();
  }
}

// The end stands in lines that came after the last look; the file may have another name now.
void RunWatcher::EndWatch(std::unique_ptr<Watch> watch) {
  watch->looks = 0;
  watch->progress.FollowKeptFile();
  TellHealth(*watch);
  watch->progress.TakeOpenLines();
  watch->nextResults = {};
  watch->SampleResults();
  Publish(*watch, false);
}

void RunWatcher::TellHealth(Watch& watch) {
  for (const HealthFinding& finding : watch.Look()) {
    hooks_.report(Message(MessageId::kHealthOfJob, watch.run.jobFile, finding.message));
  }
}

void RunWatcher::SampleUse() {
  const Clock::time_point begin = Clock::now();
  if (begin < nextSample_ || watches_.empty()) return;
  std::vector<ProcessIdentity> roots;
  for (const auto& [job, watch] : watches_) roots.push_back(watch->run.process);
  const std::vector<std::optional<ProcessUse>> uses = UseOfTrees(roots);
  auto use = uses.begin();
  for (const auto& [job, watch] : watches_) {
    watch->TakeUse(*use++);
    watch->SampleResults();
  }
  const Clock::time_point end = Clock::now();
  nextSample_ = end + std::max<Clock::duration>(kSampleEvery, (end - begin) * kRestFactor);
}

void RunWatcher::LookAtAll() {
  std::set<JobId> running;
  const std::vector<WatchedRun> runs = hooks_.runs();
  for (const WatchedRun& run : runs) {
    const std::optional<RunState> known = StateOf(run.job);
    if (known && !known->running && known->run.IsSameAs(run))
      continue;  // looked at for the last time
    running.insert(run.job);
    std::unique_ptr<Watch>& watch = watches_[run.job];
    if (!watch || !watch->run.IsSameAs(run)) {
      watch = std::make_unique<Watch>(run, hooks_.settings());
      nextSample_ = std::min(nextSample_, Clock::now() + every_);
    }
  }
  SampleUse();
  for (const WatchedRun& run : runs) {
    const auto found = watches_.find(run.job);
    if (!running.contains(run.job) || found == watches_.end()) continue;
    const std::unique_ptr<Watch>& watch = found->second;
    TellHealth(*watch);
    Publish(*watch, true);
  }
  for (auto watch = watches_.begin(); watch != watches_.end();) {
    if (running.contains(watch->first)) {
      ++watch;
      continue;
    }
    EndWatch(std::move(watch->second));
    watch = watches_.erase(watch);
  }
}

void RunWatcher::Publish(const Watch& watch, bool running) {
  RunState state;
  state.run = watch.run;
  state.run.filesBefore.clear();  // may be long
  state.use = watch.use;
  state.running = running;
  state.news = watch.progress.News(LocalClockNow());
  for (const HealthFinding& finding : watch.health.Findings()) {
    // A run that has ended is silent for good.
    if (running || finding.check != HealthCheck::kSilence) state.health.push_back(finding);
  }
  const JobId job = watch.run.job;
  {
    const MutexLock lock(mutex_);
    states_[job] = std::move(state);
    if (!running) {
      std::erase(ended_, job);
      ended_.push_back(job);
    }
    while (ended_.size() > kMostEnded) {
      const auto oldest = states_.find(ended_.front());
      if (oldest != states_.end() && !oldest->second.running) states_.erase(oldest);
      ended_.pop_front();
    }
  }
  hooks_.changed(job);
}
