// The drivers: a class for each solver. Their kinds are in the table of SolverKinds.cpp.
#ifndef KR_SOLVERS_DRIVERS_H
#define KR_SOLVERS_DRIVERS_H

#include "solvers/JobSolver.h"

// LS-DYNA in one precision, on this computer or through an MPI launcher: JobFileDyna jobs.
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

// The utility batch program on an LS-DYNA deck: JobFileDyna jobs of the kind kUtilityBatch.
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

// The Vorel one-step solver: JobFileVorel jobs.
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

// The INC solver: JobFileInc jobs. It wants the access token of the settings.
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
