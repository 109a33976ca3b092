// What the main window does with the jobs that are selected, and takes back.

#include <FL/Fl.H>

#include <set>
#include <unordered_set>

#include "core/JobCommand.h"
#include "ui/dialogs/Flx_ShowCommand.h"
#include "ui/dialogs/Flx_ShowInfo.h"
#include "ui/text/Encoding.h"
#include "ui/window/Flx_AppWnd.h"

std::vector<JobId> Flx_AppWnd::SelectedJobs() const {
  return Table() ? Table()->SelectedJobs() : std::vector<JobId>{};
}

bool Flx_AppWnd::ReadSelected(const std::function<void(const JobFile&)>& read) {
  const std::vector<JobId> jobs = SelectedJobs();
  if (jobs.empty()) return Inform(texts_.Get("msg_no_cur_job")), false;
  Group()->ReadJobs(jobs, read);
  return true;
}

std::string Flx_AppWnd::CountWords(const char* one, const char* several, std::size_t count) const {
  return count == 1 ? texts_.Get(one) : texts_.Format(several, std::to_string(count));
}

std::string Flx_AppWnd::Sentences(const std::string& first, const std::string& second) const {
  if (first.empty() || second.empty()) return first + second;
  return first + texts_.Get("ui_sentence_gap") + second;
}

// "Left out, since running: 3 of 40."; empty when none was.
std::string Flx_AppWnd::LeftOutWords(const ManyDone& done, const char* unfitKey) const {
  if (done.LeftOut() == 0) return {};
  const std::string all = std::to_string(done.done + done.LeftOut());
  const std::string left = std::to_string(done.LeftOut());
  const char* const key = done.unfit == 0 ? "ui_left_out_running" : unfitKey;
  return texts_.Format(key, left, all);
}

void Flx_AppWnd::Resubmit() {
  const std::vector<JobId> jobs = SelectedJobs();
  if (jobs.empty()) return Inform(texts_.Get("msg_no_cur_job"));
  const ManyDone done = undo_.Resubmit(Group(), jobs);
  if (done.done == 0) return Inform(texts_.Get("msg_resubmit"));
  SayResubmitted(done);
}

void Flx_AppWnd::SayResubmitted(const ManyDone& done) {
  Refresh();
  const auto count = static_cast<std::size_t>(done.done);
  const std::string text = Sentences(CountWords("ui_resubmitted", "ui_resubmitted_many", count),
                                     LeftOutWords(done, "ui_left_out_not_ended"));
  Say(Sentences(text, Group()->Running() ? std::string() : texts_.Get("ui_resubmitted_waits")));
}

// Those that the user stopped are no failures, and are meant when there are no others.
void Flx_AppWnd::RerunFailed() {
  std::vector<JobId> failed;
  std::vector<JobId> stopped;
  Group()->ReadJobs([&](const JobFile& job) {
    if (job.status != JobStatus::kAborted) return;
    (job.HowFailed().kind == FailureKind::kStopped ? stopped : failed).push_back(job.id);
  });
  const std::vector<JobId>& jobs = failed.empty() ? stopped : failed;
  if (jobs.empty()) return Say(texts_.Get("ui_none_failed"));
  const ManyDone done = undo_.Resubmit(Group(), jobs);
  Table()->SelectJobs(jobs);
  SayResubmitted(done);
}

void Flx_AppWnd::DeleteJobs() {
  const auto group = Group();
  const std::vector<JobId> jobs = SelectedJobs();
  if (jobs.empty()) return Inform(texts_.Get("msg_no_cur_job"));
  if (!AskToLose(CountWords("msg_ask_del", "ui_ask_del_many", jobs.size()), {group}, jobs)) return;
  SayDeleted(undo_.Remove(group, jobs));
}

void Flx_AppWnd::SayDeleted(int count) {
  Refresh();
  Say(CountWords("ui_deleted", "ui_deleted_many", static_cast<std::size_t>(count)));
}

