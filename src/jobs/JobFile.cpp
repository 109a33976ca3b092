#include "jobs/JobFile.h"

#include <algorithm>

#include "jobs/HostAddress.h"
#include "jobs/JobArguments.h"
#include "util/text/DateTimeWrapper.h"

namespace {

std::string MakeIdentifier() {
  std::tm now{};
  std::string time;
  if (DateTimeWrapper::CurrentLocalTime(&now)) DateTimeWrapperStr::DateTimeString(&now, time);
  std::string identifier = HostAddress() + ' ' + time;
  const std::string replaced = " .:-";
  for (char& c : identifier) {
    if (replaced.find(c) != std::string::npos) c = '_';
  }
  return identifier;
}

std::int64_t SecondsSince(std::chrono::steady_clock::time_point then) {
  const auto passed = std::chrono::steady_clock::now() - then;
  return std::chrono::duration_cast<std::chrono::seconds>(passed).count();
}

}  // namespace

std::optional<std::int64_t> RunResult::Took(std::int64_t started, std::int64_t ended) const {
  if (seconds) return seconds;
  const bool isKnown = started != 0 && ended != 0 && ended >= started;
  return isKnown ? std::optional(ended - started) : std::nullopt;
}

JobId NewJobId() {
  static std::atomic<std::uint64_t> last{0};
  return static_cast<JobId>(++last);
}

JobFile::JobFile(const Settings& settings) : id(NewJobId()) {
  identifier = MakeIdentifier();
  pause = settings.pause_time;
}

JobFile::~JobFile() = default;

std::string JobFile::Folder() const {
  return FolderOf(MainFile());
}

void JobFile::Enter(JobStatus newStatus, std::int64_t since) {
  const std::int64_t now = DateTimeWrapper::CurrentTime();
  if (since == 0) since = now;
  const MutexLock lock(mutex_);
  if (HasEnded(newStatus) && begun_) {
    const std::int64_t sinceThen = std::max<std::int64_t>(now - since, 0);
    result_.seconds = std::max<std::int64_t>(SecondsSince(*begun_) - sinceThen, 0);
  }
  status = newStatus;
  begun_.reset();
  if (status == JobStatus::kRunning) {
    started = since;
    begun_ = std::chrono::steady_clock::now() - std::chrono::seconds(now - since);
    result_.seconds.reset();
  }
  ended = HasEnded(status) ? since : 0;
}

std::int64_t JobFile::RunSeconds() const {
  if (started == 0) return -1;
  if (HasEnded(status)) return Result().Took(started, ended).value_or(-1);
  if (status != JobStatus::kRunning) return -1;
  const std::int64_t passed =
      begun_ ? SecondsSince(*begun_) : DateTimeWrapper::CurrentTime() - started;
  return std::max<std::int64_t>(passed, 0);
}

RunResult JobFile::Result() const {
  const MutexLock lock(mutex_);
  return result_;
}

void JobFile::SetResult(const RunResult& result) {
  const MutexLock lock(mutex_);
  result_ = result;
}

std::string JobFile::MessageFile() const {
  const MutexLock lock(mutex_);
  return result_.messageFile;
}

void JobFile::SetMessageFile(const std::string& path) {
  const MutexLock lock(mutex_);
  result_.messageFile = path;
}

int JobFile::RunErrorCode() const {
  const MutexLock lock(mutex_);
  return result_.errorCode;
}

Message JobFile::RunMessage() const {
  const MutexLock lock(mutex_);
  return result_.reason;
}

void JobFile::SetRunError(int code, const Message& message) {
  const MutexLock lock(mutex_);
  result_.errorCode = code;
  result_.reason = message;
  result_.lastWords = {};
  result_.failure = {};
}

Message JobFile::LastWords() const {
  const MutexLock lock(mutex_);
  return result_.lastWords;
}

void JobFile::SetLastWords(const Message& words) {
  const MutexLock lock(mutex_);
  result_.lastWords = words;
}

std::string JobFile::RestartDump() const {
  const MutexLock lock(mutex_);
  return result_.restartDump;
}

void JobFile::SetRestartDump(const std::string& path) {
  const MutexLock lock(mutex_);
  result_.restartDump = path;
}

Message StoppedMessage(int stoppedAt) {
  if (stoppedAt == kNotStopped) return {};
  if (stoppedAt == kStopUnknown) return Message(MessageId::kStopNotKnown);
  if (stoppedAt < 0) return Message(MessageId::kStoppedEarly);
  return Message(MessageId::kStoppedAt, std::to_string(stoppedAt) + "%");
}

int JobFile::StoppedAt() const {
  const MutexLock lock(mutex_);
  return result_.stoppedAt;
}

void JobFile::SetStoppedAt(int percent) {
  const MutexLock lock(mutex_);
  result_.stoppedAt = percent;
}

Message FailureMessage(const Failure& failure) {
  switch (failure.kind) {
    case FailureKind::kStopped:
      return Message(MessageId::kFailedStopped);
    case FailureKind::kSolverError:
      return failure.number == 0 ? Message(MessageId::kFailedSolver)
                                 : Message(MessageId::kFailedSolverError, failure.number);
    case FailureKind::kNoMessageFile:
      return Message(MessageId::kFailedNoMessageFile);
    case FailureKind::kKilled:
      return failure.number < 0 ? Message(MessageId::kFailedCrashed)
                                : Message(MessageId::kExitSignal, failure.number);
    case FailureKind::kDiskFull:
      return Message(MessageId::kFailedDisk);
    case FailureKind::kCannotStart:
      return Message(MessageId::kFailedStart);
    case FailureKind::kTimeStep:
      return Message(MessageId::kFailedTimeStep);
    case FailureKind::kLicence:
      return Message(MessageId::kFailedLicence);
    case FailureKind::kNoNormalEnd:
      return Message(MessageId::kFailedNoEnd);
    case FailureKind::kOldOutput:
      return Message(MessageId::kFailedOldOutput);
    case FailureKind::kNotEnded:
      return Message(MessageId::kFailedNotEnded);
    case FailureKind::kNone:
      break;
  }
  return {};
}

Failure JobFile::HowFailed() const {
  const MutexLock lock(mutex_);
  return result_.failure;
}

void JobFile::SetHowFailed(const Failure& failure) {
  const MutexLock lock(mutex_);
  result_.failure = failure;
}

void JobFile::ResetForRun() {
  status = JobStatus::kQueued;
  started = ended = 0;
  abort = false;
  SetResult({});
  const std::size_t first = firstStage > 0 ? static_cast<std::size_t>(firstStage) : 0;
  for (std::size_t i = 0; i < stages.size(); ++i) {
    stages[i]->abort = false;
    if (i >= first) stages[i]->ResetForRun();
  }
}

void JobFile::Abort() {
  abort = true;
  for (const std::shared_ptr<JobFile>& stage : stages) stage->Abort();
}

JobFileDyna::JobFileDyna(const Settings& settings) : JobFile(settings) {}
