// Solver drivers: one object a solver kind.
#ifndef KR_SOLVERS_JOBSOLVER_H
#define KR_SOLVERS_JOBSOLVER_H

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "jobs/JobFile.h"

// Turns a job into one solver process and judges how it ended. The application owns the drivers;
// they keep no state between jobs, so several groups may run through one at the same time.
class JobSolver {
 public:
  virtual ~JobSolver() = default;

  // Prepares the job's folder and starts the solver. True when the process was created.
  virtual bool Start(JobFile& job) = 0;

  // What Start would start the solver with: program, command line, title, folder and variables.
  // Reads the disk at most. False when there is no such command line. What keeps the job from being
  // started, if anything does, is its RunMessage(). The job is one that nobody else has.
  bool Command(JobFile& job, const JobRunContext& context, PTWrapperProcessStart& start);

  // Called after the process has ended: examines its output, tidies files; Finished or Aborted.
  virtual JobStatus Finish(JobFile& job) = 0;

  // Called when the process has been started and at every look at it while it runs: finds the
  // message file.
  virtual void Poll(JobFile& job);

  // The whole run of one job, on the calling thread: Finished or Aborted. Returns Aborted within
  // about the poll time after job.abort was set, with the solver still running: the caller ends it.
  // Leaves the code and the reason in the job and the context.
  JobStatus Run(JobFile& job, const JobRunContext& context);

  // The rest of a run that was started before, by another copy of the program: job.process has its
  // process or, when that has ended, nothing, and job.folderBefore is what it was then.
  JobStatus GoOn(JobFile& job, const JobRunContext& context);

  // The kind's, from its row of SolverKinds; texts in English. The program reads the row, which has
  // both languages, for the choosers: the titles and filters here are for who knows drivers alone.
  SolverKind solverType;
  std::string displayName;
  std::string selectSolverTitle;
  std::string selectSolverTitle2;
  std::string selectJobFileTitle;
  std::string solverFilter;
  std::string defaultExecutable;
  std::string jobFileFilter;
  int enabled = 1;                           // 0: the solver mode leaves it out
  std::chrono::milliseconds pollTime{1000};  // between two looks at the process

 protected:
  explicit JobSolver(SolverKind kind);

  // What Start looks at first: whether the files are there that the solver needs. Leaves the reason
  // in the job.
  virtual bool Check(JobFile& job);
  // Says program, command line, title and variables; changes nothing. False when there is none.
  virtual bool Describe(const JobFile& job, PTWrapperProcessStart& start) const;

 private:
  JobStatus WatchAndJudge(JobFile& job);
};

// One driver for each kind, in their order.
std::vector<std::unique_ptr<JobSolver>> MakeSolvers();

#endif
