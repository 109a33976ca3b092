#include "progress/RunWatcher.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <map>
#include <set>
#include <system_error>
#include <utility>

#include "progress/RunCases.h"
#include "progress/SolverClock.h"
#include "util/files/FileDirWrapper.h"
#include "util/files/FolderSnapshot.h"
#include "util/files/FreeSpace.h"
#include "util/files/WrittenFiles.h"
#include "util/process/OwnThread.h"
#include "util/process/ProcessUse.h"
#include "util/signals/Mutex.h"

namespace {

constexpr std::size_t kMostEnded = 1000;
constexpr int kLooksBetweenSearches = 5;      // for files that are not there yet
constexpr std::chrono::seconds kFarewell{1};  // for threads that are about to end

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
class RunWatcher::Watch {
 public:
  Watch(WatchedRun watched, const Settings& settings) : run(std::move(watched)), health_(settings) {
    std::vector<std::string> files, folders;
    FileDirWrapper::ListDir(run.folder, files, folders, false);
    // Each is asked once: the run may put its own in the place of an old one meanwhile.
    before_.Take(files);
    before_.ForgetWrittenSince(run.started);
    // What was written in the very second of the start, but before it, only this one tells.
    atStart_.Read(run.filesBefore);
  }

  // What was found wrong for the first time.
  std::vector<HealthFinding> Look() {
    FindFiles();
    const bool news = cases_.Look();
    if (cases_.WantsDeck()) {
      const std::string& told = cases_.Newest().Message().DeckName();
      cases_.SetDeck(EndTimeOfDeck(run.folder, run.jobFile.empty() ? told : run.jobFile));
    }
    // What others write does not tell whether they work.
    if (run.kind != RunFiles::Kind::kKeyword) return {};
    return health_.Look(cases_.Newest().States(), cases_.Newest().Message(), news, Seconds());
  }

  // The end stands in lines that came after the last look; the file may have another name now.
  std::vector<HealthFinding> LookLast() {
    looks_ = 0;
    isLast_ = true;
    cases_.FollowKeptFile();
    std::vector<HealthFinding> found = Look();
    cases_.TakeOpenLines();
    nextResults_ = {};
    SampleResults();
    return found;
  }

  void SetLimits(const Settings& limits) { health_.SetLimits(limits); }

  RunState State(bool running) const {
    RunState state;
    state.run = run;
    state.run.filesBefore.clear();  // may be long
    state.use = use_;
    state.running = running;
    state.news = cases_.News(LocalClockNow());
    for (const HealthFinding& finding : health_.Findings()) {
      // A run that has ended is silent for good.
      if (running || finding.check != HealthCheck::kSilence) state.health.push_back(finding);
    }
    return state;
  }

  void SampleResults() {
    const Clock::time_point begin = Clock::now();
    if (begin < nextResults_) return;
    use_.results = 0;
    for (const WrittenFile& file : FilesWrittenSince(run.folder, run.started)) {
      if (!atStart_.HoldsUnchanged(file.path)) use_.results += file.size;
    }
    LookAtDisk();
    nextResults_ = Clock::now() + (Clock::now() - begin) * kRestFactor;
  }

  void TakeUse(const std::optional<ProcessUse>& now) {
    const double clock = Seconds();
    use_.processors.reset();
    use_.memory.reset();
    if (now) use_.memory = now->memory;
    if (now && used_ && clock > usedAt_) {
      const double spent = now->processorSeconds - used_->processorSeconds;
      use_.processors = std::max(spent, 0.0) / (clock - usedAt_);
    }
    used_ = now;
    usedAt_ = clock;
  }

  const WatchedRun run;

 private:
  // Files that lay there before the run and have not been written since are none of it.
  bool IsOld(const std::string& file) const {
    return before_.HoldsUnchanged(file) || atStart_.HoldsUnchanged(file);
  }

