// Runs of real processes: the stand-in solver, driven as the groups do it.
#ifndef KR_TESTS_SOLVERFIXTURE_H
#define KR_TESTS_SOLVERFIXTURE_H

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "support/ScopedVariable.h"
#include "support/Standin.h"
#include "support/TempFolder.h"
#include "support/WaitUntil.h"
#include "util/files/FileDirWrapper.h"

using Lines = std::vector<std::string>;

inline std::string Deck(const std::string& commands) {
  return "*KEYWORD\n" + commands +
         "*CONTROL_TERMINATION\n       1.0\n*NODE\n       1             0.0             0.0        "
         "     0.0\n*END\n";
}

inline bool Exists(const std::string& path) {
  return FileDirWrapper::FileExists(path);
}

inline bool Has(const Lines& lines, const std::string& line) {
  return std::find(lines.begin(), lines.end(), line) != lines.end();
}

class SolverTest : public testing::Test {
 protected:
  SolverTest() {
    context_.settings.solver_path.fill(StandinSolver());
    context_.settings.mpp_solver_s = StandinSolver();
    context_.runErrorCode = &runErrorCode_;
    context_.report = [this](const Message& message) {
      const std::lock_guard<std::mutex> lock(logMutex_);
      log_.push_back(message.English());
    };
  }

  std::unique_ptr<JobFileDyna> DynaJob(const std::string& deckPath) const {
    auto job = std::make_unique<JobFileDyna>(context_.settings);
    job->jobFile = deckPath;
    return job;
  }

  std::unique_ptr<JobFileDyna> DynaJobWith(const std::string& commands) const {
    return DynaJob(folder_.Write("a.k", Deck(commands)));
  }

  JobStatus Run(JobFile& job) { return Solver(job.GetSolverType()).Run(job, context_); }

  // Aborts the run once the job has a message file.
  JobStatus RunUntilItWrites(JobFile& job) {
    std::thread stopper([&job] {
      EXPECT_TRUE(WaitUntil([&job] { return !job.MessageFile().empty(); }));
      job.abort = true;
    });
    const JobStatus status = Run(job);
    stopper.join();
    return status;
  }

  JobSolver& Solver(SolverKind kind) const {
    for (const std::unique_ptr<JobSolver>& solver : solvers_) {
      if (solver->solverType == kind) return *solver;
    }
    throw std::out_of_range("solver kind");
  }

  void ExpectFailure(JobFile& job, int code, const std::string& message) {
    EXPECT_EQ(Run(job), JobStatus::kAborted);
    EXPECT_EQ(runErrorCode_, code);
    EXPECT_EQ(job.RunErrorCode(), code);
    EXPECT_EQ(job.RunMessage().English(), message);
    EXPECT_TRUE(Has(log_, message));
  }

  const ScopedVariable noDisplay_{"DISPLAY", ""};  // consoles are the process tests' business
  TempFolder folder_;
  JobRunContext context_;
  std::atomic<int> runErrorCode_{0};
  std::mutex logMutex_;
  Lines log_;
  std::vector<std::unique_ptr<JobSolver>> solvers_ = MakeQuickSolvers();
};

#endif
