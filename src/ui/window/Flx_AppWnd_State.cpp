// How the main window keeps up with the queue.

#include <FL/Fl.H>
#include <FL/fl_draw.H>

#include <algorithm>

#include "core/JobTimeLeft.h"
#include "core/SmallTextFile.h"
#include "jobs/JobArguments.h"
#include "ui/dialogs/RunWords.h"
#include "ui/fltk/Tip.h"
#include "ui/text/Encoding.h"
#include "ui/text/ShownValues.h"
#include "ui/window/Flx_AppWnd.h"
#include "ui/window/Layout.h"
#include "ui/window/LeftText.h"
#include "util/files/FileDirWrapper.h"
#include "util/process/ProcessIdentity.h"

namespace {

// The tools that act on all selected jobs.
constexpr Action kForSelected[] = {Action::kResubmit, Action::kDeleteJob, Action::kMoveUp,
                                   Action::kMoveDown, Action::kViewSummary};

constexpr double kLookAtLeft = 0.1;  // seconds

bool TellsOfWaiting(const Message& message) {
  switch (message.Id()) {
    case MessageId::kWaitsForJob:
    case MessageId::kWaitsForProgram:
    case MessageId::kWaitsForSolver:
    case MessageId::kWaitsForSpace:
      return true;
    default:
      return false;
  }
}

}  // namespace

void Flx_AppWnd::Refresh() {
  SyncTables();
  ShowPause();
  LayOut();
  for (JobTable* table : tables_) table == Table() ? table->show() : table->hide();
  if (Table()) Table()->JobsChanged(true);
  ShowFilter();
  ShowCurrentJob();
  ShowTabs();
  ShowState();
  ShowTools();
}

void Flx_AppWnd::TakeChanges(const QueueChanges& changes) {
  JobTable* table = Table();
  const int shown = table ? table->List()->Id() : 0;
  if (table && changes.groups.count(shown)) table->JobsChanged();
  std::set<JobId> changed = changes.runs;
  if (const auto of = changes.jobs.find(shown); of != changes.jobs.end())
    changed.insert(of->second.begin(), of->second.end());
  if (table && !changed.empty()) table->JobsChanged(changed);
  const bool jobs = !changes.groups.empty() || !changes.jobs.empty();
  if (jobs || changes.settings) settings_->Refresh();
  const bool runs = !changes.runs.empty();
  if (jobs || runs || changes.running || changes.settings) ShowTabs();
  if (jobs || runs || changes.running) ShowState();
  if (jobs || changes.running) ShowPause();
  if (changes.running) ReportWhenDone();
  if (jobs || changes.running || changes.settings) ShowTools();
  if (dialog_ && (jobs || changes.settings || changes.running)) dialog_->QueueChanged();
  if (dialog_ && !changes.runs.empty()) dialog_->RunsLookedAt();
  if (changes.intake) ShowIntake(changes);
  if (jobs && apart_->Asks()) AskApart();
  // An explanation says it better than the log's answer; what a run tells is news.
  const bool isExplained = std::chrono::steady_clock::now() <= explainedUntil_;
  const bool takesNews = isExplained || !changes.message.Empty();
  const Message& told = takesNews ? changes.message : changes.answer;
  if (!told.Empty()) {
    status_->ShowMessage(OneLine(texts_.Say(told)), StatusBar::Tone::kError);
    logged_ = told;
  }
  if (jobs) TakeBackWaiting();
}

// What a job waited for is no trouble once it has begun.
void Flx_AppWnd::TakeBackWaiting() {
  if (!TellsOfWaiting(logged_)) return;
  for (int index = 0; index < application_.Manager().GroupCount(); ++index) {
    const auto group = application_.Manager().GroupAt(index);
    bool waits = false;
    if (group)
      group->ReadActiveJob([&](const JobFile& job) {
        waits |= job.status == JobStatus::kWaiting && job.RunMessage() == logged_;
      });
    if (waits) return;
  }
  status_->TakeBack(OneLine(texts_.Say(logged_)));
  logged_ = {};
}

void Flx_AppWnd::ShowIntake(const QueueChanges& changes) {
  if (changes.done >= changes.total) {
    status_->SetProgress({}, -1);
    AskApart();
    return;
  }
  const std::string name = FileDirWrapper::NameOf(changes.file);
  const std::string text = texts_.Format("ui_reading", std::to_string(changes.done + 1),
                                         std::to_string(changes.total), ToUi(name));
  const int percent = (changes.done * 100 + std::clamp(changes.percent, 0, 100)) / changes.total;
  status_->SetProgress(text, percent);
}

