#include "jobs/JobFile.h"

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

}  // namespace

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

std::string JobFile::MessageFile() const {
  const MutexLock lock(mutex_);
  return messageFile_;
}

void JobFile::SetMessageFile(const std::string& path) {
  const MutexLock lock(mutex_);
  messageFile_ = path;
}

int JobFile::RunErrorCode() const {
  const MutexLock lock(mutex_);
  return runErrorCode_;
}

Message JobFile::RunMessage() const {
  const MutexLock lock(mutex_);
  return runMessage_;
}

void JobFile::SetRunError(int code, const Message& message) {
  const MutexLock lock(mutex_);
  runErrorCode_ = code;
  runMessage_ = message;
  lastWords_ = {};
}

Message JobFile::LastWords() const {
  const MutexLock lock(mutex_);
  return lastWords_;
}

void JobFile::SetLastWords(const Message& words) {
  const MutexLock lock(mutex_);
  lastWords_ = words;
}

std::string JobFile::RestartDump() const {
  const MutexLock lock(mutex_);
  return restartDump_;
}

void JobFile::SetRestartDump(const std::string& path) {
  const MutexLock lock(mutex_);
  restartDump_ = path;
}

Message StoppedMessage(int stoppedAt) {
  if (stoppedAt == kNotStopped) return {};
  if (stoppedAt < 0) return Message(MessageId::kStoppedEarly);
  return Message(MessageId::kStoppedAt, std::to_string(stoppedAt) + "%");
}

int JobFile::StoppedAt() const {
  const MutexLock lock(mutex_);
  return stoppedAt_;
}

void JobFile::SetStoppedAt(int percent) {
  const MutexLock lock(mutex_);
  stoppedAt_ = percent;
}

void JobFile::ResetForRun() {
  status = JobStatus::kQueued;
  started = ended = 0;
  abort = false;
  SetMessageFile({});
  SetRestartDump({});
  SetRunError(0, {});
  SetStoppedAt(kNotStopped);
  const std::size_t first = firstStage > 0 ? static_cast<std::size_t>(firstStage) : 0;
  for (std::size_t i = 0; i < stages.size(); ++i) {
    stages[i]->abort = false;
    if (i >= first) stages[i]->ResetForRun();
  }
}

JobFileDyna::JobFileDyna(const Settings& settings) : JobFile(settings) {}
