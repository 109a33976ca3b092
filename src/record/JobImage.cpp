#include "record/JobImage.h"

void JobImage::Set(const JobProgress& progress) {
  fields.status = progress.status;
  fields.started = progress.started;
  fields.ended = progress.ended;
  stops = progress.stops;
  static_cast<RunResult&>(*this) = progress;
}

namespace {

bool Stops(const JobFile& job) {
  return job.abort && IsActive(job.status);
}

}  // namespace

JobProgress ProgressOf(const JobFile& job) {
  return {job.Result(), job.status, job.started, job.ended, Stops(job)};
}

JobImage ImageOf(const JobFile& job) {
  JobImage image;
  image.id = job.id;
  image.kind = job.GetSolverType();
  image.fields = job;
  if (const auto* const dyna = dynamic_cast<const JobFileDyna*>(&job)) image.dyna = *dyna;
  static_cast<RunResult&>(image) = job.Result();
  image.stops = Stops(job);
  for (const std::shared_ptr<JobFile>& stage : job.stages) image.stages.push_back(ImageOf(*stage));
  return image;
}

void Fill(JobFile& job, const JobImage& image,
          const std::function<std::shared_ptr<JobFile>(SolverKind kind)>& make) {
  static_cast<JobFields&>(job) = image.fields;
  auto* const dyna = dynamic_cast<JobFileDyna*>(&job);
  if (dyna != nullptr && image.dyna) static_cast<DynaFields&>(*dyna) = *image.dyna;
  job.SetResult(image);
  for (const JobImage& one : image.stages) {
    const std::shared_ptr<JobFile> stage = make(one.kind);
    Fill(*stage, one, make);
    job.stages.push_back(stage);
  }
}