void Flx_AppWnd::SyncTables() {
  JobGroupManager& manager = application_.Manager();
  std::vector<JobTable*> old;
  old.swap(tables_);
  for (int index = 0; index < manager.GroupCount(); ++index) {
    const std::shared_ptr<JobGroup> group = manager.GroupAt(index);
    const auto found = std::find_if(old.begin(), old.end(),
                                    [&](const JobTable* table) { return table->List() == group; });
    if (found == old.end()) {
      MakeTable(group);
    } else {
      tables_.push_back(*found);
      old.erase(found);
    }
  }
  for (JobTable* table : old) {
    table->hide();
    Fl::delete_widget(table);
  }
}

void Flx_AppWnd::ShowTabs() {
  JobGroupManager& manager = application_.Manager();
  const std::string value = OneLine(ToUi(application_.SettingsAndFiles().Get().group));
  std::vector<GroupTabs::Tab> tabs;
  for (int index = 0; index < manager.GroupCount(); ++index) {
    const auto group = manager.GroupAt(index);
    if (!group) continue;
    GroupTabs::Tab tab{ToUi(group->Name()), {}, {}, group->JobCount(), group->Running()};
    tab.tip = tab.name;
    if (const std::string end = EndOf(*group); !end.empty()) tab.tip = end;
    if (const std::string why = PauseOf(*group); !why.empty()) {
      tab.paused = true;
      tab.tip += "\n" + why;
    }
    if (index == manager.CurrentGroupIndex() && !value.empty()) {
      tab.note = value;
      tab.tip += "\n" + texts_.Format("ui_tip_group", value);
    }
    tabs.push_back(std::move(tab));
  }
  tabs_->SetTabs(tabs, manager.CurrentGroupIndex());
}

std::optional<double> Flx_AppWnd::TimeLeftOf(const JobGroup& group) const {
  const auto past = [this](const JobFile& job) { return application_.Record().LastRunOf(job); };
  return GroupTimeLeft(group, application_.Manager().Watch(), past);
}

// "1 h 12 min, ends about Sun 06:40".
void Flx_AppWnd::ShowGroupLine(const JobGroup& group, const Counts& counts) {
  const std::string took = counts.seconds > 0
                               ? ShownDuration(static_cast<double>(counts.seconds), texts_)
                               : std::string();
  const std::optional<double> left = TimeLeftOf(group);
  const std::string end = left ? texts_.Format("ui_line_ends", EndWords(*left, texts_)) : "";
  std::string tip = texts_.Get("ui_line_tip");
  if (!took.empty()) tip += "\n" + texts_.Format("ui_line_took", took);
  line_->Show(counts.classes, took + (took.empty() || end.empty() ? "" : ", ") + end, tip);
}

// "Group1 ends about Sun 06:40"; empty when that cannot be told, as with a deck that has not run
// yet.
std::string Flx_AppWnd::EndOf(const JobGroup& group) const {
  const std::optional<double> left = TimeLeftOf(group);
  if (!left) return {};
  return texts_.Format("run_group_ends", ToUi(group.Name()), EndWords(*left, texts_));
}

JobTable::Surroundings Flx_AppWnd::SurroundingsOf(const JobGroup& group) const {
  const Settings settings = application_.SettingsAndFiles().Get();
  JobTable::Surroundings around;
  around.cpus = settings.cpu_count;
  around.computer = ToUi(MachineName());
  around.group = ToUi(group.Name());
  around.runs = group.Running();
  if (!settings.use_mpp) return around;
  for (const HostCpus& host : HostsOfGroup(settings, group.Text()).hosts) {
    if (host.cpus < 1) continue;
    around.hostCpus += host.cpus;
    around.hosts += (around.hosts.empty() ? "" : ", ") + ToUi(host.name);
  }
  return around;
}

// Why it pauses; empty when it does not, or has nothing to go on with.
std::string Flx_AppWnd::PauseOf(const JobGroup& group) const {
  const std::optional<GroupPause> pause = group.Paused();
  if (!pause) return {};
  Counts counts = Count(group);
  const int queued = counts.of[JobStatus::kQueued];
  if (queued == 0) return {};
  return OneLine(texts_.Format("ui_paused", std::to_string(pause->failures),
                               texts_.Say(pause->reason), std::to_string(queued)));
}

