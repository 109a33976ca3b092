// A user's session at random: changes of a queue, which a test applies to a model and to a record.
#ifndef KR_TESTS_RECORD_RANDOMQUEUE_H
#define KR_TESTS_RECORD_RANDOMQUEUE_H

#include <algorithm>
#include <concepts>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "record/QueueImage.h"

class RandomQueue {
 public:
  explicit RandomQueue(unsigned seed) : random_(seed) {}

  QueueChange Next() {
    switch (groups_.empty() ? 0 : Number(0, 17)) {
      case 0: {
        const bool isNew = groups_.size() < 8;
        if (isNew) groups_.push_back(++lastGroup_);
        return change::GroupSet{isNew ? lastGroup_ : AnyGroup(), Text(), Text()};
      }
      case 1: {
        if (Number(0, 3) != 0) return change::CurrentGroup{AnyGroup()};
        const int group = AnyGroup();
        std::erase(groups_, group);
        return change::GroupGone{group};
      }
      case 2:
        if (Number(0, 3) == 0) return change::JobsGone{{AnyJob(), AnyJob()}};
        return change::JobGone{AnyJob()};
      case 3:
        if (Number(0, 3) == 0)
          return change::GroupPlaced{AnyGroup(), static_cast<int>(Number(0, 5))};
        return change::JobOrder{AnyGroup(), Number(0, 5), {AnyJob(), AnyJob(), AnyJob()}};
      case 4:
        return change::JobMoved{AnyJob(), Number(0, 5)};
      case 5: {
        JobImage job = Job();
        job.id = AnyJob();
        return change::JobSet{job};
      }
      case 6:
      case 7:
      case 8: {
        const JobId job = AnyJob();
        const auto stage = static_cast<JobId>(static_cast<std::uint64_t>(job) + Number(1, 2));
        return change::Progress{job, Number(0, 2) == 0 ? stage : JobId::kNone, Progress()};
      }
      case 9:
        return change::Run{AnyJob(), Run()};
      case 10:
        if (Number(0, 9) == 0) return change::SessionBegins{Number(1, 1000000000)};
        return change::SessionOver{Number(0, 1) == 1, Number(0, 1) == 1};
      case 11:
        if (Number(0, 9) == 0) return change::LeftTaken();
        [[fallthrough]];
      case 12: {
        JobRequest request;
        Set(request);
        request.id = static_cast<JobId>((lastJob_ += 3) + Number(0, 1));
        return change::JobRequested{request};
      }
      case 13:
        return change::HandedOver{{Text(), Text()}};
      default:
        return change::JobAdded{AnyGroup(), Job()};
    }
  }

  JobImage Job() {
    JobImage job;
    job.id = static_cast<JobId>(lastJob_ += 3);
    Set(job);
    for (unsigned i = 1; i <= Number(0, 2); ++i) {
      JobImage stage;
      stage.id = static_cast<JobId>(lastJob_ + i);
      Set(stage);
      job.stages.push_back(stage);
    }
    return job;
  }

  RunRecord Run() {
    RunRecord run;
    Set(static_cast<RunResult&>(run));
    Fill(run.started, run.stage, run.solver, run.jobFile, run.restartFile, run.program,
         run.commandLine, run.folder, run.variables, run.cpus, run.memory, run.extraOptions,
         run.ncpu, run.pause, run.useSFile, run.dump, run.outputName, run.machine, run.process.id,
         run.process.mark, run.token, run.filesBefore, run.dumpsBefore, run.ended, run.exitCode,
         run.verdict);
    static_assert(!HasMore<RunRecord>, "these are not all of its fields");
    return run;
  }

 private:
  // Than a run's result and the fields above.
  template <typename T>
  static constexpr bool HasMore = requires {
    T{{}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {},
      {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}};
  };

  // Any value of a field.
  void Set(bool& field) { field = Number(0, 1) == 1; }
  template <std::integral T>
  void Set(T& field) {
    field = static_cast<T>(random_());
  }
  void Set(JobStatus& field) { field = static_cast<JobStatus>(Number(0, 4)); }
  void Set(SolverKind& field) { field = static_cast<SolverKind>(Number(0, 4)); }
  void Set(JobId& field) { field = AnyJob(); }
  void Set(std::string& field) { field = Text(); }
  void Set(Message& field) { field = Reason(); }
  template <typename T>
  void Set(std::optional<T>& field) {
    field.reset();
    if (Number(0, 1) == 1) Set(field.emplace());
  }
  template <typename T>
  void Set(std::vector<T>& field) {
    field.resize(Number(0, 2));
    for (T& one : field) Set(one);
  }
  void Set(std::pair<std::string, std::string>& field) { Fill(field.first, field.second); }
  template <typename... T>
  void Fill(T&... fields) {
    (Set(fields), ...);
  }

  // All fields: one more does not compile.
  void Set(Failure& failure) {
    auto& [kind, detail] = failure;
    kind = static_cast<FailureKind>(Number(0, static_cast<int>(kLastFailureKind)));
    Set(detail);
  }
  void Set(RunResult& result) {
    auto& [a, b, c, d, e, f, g, h, i, j, k, l] = result;
    Fill(a, b, c, d, e, f, g, h, i, j, k, l);
  }
  void Set(JobFields& job) {
    auto& [a, b, c, d, e, f, g, h, i, j, k] = job;
    Fill(a, b, c, d, e, f, g, h, i, j, k);
  }
  void Set(DynaFields& job) {
    auto& [a, b, c, d, e, f, g, h, i, j, k, l, m, n] = job;
    Fill(a, b, c, d, e, f, g, h, i, j, k, l, m, n);
  }
  void Set(JobRequest& request) {
    auto& [a, b, c, d, e, f, g, h, i, j, k, l, m, n, o] = request;
    Fill(a, b, c, d, e, f, g, h, i, j, k, l, m, n, o);
  }

  unsigned Number(unsigned least, unsigned most) {
    return std::uniform_int_distribution<unsigned>(least, most)(random_);
  }
  int AnyGroup() { return groups_[Number(0, static_cast<unsigned>(groups_.size()) - 1)]; }
  JobId AnyJob() {
    const auto jobs = static_cast<unsigned>(lastJob_) / 3;
    return static_cast<JobId>(Number(1, std::max(jobs, 1U)) * 3);
  }

  std::string Text() {
    static const std::vector<std::string> kTexts = {"",
                                                    "/jobs/a b/deck.k",
                                                    "C:\\jobs\\deck.k",
                                                    "\xC3\xA4\xE4\xBB\xBB",
                                                    "\xFF\xFE no text",
                                                    "\"quoted\"\n\t\x01",
                                                    "\xC4\xE3\xBA\xC3.k"};
    return kTexts[Number(0, static_cast<unsigned>(kTexts.size()) - 1)] +
           std::to_string(random_() % 9);
  }

  Message Reason() {
    if (Number(0, 1) == 0) return {};
    return Message(MessageId::kNotNormal, Text(), Message(MessageId::kNoResult, Text()));
  }

  JobProgress Progress() {
    JobProgress progress;
    Set(static_cast<RunResult&>(progress));
    Fill(progress.status, progress.started, progress.ended, progress.stops);
    return progress;
  }

  void Set(JobImage& job) {  // but for its name, its run and its stages
    Fill(job.kind, job.fields, job.dyna, job.stops);
    Set(static_cast<RunResult&>(job));
  }

  std::mt19937 random_;
  std::vector<int> groups_;
  int lastGroup_ = 0;
  std::uint64_t lastJob_ = 0;
};

#endif
