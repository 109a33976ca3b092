// The stages of the jobs.
#include <algorithm>

#include "core/JobList.h"

namespace {

using StageList = std::vector<std::shared_ptr<JobFile>>;

StageList::const_iterator StagePlace(const StageList& stages, JobId stage) {
  return std::find_if(stages.begin(), stages.end(),
                      [stage](const auto& entry) { return entry->id == stage; });
}

// Lets `change` rearrange the stages and finds the first one to run again. Where no stage was to be
// skipped, none becomes so.
template <typename Change>
void KeepFirstStage(JobFile& job, Change change) {
  if (job.firstStage == 0) return change();
  const auto before = static_cast<std::size_t>(job.firstStage);
  const JobId first = before < job.stages.size() ? job.stages[before]->id : JobId::kNone;
  change();
  const auto found = StagePlace(job.stages, first);
  const auto last = static_cast<int>(job.stages.size()) - 1;
  job.firstStage = found != job.stages.end() ? static_cast<int>(found - job.stages.begin())
                                             : std::clamp(job.firstStage, 0, std::max(last, 0));
}

}  // namespace

bool JobList::ChangeStages(JobId job, const std::function<bool(JobFile&)>& change) {
  return ChangeJob(
      job, [&](JobFile& found) { return found.status == JobStatus::kQueued && change(found); });
}

bool JobList::AddStage(JobId job, std::shared_ptr<JobFile> stage) {
  return ChangeStages(job, [&](JobFile& found) {
    if (!stage || stage->id == job || dynamic_cast<JobFileDyna*>(&found) == nullptr) return false;
    if (StagePlace(found.stages, stage->id) != found.stages.end()) return false;
    KeepFirstStage(found, [&] { found.stages.push_back(std::move(stage)); });
    return true;
  });
}

bool JobList::RemoveStage(JobId job, JobId stage) {
  std::shared_ptr<JobFile> removed;  // freed without the lock
  return ChangeStages(job, [&](JobFile& found) {
    const auto place = StagePlace(found.stages, stage);
    if (place == found.stages.end()) return false;
    removed = *place;
    KeepFirstStage(found, [&] { found.stages.erase(place); });
    return true;
  });
}

bool JobList::MoveStage(JobId job, JobId stage, bool up) {
  return ChangeStages(job, [&](JobFile& found) {
    const auto place = StagePlace(found.stages, stage);
    if (place == found.stages.end()) return false;
    const auto index = static_cast<std::size_t>(place - found.stages.begin());
    if (up ? index == 0 : index + 1 == found.stages.size()) return false;
    KeepFirstStage(
        found, [&] { std::swap(found.stages[index], found.stages[up ? index - 1 : index + 1]); });
    return true;
  });
}

bool JobList::SetFirstStage(JobId job, JobId stage) {
  return ChangeJob(job, [stage](JobFile& found) {
    const auto place = StagePlace(found.stages, stage);
    if (place == found.stages.end()) return false;
    found.firstStage = static_cast<int>(place - found.stages.begin());
    return true;
  });
}

bool JobList::ChangeStage(JobId job, JobId stage, const std::function<bool(JobFile&)>& change) {
  return ChangeJob(job, [&](JobFile& found) {
    const auto place = StagePlace(found.stages, stage);
    return place != found.stages.end() && change(**place);
  });
}

JobFile* JobList::FindStage(JobId job, JobId stage) const {
  const JobFile* const found = Find(job);
  if (found == nullptr) return nullptr;
  const auto place = StagePlace(found->stages, stage);
  return place == found->stages.end() ? nullptr : place->get();
}

bool JobList::ReadStage(JobId job, JobId stage,
                        const std::function<void(const JobFile&)>& read) const {
  const Access access(*this);
  const JobFile* const found = FindStage(job, stage);
  if (found != nullptr) read(*found);
  return found != nullptr;
}
