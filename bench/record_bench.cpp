// What the record of the queue costs: loading 10,000 jobs, telling it of a change, a week of 200
// jobs a day; beside the last one a bare write of the same bytes.
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "Measure.h"
#include "record/JobImage.h"
#include "record/RecordWriter.h"

namespace {

constexpr int kJobs = 10000;
constexpr int kWeek = 7 * 200;

std::shared_ptr<JobFileDyna> Job(int number) {
  static const Settings settings;
  auto job = std::make_shared<JobFileDyna>(settings);
  job->jobFile =
      "/data/projects/doors/2016/outer panel/run" + std::to_string(number) + "/forming.k";
  job->memory = 2000;
  job->ncpu = 8;
  job->deckIdentifier = "OUTER_PANEL_" + std::to_string(number);
  job->includes = {"/data/projects/doors/2016/materials.k", "/data/projects/doors/2016/tools.k"};
  return job;
}

RunRecord RunOf(const JobFile& job) {
  RunRecord run;
  run.started = 1480000000;
  run.jobFile = job.jobFile;
  run.folder = job.Folder();
  run.program = "/opt/solvers/lsdyna_s";
  run.commandLine = run.program + " i=" + job.jobFile + " memory=500m ncpu=8";
  run.machine = "station";
  run.process = {4711, "1e0e1bd2-5a0f-4a7e-8a57-6f8f1a2b3c4d:123456"};
  run.token = "f81d4fae7dec11d0a76500a0c91e6bf6";
  return run;
}

MessageSink Silent() {
  return [](const Message&) {};
}

void Load() {
  const TemporaryFolder folder;
  const RecordFiles files = RecordFilesIn(folder.File(""));
  {
    RecordWriter writer(files, Silent(), Silent());
    writer.Begin(true);
    writer.Put(change::GroupSet{1, "Group1", ""});
    for (int i = 0; i < kJobs; ++i) writer.Put(change::JobAdded{1, ImageOf(*Job(i))});
  }
  const Settings settings;
  const double seconds = BestSeconds(5, [&] {
    Journal journal(files.queue, {kQueueKind, files.machine});
    QueueImage image;
    journal.Read([&](std::string_view record) { return ApplyRecord(record, image); });
    std::vector<std::shared_ptr<JobFile>> jobs;
    const auto make = [&](SolverKind) { return std::make_shared<JobFileDyna>(settings); };
    for (const JobId id : image.now.groups.at(0).jobs) {
      const JobImage& one = *image.now.Find(id);
      jobs.push_back(make(one.kind));
      Fill(*jobs.back(), one, make);
    }
    if (jobs.size() != kJobs) std::abort();
  });
  std::printf("load %d jobs: %.1f ms (100 at most), %ju bytes\n", kJobs, seconds * 1e3,
              static_cast<std::uintmax_t>(std::filesystem::file_size(files.queue)));
}

void Change() {
  const TemporaryFolder folder;
  RecordWriter writer(RecordFilesIn(folder.File("")), Silent(), Silent());
  writer.Begin(true);
  writer.Put(change::GroupSet{1, "Group1", ""});
  const auto job = Job(1);
  for (int i = 0; i < 8; ++i) job->stages.push_back(Job(i));
  writer.Put(change::JobAdded{1, ImageOf(*job)});
  const double whole = BestSeconds(2000, [&] { writer.Put(change::JobSet{ImageOf(*job)}); });
  const double status = BestSeconds(2000, [&] {
    writer.Put(change::Progress{job->id, JobId::kNone, ProgressOf(*job)});
  });
  std::vector<double> all;
  for (int i = 0; i < 5000; ++i) {
    const auto begin = std::chrono::steady_clock::now();
    writer.Put(change::JobSet{ImageOf(*job)});
    all.push_back(std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count());
  }
  std::sort(all.begin(), all.end());
  std::printf(
      "a change, on the caller's thread: status %.1f us, all of a job with 8 stages %.1f us; "
      "half of 5000 below %.1f us, 99%% below %.1f us (50 at most)\n",
      status * 1e6, whole * 1e6, all[2500] * 1e6, all[4950] * 1e6);
}

void Week() {
  const TemporaryFolder folder;
  const RecordFiles files = RecordFilesIn(folder.File(""));
  std::uint64_t most = 0;
  std::uint64_t written = 0;
  const auto begin = std::chrono::steady_clock::now();
  {
    RecordWriter writer(files, Silent(), Silent());
    writer.Begin(true);
    writer.Put(change::GroupSet{1, "Group1", ""});
    for (int i = 0; i < kWeek; ++i) {
      const auto job = Job(i);
      writer.Put(change::JobAdded{1, ImageOf(*job)});
      for (const JobStatus status :
           {JobStatus::kWaiting, JobStatus::kRunning, JobStatus::kFinished}) {
        job->status = status;
        if (status == JobStatus::kRunning) {
          writer.Put(change::Run{job->id, RunOf(*job)});
          writer.PutRun(RunOf(*job));
        }
        writer.Put(change::Progress{job->id, JobId::kNone, ProgressOf(*job)});
      }
      RunRecord run = RunOf(*job);
      run.verdict = JobStatus::kFinished;
      run.ended = run.started + 3600;
      writer.PutRun(run);
      if (i % 50 == 0) writer.Flush(std::chrono::seconds(10));
      most = std::max(most, writer.QueueBytes());
    }
  }
  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  const auto history = std::filesystem::file_size(files.history);
  written = std::filesystem::file_size(files.queue) + history;
  const std::string bytes(written / kWeek, 'x');
  const double bare = BestSeconds(3, [&] {
    std::ofstream file(folder.File("bare"), std::ios::binary);
    for (int i = 0; i < kWeek; ++i) file << bytes << std::flush;
  });
  std::printf(
      "a week of %d jobs: queue at most %ju bytes (5 MB at most), history %ju bytes; %.2f s "
      "in all, a bare write of the same bytes %.4f s\n",
      kWeek, static_cast<std::uintmax_t>(most), static_cast<std::uintmax_t>(history), seconds,
      bare);
}

}  // namespace

int main() {
  Load();
  Change();
  Week();
  return 0;
}
