// What the main window does.

#include <FL/Fl.H>
#include <FL/fl_utf8.h>

#include <algorithm>
#include <utility>

#include "jobs/JobArguments.h"
#include "solvers/SolverKinds.h"
#include "ui/dialogs/ComnFileDialog.h"
#include "ui/dialogs/FileQuestions.h"
#include "ui/dialogs/Flx_MultipleStages.h"
#include "ui/dialogs/Flx_RenameGroup.h"
#include "ui/dialogs/HistoryWindow.h"
#include "ui/fltk/ModalWindow.h"
#include "ui/help/ComnChmDialog.h"
#include "ui/text/Encoding.h"
#include "ui/text/ShownValues.h"
#include "ui/window/Flx_AppWnd.h"
#include "ui/window/KeywordFiles.h"
#include "ui/window/Layout.h"
#include "ui/window/StoppingWindow.h"
#include "util/files/FileDirWrapper.h"

namespace {

constexpr std::size_t kMostListed = 8;  // names in a message
constexpr std::int64_t kDearFrom = 60;  // seconds
constexpr int kLongestName = 60;        // of a group, in characters

using ActiveJobs = std::vector<std::pair<std::shared_ptr<JobGroup>, JobId>>;

// Of the group; null: of all.
ActiveJobs ActiveJobsOf(const JobGroupManager& manager, const std::shared_ptr<JobGroup>& group) {
  ActiveJobs active;
  for (int index = 0; index < manager.GroupCount(); ++index) {
    const std::shared_ptr<JobGroup> one = manager.GroupAt(index);
    if (!one || (group && one != group)) continue;
    one->ReadJobs([&](const JobFile& job) {
      if (job.status == JobStatus::kRunning) active.emplace_back(one, job.id);
    });
  }
  return active;
}

// Those whose solvers could not be ended, in words.
std::string WhatRunsOn(const ActiveJobs& stopped, const TextTable& texts) {
  std::string words;
  for (const auto& [group, id] : stopped) {
    group->ReadJob(id, [&](const JobFile& job) {
      if (job.HowFailed().kind != FailureKind::kNotEnded) return;
      words += (words.empty() ? "" : "\n") + texts.Say(job.RunMessage());
    });
  }
  return words;
}

}  // namespace

void Flx_AppWnd::Perform(Action action) {
  if (!CanPerform(action)) return;
  // What is not valid stays in its field; the hint says why.
  const bool valid = settings_->Commit();
  switch (action) {
    case Action::kAddDyna:
    case Action::kAddVorel:
    case Action::kAddInc:
      return AddJobs(*InfoOf(action).solver);
    case Action::kAddRestart:
      return AddRestart();
    case Action::kAddFolder:
      return AddFolder();
    case Action::kSubmit:
      return valid ? Submit() : settings_->GoToRejected();
    case Action::kResubmit:
      return Resubmit();
    case Action::kDeleteJob:
      return DeleteJobs();
    case Action::kDeleteAll:
      return DeleteAll();
    case Action::kMoveUp:
      return MoveJobs(JobList::Move::kUp);
    case Action::kMoveDown:
      return MoveJobs(JobList::Move::kDown);
    case Action::kMoveToTop:
      return MoveJobs(JobList::Move::kToTop);
    case Action::kMoveToBottom:
      return MoveJobs(JobList::Move::kToBottom);
    case Action::kAddGroup:
      return AddGroup();
    case Action::kRenameGroup:
      return RenameGroup();
    case Action::kDeleteGroup:
      return DeleteGroup();
    case Action::kReadLog:
      application_.ViewTextFile(application_.SettingsAndFiles().Log().Path());
      return;
    case Action::kRunPost:
      return RunPost();
    case Action::kConfig:
      return Configure();
    case Action::kHistory:
      return HistoryWindow::Show(application_, texts_, {});
    case Action::kJobHistory:
      return ShowRunsOfJob();
    case Action::kMonitor:
      return OpenMonitor();
    case Action::kOpenRunFolder:
      return OpenRunFolder();
    case Action::kMppSettings:
      return OpenMppSettings();
    case Action::kReport:
      return SaveReport();
    case Action::kQueueOptions:
      return OpenQueueOptions();
    case Action::kAbout:
      return ShowAbout();
    case Action::kHelp:
      return ShowHelp();
    case Action::kViewMessage:
      return ViewMessage();
    case Action::kViewSummary:
      return ViewSummary();
    case Action::kStages:
      return OpenStages();
    case Action::kGoOn:
      return GoOn();
    case Action::kKeepApart:
      return SwitchApart();
    case Action::kStop:
      return StopRunning();
    case Action::kRefresh:
      return Refresh();
    case Action::kFind:
      return filter_->TakeFocus();
    case Action::kSelectAll:
      return Table()->SelectAllRows();
    case Action::kSelectFailed:
      return SelectFailed();
    case Action::kColumns:
      return Table()->OpenColumnMenu(-1, Table()->x() + Layout::kMargin,
                                     Table()->y() + Layout::kHeaderHeight);
    case Action::kRerunFailed:
      return RerunFailed();
    case Action::kUndo:
      return Undo();
    case Action::kForce:
      return ToggleForce();
    case Action::kOpenFolder:
      return OpenFolders();
    case Action::kCopyPaths:
      return CopyPaths();
    case Action::kShowCommand:
      return ShowCommand();
    case Action::kNextGroup:
      return StepGroup(1);
    case Action::kPreviousGroup:
      return StepGroup(-1);
    case Action::kExit:
      return Exit();
    default:
      return;
  }
}

