#include "core/JobIntake.h"

#include <algorithm>

#include "core/SharedFolders.h"
#include "jobs/DeckScan.h"
#include "jobs/StageDecks.h"
#include "solvers/RestartDump.h"
#include "solvers/SolverKinds.h"
#include "util/files/FileDirWrapper.h"
#include "util/process/OwnThread.h"
#include "util/text/PlainText.h"

namespace {

// By the file's ending when the request leaves it open; only LS-DYNA restarts.
SolverKind KindOf(const JobRequest& request, const std::string& deck) {
  if (request.kind) return *request.kind;
  return request.restartFile.empty() ? SolverKindOfFile(deck) : SolverKind::kLsDynaSingle;
}

int Percent(std::uint64_t done, std::uint64_t size) {
  if (size == 0) return 0;
  return static_cast<int>(100.0 * static_cast<double>(std::min(done, size)) /
                          static_cast<double>(size));
}

std::shared_ptr<JobFileDyna> NewStage(const std::string& deck, const Settings& settings) {
  auto stage = std::make_shared<JobFileDyna>(settings);
  stage->jobFile = deck;
  return stage;
}

// What a stage has from its job.
void TakeFromJob(JobFileDyna& stage, const JobFileDyna& job) {
  stage.solverType = job.solverType;
  stage.useSFile = job.useSFile;
  stage.caseRun = job.caseRun;
  stage.keepDeck = job.keepDeck;
  stage.dump = job.dump;
  stage.memory = job.memory;
  stage.pause = job.pause;
  stage.ncpu = job.ncpu;
}

}  // namespace

JobIntake::JobIntake(JobGroupManager& manager) : manager_(manager), worker_([this] { Work(); }) {}

JobIntake::~JobIntake() {
  Close();
  {
    const MutexLock lock(mutex_);
    end_ = true;
  }
  changed_.notify_all();
  worker_.join();
}

// It is told of before its job can be.
JobId JobIntake::Add(JobRequest request) {
  if (request.groupId == 0) {
    if (const auto group = manager_.CurrentGroup()) request.groupId = group->Id();
  }
  const JobId id = request.id = NewJobId();
  manager_.Observer().JobRequested(request);
  {
    const MutexLock lock(mutex_);
    if (closed_) return id;
    waiting_.push_back(std::move(request));
    ++total_;
  }
  changed_.notify_all();
  return id;
}

void JobIntake::Cancel() {
  for (const JobRequest& request : Interrupt(false)) GiveUp(request);
}

void JobIntake::Close() {
  Interrupt(true);
}

// Gives what was not being read yet.
std::deque<JobRequest> JobIntake::Interrupt(bool forGood) {
  std::deque<JobRequest> unread;
  int total = 0;
  {
    const MutexLock lock(mutex_);
    closed_ = closed_ || forGood;
    ++burst_;
    unread.swap(waiting_);
    done_ += static_cast<int>(unread.size());
    changed_.notify_all();
    if (reading_ || total_ == 0) return unread;  // the worker tells the end, or there is none
    total = total_;
    done_ = total_ = 0;
  }
  manager_.Observer().IntakeProgress(total, total, {}, 100);
  return unread;
}

void JobIntake::GiveUp(const JobRequest& request) {
  {
    const MutexLock lock(mutex_);
    if (closed_) return;
    ++notMade_;
  }
  manager_.Observer().RequestGivenUp(request.id);
}

bool JobIntake::Busy() const {
  const MutexLock lock(mutex_);
  return reading_ || !waiting_.empty();
}

int JobIntake::Waiting() const {
  const MutexLock lock(mutex_);
  const auto waiting = std::count_if(waiting_.begin(), waiting_.end(), [](const auto& request) {
    return request.stageOf == JobId::kNone;
  });
  return static_cast<int>(waiting) + (reading_ && !readsStage_ ? 1 : 0);
}

int JobIntake::NotMade() const {
  const MutexLock lock(mutex_);
  return notMade_;
}

