#include "progress/RunWatcher.h"

#include <algorithm>
#include <set>
#include <utility>

#include "progress/Health.h"
#include "progress/SolverClock.h"
#include "util/files/FileDirWrapper.h"
#include "util/files/FolderSnapshot.h"

namespace {

constexpr std::size_t kMostEnded = 1000;
constexpr int kLooksBetweenSearches = 5;  // for files that are not there yet

double Seconds() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration<double>(now).count();
}

}  // namespace

// One run while it is looked at.
struct RunWatcher::Watch {
  Watch(WatchedRun watched, const Settings& settings)
      : run(std::move(watched)), health(settings), progress(RunFiles()) {
    std::vector<std::string> files, folders;
    FileDirWrapper::ListDir(run.folder, files, folders, false);
    before.Take(files);
  }

  // Files that lay there before the run and have not been written since are none of it.
  void FindFiles() {
    if (looks++ % kLooksBetweenSearches != 0 && !progress.Files().output.empty()) return;
    const RunFiles& known = progress.Files();
    if (!known.output.empty() && !known.glstat.empty() && !known.status.empty()) return;
    const bool isKeyword = run.kind == RunFiles::Kind::kKeyword;
    progress.AddFiles(
        FindRunFiles(isKeyword ? run.folder : run.jobFile,
                     [&](const std::string& file) { return before.HoldsUnchanged(file); }));
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
    return health.Look(progress.States(), progress.Message(), news, Seconds());
  }

  const WatchedRun run;
  FolderSnapshot before;
  Health health;
  RunProgress progress;
  int looks = 0;
  bool askedDeck = false;
};

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

void RunWatcher::Work() {
  auto next = std::chrono::steady_clock::now();
  for (;;) {
    {
      MutexLock lock(mutex_);
      while (!end_ && std::chrono::steady_clock::now() < next) lock.WaitUntil(woken_, next);
      if (end_) return;
    }
    LookAtAll();
    next = std::chrono::steady_clock::now() + every_;
  }
}

void RunWatcher::LookAtAll() {
  std::set<JobId> running;
  for (WatchedRun& run : hooks_.runs()) {
    running.insert(run.job);
    std::unique_ptr<Watch>& watch = watches_[run.job];
    if (!watch || watch->run.started != run.started) {
      watch = std::make_unique<Watch>(std::move(run), hooks_.settings());
    }
    for (const HealthFinding& finding : watch->Look()) {
      hooks_.report(Message(MessageId::kHealthOfJob, watch->run.jobFile, finding.message));
    }
    Publish(*watch, true);
  }
  for (auto watch = watches_.begin(); watch != watches_.end();) {
    if (running.contains(watch->first)) {
      ++watch;
      continue;
    }
    // The end stands in lines that came after the last look; the file may have another name now.
    watch->second->looks = 0;
    watch->second->progress.FollowKeptFile();
    watch->second->Look();
    watch->second->progress.TakeOpenLines();
    Publish(*watch->second, false);
    watch = watches_.erase(watch);
  }
}

void RunWatcher::Publish(const Watch& watch, bool running) {
  RunState state;
  state.started = watch.run.started;
  state.running = running;
  state.news = watch.progress.News(LocalClockNow());
  for (const HealthFinding& finding : watch.health.Findings()) {
    // A run that has ended is silent for good.
    if (running || finding.check != HealthCheck::kSilence) state.health.push_back(finding.message);
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