void Flx_AppWnd::Inform(const std::string& text) {
  ComnMsgBox::Inform(this, ToUi(application_.Title()), text, texts_.Get("ui_ok"));
}

bool Flx_AppWnd::Ask(const std::string& text, ComnMsgBox::Type type) {
  ComnMsgBox box(ToUi(application_.Title()), text, ComnMsgBox::kQuestion, type, this);
  box.SetButtonTexts(texts_.Get("ui_yes"), texts_.Get("ui_no"));
  return box.DoModal() == ComnMsgBox::kPressedYes;
}

// The button that has opened a chooser would take the next keys.
void Flx_AppWnd::FocusTable() {
  if (Table() && !leaving_) Table()->TakeFocus();
}

bool Flx_AppWnd::SolversAreMissing(const JobGroup& group) {
  JobId first = JobId::kNone;
  std::vector<SolverKind> kinds;
  group.ReadJobs([&](const JobFile& job) {
    if (job.status != JobStatus::kQueued) return;
    if (first == JobId::kNone) first = job.id;
    const auto stage = static_cast<std::size_t>(std::max(job.firstStage, 0));
    const JobFile& begins = stage < job.stages.size() ? *job.stages[stage] : job;
    const SolverKind kind = begins.GetSolverType();
    if (std::find(kinds.begin(), kinds.end(), kind) == kinds.end()) kinds.push_back(kind);
  });
  if (kinds.empty()) return false;
  std::string text = texts_.Format("ui_no_solver", ToUi(group.Name()));
  for (const SolverKind kind : kinds) {
    const std::string& path = SolverProgram(application_.SettingsAndFiles().Get(), kind);
    if (FileDirWrapper::FileExists(path)) return false;
    text += "\n" + std::string(RowOfKind(kind).name) + ": " +
            (path.empty() ? texts_.Get("ui_no_solver_set") : ToUi(path));
  }
  Inform(text);
  if (leaving_) return true;
  if (Table()) Table()->SelectJob(first);
  settings_->GoToSolver();
  return true;
}

void Flx_AppWnd::Submit() {
  const auto group = Group();
  if (!group) return;
  const std::string name = ToUi(group->Name());
  if (SolversAreMissing(*group)) return;
  // The second press of a double click asks for nothing that would have to be refused.
  if (group->TakesQueued()) return Say(texts_.Format("ui_submit_again", name));
  const bool queued = Count(*group).of[JobStatus::kQueued] > 0;
  if (group->Submit()) {
    Say(texts_.Format(queued ? "ui_submitted" : "ui_submit_none", name));
  } else {
    Say(texts_.Format("ui_submit_failed", name), StatusBar::Tone::kError);
  }
  ShowTabs();
}

// Those that a filter hides are shown again.
void Flx_AppWnd::SelectFailed() {
  filter_->Clear();
  if (!Table()->SelectFailed()) return Say(texts_.Get("ui_none_failed"));
  FocusTable();
}

void Flx_AppWnd::AddGroup() {
  JobGroupManager& manager = application_.Manager();
  int number = 1;
  while (manager.IndexOfName("Group" + std::to_string(number)) >= 0) ++number;
  const int index = manager.AddGroup("Group" + std::to_string(number));
  if (index < 0) return;
  Refresh();
  SwitchToGroup(index);
}

void Flx_AppWnd::RunDialog(Flx_Base_Dialog& dialog) {
  dialog_ = &dialog;
  dialog.Run();
  dialog_ = nullptr;
  Refresh();
}

void Flx_AppWnd::RenameGroup() {
  const auto group = Group();
  if (!group) return;
  Flx_RenameGroup dialog(this, application_.language, group->Name());
  dialog.Accepts = [&](const std::string& name) {
    const std::string why = name == group->Name() ? std::string() : RefusalOfName(name);
    if (!why.empty()) Inform(why);
    return why.empty();
  };
  RunDialog(dialog);
  if (dialog.NewName().empty()) return;
  group->SetName(dialog.NewName());
  Refresh();
}