void JobIntake::Drain() {
  MutexLock lock(mutex_);
  while (reading_ || !waiting_.empty()) lock.Wait(changed_);
}

void JobIntake::Work() {
  JobRequest request;
  unsigned burst = 0;
  while (TakeRequest(request, burst)) {
    Guard([&] { MakeAndAdd(request, burst); },
          [&](const std::exception& error) {
            manager_.Settings().Log().Report(
                Message(MessageId::kJobNotMade, request.jobFile, error.what()));
            GiveUp(request);
          });
    request = {};
    EndRequest();
  }
}

bool JobIntake::TakeRequest(JobRequest& request, unsigned& burst) {
  MutexLock lock(mutex_);
  while (!end_ && waiting_.empty()) lock.Wait(changed_);
  if (end_) return false;
  request = std::move(waiting_.front());
  waiting_.pop_front();
  reading_ = true;
  readsStage_ = request.stageOf != JobId::kNone;
  burst = burst_;
  return true;
}

void JobIntake::MakeAndAdd(const JobRequest& request, unsigned burst) {
  if (request.stageOf != JobId::kNone) return MakeAndAddStage(request, burst);
  const std::shared_ptr<JobFile> job = MakeJob(request, burst);
  const auto group = job ? GroupFor(request) : nullptr;
  if (group) {
    const int apart = manager_.Settings().Snapshot().separate_results;
    if (apart == kAlwaysApart) KeepNewJobApart(manager_, *job);
    group->AddJob(job);
    TakeFreeNames(manager_, {job->id});  // one that is run again brings its name along
    if (apart == kAskApart && !request.fromWindow) NoteSharedFolder(job->id);
    return;
  }
  if (job) manager_.Settings().Log().Report(Message(MessageId::kNoGroup, job->MainFile()));
  GiveUp(request);
}

// Nobody is asked: they run as they are. Once for a folder, when it gets its second job.
void JobIntake::NoteSharedFolder(JobId job) {
  const SharedResults shared = FindSharedResults(manager_, {job});
  if (shared.jobs != 2) return;
  manager_.Settings().Log().Note(Message(MessageId::kFolderShared, shared.folders.front()));
}

// Once nothing is to do, the next requests begin at none of so many.
void JobIntake::EndRequest() {
  int done = 0;
  int total = 0;
  {
    const MutexLock lock(mutex_);
    done = ++done_;
    total = total_;
    if (waiting_.empty()) done_ = total_ = 0;
  }
  manager_.Observer().IntakeProgress(done, total, {}, 100);
  const MutexLock lock(mutex_);
  reading_ = false;
  changed_.notify_all();
}

bool JobIntake::GivenUp(unsigned burst) const {
  const MutexLock lock(mutex_);
  return burst != burst_;
}

void JobIntake::TellProgress(const std::string& file, int percent) {
  int done = 0;
  int total = 0;
  {
    const MutexLock lock(mutex_);
    done = done_;
    total = total_;
  }
  manager_.Observer().IntakeProgress(done, total, file, percent);
}

std::shared_ptr<JobGroup> JobIntake::GroupFor(const JobRequest& request) const {
  if (auto group = manager_.GroupById(request.groupId)) return group;
  if (auto group = manager_.CurrentGroup()) return group;
  return manager_.GroupAt(0);
}

// Null when the request was given up.
std::shared_ptr<JobFile> JobIntake::MakeJob(const JobRequest& request, unsigned burst) {
  const Settings settings = manager_.Settings().Snapshot();
  const std::string deck =
      FileDirWrapper::AbsolutePath(request.inputFile.empty() ? request.jobFile : request.inputFile);
  std::shared_ptr<JobFile> job = RowOfKind(KindOf(request, deck)).makeJob(settings);
  if (!deck.empty() && FileDirWrapper::IsFolder(deck)) {
    manager_.Settings().Log().Report(Message(MessageId::kFolderIsNoJob, deck));
    return nullptr;
  }
  job->id = request.id;
  job->jobFile = deck;
  job->memory = settings.memory_size;
  auto* const dyna = dynamic_cast<JobFileDyna*>(job.get());
  if (dyna != nullptr && !ReadDeck(*dyna, request, settings, burst)) return nullptr;
  if (GivenUp(burst)) return nullptr;
  if (request.memory != 0) job->memory = request.memory;
  job->restartFile = WithoutRank(FileDirWrapper::AbsolutePath(request.restartFile));
  job->pause = request.pause;
  job->ncpu = request.ncpu;
  if (!request.extraOptions.empty()) job->extraOptions = request.extraOptions;
  if (dyna != nullptr && !AddStages(*dyna, request, settings, burst)) return nullptr;
  return job;
}

