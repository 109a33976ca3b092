#include "ui/window/SettingsRow.h"

#include <algorithm>

#include "jobs/JobArguments.h"
#include "solvers/SolverKinds.h"
#include "ui/dialogs/ComnFileDialog.h"
#include "ui/dialogs/FileQuestions.h"
#include "ui/dialogs/MpiKinds.h"
#include "ui/fltk/Theme.h"
#include "ui/fltk/Tip.h"
#include "ui/text/Encoding.h"
#include "ui/window/Layout.h"
#include "util/files/FileDirWrapper.h"
#include "util/text/PlainText.h"

namespace {

constexpr long long kLongestPause = 86400;  // seconds
constexpr int kMppWidth = 190;
constexpr int kLabelInset = 3;  // what the toolkit leaves in front of a label

void SetActive(Fl_Widget* widget, bool active) {
  active ? widget->activate() : widget->deactivate();
}

}  // namespace

struct SettingsRow::View {
  SolverKind kind = SolverKind::kLsDynaSingle;
  bool job = false;
  bool running = false;
  bool dyna = false;
  bool multiStage = false;
  std::uint64_t memory = 0;
  int ncpu = 0;
  int pause = 0;
  std::string command;
};

SettingsRow::SettingsRow(int x, int y, int w, int h, Application& application,
                         const TextTable& texts)
    : Fl_Group(x, y, w, h), application_(application), texts_(texts) {
  box(FL_FLAT_BOX);
  color(Theme::kWindow);
  MakeFields();
  end();
  resizable(nullptr);
  ConnectFields();
  PlaceWidgets();
}

Fl_Box* SettingsRow::MakeLabel(const char* key) {
  auto* label = new Fl_Box(0, 0, 10, Layout::kFieldHeight);
  label->copy_label(texts_.Get(key).c_str());
  label->align(FL_ALIGN_LEFT | FL_ALIGN_INSIDE);
  return label;
}

void SettingsRow::MakeFields() {
  constexpr int height = Layout::kFieldHeight;
  // In the order of the Tab key.
  solverLabel_ = MakeLabel("lab_solver");
  kindChoice_ = new Fl_Choice(0, 0, Layout::kSolverKindWidth, height);
  kindChoice_->color(Theme::kSurface);
  std::vector<std::string> kinds;
  for (const auto& solver : application_.Solvers()) kinds.push_back(ToUi(solver->displayName));
  kinds_.Show(*kindChoice_, kinds, 0);
  solver_ = new Field(0, 0, 10, height);
  browse_ = new Fl_Button(0, 0, Layout::kBrowseWidth, height, "...");
  browse_->color(Theme::kSurface);
  browse_->tooltip(texts_.Get("ui_tip_browse").c_str());
  commandLabel_ = MakeLabel("lab_command");
  command_ = new Field(0, 0, 10, height);
  submit_ = new PrimaryButton(0, 0, Layout::kSubmitWidth, Layout::kSubmitHeight);
  submit_->SetText(texts_.Get("lab_submit"), texts_.Get("tip_submit"));
  caption_ = MakeLabel("lab_ctrlpara");
  caption_->labelfont(FL_HELVETICA_BOLD);
  caption_->labelcolor(Theme::kMuted);
  memoryLabel_ = MakeLabel("lab_memory");
  memory_ = new Field(0, 0, Layout::kMemoryField, height);
  auto_ = new Fl_Check_Button(0, 0, Layout::kAutoWidth, height);
  auto_->copy_label(texts_.Get("lab_auto").c_str());
  cpuLabel_ = MakeLabel("lab_cpu");
  cpu_ = new Field(0, 0, Layout::kCpuField, height);
  pauseLabel_ = MakeLabel("lab_pause");
  pause_ = new Field(0, 0, Layout::kPauseField, height);
  secondLabel_ = MakeLabel("lab_second");
  for (Fl_Box* label : {memoryLabel_, cpuLabel_, pauseLabel_})
    label->align(FL_ALIGN_RIGHT | FL_ALIGN_INSIDE);
  mpp_ = new StateButton(0, 0, 10, height);
}

std::function<std::string(const std::string&)> SettingsRow::NumberCheck(long long least,
                                                                        long long most,
                                                                        const char* hintKey) const {
  return [this, least, most, hintKey](const std::string& text) {
    return WholeNumber(text, least, most) ? std::string() : texts_.Get(hintKey);
  };
}

