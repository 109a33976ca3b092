// A manager with real drivers, whose LS-DYNA solver is the stand-in.
#ifndef KR_TESTS_CORE_GROUPFIXTURE_H
#define KR_TESTS_CORE_GROUPFIXTURE_H

#include <filesystem>
#include <memory>
#include <optional>

#include "core/JobGroupManager.h"
#include "CoreFixture.h"
#include "support/Standin.h"

class GroupTest : public CoreTest {
 protected:
  GroupTest() {
    files_.SetSolverPath(SolverKind::kLsDynaSingle, StandinSolver());
    files_.Set(&Settings::pause_time, 0);
    manager_->SetObserver(&seen_);
    manager_->AddGroup("Group1");
    manager_->SetCurrentGroup(0);
  }

  std::shared_ptr<JobGroup> Group(int index = 0) const { return manager_->GroupAt(index); }

  // The job in this place of a group's list; kNone when there is none.
  JobId Id(int index, int group = 0) const { return IdIn(*Group(group), index); }
  static JobId IdIn(const JobGroup& group, int index) {
    const std::vector<JobId> ids = group.JobIds();
    const auto place = static_cast<std::size_t>(index);
    return place < ids.size() ? ids[place] : JobId::kNone;
  }

  // A job in a folder of its own, since the solver writes there. The commands are for the stand-in.
  std::shared_ptr<JobFileDyna> Job(const std::string& name, const std::string& command = {}) {
    std::filesystem::create_directories(home_ / name);
    auto job = std::make_shared<JobFileDyna>(files_.Get());
    job->jobFile = Deck(name + "/deck.k", command.empty() ? "" : "$ standin: " + command + "\n");
    return job;
  }

  std::optional<JobStatus> Status(const JobGroup& group, int index) const {
    std::optional<JobStatus> status;
    group.ReadJob(IdIn(group, index), [&](const JobFile& job) { status = job.status; });
    return status;
  }

  bool WaitForStatus(const JobGroup& group, int index, JobStatus status) const {
    return WaitUntil([&] { return Status(group, index) == status; });
  }

  bool WaitForEnd(const JobGroup& group) const {
    return WaitUntil([&] { return !group.Running(); });
  }

  SettingsAndPaths files_{kTitle};
  std::vector<std::unique_ptr<JobSolver>> solvers_ = MakeQuickSolvers();
  RecordingObserver seen_;
  std::unique_ptr<JobGroupManager> manager_ = std::make_unique<JobGroupManager>(files_, solvers_);
};

#endif