std::string Flx_AppWnd::RefusalOfName(const std::string& name) const {
  const std::string shown = ToUi(name);
  const int length = fl_utf_nb_char(reinterpret_cast<const unsigned char*>(shown.data()),
                                    static_cast<int>(shown.size()));
  if (application_.Manager().IndexOfName(name) >= 0) return texts_.Get("msg_name_exist");
  if (length > kLongestName)
    return texts_.Format("ui_long_name", std::to_string(length), std::to_string(kLongestName));
  return texts_.Say(JobGroupManager::RefusalOfName(name));
}

bool Flx_AppWnd::ReadCurrentJob(const std::function<void(const JobFile&)>& read) {
  const auto group = Group();
  if (group && group->ReadJob(CurrentJob(), read)) return true;
  Inform(texts_.Get("msg_no_cur_job"));
  return false;
}

void Flx_AppWnd::ViewMessage() {
  JobStatus status = JobStatus::kQueued;
  bool multiStage = false;
  std::string path;
  const auto read = [&](const JobFile& job) {
    status = job.status;
    multiStage = !job.stages.empty();
    path = job.MessageFile();
  };
  if (!ReadCurrentJob(read)) return;
  if (multiStage) return Inform(texts_.Get("msg_view_mstage"));
  if (status != JobStatus::kRunning && !HasEnded(status)) return Inform(texts_.Get("msg_view_job"));
  if (path.empty() || !FileDirWrapper::FileExists(path))
    return Inform(texts_.Get("msg_not_found_msg"));
  application_.ViewTextFile(path);
}

void Flx_AppWnd::OpenStages() {
  const JobId job = CurrentJob();
  bool multiStage = false;
  if (!ReadCurrentJob([&](const JobFile& read) { multiStage = !read.stages.empty(); })) return;
  if (!multiStage) return Inform(texts_.Get("msg_not_mstages"));
  Flx_MultipleStages dialog(this, application_.language, {application_, texts_, Group(), job});
  RunDialog(dialog);
}

Flx_AppWnd::Counts Flx_AppWnd::Count(const JobGroup& group) const {
  Counts counts;
  group.ReadJobs([&](const JobFile& job) {
    ++counts.total;
    ++counts.of[job.status];
    ++counts.classes[static_cast<std::size_t>(ClassOf(job.status, job.StoppedAt()))];
    counts.seconds += std::max<std::int64_t>(job.RunSeconds(), 0);
  });
  return counts;
}

// A line for each job, and what is lost with them.
Flx_AppWnd::Losses Flx_AppWnd::LossesIn(const Groups& groups,
                                        const std::vector<JobId>& only) const {
  Losses losses;
  std::size_t running = 0;
  for (const auto& group : groups) {
    group->ReadActiveJob([&](const JobFile& job) {
      if (!only.empty() && std::find(only.begin(), only.end(), job.id) == only.end()) return;
      losses.jobs.insert(job.id);
      if (job.RunSeconds() >= kDearFrom) losses.dear.insert(job.id);
      if (losses.jobs.size() > kMostListed) return;
      const std::string name = FileDirWrapper::NameOf(job.MainFile());
      const bool runs = job.status == JobStatus::kRunning;
      running += runs;
      losses.text +=
          (runs ? texts_.Format("ui_has_run", ToUi(name),
                                ShownDuration(static_cast<double>(job.RunSeconds()), texts_))
                : texts_.Format("ui_has_not_run", ToUi(name))) +
          "\n";
    });
  }
  if (losses.jobs.size() > kMostListed) {
    losses.text +=
        texts_.Format("ui_more_files", std::to_string(losses.jobs.size() - kMostListed)) + "\n";
  }
  if (running > 0)
    losses.text += texts_.Get(running == 1 ? "ui_stop_loses" : "ui_stop_loses_all") + "\n";
  return losses;
}

// A job that ends while the question is open may make way for the next one, which nobody has agreed
// to lose yet. One that has just begun is no reason to ask again: there may be one each second.
bool Flx_AppWnd::AskToLose(const std::string& question, const Groups& groups,
                           const std::vector<JobId>& only) {
  std::set<JobId> agreed;
  Losses losses = LossesIn(groups, only);
  do {
    const auto type = losses.jobs.empty() ? ComnMsgBox::kYesNo : ComnMsgBox::kRatherNo;
    if (!Ask(losses.text + question, type)) return false;
    agreed.merge(losses.jobs);
    losses = LossesIn(groups, only);
  } while (!std::includes(agreed.begin(), agreed.end(), losses.dear.begin(), losses.dear.end()));
  return true;
}

