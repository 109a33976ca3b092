#include "record/JobImage.h"

void JobImage::Set(const JobProgress& progress) {
  fields.status = progress.status;
  fields.started = progress.started;
  fields.ended = progress.ended;
  messageFile = progress.messageFile;
  errorCode = progress.errorCode;
  reason = progress.reason;
  restartDump = progress.restartDump;
  lastWords = progress.lastWords;
  stoppedAt = progress.stoppedAt;
}

JobProgress ProgressOf(const JobFile& job) {
  return {job.status,        job.started,        job.ended,
          job.MessageFile(), job.RunErrorCode(), job.RunMessage(),
          job.RestartDump(), job.LastWords(),    job.StoppedAt()};
}

JobImage ImageOf(const JobFile& job) {
  JobImage image;
  image.id = job.id;
  image.kind = job.GetSolverType();
  image.fields = job;
  if (const auto* const dyna = dynamic_cast<const JobFileDyna*>(&job)) image.dyna = *dyna;
  image.messageFile = job.MessageFile();
  image.errorCode = job.RunErrorCode();
  image.reason = job.RunMessage();
  image.restartDump = job.RestartDump();
  image.lastWords = job.LastWords();
  image.stoppedAt = job.StoppedAt();
  for (const std::shared_ptr<JobFile>& stage : job.stages) image.stages.push_back(ImageOf(*stage));
  return image;
}

void Fill(JobFile& job, const JobImage& image,
          const std::function<std::shared_ptr<JobFile>(SolverKind kind)>& make) {
  static_cast<JobFields&>(job) = image.fields;
  auto* const dyna = dynamic_cast<JobFileDyna*>(&job);
  if (dyna != nullptr && image.dyna) static_cast<DynaFields&>(*dyna) = *image.dyna;
  job.SetMessageFile(image.messageFile);
  job.SetRunError(image.errorCode, image.reason);
  job.SetRestartDump(image.restartDump);
  job.SetLastWords(image.lastWords);
  job.SetStoppedAt(image.stoppedAt);
  for (const JobImage& one : image.stages) {
    const std::shared_ptr<JobFile> stage = make(one.kind);
    Fill(*stage, one, make);
    job.stages.push_back(stage);
  }
}