void Flx_AppWnd::ShowState() {
  static const std::map<JobStatus, const char*> kKeys = {
      {JobStatus::kQueued, "ui_count_queued"},   {JobStatus::kWaiting, "ui_count_waiting"},
      {JobStatus::kRunning, "ui_count_running"}, {JobStatus::kFinished, "ui_count_finished"},
      {JobStatus::kAborted, "ui_count_aborted"},
  };
  const auto group = Group();
  const Counts counts = group ? Count(*group) : Counts();
  if (counts.total == 0) {
    line_->Show({}, {}, {});
    return status_->SetState(texts_.Get("ui_count_none"));
  }
  std::string text = texts_.Format("ui_count_jobs", std::to_string(counts.total));
  std::string details;
  for (const auto& [status, count] : counts.of) {
    details +=
        (details.empty() ? ": " : ", ") + texts_.Format(kKeys.at(status), std::to_string(count));
  }
  ShowGroupLine(*group, counts);
  const std::string end = EndOf(*group);
  status_->SetState(text + details + (end.empty() ? "" : ". " + end));
}

std::string Flx_AppWnd::ToolTip(Action action) const {
  const ActionInfo& info = InfoOf(action);
  std::string tip = texts_.Get(info.tipKey);
  const int selected = Table() ? Table()->SelectedCount() : 0;
  if (selected > 1 &&
      std::find(std::begin(kForSelected), std::end(kForSelected), action) != std::end(kForSelected))
    tip = texts_.Format("ui_tip_selected", tip, std::to_string(selected));
  if (info.shortcut)
    tip += " (" + std::string(fl_shortcut_label(static_cast<unsigned>(info.shortcut))) + ")";
  return SolverEnabledFor(action) ? tip : texts_.Format("ui_tip_disabled", tip);
}

void Flx_AppWnd::ShowTools() {
  for (int tool = 0; tool < Layout::kToolCount; ++tool) {
    ToolButton* button = tools_[static_cast<std::size_t>(tool)];
    const Action action = static_cast<Action>(tool);
    SetTip(*button, ToolTip(action));
    const bool can = CanPerform(action);
    if (can != (button->active() != 0)) can ? button->activate() : button->deactivate();
  }
  const bool dyna = SolverEnabledFor(Action::kAddDyna);
  texts_.Set("ui_empty_hint", texts_.Stored(dyna ? "ui_empty_hint_dyna" : "ui_empty_hint_drop"));
}

void Flx_AppWnd::ShowLeft() {
  const LeftBehind left = application_.Left();
  ShowBar(*left_, left.Jobs() > 0 ? LeftText(left, texts_) : std::string());
  if (!left.isSearched || Fl::has_timeout(LookAtLeft, this)) return;
  Fl::add_timeout(kLookAtLeft, LookAtLeft, this);
}

void Flx_AppWnd::LookAtLeft(void* self) {
  static_cast<Flx_AppWnd*>(self)->ShowLeft();
}

// Of the current group.
void Flx_AppWnd::ShowPause() {
  const auto group = Group();
  ShowBar(*pause_, group ? PauseOf(*group) : std::string());
}

void Flx_AppWnd::ShowFilter() {
  const JobTable* const table = Table();
  if (table == nullptr) return;
  const StatusCounts counts = table->Counts();
  FilterBar::View view{.words = table->FilterWords(),
                       .classes = FilterBar::PlacesOf(table->FilterClasses()),
                       .counts = {counts.begin(), counts.end()}};
  if (table->IsFiltered())
    view.said = texts_.Format("ui_shown_of", std::to_string(table->ShownCount()),
                              std::to_string(table->AllCount()));
  if (const auto column = table->SortedBy())
    view.order = texts_.Format("ui_sorted_by", table->ColumnTitle(*column));
  filter_->Show(view);
}

void Flx_AppWnd::StoreTyped() {
  settings_->Commit();
  if (dialog_) dialog_->StoreTyped();
  KeepTexts();
}

void Flx_AppWnd::ShowCurrentJob() {
  if (JobTable* table = Table()) settings_->SetJobs(Group(), table->SelectedJobs());
  ShowTools();
}

void Flx_AppWnd::SwitchToGroup(int index) {
  JobGroupManager& manager = application_.Manager();
  if (index < 0 || index >= manager.GroupCount()) return;
  settings_->Commit();
  JobTable* before = Table();
  manager.SetCurrentGroup(index);
  if (JobTable* now = Table(); before && now && now != before) now->CopyColumns(*before);
  Refresh();
  if (Table()) Table()->TakeFocus();
}

void Flx_AppWnd::StepGroup(int by) {
  const int count = application_.Manager().GroupCount();
  if (count > 1) SwitchToGroup((application_.Manager().CurrentGroupIndex() + by + count) % count);
}

void Flx_AppWnd::Say(const std::string& text, StatusBar::Tone tone) {
  constexpr auto kExplained = std::chrono::milliseconds(500);
  // What a plain message announces may still fail, and that must be seen.
  if (tone == StatusBar::Tone::kError && !text.empty())
    explainedUntil_ = std::chrono::steady_clock::now() + kExplained;
  status_->ShowMessage(text, tone);
}
