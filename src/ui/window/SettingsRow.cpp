#include "ui/window/SettingsRow.h"

#include <FL/fl_draw.H>

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

// What jobs have in a field: none of them has it, the same, or different things.
template <typename T>
struct Common {
  std::optional<T> value;  // none when they differ, too
  bool differs = false;

  void Take(const T& its) {
    differs = differs || (value && *value != its);
    value = its;
  }
};

struct SettingsRow::View {
  std::size_t jobs = 0;
  std::size_t running = 0;
  bool dyna = false;  // some of them
  Common<SolverKind> kind;
  Common<std::uint64_t> memory;
  Common<int> ncpu;
  Common<int> pause;
  Common<std::string> command;

  bool IsEditable() const { return jobs == 0 || running < jobs; }
};

// Says why it is empty.
class SettingsRow::KindChoice : public Fl_Choice {
 public:
  KindChoice(int w, int h, const std::string& hint) : Fl_Choice(0, 0, w, h), hint_(hint) {}

  void draw() override {
    Fl_Choice::draw();
    if (mvalue() != nullptr) return;
    fl_font(textfont(), textsize());
    fl_color(Theme::kDisabledText);
    fl_draw(hint_.c_str(), x() + kLabelInset + 2, y(), w(), h(), FL_ALIGN_LEFT, nullptr, 0);
  }

 private:
  const std::string hint_;
};