void SettingsRow::ConnectFields() {
  kindChoice_->callback(
      [](Fl_Widget*, void* self) {
        auto* row = static_cast<SettingsRow*>(self);
        const auto place = static_cast<std::size_t>(row->kindChoice_->value());
        row->ChooseKind(row->application_.Solvers().at(place)->solverType);
      },
      this);
  browse_->callback([](Fl_Widget*, void* self) { static_cast<SettingsRow*>(self)->ChooseSolver(); },
                    this);
  auto_->callback([](Fl_Widget*, void* self) { static_cast<SettingsRow*>(self)->ToggleAuto(); },
                  this);
  submit_->callback(
      [](Fl_Widget*, void* self) {
        auto* row = static_cast<SettingsRow*>(self);
        if (row->OnSubmit) row->OnSubmit();
      },
      this);
  mpp_->callback(
      [](Fl_Widget*, void* self) {
        auto* row = static_cast<SettingsRow*>(self);
        if (row->OnMpp) row->OnMpp();
      },
      this);

  SettingsAndPaths& settings = application_.SettingsAndFiles();
  memory_->Check = NumberCheck(0, Settings::kMostMemory, "ui_bad_memory");
  memory_->Store = [this, &settings](const std::string& text) {
    const auto value = static_cast<std::uint64_t>(*WholeNumber(text, 0, Settings::kMostMemory));
    if (!HasJob()) settings.Set(&Settings::memory_size, value);
    EditJob([&](JobList& list, JobId job) { return list.SetMemory(job, value); });
  };
  cpu_->Check = NumberCheck(1, Settings::kMostCpus, "ui_bad_cpu");
  cpu_->Store = [this, &settings](const std::string& text) {
    const int value = static_cast<int>(*WholeNumber(text, 1, Settings::kMostCpus));
    if (!HasJob()) settings.Set(&Settings::cpu_count, value);
    EditJob([&](JobList& list, JobId job) { return list.SetCpuCount(job, value); });
  };
  pause_->Check = NumberCheck(0, kLongestPause, "ui_bad_pause");
  pause_->Store = [this, &settings](const std::string& text) {
    const int value = static_cast<int>(*WholeNumber(text, 0, kLongestPause));
    if (!HasJob()) settings.Set(&Settings::pause_time, value);
    EditJob([&](JobList& list, JobId job) { return list.SetPause(job, value); });
  };
  command_->Store = [this](const std::string& text) {
    EditJob([&](JobList& list, JobId job) { return list.SetExtraOptions(job, FromUi(text)); });
  };
  solver_->Doubt = [this](const std::string& text) { return SolverHint(TypedPath(text)); };
  solver_->Store = [this](const std::string& text) { StoreSolver(TypedPath(text)); };
  for (Field* field : {solver_, command_, memory_, cpu_, pause_}) {
    field->OnHint = [this](const std::string& hint) {
      if (OnHint) OnHint(hint);
    };
  }
}

void SettingsRow::PlaceWidgets() {
  using namespace Layout;
  const int right = SubmitX(w());
  int y = SolverRowY();
  solverLabel_->resize(kMargin - kLabelInset, y, kLabelWidth, kFieldHeight);
  kindChoice_->position(kFieldX, y);
  const int pathX = kFieldX + kSolverKindWidth + kGap;
  browse_->position(right - kMargin - kBrowseWidth, y);
  solver_->resize(pathX, y, browse_->x() - 2 - pathX, kFieldHeight);
  y = CommandRowY();
  commandLabel_->resize(kMargin - kLabelInset, y, kLabelWidth, kFieldHeight);
  command_->resize(kFieldX, y, right - kMargin - kFieldX, kFieldHeight);
  submit_->position(right, SolverRowY());
  y = ParameterRowY(w());
  if (InlineCaption(w())) {
    caption_->resize(kMargin - kLabelInset, y, kCaptionWidth, kFieldHeight);
  } else {
    caption_->resize(kMargin - kLabelInset, y - kCaptionRow - 2, kCaptionWidth + 40, kCaptionRow);
  }
  memoryLabel_->resize(MemoryX(w()) - kMemoryLabel, y, kMemoryLabel, kFieldHeight);
  memory_->resize(MemoryX(w()), y, kMemoryField, kFieldHeight);
  auto_->position(AutoX(w()), y);
  cpuLabel_->resize(CpuX(w()) - kCpuLabel, y, kCpuLabel, kFieldHeight);
  cpu_->resize(CpuX(w()), y, kCpuField, kFieldHeight);
  pauseLabel_->resize(PauseX(w()) - kPauseLabel, y, kPauseLabel, kFieldHeight);
  pause_->resize(PauseX(w()), y, kPauseField, kFieldHeight);
  secondLabel_->resize(PauseX(w()) + kPauseField + kGap, y, kSecondLabel, kFieldHeight);
  const int mppX = secondLabel_->x() + kSecondLabel + kGap;
  const int room = w() - kMargin - mppX;
  const int width = std::min(room, kMppWidth);
  mpp_->resize(w() - kMargin - width, y, width, kFieldHeight);
}

