// The Vorel one-step solver.
#ifndef KR_SOLVERS_JOBSOLVERVOREL_H
#define KR_SOLVERS_JOBSOLVERVOREL_H

#include "solvers/JobSolver.h"

// Runs JobFileVorel jobs.
class JobSolverVorel : public JobSolver {
 public:
  JobSolverVorel();

  bool Start(JobFile& job) override;
  JobStatus Finish(JobFile& job) override;
  void Poll(JobFile& job) override;

 protected:
  bool Check(JobFile& job) override;
  bool Describe(const JobFile& job, PTWrapperProcessStart& start) const override;
};

#endif
