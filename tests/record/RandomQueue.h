// A user's session at random: changes of a queue, which a test applies to a model and to a record.
#ifndef KR_TESTS_RECORD_RANDOMQUEUE_H
#define KR_TESTS_RECORD_RANDOMQUEUE_H

#include <algorithm>
#include <random>
#include <string>
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
        request.id = static_cast<JobId>((lastJob_ += 3) + Number(0, 1));
        request.kind = static_cast<SolverKind>(Number(0, 4));
        request.jobFile = Text();
        request.stageOf = AnyJob();
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
    job.kind = static_cast<SolverKind>(Number(0, 4));
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
    run.started = Number(0, 2000000000);
    run.commandLine = Text();
    run.folder = Text();
    run.variables = {{"A", Text()}, {"B", ""}};
    run.process = {static_cast<std::int32_t>(Number(0, 99999)), Text()};
    run.machine = Text();
    run.reason = Reason();
    if (Number(0, 1) == 1) run.exitCode = -3;
    if (Number(0, 1) == 1) run.nodes = 0;
    if (Number(0, 1) == 1) run.dumpsBefore = 0;
    run.restartDump = Text();
    run.lastWords = Reason();
    run.verdict = static_cast<JobStatus>(Number(0, 4));
    return run;
  }

 private:
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
    RunResult result{Text(), static_cast<int>(Number(0, 6)), Reason(), Text(), Reason()};
    result.failure = {static_cast<FailureKind>(Number(0, static_cast<int>(kLastFailureKind))),
                      static_cast<int>(Number(-5, 50000))};
    return {std::move(result), static_cast<JobStatus>(Number(0, 4)), Number(0, 2000000000), 0};
  }

  void Set(JobImage& job) {
    job.fields.jobFile = Text();
    job.fields.restartFile = Text();
    job.fields.memory = random_();
    job.fields.ncpu = -1;
    job.fields.firstStage = static_cast<int>(Number(0, 2));
    job.Set(Progress());
    if (Number(0, 2) != 0) {
      job.dyna.emplace();
      job.dyna->dump = Number(0, 1) == 1;
      job.dyna->solverType = static_cast<SolverKind>(Number(0, 2));
      job.dyna->includes.assign(Number(0, 2), Text());
    }
  }

  std::mt19937 random_;
  std::vector<int> groups_;
  int lastGroup_ = 0;
  std::uint64_t lastJob_ = 0;
};

// Everything that an image holds, in one order: equal texts, equal images.
inline std::string TextOf(const SessionImage& session) {
  std::string text = std::to_string(session.current) + (session.over ? " over" : "") +
                     (session.resume ? " resume" : "") + (session.stopped ? " stopped" : "") + '\n';
  for (const GroupImage& group : session.groups) {
    QueueImage one;
    one.now.groups = {group};
    for (const JobId job : group.jobs) one.now.jobs.emplace(job, *session.Find(job));
    for (const std::string& record : SnapshotOf(one)) text += record + '\n';
  }
  QueueImage asked;
  asked.now.requests = session.requests;
  for (const std::string& record : SnapshotOf(asked)) text += record + '\n';
  return text;
}
inline std::string TextOf(const QueueImage& image) {
  std::string text;
  for (const std::string& file : image.handedOver) text += file + '\n';
  for (const SessionImage& session : image.left) {
    text += "left " + std::to_string(session.last) + ' ' + TextOf(session);
  }
  return text + TextOf(image.now);
}

#endif
