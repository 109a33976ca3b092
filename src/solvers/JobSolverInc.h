// The INC solver.
#ifndef KR_SOLVERS_JOBSOLVERINC_H
#define KR_SOLVERS_JOBSOLVERINC_H

#include "solvers/JobSolver.h"

// Runs JobFileInc jobs. The solver wants the access token of the settings.
class JobSolverInc : public JobSolver {
 public:
  JobSolverInc();

  bool Start(JobFile& job) override;
  JobStatus Finish(JobFile& job) override;
  void Poll(JobFile& job) override;

 protected:
  bool Check(JobFile& job) override;
  bool Describe(const JobFile& job, PTWrapperProcessStart& start) const override;
};

#endif
