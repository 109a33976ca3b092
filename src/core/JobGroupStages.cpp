// The stages of a group's jobs: changing them and running through them.
#include <algorithm>

#include "core/JobGroup.h"
#include "core/JobGroupManager.h"
#include "runs/JobRun.h"

namespace {

bool IsStageOf(const JobFile& job, int stage) {
  return stage >= 0 && static_cast<std::size_t>(stage) < job.stages.size();
}

std::shared_ptr<JobFile>& StageAt(JobFile& job, int stage) {
  return job.stages[static_cast<std::size_t>(stage)];
}

// Lets `change` rearrange the stages and finds the first one to run again. Where no stage was to be
// skipped, none becomes so.
template <typename Change>
void KeepFirstStage(JobFile& job, Change change) {
  if (job.firstStage == 0) return change();
  const std::shared_ptr<JobFile> first =
      IsStageOf(job, job.firstStage) ? StageAt(job, job.firstStage) : nullptr;
  change();
  const auto found = std::find(job.stages.begin(), job.stages.end(), first);
  const auto last = static_cast<int>(job.stages.size()) - 1;
  job.firstStage = found != job.stages.end() ? static_cast<int>(found - job.stages.begin())
                                             : std::clamp(job.firstStage, 0, std::max(last, 0));
}

}  // namespace

bool JobGroup::ChangeStages(int index, const std::function<bool(JobFile&)>& change) {
  return ChangeJob(index,
                   [&](JobFile& job) { return job.status == JobStatus::kQueued && change(job); });
}

int JobGroup::AddStage(int index, std::shared_ptr<JobFile> stage) {
  int added = -1;
  ChangeStages(index, [&](JobFile& job) {
    if (!stage || stage.get() == &job || dynamic_cast<JobFileDyna*>(&job) == nullptr) return false;
    added = static_cast<int>(job.stages.size());
    KeepFirstStage(job, [&] { job.stages.push_back(std::move(stage)); });
    return true;
  });
  return added;
}

bool JobGroup::RemoveStage(int index, int stage) {
  std::shared_ptr<JobFile> removed;  // freed without the lock
  return ChangeStages(index, [&](JobFile& job) {
    if (!IsStageOf(job, stage)) return false;
    removed = StageAt(job, stage);
    KeepFirstStage(job, [&] { job.stages.erase(job.stages.begin() + stage); });
    return true;
  });
}

bool JobGroup::MoveStage(int index, int stage, bool up) {
  const int other = up ? stage - 1 : stage + 1;
  return ChangeStages(index, [&](JobFile& job) {
    if (!IsStageOf(job, stage) || !IsStageOf(job, other)) return false;
    KeepFirstStage(job, [&] { std::swap(StageAt(job, stage), StageAt(job, other)); });
    return true;
  });
}

bool JobGroup::SetFirstStage(int index, int stage) {
  return ChangeJob(index, [stage](JobFile& job) {
    if (!IsStageOf(job, stage)) return false;
    job.firstStage = stage;
    return true;
  });
}

bool JobGroup::ChangeStage(int index, int stage, const std::function<bool(JobFile&)>& change) {
  return ChangeJob(
      index, [&](JobFile& job) { return IsStageOf(job, stage) && change(*StageAt(job, stage)); });
}

bool JobGroup::SetStageStatus(int index, int stage, int status) {
  const ListLock lock(*this);
  std::string word;
  if (!InRange(index) || !IsStageOf(At(index), stage) || !JobStatusWord(status, word)) return false;
  if (At(index).status == JobStatus::kRunning) return false;
  ShowStageStatus(At(index), stage, status);
  return true;
}

std::shared_ptr<JobFile> JobGroup::GetStage(int index, int stage) const {
  const ListLock lock(*this);
  return InRange(index) && IsStageOf(At(index), stage) ? StageAt(At(index), stage) : nullptr;
}

// Nobody is told of a job that was removed meanwhile.
void JobGroup::ShowStageStatus(JobFile& job, int stage, int status) {
  const ListLock lock(*this);
  StageAt(job, stage)->status = status;
  const int index = IndexOf(&job);
  if (index >= 0) manager_.Observer().StageStatusChanged(id_, index, stage, status);
}

int JobGroup::RunThroughStages(JobFile& job, const JobRunContext& context) {
  StageRunHooks hooks;
  hooks.solverFor = [this](int type) { return manager_.SolverFor(type); };
  hooks.setStageStatus = [this, &job](std::size_t stage, int status) {
    ShowStageStatus(job, static_cast<int>(stage), status);
  };
  hooks.autoPosition = &manager_.autoPosition;
  return RunStages(job, context, manager_.positioning_, hooks);
}
