#include "ui/dialogs/Flx_MultipleStages.h"

#include <FL/Fl.H>
#include <FL/Fl_Box.H>
#include <FL/Fl_Button.H>
#include <FL/Fl_Choice.H>
#include <FL/fl_draw.H>

#include "core/JobInformation.h"
#include "solvers/SolverKinds.h"
#include "ui/dialogs/DialogTools.h"
#include "ui/dialogs/FileQuestions.h"
#include "ui/dialogs/Flx_ShowInfo.h"
#include "ui/fltk/Labels.h"
#include "ui/fltk/Theme.h"
#include "ui/fltk/Tip.h"
#include "ui/text/Encoding.h"
#include "util/files/FileDirWrapper.h"

namespace {

constexpr int kLeastWidth = 716;  // the buttons of the last row beside each other
constexpr int kLeastHeight = 240;

const char kLayout[] =
    R"(ID_WINDOW,Window,"Multiple Stages",640,300,760,348,1,1,49,49,1,0,14,56,1,99,"",0,0,0,0,"多工步任务"
ID_LABEL1,Box,"",8,6,744,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0
ID_GROUP1,Group,"",8,34,744,220,0,0,49,49,0,0,12,56,0,99,"",0,0,0,0
ID_LABEL2,Box,"First stage to run",8,264,120,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0,"起始工步"
ID_CHOICE1,Choice,"",130,264,250,24,1,14,55,15,0,0,12,56,4,99,"Stages before it are skipped",0,0,14,56,"","跳过此工步之前的各工步"
ID_LABEL3,Box,"",396,264,356,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0
ID_BUTTON1,Button,"Add...",8,314,80,26,2,3,49,49,0,0,12,56,0,99,"Add decks as further stages",0,0,0,0,"添加...","添加关键字文件作为后续工步"
ID_BUTTON2,Button,"Remove",94,314,80,26,2,3,49,49,0,0,12,56,0,99,"Remove the selected stage",0,0,0,0,"删除","删除所选工步"
ID_BUTTON3,Button,"Move Up",180,314,84,26,2,3,49,49,0,0,12,56,0,99,"Run the selected stage earlier",0,0,0,0,"上移","提前运行所选工步"
ID_BUTTON4,Button,"Move Down",270,314,92,26,2,3,49,49,0,0,12,56,0,99,"Run the selected stage later",0,0,0,0,"下移","推后运行所选工步"
ID_BUTTON5,Button,"View Message",396,314,110,26,2,3,49,49,0,0,12,56,0,99,"View the message file of the selected stage",0,0,0,0,"查看消息文件","查看所选工步的消息文件"
ID_BUTTON6,Button,"View Summary",512,314,110,26,2,3,49,49,0,0,12,56,0,99,"View the information about the selected stage",0,0,0,0,"查看摘要","查看所选工步的任务信息"
ID_BUTTON7,Button,"Close",672,314,80,26,2,3,49,49,0,0,12,56,0,99,"",0,0,0,0,"关闭"
)";

// By key, in English and Chinese.
constexpr DialogText kTexts[] = {
    {"only_queued", "Stages can be changed while the job is Queued.",
     "仅在任务排队时可以更改各工步。"},
    {"gone", "The job has been removed.", "任务已被删除。"},
    {"add_title", "Select Stage Decks", "选择工步关键字文件"},
};

void Activate(Fl_Widget* widget, bool on) {
  if (on != (widget->active() != 0)) on ? widget->activate() : widget->deactivate();
}

}  // namespace

Flx_MultipleStages::Flx_MultipleStages(Fl_Window* parent, int language, Subject subject)
    : Flx_Base_Dialog(parent, language, kLayout, kTexts), subject_(std::move(subject)) {
  SetTexts(StageTable::kTexts);
}

Flx_MultipleStages::~Flx_MultipleStages() {
  Fl::remove_timeout(UpdateLater, this);
}

bool Flx_MultipleStages::Initialise() {
  if (!HasAll(kDeck, kTable, kFirstStageLabel, kFirstStage, kHint, kAdd, kRemove, kMoveUp,
              kMoveDown, kViewMessage, kViewSummary, kClose) ||
      !subject_.group)
    return false;
  MakeTable();
  Find(kClose)->shortcut(FL_Enter);
  Fl_Box* hint = Find(kHint);
  hint->labelcolor(Theme::kMuted);
  Fl_Box* deck = Find(kDeck);
  fl_font(deck->labelfont(), deck->labelsize());
  std::string path;
  Read([&](const JobFile& job) { path = ToUi(job.jobFile); });
  ShowLabel(*deck, FitTail(path, deck->w()));
  SetTip(*deck, path);
  KeepRow(*Window(), {Find(kFirstStageLabel), Find(kFirstStage), hint}, hint->x() + hint->w());
  KeepRow(*Window(),
          {Find(kAdd), Find(kRemove), Find(kMoveUp), Find(kMoveDown), Find(kViewMessage),
           Find(kViewSummary), Find(kClose)},
          Find(kViewSummary)->x() + Find(kViewSummary)->w());
  Window()->resizable(table_);
  Window()->size_range(kLeastWidth, kLeastHeight);
  CentreOnParent();
  Update();
  table_->SelectRow(0);
  table_->TakeFocus();
  return true;
}