void Flx_AppWnd::StopRunning() {
  const auto group = Group();
  const bool active = group && group->Running() && group->ActiveJob() != JobId::kNone;
  if (active && !AskToLose(texts_.Get("ui_ask_stop"), {group})) return;
  if (!group || !group->Running()) return Say(texts_.Get("ui_nothing_runs"));
  if (StopAndWait(group)) Say(texts_.Get("ui_stopped"));
  Refresh();
}

bool Flx_AppWnd::StopAndWait(const std::shared_ptr<JobGroup>& group) {
  JobGroupManager& manager = application_.Manager();
  const ActiveJobs active = ActiveJobsOf(manager, group);
  if (group) {
    group->RequestStop();
  } else {
    manager.RequestStop(-1);
  }
  const bool stopped =
      WaitWhileStopping(this, texts_.Get("ui_stopping_title"), texts_.Get("ui_stopping_text"),
                        [&] { return group ? group->Running() : manager.IsAnyGroupRunning(); });
  if (!stopped) Inform(texts_.Get("ui_not_stopped"));
  const std::string runsOn = WhatRunsOn(active, texts_);
  if (!runsOn.empty() && !leaving_) Inform(runsOn);
  return stopped && runsOn.empty();
}

// A language without texts has no help file; the viewer says so.
void Flx_AppWnd::ShowHelp() {
  const int language = application_.language;
  std::string path;
  if (language == 0 || language == 1) {
    path =
        FileDirWrapper::Join(application_.ProgramFolder(), language == 0 ? "English" : "Chinese");
    path = FileDirWrapper::Join(path, "Kestrun.chm");
  }
  ComnChmDialog dialog(texts_);
  dialog.SetParentWindow(this);
  dialog.SetChmFile(path);
  dialog.Show("1.htm");
}

void Flx_AppWnd::RestoreLeft() {
  const int jobs = application_.Left().Jobs();
  application_.RestoreLeft();
  ShowLeft();
  Refresh();
  redraw();
  if (Table()) Table()->TakeFocus();
  Say(texts_.Format("ui_left_restored", std::to_string(jobs)));
}

void Flx_AppWnd::ForgetLeft() {
  const LeftBehind left = application_.Left();
  if (!Ask(texts_.Get(left.stillRun > 0 ? "ui_left_ask_forget_runs" : "ui_left_ask_forget"),
           ComnMsgBox::kRatherNo))
    return;
  application_.ForgetLeft();
  ShowLeft();
}

// What becomes of the queued jobs when the program ends, and of decks that are still being read;
// empty when there are none.
std::string Flx_AppWnd::FateOfQueued() const {
  static const char* const kKeys[] = {"ui_exit_lost", "ui_exit_offered", "ui_exit_restored"};
  JobGroupManager& manager = application_.Manager();
  int queued = application_.Intake().Waiting();
  for (int at = 0; at < manager.GroupCount(); ++at) {
    queued += Count(*manager.GroupAt(at)).of[JobStatus::kQueued];
  }
  if (queued == 0) return {};
  const int keep = application_.IsToComeBack()
                       ? QueueRecord::kAtOnce
                       : std::clamp(application_.SettingsAndFiles().Get().keep_jobs, 0, 2);
  return texts_.Format(kKeys[keep], std::to_string(queued)) + "\n";
}

void Flx_AppWnd::Exit() {
  JobGroupManager& manager = application_.Manager();
  if (!MayDropTexts()) return;
  const auto groups = [&] {
    Groups all;
    for (int index = 0; index < manager.GroupCount(); ++index)
      all.push_back(manager.GroupAt(index));
    return all;
  };
  if (manager.IsAnyJobActive() && !AskToLose(FateOfQueued() + texts_.Get("msg_ask_exit"), groups()))
    return;
  application_.EndStopsJobs(manager.IsAnyJobActive());
  if (manager.IsAnyGroupRunning() && !StopAndWait({})) return application_.EndStopsJobs(false);
  Close();
}

void Flx_AppWnd::Leave() {
  KeepTexts();
  Close();
}

void Flx_AppWnd::Close() {
  if (leaving_) return;
  leaving_ = true;
  AllowModalWindows(false);
  settings_->Commit();
  application_.running = false;
  application_.Intake().Close();
  if (application_.Manager().IsAnyGroupRunning()) {
    if (application_.Manager().IsAnyJobActive()) application_.EndStopsJobs(true);
    StopAndWait({});
  }
  // An open menu waits for an answer of its own.
  if (Fl_Window* menu = Fl::grab()) {
    Fl::e_keysym = FL_Escape;
    menu->handle(FL_KEYBOARD);
  }
  // Dialogs that wait for their window to close end with it.
  while (Fl_Window* window = Fl::first_window()) window->hide();
}
