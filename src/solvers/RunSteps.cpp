#include "solvers/RunSteps.h"

#include "jobs/JobArguments.h"
#include "util/files/FileDirWrapper.h"

namespace {

// The access token of a solver's command line is nobody's business.
std::string WithoutToken(std::string text, const std::string& token) {
  const std::string shown = "***";
  if (token.empty()) return text;
  for (std::size_t at = 0; (at = text.find(token, at)) != std::string::npos; at += shown.size()) {
    text.replace(at, token.size(), shown);
  }
  return text;
}

// A longer one would be cut, or not be found, by who has buffers of the usual size.
bool CheckLength(JobFile& job, const std::string& path) {
  if (path.size() <= FileDirWrapper::kMostPathBytes) return true;
  return Fail(job, RunError::kNotStarted,
              "File name [" + path + "] is longer than the " +
                  std::to_string(FileDirWrapper::kMostPathBytes) +
                  " bytes that a solver can be given");
}

}  // namespace

void Report(const JobFile& job, const std::string& line) {
  if (job.run == nullptr || !job.run->report) return;
  job.run->report(WithoutToken(line, job.run->settings.inc_token));
}

bool Fail(JobFile& job, int code, const std::string& line) {
  Report(job, line);
  const std::string token = job.run != nullptr ? job.run->settings.inc_token : std::string();
  job.SetRunError(code, WithoutToken(line, token));
  if (job.run != nullptr && job.run->runErrorCode != nullptr) *job.run->runErrorCode = code;
  return false;
}

std::string ShownPath(const std::string& path) {
  return path.empty() ? "Null" : path;
}

bool CheckSolver(JobFile& job, const std::string& path) {
  if (!CheckLength(job, path)) return false;
  if (FileDirWrapper::FileExists(path)) return CheckCommandLinePath(job, path);
  return Fail(job, RunError::kSolverMissing, "Solver [" + ShownPath(path) + "] does not exist");
}

bool CheckJobFile(JobFile& job) {
  if (!CheckLength(job, job.jobFile)) return false;
  if (FileDirWrapper::FileExists(job.jobFile)) return CheckCommandLinePath(job, job.jobFile);
  return Fail(job, RunError::kJobFileMissing,
              "Job file [" + ShownPath(job.jobFile) + "] does not exist");
}

bool CheckRestartAndJobFile(JobFile& job) {
  if (job.restartFile.empty()) return CheckJobFile(job);
  if (!CheckLength(job, job.restartFile)) return false;
  if (!FileDirWrapper::FileExists(job.restartFile)) {
    return Fail(job, RunError::kJobFileMissing,
                "Job restart file [" + job.restartFile + "] does not exist");
  }
  return CheckCommandLinePath(job, job.restartFile) && (job.jobFile.empty() || CheckJobFile(job));
}

bool CheckCommandLinePath(JobFile& job, const std::string& path, bool quoted) {
  if (!CheckLength(job, path)) return false;
  if (FitsCommandLine(path, quoted)) return true;
  return Fail(job, RunError::kNotStarted,
              "File name [" + path + "] cannot be written on a command line");
}

// Whatever the user called the input, it is not old output.
void RemoveOldFile(const JobFile& job, const std::string& path, const char* kind) {
  if (FileDirWrapper::IsSameFile(path, job.jobFile) ||
      FileDirWrapper::IsSameFile(path, job.restartFile)) {
    return;
  }
  if (!FileDirWrapper::FileExists(path) || FileDirWrapper::RemoveFile(path)) return;
  Report(job, std::string("Remove old ") + kind + " file [" + path + "] failed");
}

bool StartProcess(JobFile& job, PTWrapperProcessStart start) {
  const std::string& mainFile = job.jobFile.empty() ? job.restartFile : job.jobFile;
  start.folder = job.Folder();
  start.outputFile = mainFile + ".console.txt";
  start.creationFlags = PTWrapperProcess::kNewConsole;
  start.console = job.run->console;
  if (!job.process.Terminate()) Report(job, job.process.LastError());
  if (!FileDirWrapper::IsFolder(start.folder)) {
    return Fail(job, RunError::kNotStarted,
                "Folder [" + ShownPath(start.folder) + "] cannot be entered");
  }
  return job.process.Create(start) || Fail(job, RunError::kNotStarted, job.process.LastError());
}

JobStatus NotNormal(JobFile& job, const std::string& words) {
  Fail(job, RunError::kNotNormal,
       "Job [" + ShownPath(job.jobFile.empty() ? job.restartFile : job.jobFile) +
           "] did not end normally: " + words);
  return JobStatus::kAborted;
}
