#include "ui/window/AutoRun.h"

#include <FL/Fl.H>

#include <algorithm>
#include <cstdio>

#include "solvers/SolverKinds.h"
#include "util/files/FileDirWrapper.h"
#include "util/text/DateTimeWrapper.h"

namespace {

constexpr double kLookSeconds = 0.2;  // only while a submitted group runs
constexpr std::chrono::seconds kTakingPatience{9};

// A field of the report stays on its line and in its column.
std::string ReportField(std::string text) {
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

void Print(const Message& message) {
  std::fprintf(stderr, "%s\n", message.English().c_str());
}

std::string Elapsed(const JobFile& job) {
  // A clock may have been set back meanwhile.
  const bool isKnown = job.started != 0 && job.ended >= job.started;
  return isKnown ? std::to_string(job.ended - job.started) : "";
}

}  // namespace

std::string ReportText(const JobGroup& group) {
  std::string text;
  group.ReadJobs([&](const JobFile& job) {
    const std::string word = JobStatusWord(job.status).English();
    const std::string last =
        job.status == JobStatus::kAborted ? job.RunMessage().English() : job.MessageFile();
    const std::string& file = job.jobFile.empty() ? job.restartFile : job.jobFile;
    text += ReportField(file) + "\t" + word + "\t" + RowOfKind(job.GetSolverType()).name + "\t" +
            ReportField(last) + "\t" + LocalTime(job.started) + "\t" + LocalTime(job.ended) + "\t" +
            Elapsed(job);
    const bool aborted = job.status == JobStatus::kAborted;
    const Message how = aborted ? FailureMessage(job.HowFailed()) : StoppedMessage(job.StoppedAt());
    if (!how.Empty()) text += "\t" + how.English();
    text += "\n";
  });
  return text;
}

AutoRun::AutoRun(Application& application, Flx_AppWnd& window, const ProgramOptions& options)
    : application_(application), window_(window), options_(options) {}

AutoRun::~AutoRun() {
  Fl::remove_timeout(Look, this);
}

void AutoRun::AfterTick() {
  if (!options_.submit || !groups_.empty() || done_ || !JobsAreIn()) return;
  ChooseGroups();
  if (!groups_.empty()) Submit();
}

void AutoRun::ChooseGroups() {
  JobGroupManager& manager = application_.Manager();
  for (int i = 0; i < manager.GroupCount(); ++i) {
    const auto group = manager.GroupAt(i);
    bool isWanted = i == manager.CurrentGroupIndex();
    group->ReadJobs([&](const JobFile& job) {
      isWanted = isWanted || (options_.restore && !HasEnded(job.status));
    });
    if (isWanted) groups_.push_back(group);
  }
}

// False when it is to be asked again with the next look.
bool AutoRun::JobsAreIn() {
  if (application_.JobsWait()) {
    if (std::chrono::steady_clock::now() - begin_ < kTakingPatience) return false;
    done_ = true;
    application_.GiveUpJobs();
    for (const Message& failure : application_.Failures()) Print(failure);
    if (options_.quitWhenDone) window_.Leave();
    return false;
  }
  if (!application_.Intake().Busy()) return true;
  // Big decks take their time: look again soon, not at the next poll only.
  if (!Fl::has_timeout(Look, this)) Fl::add_timeout(kLookSeconds, Look, this);
  return false;
}

// Past the window's action, which may ask a user something.
void AutoRun::Submit() {
  for (const auto& group : groups_) group->Submit();
  window_.Refresh();
  Fl::add_timeout(kLookSeconds, Look, this);
}

void AutoRun::Look(void* self) {
  auto* run = static_cast<AutoRun*>(self);
  if (run->groups_.empty()) return run->AfterTick();
  if (run->Ended()) return run->Finish();
  Fl::repeat_timeout(kLookSeconds, Look, self);
}

// A job that was handed over when the queue had just ended has been promised to its copy. What runs
// in another group, as a run of the last session may, is not ours to stop.
bool AutoRun::Ended() {
  if (application_.Intake().Busy()) return false;
  bool all = !options_.quitWhenDone || !application_.Manager().IsAnyGroupRunning();
  for (const auto& group : groups_) all = Ended(*group) && all;
  return all;
}

bool AutoRun::Ended(JobGroup& group) const {
  if (group.Running()) return false;
  bool queued = false;
  group.ReadJobs([&](const JobFile& job) { queued = queued || job.status == JobStatus::kQueued; });
  return !queued || group.StopRequested() || !group.Submit();
}

void AutoRun::Finish() {
  done_ = true;
  if (options_.quitWhenDone) TakeAllGroups();
  if (options_.quitWhenDone && !AllFinished()) Fail();
  std::string report;
  for (const auto& group : groups_) report += ReportText(*group);
  if (!options_.report.empty() && !FileDirWrapper::WriteFileWhole(options_.report, report)) {
    const Message message(MessageId::kReportNotWritten, options_.report);
    application_.SettingsAndFiles().Log().Report(message);
    Print(message);
    Fail();
  }
  if (options_.quitWhenDone) window_.Leave();
}

// What came into other groups meanwhile has not been run and goes with the window.
void AutoRun::TakeAllGroups() {
  JobGroupManager& manager = application_.Manager();
  groups_.clear();
  for (int i = 0; i < manager.GroupCount(); ++i) groups_.push_back(manager.GroupAt(i));
}

bool AutoRun::AllFinished() const {
  bool all = !application_.Intake().Busy() && application_.Intake().NotMade() == 0;
  for (const auto& group : groups_) {
    group->ReadJobs([&](const JobFile& job) { all = all && job.status == JobStatus::kFinished; });
  }
  return all;
}

void AutoRun::Fail() {
  if (application_.exitCode == 0) application_.exitCode = ExitCode::kNotFinished;
}

void AutoRun::Interrupted() {
  if (application_.Manager().IsAnyGroupRunning()) Fail();
}

void AutoRun::Conclude() {
  if (done_ || !options_.submit) return;
  if (!groups_.empty()) return Finish();
  if (options_.quitWhenDone) Fail();
}