void Flx_AppWnd::DeleteAll() {
  const auto group = Group();
  if (!group || group->JobCount() == 0) return;
  if (!AskToLose(texts_.Get("msg_ask_delall"), {group})) return;
  if (group->Running() && !StopAndWait(group)) return;
  SayDeleted(undo_.Remove(group, group->JobIds()));
}

void Flx_AppWnd::DeleteGroup() {
  JobGroupManager& manager = application_.Manager();
  const auto group = Group();
  if (!group || manager.GroupCount() < 2) return;
  if (!AskToLose(texts_.Get("msg_ask_del_group"), {group})) return;
  if (group->Running() && !StopAndWait(group)) return;
  undo_.RemoveGroup(manager.IndexOf(group.get()));
  if (manager.CurrentGroupIndex() < 0) manager.SetCurrentGroup(0);
  Refresh();
  if (Table()) Table()->TakeFocus();
  Say(texts_.Format("ui_group_deleted", ToUi(group->Name())));
}

void Flx_AppWnd::MoveJobs(JobList::Move move) {
  const std::vector<JobId> jobs = SelectedJobs();
  if (jobs.empty()) return Inform(texts_.Get("msg_no_cur_job"));
  if (Table()->SortedBy()) return Say(texts_.Get("ui_move_sorted"));
  const ManyDone done = undo_.Move(Group(), jobs, move);
  Table()->JobsChanged();
  if (done.done > 0) {
    if (done.LeftOut() > 0) Say(texts_.Get("ui_move_queued_only"));
    return;
  }
  // Why not: the jobs themselves, the one above them, or the end of the list.
  if (done.LeftOut() == static_cast<int>(jobs.size()))
    return Say(texts_.Get("ui_move_queued_only"));
  const bool up = move == JobList::Move::kUp || move == JobList::Move::kToTop;
  Say(texts_.Get(up && QueuedBelowOthers(jobs) ? "ui_move_not_past" : "ui_not_moved"));
}

// Whether a job that is not Queued stands above the first of these.
bool Flx_AppWnd::QueuedBelowOthers(const std::vector<JobId>& jobs) const {
  const std::unordered_set<JobId> wanted(jobs.begin(), jobs.end());
  bool others = false;
  bool found = false;
  Group()->ReadJobs([&](const JobFile& job) {
    found = found || (job.status == JobStatus::kQueued && wanted.count(job.id) != 0);
    others = others || (!found && job.status != JobStatus::kQueued);
  });
  return others;
}

Flx_AppWnd::ForceState Flx_AppWnd::ForceOfSelected() const {
  ForceState state;
  if (!Group()) return state;
  Group()->ReadJobs(SelectedJobs(), [&](const JobFile& job) {
    const std::optional<FieldValue> value = ValueOf(job, JobField::kForce);
    if (!value) return;
    const bool on = std::get<bool>(*value);
    state.differs = state.differs || (state.any && on != state.on);
    state.any = true;
    state.on = on;
  });
  return state;
}

// On for all where they differ.
void Flx_AppWnd::ToggleForce() {
  const ForceState state = ForceOfSelected();
  const bool on = state.differs || !state.on;
  const ManyDone done = undo_.SetField(Group(), SelectedJobs(), JobField::kForce, on);
  SayEdited(done);
  if (done.done > 0)
    Say(Sentences(texts_.Format(on ? "ui_force_on" : "ui_force_off", std::to_string(done.done)),
                  LeftOutWords(done, "ui_left_out_kind")));
}

// Of several jobs how many an edit of a field has changed, and left out.
void Flx_AppWnd::SayEdited(const ManyDone& done) {
  if (Table()) Table()->JobsChanged(true);
  if (done.done == 0 && done.LeftOut() == 1)
    return Say(texts_.Get(done.running > 0 ? "ui_running_fixed" : "ui_kind_has_none"),
               StatusBar::Tone::kError);
  std::string changed;
  if (done.done > 1) changed = texts_.Format("ui_edited_many", std::to_string(done.done));
  const std::string text = Sentences(changed, LeftOutWords(done, "ui_left_out_kind"));
  if (text.empty()) return;
  Say(text, done.done > 0 ? StatusBar::Tone::kPlain : StatusBar::Tone::kError);
}

