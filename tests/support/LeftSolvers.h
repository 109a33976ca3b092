// Solvers that outlive the program: a process starts them and is killed, the next one watches them.
#ifndef KR_TESTS_LEFTSOLVERS_H
#define KR_TESTS_LEFTSOLVERS_H

#include <chrono>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "core/Application.h"
#include "support/Standin.h"
#include "util/files/FileDirWrapper.h"

inline void UseStandin(Application& application) {
  for (const auto& solver : application.Solvers()) solver->pollTime = std::chrono::milliseconds(20);
  SettingsAndPaths& settings = application.SettingsAndFiles();
  settings.SetSolverPath(SolverKind::kLsDynaDouble, StandinSolver());
  settings.Set(&Settings::pause_time, 0);
}

inline void WaitWhile(const std::function<bool()>& waits) {
  while (waits()) std::this_thread::sleep_for(std::chrono::milliseconds(20));
}

// The decks FOLDER/NAME/deck.k in groups of these names, "mpp" on four ranks. Waits until all run.
inline void StartSolvers(Application& application, const std::string& folder,
                         const std::vector<std::string>& names) {
  SettingsAndPaths& settings = application.SettingsAndFiles();
  settings.Set(&Settings::mpi, 9);
  settings.Set(&Settings::mpi_param, std::string("-n 4"));
  settings.Set(&Settings::mpp_solver_d, settings.Get().SolverPath(SolverKind::kLsDynaDouble));
  for (const std::string& name : names) {
    settings.Set(&Settings::use_mpp, name == "mpp");
    auto job = std::make_shared<JobFileDyna>(settings.Get());
    job->solverType = SolverKind::kLsDynaDouble;
    job->jobFile = FileDirWrapper::Join(FileDirWrapper::Join(folder, name), "deck.k");
    const auto group = application.Manager().GroupAt(application.Manager().AddGroup(name));
    group->AddJob(job);
    group->Submit();
    const std::string output =
        FileDirWrapper::Join(job->Folder(), name == "mpp" ? "mes0003" : "messag");
    WaitWhile([&] { return group->Running() && !FileDirWrapper::FileExists(output); });
  }
}

// Watches them until "plain", "ends" and "reused" have ended, stops the others and ends the
// program: "name status reason" of each.
inline std::vector<std::string> WatchSolvers(Application& application) {
  application.RestoreLeft();
  JobGroupManager& manager = application.Manager();
  for (const char* name : {"plain", "ends", "reused"}) {
    const int index = manager.IndexOfName(name);
    WaitWhile([&] { return index >= 0 && manager.GroupAt(index)->Running(); });
  }
  std::vector<std::string> ends;
  for (int i = 0; i < manager.GroupCount(); ++i) {
    const auto group = manager.GroupAt(i);
    WaitWhile([&] { return !group->Stop(); });
    group->ReadJobs([&](const JobFile& job) {
      ends.push_back(group->Name() + ' ' + JobStatusWord(job.status).English() + ' ' +
                     job.RunMessage().Name());
    });
  }
  application.Shutdown();
  return ends;
}

#endif
