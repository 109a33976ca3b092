// The utility batch program on an LS-DYNA deck.
#ifndef KR_SOLVERS_JOBSOLVERUBATCH_H
#define KR_SOLVERS_JOBSOLVERUBATCH_H

#include "solvers/JobSolver.h"

// Runs JobFileDyna jobs of the kind kUtilityBatch.
class JobSolverUBatch : public JobSolver {
 public:
  JobSolverUBatch();

  bool Start(JobFile& job) override;
  JobStatus Finish(JobFile& job) override;
  void Poll(JobFile& job) override;

 protected:
  bool Check(JobFile& job) override;
  bool Describe(const JobFile& job, PTWrapperProcessStart& start) const override;
};

#endif
