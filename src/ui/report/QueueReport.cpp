#include "ui/report/QueueReport.h"

#include <algorithm>

#include "solvers/SolverKinds.h"
#include "ui/monitor/MonitoredRun.h"
#include "util/text/CsvField.h"
#include "util/text/DateTimeWrapper.h"
#include "util/text/PlainText.h"

namespace {

// A field stays on its line and in its column.
std::string Field(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c == '\t' || c == '\n' || c == '\r'; }, ' ');
  return text;
}

std::string LocalTime(std::int64_t seconds) {
  std::tm time{};
  std::string text;
  if (seconds != 0 && DateTimeWrapper::LocalTime(seconds, &time))
    DateTimeWrapperStr::DateTimeString(&time, text);
  return text;
}

std::string Elapsed(const ReportedJob& job) {
  const std::optional<std::int64_t> seconds = job.Took(job.started, job.ended);
  return seconds ? std::to_string(*seconds) : std::string();
}

ReportedJob Reported(const JobFile& job) {
  ReportedJob report;
  static_cast<RunResult&>(report) = job.Result();
  report.jobFile = job.jobFile;
  report.restartFile = job.restartFile;
  report.folder = job.Folder();
  report.options = job.extraOptions;
  report.solver = job.GetSolverType();
  report.status = job.status;
  report.started = job.started;
  report.ended = job.ended;
  report.cpus = job.ncpu;
  report.memory = job.memory;
  if (job.stages.empty())
    report.run = WhatToRead(job, job.started, RowOfKind(report.solver).runsDecks);
  for (const std::shared_ptr<JobFile>& stage : job.stages)
    report.stages.push_back(Reported(*stage));
  return report;
}

std::string ReasonOf(const ReportedJob& job, const std::optional<GroupPause>& pause) {
  if (job.status == JobStatus::kQueued && pause)
    return Message(MessageId::kPausedBefore, pause->failures, pause->reason).English();
  return job.status == JobStatus::kAborted ? job.reason.English() : std::string();
}

}  // namespace

ReportForm FormOfReport(const std::string& path) {
  if (EndsInAnyCase(path, ".html") || EndsInAnyCase(path, ".htm")) return ReportForm::kPage;
  return EndsInAnyCase(path, ".csv") ? ReportForm::kTable : ReportForm::kLines;
}

ReportedGroup ReportOf(const JobGroup& group, const std::vector<JobId>* only) {
  ReportedGroup report{group.Name(), group.Paused(), {}};
  group.ReadJobs([&](const JobFile& job) {
    const bool isWanted =
        only == nullptr || std::find(only->begin(), only->end(), job.id) != only->end();
    if (isWanted) report.jobs.push_back(Reported(job));
  });
  return report;
}

Message HowItEnded(const ReportedJob& job) {
  if (job.status == JobStatus::kAborted) return FailureMessage(job.failure);
  return job.status == JobStatus::kFinished ? StoppedMessage(job.stoppedAt) : Message();
}

std::string ReportLines(const ReportedGroup& group) {
  std::string text;
  for (const ReportedJob& job : group.jobs) {
    const std::string reason = ReasonOf(job, group.pause);
    const bool aborted = job.status == JobStatus::kAborted;
    const std::string& last = aborted || !reason.empty() ? reason : job.messageFile;
    text += Field(job.MainFile()) + "\t" + JobStatusWord(job.status).English() + "\t" +
            RowOfKind(job.solver).name + "\t" + Field(last) + "\t" + LocalTime(job.started) + "\t" +
            LocalTime(job.ended) + "\t" + Elapsed(job);
    const Message how = HowItEnded(job);
    if (!how.Empty()) text += "\t" + how.English();
    text += "\n";
  }
  return text;
}

std::string ReportTable(const std::vector<ReportedGroup>& groups) {
  std::string text =
      CsvLine({"group", "file", "restart", "folder", "solver", "status", "how", "reason", "started",
               "ended", "seconds", "cpus", "memory_mb", "options", "message_file"});
  for (const ReportedGroup& group : groups) {
    for (const ReportedJob& job : group.jobs) {
      text += CsvLine(
          {group.name, job.jobFile, job.restartFile, job.folder, RowOfKind(job.solver).name,
           JobStatusWord(job.status).English(), HowItEnded(job).English(),
           ReasonOf(job, group.pause), LocalTime(job.started), LocalTime(job.ended), Elapsed(job),
           job.cpus < 1 ? "" : std::to_string(job.cpus),
           job.memory == 0 ? "" : std::to_string(job.memory), job.options, job.messageFile});
    }
  }
  return text;
}