// False when the request was given up.
bool JobIntake::ReadDeck(JobFileDyna& job, const JobRequest& request, const Settings& settings,
                         unsigned burst) {
  job.useSFile = request.sGiven;
  job.dump = request.dump;
  job.outputName = request.outputName;
  if (!job.jobFile.empty() && !Scan(job, burst)) return false;
  job.solverType = request.kind.value_or(job.solverType);
  ApplyDeckMemory(job, settings);
  return true;
}

// False when the request was given up. A deck that cannot be read is only reported.
bool JobIntake::Scan(JobFileDyna& job, unsigned burst) {
  DeckScanHooks hooks;
  hooks.report = manager_.Settings().Log().Sink();
  hooks.progress = [&, told = -1](std::uint64_t done, std::uint64_t size) mutable {
    const int percent = Percent(done, size);
    if (percent != told) TellProgress(job.jobFile, told = percent);
    return !GivenUp(burst);
  };
  TellProgress(job.jobFile, 0);
  return ScanDeck(job, hooks) || !GivenUp(burst);
}

// What a stage's own deck does not say is as for the job. A restart is one of the first stage to
// run.
bool JobIntake::AddStages(JobFileDyna& job, const JobRequest& request, const Settings& settings,
                          unsigned burst) {
  const MessageSink report = manager_.Settings().Log().Sink();
  for (const std::string& deck : StageDecks(job, report)) {
    const auto stage = NewStage(deck, settings);
    TakeFromJob(*stage, job);
    if (!ReadStage(*stage, request, settings, burst)) return false;
    if (static_cast<int>(job.stages.size()) == job.firstStage) stage->restartFile = job.restartFile;
    job.stages.push_back(stage);
  }
  return true;
}

// Needs a stage that is as its job. False when the request was given up.
bool JobIntake::ReadStage(JobFileDyna& stage, const JobRequest& request, const Settings& settings,
                          unsigned burst) {
  const bool keepDeck = stage.keepDeck;
  if (!Scan(stage, burst)) return false;
  stage.solverType = request.kind.value_or(stage.solverType);
  stage.keepDeck = stage.keepDeck || keepDeck;
  const bool hasSay = settings.memory_auto && request.memory == 0 && stage.deckMemory != 0;
  if (hasSay) stage.memory = stage.deckMemory;
  return true;
}

void JobIntake::MakeAndAddStage(const JobRequest& request, unsigned burst) {
  const Settings settings = manager_.Settings().Snapshot();
  const std::string deck = FileDirWrapper::AbsolutePath(request.jobFile);
  const auto group = GroupFor(request);
  const auto stage = NewStage(deck, settings);  // before the list is locked: it takes its time
  stage->id = request.id;
  bool isOfDecks = false;
  const auto read = [&](const JobFile& job) {
    const auto* dyna = dynamic_cast<const JobFileDyna*>(&job);
    isOfDecks = dyna != nullptr;
    if (isOfDecks) TakeFromJob(*stage, *dyna);
  };
  if (group) group->ReadJob(request.stageOf, read);
  const bool isRead = isOfDecks && ReadStage(*stage, request, settings, burst) && !GivenUp(burst);
  if (isRead && group->AddStage(request.stageOf, stage)) return;
  if (isRead || !isOfDecks)
    manager_.Settings().Log().Report(Message(MessageId::kStageTooLate, deck));
  GiveUp(request);
}