SettingsRow::SettingsRow(int x, int y, int w, int h, Application& application, QueueUndo& undo,
                         const TextTable& texts)
    : Fl_Group(x, y, w, h), application_(application), undo_(undo), texts_(texts) {
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
  kindChoice_ = new KindChoice(Layout::kSolverKindWidth, height, texts_.Get("ui_various"));
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

  memory_->Check = NumberCheck(0, Settings::kMostMemory, "ui_bad_memory");
  memory_->Store = [this](const std::string& text) {
    StoreNumber(JobField::kMemory, &Settings::memory_size,
                static_cast<std::uint64_t>(*WholeNumber(text, 0, Settings::kMostMemory)));
  };
  cpu_->Check = NumberCheck(1, Settings::kMostCpus, "ui_bad_cpu");
  cpu_->Store = [this](const std::string& text) {
    StoreNumber(JobField::kCpus, &Settings::cpu_count,
                static_cast<int>(*WholeNumber(text, 1, Settings::kMostCpus)));
  };
  pause_->Check = NumberCheck(0, kLongestPause, "ui_bad_pause");
  pause_->Store = [this](const std::string& text) {
    StoreNumber(JobField::kPause, &Settings::pause_time,
                static_cast<int>(*WholeNumber(text, 0, kLongestPause)));
  };
  // A blank alone takes the options away, which a field of several jobs could not say otherwise.
  command_->Store = [this](const std::string& text) {
    const bool isBlank = text.find_first_not_of(' ') == std::string::npos;
    EditJobs(JobField::kOptions, isBlank ? std::string() : FromUi(text));
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

void SettingsRow::SetJobs(std::shared_ptr<JobGroup> group, std::vector<JobId> jobs) {
  KeepRejected();
  group_ = std::move(group);
  jobs_ = std::move(jobs);
  // Texts of other jobs, valid or not, must not be taken for these.
  for (Field* field : {memory_, cpu_, pause_, command_}) field->ShowAlways(field->value());
  Refresh();
  solver_->LookAgain();  // the file may have come meanwhile
  const auto kept = rejected_.extract(jobs_);
  if (kept.empty() || !MakeView().IsEditable()) return;
  for (const auto& [field, text] : kept.mapped()) field->TypeAgain(text);
}

void SettingsRow::KeepRejected() {
  for (Field* field : {memory_, cpu_, pause_, command_}) {
    if (field->Rejected()) rejected_[jobs_][field] = field->value();
  }
}

// Jobs of this group, other than those that are shown, that would be run with another value than
// the one that was typed for them.
std::vector<JobId> SettingsRow::OtherRejected() const {
  for (const auto& [jobs, texts] : rejected_) {
    bool isQueued = false;
    if (group_ && jobs != jobs_) {
      group_->ReadJobs(jobs, [&](const JobFile& one) {
        isQueued = isQueued || one.status == JobStatus::kQueued;
      });
    }
    if (isQueued) return jobs;
  }
  return {};
}

SettingsRow::View SettingsRow::MakeView() const {
  View view;
  const Settings& settings = application_.SettingsAndFiles().Get();
  if (HasJobs()) {
    group_->ReadJobs(jobs_, [&](const JobFile& job) {
      ++view.jobs;
      view.running += job.status == JobStatus::kRunning;
      view.dyna = view.dyna || dynamic_cast<const JobFileDyna*>(&job) != nullptr;
      view.kind.Take(job.GetSolverType());
      view.memory.Take(job.memory);
      view.ncpu.Take(job.ncpu < 1 ? settings.cpu_count : job.ncpu);
      view.pause.Take(job.pause);
      if (job.stages.empty()) view.command.Take(job.extraOptions);
    });
  }
  if (view.jobs > 0) return view;
  view.kind.Take(kind_);
  view.memory.Take(settings.memory_size);
  view.ncpu.Take(settings.cpu_count);
  view.pause.Take(settings.pause_time);
  view.command.Take({});
  return view;
}

std::optional<SolverKind> SettingsRow::ShownKind() const {
  const View view = MakeView();
  return view.kind.differs ? std::nullopt : view.kind.value;
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

// With several jobs it says for how many it counts.
std::string SettingsRow::TipOf(const char* one, const char* none) const {
  if (jobs_.size() < 2) return texts_.Get(HasJobs() ? one : none);
  return texts_.Format("ui_tip_many", texts_.Get(none), std::to_string(jobs_.size()));
}

void SettingsRow::ShowKind(const View& view) {
  const Settings& settings = application_.SettingsAndFiles().Get();
  int place = 0;
  int shown = -1;
  for (const auto& solver : application_.Solvers()) {
    const SolverKind kind = solver->solverType;
    if (!view.kind.differs && kind == view.kind.value) shown = place;
    const bool possible = solver->enabled != 0 && (view.jobs == 0 || RowOfKind(kind).runsDecks);
    kindChoice_->mode(place++, possible ? 0 : FL_MENU_INACTIVE);
  }
  if (kindChoice_->value() != shown) kindChoice_->value(shown);
  SetActive(kindChoice_, view.jobs == 0 || (view.dyna && view.IsEditable()));
  SetTip(*kindChoice_, TipOf("ui_tip_solver_kind_job", "ui_tip_solver_kind"));
  const std::string& various = texts_.Get("ui_various");
  solver_->SetPlaceholder(view.kind.differs ? various : std::string());
  SetActive(solver_, !view.kind.differs);
  SetActive(browse_, !view.kind.differs);
  const SolverKind kind = *view.kind.value;
  solver_->Show(view.kind.differs ? std::string() : ToUi(SolverProgram(settings, kind)));
  SetTip(*solver_,
         texts_.Format("ui_tip_solver", view.kind.differs ? various : RowOfKind(kind).name));
}

void SettingsRow::ShowView(const View& view) {
  const Settings& settings = application_.SettingsAndFiles().Get();
  ShowKind(view);
  const bool editable = view.IsEditable();
  const bool overtaken =
      !editable && (memory_->Edited() || cpu_->Edited() || pause_->Edited() || command_->Edited());
  // A job that runs keeps what it started with, whatever is being typed.
  const auto show = [&](Field& field, const std::string& text, bool differs) {
    field.SetPlaceholder(differs ? texts_.Get("ui_various") : std::string());
    const std::string shown = differs ? std::string() : text;
    editable ? field.Show(shown) : field.ShowAlways(shown);
  };
  const auto number = [&](Field& field, const auto& common) {
    show(field, std::to_string(*common.value), common.differs);
    SetActive(&field, editable);
  };
  number(*memory_, view.memory);
  SetTip(*memory_, TipOf("ui_tip_memory_job", "ui_tip_memory"));
  number(*cpu_, view.ncpu);
  SetTip(*cpu_, TipOf("ui_tip_cpu_job", "ui_tip_cpu"));
  number(*pause_, view.pause);
  SetTip(*pause_, TipOf("ui_tip_pause_job", "ui_tip_pause"));
  auto_->value(settings.memory_auto);
  auto_->tooltip(texts_.Get("ui_tip_auto").c_str());

  const bool stagesOnly = !view.command.value;
  show(*command_, stagesOnly ? texts_.Get("lab_cmd_mstage") : ToUi(*view.command.value),
       view.command.differs);
  if (overtaken && OnHint) OnHint(texts_.Get("ui_running_fixed"));
  SetActive(command_, view.jobs > 0 && editable && !stagesOnly);
  if (view.jobs == 0) command_->SetPlaceholder(texts_.Get("ui_tip_command_none"));
  SetTip(*command_, TipOf("ui_tip_command", "ui_tip_command_none"));
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
  return valid && OtherRejected().empty();
}

void SettingsRow::GoToRejected() {
  for (const bool ofOther : {false, true}) {
    if (ofOther && OnJobsWanted) OnJobsWanted(OtherRejected());
    for (Field* field : {solver_, command_, memory_, cpu_, pause_}) {
      if (!field->Commit()) return field->GoTo();
    }
  }
}

void SettingsRow::GoToSolver() {
  solver_->LookAgain();
  solver_->GoTo();
}

void SettingsRow::EditJobs(JobField field, const FieldValue& value) {
  if (HasJobs()) {
    const ManyDone done = undo_.SetField(group_, jobs_, field, value);
    if (OnEdited) OnEdited(done);
  }
  Refresh();
}

template <typename Number>
void SettingsRow::StoreNumber(JobField field, Number Settings::*setting, Number value) {
  if (!HasJobs()) application_.SettingsAndFiles().Set(setting, value);
  EditJobs(field, value);
}

void SettingsRow::ChooseKind(SolverKind kind) {
  // A path that is being typed belongs to the program shown until now.
  solver_->Commit();
  if (HasJobs()) return EditJobs(JobField::kPrecision, kind);
  kind_ = kind;
  Refresh();
}

std::string SettingsRow::SolverHint(const std::string& path) const {
  if (path.empty()) return {};
  if (FileDirWrapper::IsFolder(path)) return texts_.Get("ui_bad_folder");
  return FileDirWrapper::FileExists(path) ? std::string() : texts_.Get("ui_bad_solver");
}

void SettingsRow::StoreSolver(const std::string& path) {
  SettingsAndPaths& settings = application_.SettingsAndFiles();
  const SolverKind kind = ShownKind().value_or(kind_);
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
  const SolverKind kind = ShownKind().value_or(kind_);
  const SolverKindRow& row = RowOfKind(kind);
  const FileQuestion question{
      window(), texts_.Say(row.programTitle), ComnFileDialog::ProgramFilter(row.programFilter), {}};
  SettingsAndPaths& settings = application_.SettingsAndFiles();
  const std::string path = AskForProgram(question, settings, SolverProgram(settings.Get(), kind));
  if (!path.empty()) StoreSolver(path);
}

// Each job takes what its deck asks for.
void SettingsRow::ToggleAuto() {
  const bool on = auto_->value() != 0;
  application_.SettingsAndFiles().Set(&Settings::memory_auto, on);
  if (!on || !HasJobs()) return;
  std::vector<FieldBefore> fromDecks;
  group_->ReadJobs(jobs_, [&](const JobFile& job) {
    const auto* const dyna = dynamic_cast<const JobFileDyna*>(&job);
    if (dyna == nullptr || dyna->deckMemory == 0) return;
    FieldBefore& its = fromDecks.emplace_back();
    its.job = job.id;
    its.value = dyna->deckMemory;
    for (const std::shared_ptr<JobFile>& stage : job.stages)
      its.stages.emplace_back(stage->id, dyna->deckMemory);
  });
  const ManyDone done = undo_.SetFields(group_, JobField::kMemory, fromDecks);
  if (OnEdited) OnEdited(done);
  Refresh();
}