  void FindFiles() {
    if (run.kind == RunFiles::Kind::kNone) return;
    const RunFiles& known = cases_.Newest().Files();
    if (looks_++ % kLooksBetweenSearches != 0 && !known.output.empty()) return;
    const bool isWhole = !known.output.empty() && !known.glstat.empty() && !known.status.empty();
    const bool isKeyword = run.kind == RunFiles::Kind::kKeyword;
    if (isWhole && !isLast_ && !(isKeyword && cases_.MayBeFollowed())) return;
    const RunCases::Began began = cases_.TakeFiles(FindCaseFiles(
        isKeyword ? run.folder : run.jobFile, CasesBy::kAll,
        [this](const std::string& file) { return IsOld(file); }, run.names));
    if (began != RunCases::Began::kNothing) health_.BeginCase();
  }

  // By the growth since the first sample.
  void LookAtDisk() {
    const double clock = Seconds();
    if (firstSampleAt_ == 0) {
      firstSampleAt_ = clock;
      firstResults_ = use_.results;
    }
    const std::optional<double> left = cases_.News(LocalClockNow()).secondsLeft;
    const double elapsed = clock - firstSampleAt_;
    if (!left || elapsed < kLeastGrowth || use_.results <= firstResults_) return;
    const std::optional<std::uint64_t> free = FreeSpace(run.folder);
    if (!free) return;
    const double needed = static_cast<double>(use_.results - firstResults_) / elapsed * *left;
    health_.LookAtDisk(needed, static_cast<double>(*free));
  }

  FolderSnapshot before_, atStart_;
  RunUse use_;
  std::optional<ProcessUse> used_;  // at the sample before
  double usedAt_ = 0;
  Clock::time_point nextResults_;
  double firstSampleAt_ = 0;  // 0: none yet
  std::uint64_t firstResults_ = 0;
  Health health_;
  RunCases cases_;
  int looks_ = 0;
  bool isLast_ = false;
};

// Between the watcher and the thread of one run; all but `run` under the shared lock.
struct RunWatcher::Worker {
  const WatchedRun run;
  bool isLast = false;   // the run has ended: one look more
  bool done = false;     // it was the last one
  bool failed = false;   // nothing more is read
  bool dropped = false;  // nobody wants to know any more
  int samples = 0;
  std::optional<ProcessUse> use = {};
};

// Stays for as long as any thread of a run hangs.
struct RunWatcher::Shared : std::enable_shared_from_this<Shared> {
  Shared(Hooks theHooks, std::chrono::milliseconds period)
      : hooks(std::move(theHooks)), every(period) {}

  // Begins to watch the run, unless that is done already.
  std::shared_ptr<Worker> WorkerOf(const WatchedRun& run) KR_REQUIRES(mutex);
  void Work(const std::shared_ptr<Worker>& worker);
  void LookAgainAndAgain(Worker& worker);
  void Fail(Worker& worker, const std::exception& error);
  bool WaitForTurn(Worker& worker, Clock::time_point next);
  void Publish(const Worker& worker, RunState state);

  // Calls a hook while there is somebody to hear it.
  template <typename Call>
  void Tell(const Call& call) {
    const MutexLock lock(telling);
    if (!silent) call(hooks);
  }

