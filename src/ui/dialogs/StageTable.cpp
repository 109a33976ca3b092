#include "ui/dialogs/StageTable.h"

#include <FL/fl_draw.H>

#include <algorithm>

#include "ui/dialogs/CellDrawing.h"
#include "ui/fltk/Theme.h"
#include "ui/text/Encoding.h"
#include "util/files/FileDirWrapper.h"

StageTable::StageTable(int x, int y, int w, int h, std::shared_ptr<JobGroup> group,
                       std::shared_ptr<JobFile> job, Texts texts,
                       std::function<std::string(int type)> solverName, const TextTable& words)
    : Flx_Table(x, y, w, h),
      group_(std::move(group)),
      job_(std::move(job)),
      texts_(std::move(texts)),
      solverName_(std::move(solverName)),
      words_(words) {
  const int widths[kColumns] = {180, 120, 96, 70, 96, 76, 76};
  const int shares[kColumns] = {3, 2, 0, 0, 0, 0, 0};
  for (int column = 0; column < kColumns; ++column)
    AddColumn({texts_.heads[column], widths[column], 70, shares[column]});
}

int StageTable::JobIndex() const {
  int found = -1;
  group_->ReadJobs([&](int index, const JobFile& job) {
    if (&job == job_.get()) found = index;
  });
  return found;
}

void StageTable::Read(const std::function<void(const JobFile& job)>& read) const {
  group_->ReadJobs([&](int, const JobFile& job) {
    if (&job == job_.get()) read(job);
  });
}

int StageTable::RowCount() const {
  int count = 0;
  Read([&](const JobFile& job) { count = static_cast<int>(job.stages.size()); });
  return count;
}

StageTable::Row StageTable::MakeRow(const JobFile& job, int index) const {
  const JobFile& stage = *job.stages[static_cast<std::size_t>(index)];
  Row row;
  row.path = ToUi(stage.jobFile);
  row.status = stage.status;
  row.skipped = index < job.firstStage;
  if (stage.status == JobStatus::kAborted) row.reason = words_.Word(stage.RunMessage());
  std::string name;
  FileDirWrapper::FileNameOf(stage.jobFile, name, true);
  row.cells[kFile] = std::to_string(index + 1) + "   " + ToUi(name);
  const auto* dyna = dynamic_cast<const JobFileDyna*>(&stage);
  row.cells[kType] =
      dyna && !dyna->simulationType.empty() ? ToUi(dyna->simulationType) : CellDrawing::kNothing;
  row.cells[kSolver] = solverName_(stage.GetSolverType());
  row.cells[kMemory] = stage.memory ? std::to_string(stage.memory) : CellDrawing::kNothing;
  std::string status;
  JobStatusWord(stage.status, status);
  row.cells[kStatus] = words_.Word(status);
  row.cells[kMessage] = row.cells[kSummary] = texts_.view;
  return row;
}

StageTable::Row StageTable::ReadRow(int index) const {
  Row row;
  Read([&](const JobFile& job) {
    if (static_cast<std::size_t>(index) < job.stages.size()) row = MakeRow(job, index);
  });
  return row;
}

void StageTable::PrepareRows(int first, int last) {
  firstRow_ = first;
  shown_.clear();
  Read([&](const JobFile& job) {
    const int count = static_cast<int>(job.stages.size());
    for (int index = first; index < std::min(last, count); ++index)
      shown_.push_back(MakeRow(job, index));
  });
}

void StageTable::DrawCell(const Cell& cell) {
  const auto shown = static_cast<std::size_t>(cell.row - firstRow_);
  if (shown >= shown_.size()) return;
  const Row& row = shown_[shown];
  const CellArea area = {cell.x, cell.y, cell.w, cell.h};
  const std::string& text = row.cells[cell.column];
  const bool ended = row.status == JobStatus::kFinished || row.status == JobStatus::kAborted;
  CellDrawing::UseFont();
  fl_color(row.skipped ? Theme::kDisabledText : Theme::kText);
  switch (cell.column) {
    case kStatus:
      return CellDrawing::StatusWord(area, text, row.status);
    case kMessage:
      return CellDrawing::Link(area, text, ended || row.status == JobStatus::kRunning,
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
      return row.skipped ? row.path + "\n" + texts_.skipped : row.path;
    case kStatus: {
      if (row.reason.empty()) return row.skipped ? texts_.skipped : std::string();
      std::string tip = texts_.reason;
      const std::size_t place = tip.find("%s");
      return place == std::string::npos ? row.reason : tip.replace(place, 2, row.reason);
    }
    case kMessage:
      return texts_.messageTip;
    case kSummary:
      return texts_.summaryTip;
    default:
      return {};
  }
}

int StageTable::NeededWidth(int column) {
  int needed = 0;
  for (int index = FirstVisibleRow(); index < LastVisibleRow(); ++index)
    needed = std::max(needed, CellDrawing::Width(ReadRow(index).cells[column]));
  return std::max(needed + (column == kStatus ? CellDrawing::kStateIcon : 0), 60);
}