void Flx_AppWnd::CopyPaths() {
  std::string paths;
  std::size_t count = 0;
  if (!ReadSelected([&](const JobFile& job) {
        paths += (paths.empty() ? "" : "\n") + ToUi(job.MainFile());
        ++count;
      }))
    return;
  Fl::copy(paths.data(), static_cast<int>(paths.size()), 1);
  Say(CountWords("ui_path_copied", "ui_paths_copied", count));
}

void Flx_AppWnd::OpenFolders() {
  constexpr std::size_t kUnasked = 5;
  std::set<std::string> seen;
  std::vector<std::string> folders;
  if (!ReadSelected([&](const JobFile& job) {
        const std::string folder = job.Folder();
        if (seen.insert(folder).second) folders.push_back(folder);
      }))
    return;
  if (folders.size() > kUnasked &&
      !Ask(texts_.Format("ui_ask_folders", std::to_string(folders.size())), ComnMsgBox::kRatherNo))
    return;
  for (const std::string& folder : folders) application_.OpenFolder(folder);
}

void Flx_AppWnd::ShowCommand() {
  const std::vector<JobId> jobs = SelectedJobs();
  if (jobs.empty()) return Inform(texts_.Get("msg_no_cur_job"));
  Flx_ShowCommand dialog(this, application_.language,
                         CommandRequestsOf(*Group(), jobs, application_.SettingsAndFiles().Get()));
  RunDialog(dialog);
}

// Of several jobs side by side those that have ended and have no stages.
void Flx_AppWnd::ViewSummary() {
  std::vector<JobOutput> outputs;
  bool multiStage = false;
  if (!ReadSelected([&](const JobFile& job) {
        multiStage = multiStage || !job.stages.empty();
        if (job.stages.empty() && HasEnded(job.status)) outputs.push_back(OutputOf(job));
      }))
    return;
  if (outputs.empty()) return Inform(texts_.Get(multiStage ? "msg_view_mstage" : "msg_view_info"));
  if (outputs.size() > Flx_ShowInfo::kMostColumns) {
    Say(texts_.Format("ui_first_summaries", std::to_string(Flx_ShowInfo::kMostColumns),
                      std::to_string(outputs.size())));
    outputs.resize(Flx_ShowInfo::kMostColumns);
  }
  Flx_ShowInfo dialog(this, application_.language, std::move(outputs));
  RunDialog(dialog);
}

void Flx_AppWnd::Undo() {
  const auto taken = undo_.Undo();
  if (!taken) return;
  static const char* const kOne[] = {"ui_undone_delete", "ui_undone_group", "ui_undone_field",
                                     "ui_undone_move", "ui_undone_resubmit"};
  static const char* const kSeveral[] = {"ui_undone_delete_many", "ui_undone_group",
                                         "ui_undone_field_many", "ui_undone_move",
                                         "ui_undone_resubmit_many"};
  JobGroupManager& manager = application_.Manager();
  manager.SetCurrentGroup(manager.IndexOf(taken->group.get()));
  Refresh();
  Table()->SelectJobs(taken->jobs);
  const bool isHidden = SelectedJobs().size() < taken->jobs.size();
  if (isHidden && taken->kind == QueueUndo::Kind::kDeleted) {
    filter_->Clear();
    Table()->SelectJobs(taken->jobs);
  }
  FocusTable();
  const auto kind = static_cast<std::size_t>(taken->kind);
  const std::size_t count = taken->jobs.size() - static_cast<std::size_t>(taken->leftOut);
  const bool isGroup = taken->kind == QueueUndo::Kind::kGroupDeleted;
  std::string text;
  if (isGroup) {
    text = texts_.Format(kOne[kind], ToUi(taken->group->Name()));
  } else if (count > 0) {
    text = CountWords(kOne[kind], kSeveral[kind], count);
  }
  std::string leftOut;
  if (taken->leftOut > 0)
    leftOut = texts_.Format("ui_left_out_gone_on", std::to_string(taken->leftOut),
                            std::to_string(taken->jobs.size()));
  Say(Sentences(text, leftOut));
}