  const Hooks hooks;
  const std::chrono::milliseconds every;
  Mutex telling;
  bool silent KR_GUARDED_BY(telling) = false;
  Mutex mutex;
  std::condition_variable changed;
  bool end KR_GUARDED_BY(mutex) = false;
  int threads KR_GUARDED_BY(mutex) = 0;
  std::map<JobId, std::shared_ptr<Worker>> workers KR_GUARDED_BY(mutex);
  std::map<JobId, RunState> states KR_GUARDED_BY(mutex);
  std::deque<JobId> ended KR_GUARDED_BY(mutex);  // the oldest first
};

std::shared_ptr<RunWatcher::Worker> RunWatcher::Shared::WorkerOf(const WatchedRun& run) {
  std::shared_ptr<Worker>& known = workers[run.job];
  if (known && known->run.IsSameAs(run)) return known;
  if (known) known->dropped = true;
  const auto worker = known = std::make_shared<Worker>(Worker{run});
  changed.notify_all();
  const auto work = [self = shared_from_this(), worker] { self->Work(worker); };
  if (StartGuarded(work, [](const std::exception&) {})) {
    ++threads;
  } else {
    // Nothing is known of the run until a thread is to be had.
    worker->done = true;
    workers.erase(run.job);
  }
  return worker;
}

void RunWatcher::Shared::Work(const std::shared_ptr<Worker>& worker) {
  Guard([&] { LookAgainAndAgain(*worker); },
        [&](const std::exception& error) { Fail(*worker, error); });
  const MutexLock lock(mutex);
  worker->done = true;
  // One that failed stays, so that it does not begin anew each second.
  const auto known = workers.find(worker->run.job);
  if (known != workers.end() && known->second == worker && (!worker->failed || worker->isLast))
    workers.erase(known);
  --threads;
  changed.notify_all();
}

// The row goes on with what the queue knows.
void RunWatcher::Shared::Fail(Worker& worker, const std::exception& error) {
  RunState state;
  state.run = worker.run;
  state.run.filesBefore.clear();
  {
    const MutexLock lock(mutex);
    worker.failed = true;
    state.running = !worker.isLast;
  }
  Publish(worker, std::move(state));
  Tell([&](const Hooks& all) {
    all.report(Message(MessageId::kHealthOfJob, worker.run.jobFile,
                       Message(MessageId::kReadingFailed, error.what())));
  });
}

void RunWatcher::Shared::LookAgainAndAgain(Worker& worker) {
  std::optional<Settings> settings;
  const auto ask = [&] { Tell([&](const Hooks& all) { settings = all.settings(); }); };
  ask();
  std::optional<Watch> watch;
  if (settings) watch.emplace(worker.run, *settings);
  int samples = 0;
  for (bool isLast = false; watch && !isLast;) {
    const Clock::time_point next = Clock::now() + every;
    std::optional<ProcessUse> use;
    bool isSampled = false;
    {
      const MutexLock lock(mutex);
      if (end || worker.dropped) break;
      isLast = worker.isLast;
      isSampled = std::exchange(samples, worker.samples) != worker.samples;
      use = worker.use;
    }
    ask();
    watch->SetLimits(*settings);
    if (isSampled) {
      watch->TakeUse(use);
      watch->SampleResults();
    }
    const std::vector<HealthFinding> found = isLast ? watch->LookLast() : watch->Look();
    Tell([&](const Hooks& all) {
      for (const HealthFinding& finding : found) {
        all.report(Message(MessageId::kHealthOfJob, worker.run.jobFile, finding.message));
      }
    });
    Publish(worker, watch->State(!isLast));
    if (!isLast && !WaitForTurn(worker, next)) break;
  }
}

// Until the next look is due, or the last one is wanted. False when none is.
bool RunWatcher::Shared::WaitForTurn(Worker& worker, Clock::time_point next) {
  MutexLock lock(mutex);
  while (!end && !worker.dropped && !worker.isLast && Clock::now() < next) {
    lock.WaitUntil(changed, next);
  }
  return !end && !worker.dropped;
}

void RunWatcher::Shared::Publish(const Worker& worker, RunState state) {
  const JobId job = worker.run.job;
  {
    const MutexLock lock(mutex);
    if (end || worker.dropped) return;
    const bool running = state.running;
    states[job] = std::move(state);
    if (!running) {
      std::erase(ended, job);
      ended.push_back(job);
    }
    while (ended.size() > kMostEnded) {
      const auto oldest = states.find(ended.front());
      if (oldest != states.end() && !oldest->second.running) states.erase(oldest);
      ended.pop_front();
    }
  }
  Tell([&](const Hooks& all) { all.changed(job); });
}

RunWatcher::RunWatcher(Hooks hooks, std::chrono::milliseconds every,
                       std::chrono::milliseconds patience)
    : shared_(std::make_shared<Shared>(std::move(hooks), every)),
      patience_(patience),
      thread_([this] { Work(); }) {}

RunWatcher::~RunWatcher() {
  {
    const MutexLock lock(shared_->mutex);
    shared_->end = true;
    shared_->changed.notify_all();
  }
  thread_.join();
  {
    const MutexLock lock(shared_->telling);
    shared_->silent = true;
  }
  // One that hangs goes away with the program.
  const Clock::time_point limit = Clock::now() + kFarewell;
  MutexLock lock(shared_->mutex);
  while (shared_->threads > 0 && Clock::now() < limit) lock.WaitUntil(shared_->changed, limit);
}

std::optional<RunState> RunWatcher::StateOf(JobId job) const {
  const MutexLock lock(shared_->mutex);
  const auto found = shared_->states.find(job);
  if (found == shared_->states.end()) return std::nullopt;
  return found->second;
}

std::optional<RunState> RunWatcher::LookLast(const WatchedRun& run) {
  const Clock::time_point limit = Clock::now() + patience_;
  MutexLock lock(shared_->mutex);
  const std::shared_ptr<Worker> worker = shared_->WorkerOf(run);
  worker->isLast = true;
  shared_->changed.notify_all();
  while (!worker->done && Clock::now() < limit) lock.WaitUntil(shared_->changed, limit);
  const auto found = shared_->states.find(run.job);
  if (!worker->done || found == shared_->states.end() || found->second.running ||
      !found->second.run.IsSameAs(run)) {
    return std::nullopt;
  }
  return found->second;
}

void RunWatcher::Work() {
  for (;;) {
    // What is not known now may be known in a second.
    Guard([this] { LookAtRuns(), SampleUse(); }, [](const std::exception&) {});
    const Clock::time_point next = Clock::now() + shared_->every;
    MutexLock lock(shared_->mutex);
    while (!shared_->end && Clock::now() < next) lock.WaitUntil(shared_->changed, next);
    if (shared_->end) return;
  }
}

void RunWatcher::LookAtRuns() {
  std::set<JobId> running;
  const MutexLock lock(shared_->mutex);
  // Under the lock: an older answer would take the run of a last look for another one.
  const std::vector<WatchedRun> runs = shared_->hooks.runs();
  for (const WatchedRun& run : runs) {
    const auto known = shared_->states.find(run.job);
    const bool hasEnded =
        known != shared_->states.end() && !known->second.running && known->second.run.IsSameAs(run);
    if (hasEnded) continue;  // looked at for the last time
    running.insert(run.job);
    const auto worker = shared_->workers.find(run.job);
    if (worker != shared_->workers.end() && worker->second->run.IsSameAs(run)) continue;
    shared_->WorkerOf(run);
    nextSample_ = std::min(nextSample_, Clock::now() + shared_->every);
  }
  for (auto at = shared_->workers.begin(); at != shared_->workers.end();) {
    const auto& [job, worker] = *at;
    if (running.contains(job) || (worker->isLast && !worker->done)) {
      ++at;
      continue;
    }
    worker->isLast = true;
    shared_->changed.notify_all();
    at = worker->done ? shared_->workers.erase(at) : std::next(at);
  }
}

void RunWatcher::SampleUse() {
  const Clock::time_point begin = Clock::now();
  if (begin < nextSample_) return;
  std::vector<std::shared_ptr<Worker>> workers;
  {
    const MutexLock lock(shared_->mutex);
    for (const auto& [job, worker] : shared_->workers) workers.push_back(worker);
  }
  if (workers.empty()) return;
  std::vector<ProcessIdentity> roots;
  for (const auto& worker : workers) roots.push_back(worker->run.process);
  const std::vector<std::optional<ProcessUse>> uses = UseOfTrees(roots);
  const Clock::time_point end = Clock::now();
  nextSample_ = end + std::max<Clock::duration>(kSampleEvery, (end - begin) * kRestFactor);
  const MutexLock lock(shared_->mutex);
  for (std::size_t i = 0; i < workers.size(); ++i) {
    workers[i]->use = uses[i];
    ++workers[i]->samples;
  }
}
