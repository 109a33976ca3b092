// LS-DYNA in one precision, on this computer or through an MPI launcher.
#ifndef KR_SOLVERS_JOBSOLVERLSDYNA_H
#define KR_SOLVERS_JOBSOLVERLSDYNA_H

#include "solvers/JobSolver.h"

// Runs JobFileDyna jobs of one precision.
class JobSolverLsDyna : public JobSolver {
 public:
  explicit JobSolverLsDyna(bool doublePrecision);

  bool Start(JobFile& job) override;
  JobStatus Finish(JobFile& job) override;
  void Poll(JobFile& job) override;

 protected:
  bool Check(JobFile& job) override;
  bool Describe(const JobFile& job, PTWrapperProcessStart& start) const override;
};

#endif
