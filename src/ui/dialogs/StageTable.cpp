#include "ui/dialogs/StageTable.h"

#include <FL/fl_draw.H>

#include <algorithm>
#include <iterator>

#include "solvers/SolverKinds.h"
#include "ui/dialogs/StatusCell.h"
#include "ui/fltk/CellDrawing.h"
#include "ui/fltk/Theme.h"
#include "ui/text/Encoding.h"
#include "util/files/FileDirWrapper.h"

namespace {

constexpr DialogText kStageTexts[] = {
    {"lab_ms_file", "File", "文件"},
    {"lab_ms_type", "Type", "类型"},
    {"lab_ms_solv", "Solver", "求解器"},
    {"lab_ms_memory", "Memory", "内存"},
    {"lab_ms_stat", "Status", "状态"},
    {"lab_ms_msg", "Message", "消息"},
    {"lab_ms_result", "Summary", "摘要"},
    {"lab_ms_view", "View...", "查看..."},
    {"tip_ms_view_job", "View the message file of this stage", "查看此工步的消息文件"},
    {"tip_ms_view_info", "View the information about this stage", "查看此工步的任务信息"},
    {"skipped", "Skipped: the run begins with a later stage.", "已跳过：从后面的工步开始运行。"},
};

struct Shape {
  const char* title;
  int width;
  int share;  // of what is left over
};

// In the order of Column.
constexpr Shape kShapes[] = {
    {"lab_ms_file", 150, 3},  {"lab_ms_type", 96, 2},  {"lab_ms_solv", 96, 0},
    {"lab_ms_memory", 70, 0}, {"lab_ms_stat", 150, 0}, {"lab_ms_msg", 76, 0},
    {"lab_ms_result", 76, 0},
};
static_assert(std::size(kShapes) == StageTable::kColumns);
constexpr int kLeastWidth = 70;

}  // namespace

const std::span<const DialogText> StageTable::kTexts = kStageTexts;

StageTable::StageTable(int x, int y, int w, int h, std::shared_ptr<JobList> list, JobId job,
                       Texts texts, const TextTable& words, RunStateOf stateOf)
    : Flx_Table(x, y, w, h),
      list_(std::move(list)),
      job_(job),
      texts_(std::move(texts)),
      words_(words),
      stateOf_(std::move(stateOf)) {
  for (const Shape& shape : kShapes)
    AddColumn({texts_(shape.title), shape.width, kLeastWidth, shape.share});
}

JobId StageTable::StageAt(int row) const {
  const auto index = static_cast<std::size_t>(row);
  return row >= 0 && index < stages_.size() ? stages_[index] : JobId::kNone;
}

void StageTable::SetStages(std::vector<JobId> stages) {
  const JobId before = CurrentStage();
  stages_ = std::move(stages);
  RowsChanged();
  redraw();
  const auto found = std::find(stages_.begin(), stages_.end(), before);
  if (found != stages_.end() && CurrentStage() != before)
    SelectRow(static_cast<int>(found - stages_.begin()));
}

int StageTable::RowCount() const {
  return static_cast<int>(stages_.size());
}

StageTable::Row StageTable::MakeRow(const JobFile& stage,
                                    const std::optional<RunState>& state) const {
  Row row;
  row.path = ToUi(stage.jobFile);
  row.shown = ShownStatus(stage, state, words_);
  row.tip = RunTip(stage, state, words_);
  if (stage.status == JobStatus::kAborted) {
    const std::string why = FailureWords(stage, words_);
    if (!why.empty()) row.tip = words_.Format("ui_code", why);
  }
  row.cells[kFile] = ToUi(FileDirWrapper::NameOf(stage.jobFile));
  const auto* dyna = dynamic_cast<const JobFileDyna*>(&stage);
  row.cells[kType] =
      dyna && !dyna->simulationType.empty() ? ToUi(dyna->simulationType) : CellDrawing::kNothing;
  row.cells[kSolver] = RowOfKind(stage.GetSolverType()).name;
  row.cells[kMemory] = stage.memory ? std::to_string(stage.memory) : CellDrawing::kNothing;
  row.cells[kStatus] = row.shown.words.front();
  row.cells[kMessage] = row.cells[kSummary] = texts_("lab_ms_view");
  return row;
}

// Rows of stages that have been removed meanwhile are empty.
std::vector<StageTable::Row> StageTable::ReadRows(int first, int last) const {
  std::vector<Row> rows(static_cast<std::size_t>(std::max(last - first, 0)));
  const std::optional<RunState> state = stateOf_ ? stateOf_(job_) : std::nullopt;
  list_->ReadJob(job_, [&](const JobFile& job) {
    for (std::size_t index = 0; index < job.stages.size(); ++index) {
      for (int row = first; row < last; ++row) {
        if (StageAt(row) != job.stages[index]->id) continue;
        Row& made = rows[static_cast<std::size_t>(row - first)];
        const bool isItsRun = state && state->run.stage == static_cast<int>(index);
        made = MakeRow(*job.stages[index], isItsRun ? state : std::nullopt);
        made.cells[kFile] = std::to_string(row + 1) + "   " + made.cells[kFile];
        made.skipped = static_cast<int>(index) < job.firstStage;
      }
    }
  });
  return rows;
}

void StageTable::PrepareRows(int first, int last) {
  firstRow_ = first;
  shown_ = ReadRows(first, last);
}

void StageTable::DrawCell(const Cell& cell) {
  const Row& row = shown_[static_cast<std::size_t>(cell.row - firstRow_)];
  const CellArea area = {cell.x, cell.y, cell.w, cell.h};
  const std::string& text = row.cells[cell.column];
  const bool ended = HasEnded(row.shown.status);
  CellDrawing::UseFont();
  fl_color(row.skipped ? Theme::kDisabledText : Theme::kText);
  switch (cell.column) {
    case kStatus:
      return DrawStatus(area, row.shown);
    case kMessage:
      return CellDrawing::Link(area, text, ended || row.shown.status == JobStatus::kRunning,
                               cell.hovered);
    case kSummary:
      return CellDrawing::Link(area, text, ended, cell.hovered);
    default:
      return CellDrawing::Words(area, text);
  }
}

bool StageTable::IsButton(int, int column) {
  return column == kMessage || column == kSummary;
}

std::string StageTable::CellTip(int index, int column) {
  const Row row = ReadRow(index);
  switch (column) {
    case kFile:
      return row.skipped ? row.path + "\n" + texts_("skipped") : row.path;
    case kStatus:
      return row.tip.empty() && row.skipped ? texts_("skipped") : row.tip;
    case kMessage:
      return texts_("tip_ms_view_job");
    case kSummary:
      return texts_("tip_ms_view_info");
    default:
      return {};
  }
}

int StageTable::IconWidth(int column) const {
  return column == kStatus ? CellDrawing::kIconSize : 0;
}