void SettingsRow::resize(int x, int y, int w, int h) {
  Fl_Widget::resize(x, y, w, h);  // not Fl_Group's, which would stretch the children
  PlaceWidgets();
  ShowMpp();
}

bool SettingsRow::HasJob() const {
  return list_ && job_ != JobId::kNone;
}

void SettingsRow::SetJob(std::shared_ptr<JobList> list, JobId job) {
  KeepRejected();
  list_ = std::move(list);
  job_ = job;
  // Texts of another job, valid or not, must not be taken for this one's.
  for (Field* field : {memory_, cpu_, pause_, command_}) field->ShowAlways(field->value());
  Refresh();
  solver_->LookAgain();  // the file may have come meanwhile
  const auto kept = rejected_.extract(job_);
  if (kept.empty() || MakeView().running) return;
  for (const auto& [field, text] : kept.mapped()) field->TypeAgain(text);
}

void SettingsRow::KeepRejected() {
  for (Field* field : {memory_, cpu_, pause_, command_}) {
    if (field->Rejected()) rejected_[job_][field] = field->value();
  }
}

// A job of this list, not the one that is shown, that would be run with another value than the one
// that was typed for it.
JobId SettingsRow::OtherRejected() {
  for (const auto& [job, texts] : rejected_) {
    bool isQueued = false;
    if (list_ && job != job_)
      list_->ReadJob(job, [&](const JobFile& one) { isQueued = one.status == JobStatus::kQueued; });
    if (isQueued) return job;
  }
  return JobId::kNone;
}

SettingsRow::View SettingsRow::MakeView() const {
  View view;
  view.job = HasJob() && list_->ReadJob(job_, [&](const JobFile& job) {
    view.kind = job.GetSolverType();
    view.running = job.status == JobStatus::kRunning;
    view.dyna = dynamic_cast<const JobFileDyna*>(&job) != nullptr;
    view.multiStage = !job.stages.empty();
    view.memory = job.memory;
    view.ncpu = job.ncpu;
    view.pause = job.pause;
    view.command = job.extraOptions;
  });
  if (view.job) return view;
  const Settings& settings = application_.SettingsAndFiles().Get();
  view.kind = kind_;
  view.memory = settings.memory_size;
  view.ncpu = settings.cpu_count;
  view.pause = settings.pause_time;
  return view;
}

SolverKind SettingsRow::ShownKind() const {
  return MakeView().kind;
}

void SettingsRow::Refresh() {
  if (!application_.SolverEnabled(kind_)) {
    for (const auto& solver : application_.Solvers()) {
      kind_ = solver->solverType;
      if (solver->enabled != 0) break;
    }
  }
  ShowView(MakeView());
}

void SettingsRow::ShowView(const View& view) {
  const Settings& settings = application_.SettingsAndFiles().Get();
  int place = 0;
  for (const auto& solver : application_.Solvers()) {
    const SolverKind kind = solver->solverType;
    if (kind == view.kind && kindChoice_->value() != place) kindChoice_->value(place);
    const bool possible = solver->enabled != 0 && (!view.job || RowOfKind(kind).runsDecks);
    kindChoice_->mode(place++, possible ? 0 : FL_MENU_INACTIVE);
  }
  SetActive(kindChoice_, !view.job || (view.dyna && !view.running));
  SetTip(*kindChoice_, texts_.Get(view.job ? "ui_tip_solver_kind_job" : "ui_tip_solver_kind"));
  solver_->Show(ToUi(SolverProgram(settings, view.kind)));
  SetTip(*solver_, texts_.Format("ui_tip_solver", RowOfKind(view.kind).name));

  const bool editable = !view.running;
  const bool overtaken = view.running && (memory_->Edited() || cpu_->Edited() || pause_->Edited() ||
                                          command_->Edited());
  // A job that runs keeps what it started with, whatever is being typed.
  const auto show = [&](Field& field, const std::string& text) {
    editable ? field.Show(text) : field.ShowAlways(text);
  };
  show(*memory_, std::to_string(view.memory));
  SetTip(*memory_, texts_.Get(view.job ? "ui_tip_memory_job" : "ui_tip_memory"));
  show(*cpu_, std::to_string(view.job && view.ncpu < 1 ? settings.cpu_count : view.ncpu));
  SetTip(*cpu_, texts_.Get(view.job ? "ui_tip_cpu_job" : "ui_tip_cpu"));
  show(*pause_, std::to_string(view.pause));
  SetTip(*pause_, texts_.Get(view.job ? "ui_tip_pause_job" : "ui_tip_pause"));
  for (Field* field : {memory_, cpu_, pause_}) SetActive(field, editable);
  auto_->value(settings.memory_auto);
  auto_->tooltip(texts_.Get("ui_tip_auto").c_str());

  show(*command_, view.multiStage ? texts_.Get("lab_cmd_mstage") : ToUi(view.command));
  if (overtaken && OnHint) OnHint(texts_.Get("ui_running_fixed"));
  SetActive(command_, view.job && editable && !view.multiStage);
  command_->SetPlaceholder(view.job ? std::string() : texts_.Get("ui_tip_command_none"));
  SetTip(*command_, texts_.Get(view.job ? "ui_tip_command" : "ui_tip_command_none"));
  ShowMpp();
}

