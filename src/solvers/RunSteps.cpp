#include "solvers/RunSteps.h"

#include "jobs/JobArguments.h"
#include "solvers/LastWords.h"
#include "solvers/RestartDump.h"
#include "solvers/SolverKinds.h"
#include "util/files/FileDirWrapper.h"

namespace {

// A longer one would be cut, or not be found, by who has buffers of the usual size.
bool CheckLength(JobFile& job, const std::string& path) {
  if (path.size() <= FileDirWrapper::kMostPathBytes) return true;
  return Fail(job, RunError::kNotStarted,
              Message(MessageId::kPathTooLong, path, FileDirWrapper::kMostPathBytes));
}

// A pipe or a device would keep a solver waiting, and whoever reads it takes what is in it away.
bool CheckIsFile(JobFile& job, const std::string& path) {
  if (FileDirWrapper::IsFile(path) || !FileDirWrapper::FileExists(path)) return true;
  const PlainMessageId kind = FileDirWrapper::IsFolder(path) ? PlainMessageId(MessageId::kIsFolder)
                              : FileDirWrapper::IsPipe(path) ? PlainMessageId(MessageId::kIsPipe)
                                                             : PlainMessageId(MessageId::kIsDevice);
  return Fail(job, RunError::kNotStarted, Message(MessageId::kNoFileToRead, path, Message(kind)));
}

}  // namespace

Message WithoutToken(const JobFile& job, const Message& message) {
  return job.run != nullptr ? message.Without(job.run->settings.inc_token) : message;
}

void Report(const JobFile& job, const Message& message) {
  if (job.run == nullptr || !job.run->report) return;
  job.run->report(WithoutToken(job, message));
}

bool Fail(JobFile& job, int code, const Message& reason) {
  Report(job, reason);
  job.SetRunError(code, WithoutToken(job, reason));
  if (code >= RunError::kJobFileMissing) job.SetHowFailed({FailureKind::kCannotStart, code});
  if (job.run != nullptr && job.run->runErrorCode != nullptr) *job.run->runErrorCode = code;
  return false;
}

bool FailAsOtherKind(JobFile& job, SolverKind kind) {
  return Fail(job, RunError::kNotStarted,
              Message(MessageId::kOtherKindOfJob, job.MainFile(), RowOfKind(kind).name));
}

bool CheckSolver(JobFile& job, const std::string& path) {
  if (!CheckLength(job, path)) return false;
  if (FileDirWrapper::FileExists(path)) return CheckCommandLinePath(job, path);
  return Fail(job, RunError::kSolverMissing, Message(MessageId::kSolverMissing, path));
}

bool CheckJobFile(JobFile& job) {
  if (!CheckLength(job, job.jobFile)) return false;
  if (FileDirWrapper::FileExists(job.jobFile))
    return CheckIsFile(job, job.jobFile) && CheckCommandLinePath(job, job.jobFile);
  return Fail(job, RunError::kJobFileMissing, Message(MessageId::kJobFileMissing, job.jobFile));
}

bool CheckRestartAndJobFile(JobFile& job) {
  if (job.restartFile.empty()) return CheckJobFile(job);
  if (!CheckLength(job, job.restartFile)) return false;
  if (!RestartFileExists(job.restartFile)) {
    return Fail(job, RunError::kJobFileMissing,
                Message(MessageId::kRestartFileMissing, job.restartFile));
  }
  return CheckIsFile(job, job.restartFile) && CheckCommandLinePath(job, job.restartFile) &&
         (job.jobFile.empty() || CheckJobFile(job));
}

bool CheckCommandLinePath(JobFile& job, const std::string& path, bool quoted) {
  if (!CheckLength(job, path)) return false;
  if (FitsCommandLine(path, quoted)) return true;
  return Fail(job, RunError::kNotStarted, Message(MessageId::kPathNotWritable, path));
}

// Whatever the user called the input, it is not old output.
void RemoveOldFile(const JobFile& job, const std::string& path, MessageIdFor<std::string> stays) {
  if (FileDirWrapper::IsSameFile(path, job.jobFile) ||
      FileDirWrapper::IsSameFile(path, job.restartFile)) {
    return;
  }
  if (!FileDirWrapper::FileExists(path) || FileDirWrapper::RemoveFile(path)) return;
  Report(job, Message(stays, path));
}

bool DescribeProgram(const JobFile& job, const std::string& program, const char* title,
                     PTWrapperProcessStart& start) {
  std::string arguments;
  if (!job.BuildArguments(arguments)) return false;
  start.program = program;
  start.commandLine = QuotedPath(program) + ' ' + arguments;
  start.title = title;
  return true;
}

bool StartProcess(JobFile& job, PTWrapperProcessStart start, const std::vector<std::string>& old) {
  start.folder = job.Folder();
  start.outputFile = ConsoleFileOf(job);
  start.creationFlags = PTWrapperProcess::kNewConsole;
  start.console = job.run->console;
  const int console = job.run->settings.console;
  start.console.minimised = console == Settings::kConsoleMinimised;
  start.showWindow = console != Settings::kConsoleNone;
  if (!job.process.Terminate()) Report(job, Message(MessageId::kNotEnded, job.process.LastError()));
  if (!FileDirWrapper::IsFolder(start.folder)) {
    return Fail(job, RunError::kNotStarted, Message(MessageId::kFolderNotEntered, start.folder));
  }
  std::vector<std::string> before = old;
  before.push_back(start.outputFile);
  job.folderBefore.Take(before);
  start.token = PTWrapperProcess::NewToken();
  if (job.run->starting) job.run->starting(job, start);
  if (!job.process.Create(start)) {
    return Fail(job, RunError::kNotStarted,
                Message(MessageId::kNotStarted, job.process.LastError()));
  }
  if (job.run->started) job.run->started(job, start);
  return true;
}

JobStatus NotNormal(JobFile& job, const Message& reason) {
  Fail(job, RunError::kNotNormal, Message(MessageId::kNotNormal, job.MainFile(), reason));
  return JobStatus::kAborted;
}

JobStatus OnlyOldOutput(JobFile& job, const std::string& path) {
  const bool isUnknown = job.folderBefore.IsUnknown(path);
  const JobStatus status = NotNormal(job, isUnknown ? Message(MessageId::kMaybeOldOutput, path)
                                                    : Message(MessageId::kOldOutput, path));
  job.SetHowFailed({FailureKind::kOldOutput});
  return status;
}
