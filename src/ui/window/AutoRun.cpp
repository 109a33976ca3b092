#include "ui/window/AutoRun.h"

#include <FL/Fl.H>

#include <algorithm>
#include <cstdio>

#include "util/text/DateTimeWrapper.h"

namespace {

constexpr double kLookSeconds = 0.2;  // only while a submitted group runs
constexpr std::chrono::seconds kTakingPatience{9};
constexpr unsigned kWaitMs = 20;

void Print(const Message& message) {
  std::fprintf(stderr, "%s\n", message.English().c_str());
}

}  // namespace

AutoRun::AutoRun(Application& application, Flx_AppWnd& window, const ProgramOptions& options)
    : application_(application), window_(window), options_(options) {
  if (!options.quitWhenDone) return;
  window.OnReportFailed = [this](const Message& message) {
    Print(message);
    Fail();
  };
}

AutoRun::~AutoRun() {
  window_.OnReportFailed = nullptr;
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
  if (run->writer_) {
    if (run->writer_->Ended()) return run->TakeReport();
    return Fl::repeat_timeout(kLookSeconds, Look, self);
  }
  if (run->done_) return run->Leave();
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
  return !queued || group.StopRequested() || group.Paused() || !group.Submit();
}

void AutoRun::Finish() {
  done_ = true;
  if (options_.quitWhenDone) TakeAllGroups();
  if (options_.quitWhenDone && !AllFinished()) Fail();
  std::vector<ReportedGroup> groups;
  for (const auto& group : groups_) groups.push_back(ReportOf(*group));
  if (!options_.report.empty())
    writer_.emplace(options_.report, std::move(groups), application_.language);
  if (writer_) {
    Fl::add_timeout(kLookSeconds, Look, this);
  } else {
    TakeReport();
  }
}

// When it is written, or there is none to write.
void AutoRun::TakeReport() {
  const std::string trouble = writer_ ? writer_->Trouble() : std::string();
  writer_.reset();
  if (!trouble.empty()) {
    const Message message(MessageId::kReportNotWritten, options_.report);
    application_.SettingsAndFiles().Log().Report(message);
    Print(message);
    Fail();
  }
  Leave();
}

// The report that the settings ask for is written first.
void AutoRun::Leave() {
  if (!options_.quitWhenDone) return;
  if (window_.WritesReport()) return Fl::add_timeout(kLookSeconds, Look, this);
  window_.Leave();
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

// Nobody looks any more: whoever waits for the report gets it now.
void AutoRun::Conclude() {
  if (!done_ && options_.submit) {
    if (!groups_.empty()) {
      Finish();
    } else if (options_.quitWhenDone) {
      Fail();
    }
  }
  while (writer_ && !writer_->Ended()) DateTimeWrapper::SleepMSec(kWaitMs);
  if (writer_) TakeReport();
}
