// The steps that the drivers share. All run on the run's thread, during a run.
#ifndef KR_SOLVERS_RUNSTEPS_H
#define KR_SOLVERS_RUNSTEPS_H

#include <string>
#include <vector>

#include "jobs/JobFile.h"

namespace RunError {
enum : int {
  kNotNormal = 2,       // the solver did not end normally, or its output cannot be read
  kNoMessageFile = 3,   // there is no message file
  kJobFileMissing = 4,  // there is no job file or restart file
  kSolverMissing = 5,   // there is no solver
  kNotStarted = 6       // no process could be created
};
}

// Lets a job see its run's context for the length of the run.
class RunScope {
 public:
  RunScope(JobFile& job, const JobRunContext& context) : job_(job), before_(job.run) {
    job_.run = &context;
  }
  ~RunScope() { job_.run = before_; }
  RunScope(const RunScope&) = delete;
  RunScope& operator=(const RunScope&) = delete;

 private:
  JobFile& job_;
  const JobRunContext* const before_;
};

// For the application log. The settings' access token is masked, here and below.
void Report(const JobFile& job, const Message& message);

// The message without it.
Message WithoutToken(const JobFile& job, const Message& message);

// Reports why the run ends and leaves it with its code in the job and the run's context. Always
// false.
bool Fail(JobFile& job, int code, const Message& reason);

// The same for a job that is not of this kind.
bool FailAsOtherKind(JobFile& job, SolverKind kind);

bool CheckSolver(JobFile& job, const std::string& path);

// With a restart file, where the solver takes one, the job file may be left out, not missing.
bool CheckJobFile(JobFile& job);
bool CheckRestartAndJobFile(JobFile& job);

// Whether the path can be written on a command line; see FitsCommandLine.
bool CheckCommandLinePath(JobFile& job, const std::string& path, bool quoted = false);

// Removes a file when it is there. `stays` is said of one that cannot be removed.
void RemoveOldFile(const JobFile& job, const std::string& path, MessageIdFor<std::string> stays);

// The command line of a program with the job's arguments behind it. False when there is none.
bool DescribeProgram(const JobFile& job, const std::string& program, const char* title,
                     PTWrapperProcessStart& start);

// Ends what the job's process object still holds and starts the process in the job's folder, with a
// console of its own. The driver says program, command line, title and variables, and which of the
// files that it will judge the run by are there already.
bool StartProcess(JobFile& job, PTWrapperProcessStart start, const std::vector<std::string>& old);

// "Job [..] did not end normally: " with the reason; leaves kNotNormal. The status to return.
JobStatus NotNormal(JobFile& job, const Message& reason);

// The same for a file that was there before the run's start, and so is no output of it.
JobStatus OnlyOldOutput(JobFile& job, const std::string& path);

#endif
