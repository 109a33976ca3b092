// The main window's actions that open dialogs of settings, the monitor, and the post-processor.

#include <algorithm>

#include "core/RestartJob.h"
#include "solvers/PostResult.h"
#include "solvers/RestartDump.h"
#include "ui/dialogs/Flx_About.h"
#include "ui/dialogs/Flx_Configuration.h"
#include "ui/dialogs/Flx_MppSettings.h"
#include "ui/dialogs/Flx_QueueOptions.h"
#include "ui/dialogs/Flx_RestartJob.h"
#include "ui/dialogs/HistoryWindow.h"
#include "ui/monitor/MonitorWindow.h"
#include "ui/text/Encoding.h"
#include "ui/text/ShownValues.h"
#include "ui/window/Flx_AppWnd.h"
#include "util/files/FileDirWrapper.h"

void Flx_AppWnd::AddRestart() {
  const auto group = Group();
  if (!group) return;
  JobRequest request = MakeJobRequest(application_.SettingsAndFiles().Get());
  {
    Flx_RestartJob dialog(this, application_);
    RunDialog(dialog);
    request.restartFile = dialog.RestartFile();
    request.jobFile = dialog.InputFile();
  }
  if (request.restartFile.empty()) return;
  request.outputName = NameOfDump(request.restartFile);
  request.groupId = group->Id();
  application_.Intake().Add(request);
}

void Flx_AppWnd::GoOn() {
  const auto group = Group();
  std::string dump;
  if (!ReadCurrentJob([&](const JobFile& job) { dump = job.RestartDump(); })) return;
  JobId queued = FindRestartFrom(*group, dump);
  const bool isThere = queued != JobId::kNone;
  if (!isThere) {
    const auto job = MakeRestartOf(*group, CurrentJob(), application_.SettingsAndFiles().Get());
    if (!job || !group->AddJob(job)) return;
    queued = job->id;
    Refresh();
  }
  Table()->SelectJob(queued);
  Say(texts_.Format(isThere ? "ui_goes_on_already" : "ui_goes_on", ShownName(dump)));
}

void Flx_AppWnd::RunPost() {
  PostSource source;
  if (!ReadCurrentJob([&](const JobFile& job) { source = PostSourceOf(job); })) return;
  if (source.folder.empty()) return Inform(texts_.Get("msg_curpath_empty"));
  if (!HasEnded(source.status)) return Inform(texts_.Get("msg_run_post"));
  if (IsCompensation(source)) return Inform(texts_.Get("msg_open_scp"));
  const std::vector<std::string> paths = PostResults(source);
  if (paths.empty()) return Inform(texts_.Get("msg_not_run_post"));
  const auto result = std::find_if(paths.begin(), paths.end(), FileDirWrapper::FileExists);
  if (result == paths.end())
    return Inform(texts_.Get("msg_not_exist") + "\n" + ToUi(paths.front()));
  Say(texts_.Format("ui_post_opens", ToUi(*result)));
  application_.OpenResult(*result);
}

// Stages are runs of their own, of decks in the job's folder or below it.
void Flx_AppWnd::ShowRunsOfJob() {
  std::string path;
  const auto read = [&](const JobFile& job) {
    path = job.stages.empty() ? job.MainFile() : job.Folder();
  };
  if (ReadCurrentJob(read)) HistoryWindow::Show(application_, texts_, ToUi(path));
}

void Flx_AppWnd::OpenMonitor() {
  const JobId job = CurrentJob();
  if (job == JobId::kNone) return Inform(texts_.Get("msg_no_cur_job"));
  MonitorWindow::Show(application_, texts_, MonitoredRun(Group(), job), this);
}

void Flx_AppWnd::OpenRunFolder() {
  if (const auto folder = AskForFolder("mon_choose_folder"))
    MonitorWindow::Show(application_, texts_, MonitoredRun(*folder), this);
}

void Flx_AppWnd::OpenMppSettings() {
  Flx_MppSettings dialog(this, application_);
  dialog.OnGroup = [this] { Refresh(); };
  dialog.OnNote = [this](const std::string& text) { Say(text); };
  RunDialog(dialog);
}

void Flx_AppWnd::OpenQueueOptions() {
  Flx_QueueOptions dialog(this, application_);
  RunDialog(dialog);
}

void Flx_AppWnd::Configure() {
  Flx_Configuration dialog(this, application_);
  dialog.OnSwitched = [this] { Refresh(); };
  RunDialog(dialog);
}

void Flx_AppWnd::ShowAbout() {
  Flx_About dialog(this, application_.language, application_.SettingsAndFiles().workFolder);
  RunDialog(dialog);
}