// The table takes the place of the layout's group.
void Flx_MultipleStages::MakeTable() {
  Fl_Group* place = Find(kTable);
  place->hide();
  table_ = new StageTable(
      place->x(), place->y(), place->w(), place->h(), subject_.group, subject_.job,
      [this](const std::string& key) { return Shown(key); }, subject_.texts,
      [this](JobId job) { return subject_.application.Manager().Watch().StateOf(job); });
  Window()->add(table_);
  table_->OnSelect = [this] { Update(); };
  table_->OnCell = [this](int row, int column) {
    if (column == StageTable::kMessage) ViewMessage(table_->StageAt(row));
    if (column == StageTable::kSummary) ViewSummary(table_->StageAt(row));
  };
}

bool Flx_MultipleStages::Read(const std::function<void(const JobFile& job)>& read) const {
  return subject_.group->ReadJob(subject_.job, read);
}

void Flx_MultipleStages::QueueChanged() {
  // An open menu must keep its items.
  if (!Fl::grab()) return Update();
  if (!Fl::has_timeout(UpdateLater, this)) Fl::add_timeout(0.2, UpdateLater, this);
}

void Flx_MultipleStages::UpdateLater(void* self) {
  static_cast<Flx_MultipleStages*>(self)->QueueChanged();
}

void Flx_MultipleStages::Update() {
  std::optional<JobStatus> status;  // none: no such job any more
  int first = 0;
  std::vector<std::string> names;
  std::vector<JobId> stages;
  Read([&](const JobFile& job) {
    status = job.status;
    first = job.firstStage;
    for (const auto& stage : job.stages) {
      names.push_back(std::to_string(names.size() + 1) + "   " +
                      ToUi(FileDirWrapper::NameOf(stage->jobFile)));
      stages.push_back(stage->id);
    }
  });
  table_->SetStages(std::move(stages));
  ShowFirstStage(names, first);
  const bool queued = status == JobStatus::kQueued;
  const int row = table_->CurrentRow();
  const int count = static_cast<int>(names.size());
  Activate(Find(kAdd), queued);
  Activate(Find(kRemove), queued && row >= 0 && count > 1);
  Activate(Find(kMoveUp), queued && row > 0);
  Activate(Find(kMoveDown), queued && row >= 0 && row + 1 < count);
  Activate(Find(kViewMessage), row >= 0);
  Activate(Find(kViewSummary), row >= 0);
  Activate(Find(kFirstStage), status && status != JobStatus::kRunning);
  const char* const hint = !status ? "gone" : queued ? nullptr : "only_queued";
  Find(kHint)->label(hint ? ConvertText(GetText(hint)) : "");
}

void Flx_MultipleStages::ShowFirstStage(const std::vector<std::string>& names, int first) {
  if (names != names_) {
    names_ = names;
    firstEntries_.Show(*Find(kFirstStage), names_, first);
  }
  if (first != Find(kFirstStage)->value()) Find(kFirstStage)->value(first);
}

int Flx_MultipleStages::HandleWidget(Fl_Widget* widget) {
  if (widget == Find(kClose)) return 0;
  if (widget == Find(kAdd)) AddStages();
  if (widget == Find(kRemove)) RemoveStage();
  if (widget == Find(kMoveUp)) MoveStage(true);
  if (widget == Find(kMoveDown)) MoveStage(false);
  if (widget == Find(kViewMessage)) ViewMessage(table_->CurrentStage());
  if (widget == Find(kViewSummary)) ViewSummary(table_->CurrentStage());
  if (widget == Find(kFirstStage))
    subject_.group->SetFirstStage(subject_.job, table_->StageAt(Find(kFirstStage)->value()));
  Update();
  return -1;
}

// Their decks are read like those of new jobs, on another thread; the stages appear when they are.
void Flx_MultipleStages::AddStages() {
  Application& application = subject_.application;
  const std::string& folder = application.SettingsAndFiles().Get().last_path;
  const std::string filter = RowOfKind(SolverKind::kLsDynaSingle).jobFilter;
  for (const std::string& path : AskForFiles({Window(), Shown("add_title"), filter, folder})) {
    JobRequest request = MakeJobRequest(application.SettingsAndFiles().Get());
    request.jobFile = path;
    request.groupId = subject_.group->Id();
    request.stageOf = subject_.job;
    application.Intake().Add(request);
  }
}

void Flx_MultipleStages::RemoveStage() {
  subject_.group->RemoveStage(subject_.job, table_->CurrentStage());
}

void Flx_MultipleStages::MoveStage(bool up) {
  subject_.group->MoveStage(subject_.job, table_->CurrentStage(), up);
}

void Flx_MultipleStages::ViewMessage(JobId stage) {
  JobStatus status = JobStatus::kQueued;
  std::string path;
  const auto read = [&](const JobFile& found) {
    status = found.status;
    path = found.MessageFile();
  };
  if (!subject_.group->ReadStage(subject_.job, stage, read)) return;
  if (status == JobStatus::kQueued || status == JobStatus::kWaiting)
    return Inform(subject_.texts.Get("msg_view_job"));
  if (path.empty() || !FileDirWrapper::FileExists(path))
    return Inform(subject_.texts.Get("msg_not_found_msg"));
  subject_.application.ViewTextFile(path);
}

void Flx_MultipleStages::ViewSummary(JobId stage) {
  JobOutput output;
  const auto read = [&](const JobFile& found) { output = OutputOf(found); };
  if (!subject_.group->ReadStage(subject_.job, stage, read)) return;
  if (!HasEnded(output.status)) return Inform(subject_.texts.Get("msg_view_info"));
  Flx_ShowInfo dialog(Window(), subject_.application.language, output);
  dialog.Run();
}

void Flx_MultipleStages::Inform(const std::string& text) {
  Flx_Base_Dialog::Inform(ToUi(subject_.application.Title()), text);
}