void SettingsRow::ShowMpp() {
  const Settings& settings = application_.SettingsAndFiles().Get();
  std::string text = texts_.Get("lab_not_mpp");
  if (settings.use_mpp) {
    const bool known = settings.mpi >= 0 && settings.mpi < static_cast<int>(std::size(kMpiKinds));
    text = texts_.Get("ui_mpp_on") + ": " +
           (known ? std::string(kMpiKinds[settings.mpi]) : texts_.Get("ui_mpp_other"));
  }
  const std::string& how = texts_.Get(settings.use_mpp ? "ui_tip_mpp_on" : "ui_tip_mpp_off");
  mpp_->SetState(text, settings.use_mpp, text + "\n" + how);
}

bool SettingsRow::Commit() {
  bool valid = true;
  for (Field* field : {solver_, command_, memory_, cpu_, pause_}) valid = field->Commit() && valid;
  return valid && OtherRejected() == JobId::kNone;
}

void SettingsRow::GoToRejected() {
  for (const bool ofOther : {false, true}) {
    if (ofOther && OnJobWanted) OnJobWanted(OtherRejected());
    for (Field* field : {solver_, command_, memory_, cpu_, pause_}) {
      if (!field->Commit()) return field->GoTo();
    }
  }
}

void SettingsRow::GoToSolver() {
  solver_->LookAgain();
  solver_->GoTo();
}

void SettingsRow::EditJob(const std::function<bool(JobList&, JobId)>& edit) {
  if (HasJob()) {
    const bool done = edit(*list_, job_);
    if (!done && OnHint) OnHint(texts_.Get("ui_running_fixed"));
    if (OnJobEdited) OnJobEdited();
  }
  Refresh();
}

void SettingsRow::ChooseKind(SolverKind kind) {
  // A path that is being typed belongs to the program shown until now.
  solver_->Commit();
  if (HasJob()) {
    EditJob([&](JobList& list, JobId job) { return list.SetPrecision(job, kind); });
  } else {
    kind_ = kind;
    Refresh();
  }
}

std::string SettingsRow::SolverHint(const std::string& path) const {
  if (path.empty()) return {};
  if (FileDirWrapper::IsFolder(path)) return texts_.Get("ui_bad_folder");
  return FileDirWrapper::FileExists(path) ? std::string() : texts_.Get("ui_bad_solver");
}

void SettingsRow::StoreSolver(const std::string& path) {
  SettingsAndPaths& settings = application_.SettingsAndFiles();
  const SolverKind kind = ShownKind();
  std::string Settings::*const mpp = settings.Get().use_mpp ? MppSolver(kind) : nullptr;
  if (mpp != nullptr) {
    settings.Set(mpp, path);
  } else {
    settings.SetSolverPath(kind, path);
  }
  Refresh();
  // Stored all the same: the file may come later.
  if (OnHint) OnHint(SolverHint(path));
}

void SettingsRow::ChooseSolver() {
  solver_->Commit();
  const SolverKind kind = ShownKind();
  const SolverKindRow& row = RowOfKind(kind);
  const FileQuestion question{
      window(), texts_.Say(row.programTitle), ComnFileDialog::ProgramFilter(row.programFilter), {}};
  SettingsAndPaths& settings = application_.SettingsAndFiles();
  const std::string path = AskForProgram(question, settings, SolverProgram(settings.Get(), kind));
  if (!path.empty()) StoreSolver(path);
}

void SettingsRow::ToggleAuto() {
  const bool on = auto_->value() != 0;
  application_.SettingsAndFiles().Set(&Settings::memory_auto, on);
  if (!on || !HasJob()) return;
  std::uint64_t fromDeck = 0;
  list_->ReadJob(job_, [&](const JobFile& job) {
    if (const auto* dyna = dynamic_cast<const JobFileDyna*>(&job)) fromDeck = dyna->deckMemory;
  });
  if (fromDeck > 0)
    EditJob([&](JobList& list, JobId job) { return list.SetMemory(job, fromDeck); });
}
