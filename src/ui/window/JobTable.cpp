#include "ui/window/JobTable.h"

#include <FL/fl_draw.H>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <unordered_set>

#include "solvers/SolverKinds.h"
#include "ui/dialogs/StatusCell.h"
#include "ui/fltk/CellDrawing.h"
#include "ui/fltk/Icons.h"
#include "ui/fltk/Labels.h"
#include "ui/fltk/Theme.h"
#include "ui/text/Encoding.h"
#include "ui/text/ShownValues.h"
#include "ui/window/Layout.h"

namespace {

constexpr int kCheckSize = 13;
constexpr int kGoOnSize = CellDrawing::kIconSize;

bool CanViewMessage(JobStatus status) {
  return status == JobStatus::kRunning || HasEnded(status);
}

struct Shape {
  const char* title;
  int width, least;
  int share;  // of what a window has more or less than the widths
};

// In the order of Column.
constexpr Shape kShapes[] = {
    {"lab_job_name", 128, 90, 3},  {"lab_in_folder", 112, 80, 5}, {"lab_solv", 110, 110, 0},
    {"lab_mstage", 68, 68, 0},     {"lab_memory", 70, 66, 0},     {"lab_status", 190, 110, 2},
    {"lab_messag", 70, 70, 0},     {"lab_result", 76, 76, 0},     {"lab_iforce", 64, 64, 0},
    {"lab_other_para", 80, 70, 3},
};
static_assert(std::size(kShapes) == JobTable::kColumns);

}  // namespace

JobTable::JobTable(int x, int y, int w, int h, std::shared_ptr<JobList> list,
                   const TextTable& texts, RunStateOf stateOf)
    : Flx_Table(x, y, w, h), list_(std::move(list)), texts_(texts), stateOf_(std::move(stateOf)) {
  for (const Shape& shape : kShapes)
    AddColumn({texts.Get(shape.title), shape.width, shape.least, shape.share});
  JobsChanged();
}

void JobTable::SelectJob(JobId job) {
  if (const int row = RowOf(job); row >= 0) SelectRow(row);
}

JobId JobTable::JobAt(int row) const {
  const auto index = static_cast<std::size_t>(row);
  return row >= 0 && index < jobs_.size() ? jobs_[index] : JobId::kNone;
}

int JobTable::RowOf(JobId job) const {
  const auto found = std::find(jobs_.begin(), jobs_.end(), job);
  return found == jobs_.end() ? -1 : static_cast<int>(found - jobs_.begin());
}

JobId JobTable::CurrentJob() const {
  return JobAt(CurrentRow());
}

std::vector<JobId> JobTable::SelectedJobs() const {
  std::vector<JobId> jobs;
  for (int row = 0; row < RowCount(); ++row)
    if (IsSelected(row)) jobs.push_back(JobAt(row));
  return jobs;
}

void JobTable::SelectJobs(const std::vector<JobId>& jobs) {
  const std::unordered_set<JobId> wanted(jobs.begin(), jobs.end());
  std::vector<int> rows;
  for (int row = 0; row < RowCount(); ++row)
    if (wanted.count(JobAt(row))) rows.push_back(row);
  SelectRows(rows, CurrentRow());
}

// When the current job goes and others are selected, the nearest of them becomes current, else the
// job that is now in its row.
void JobTable::JobsChanged() {
  const JobId before = CurrentJob();
  const std::vector<JobId> selected = SelectedJobs();
  const std::unordered_set<JobId> wanted(selected.begin(), selected.end());
  const int oldRow = CurrentRow();
  jobs_ = list_->JobIds();
  Selection now(jobs_.size());
  int current = -1;
  for (int row = 0; row < RowCount(); ++row) {
    const JobId job = JobAt(row);
    if (!wanted.count(job)) continue;
    now[static_cast<std::size_t>(row)] = true;
    const bool nearer = std::abs(row - oldRow) < std::abs(current - oldRow);
    if (job == before || current < 0 || (JobAt(current) != before && nearer)) current = row;
  }
  if (current < 0 && oldRow >= 0 && RowCount() > 0) {
    current = std::min(oldRow, RowCount() - 1);
    now[static_cast<std::size_t>(current)] = true;
  }
  RowsReplaced(std::move(now), current);
  const bool same = CurrentJob() == before && SelectedJobs().size() == selected.size();
  if (!same && OnSelect) OnSelect();
}

void JobTable::JobChanged(JobId job) {
  for (int row = FirstVisibleRow(); row < LastVisibleRow(); ++row)
    if (JobAt(row) == job) RowChanged(row);
}

int JobTable::RowCount() const {
  return static_cast<int>(jobs_.size());
}

JobTable::Row JobTable::MakeRow(const JobFile& job) const {
  const auto* dyna = dynamic_cast<const JobFileDyna*>(&job);
  Row row;
  const std::optional<RunState> state = stateOf_ ? stateOf_(job.id) : std::nullopt;
  row.shown = ShownStatus(job, state, texts_);
  const bool tellsWhy = job.status == JobStatus::kAborted || job.status == JobStatus::kWaiting;
  const std::string why = tellsWhy ? FailureWords(job, texts_) : std::string();
  if (!why.empty()) row.tip = texts_.Format("ui_code", why);
  if (HasEnded(job.status)) row.dump = ShownName(job.RestartDump());
  const auto add = [&row](const std::string& lines) {
    if (!lines.empty()) row.tip += (row.tip.empty() ? "" : "\n") + lines;
  };
  add(RunTip(job, state, texts_));
  row.past = PastText(job);
  if (why.empty()) add(row.past);
  if (!row.dump.empty()) add(texts_.Format("ui_tip_go_on", row.dump));
  row.multiStage = !job.stages.empty();
  row.dyna = dyna != nullptr;
  row.force = dyna && dyna->useSFile;
  row.path = ShownPath(job.jobFile, job.restartFile, texts_);
  row.cells[kName] = ShownJob(job.jobFile, job.restartFile);
  row.cells[kFolder] = ToUi(job.Folder());
  row.cells[kSolver] = RowOfKind(job.GetSolverType()).name;
  row.cells[kStages] = texts_.Get(row.multiStage ? "lab_yes" : "lab_no");
  row.cells[kMemory] = job.memory ? std::to_string(job.memory) : CellDrawing::kNothing;
  row.cells[kStatus] = row.shown.words.front();
  row.cells[kMessage] = row.cells[kSummary] = texts_.Get("lab_view");
  row.cells[kForce] =
      row.dyna ? texts_.Get(row.force ? "ui_other_yes" : "lab_no") : CellDrawing::kNothing;
  row.cells[kOther] = ToUi(job.extraOptions);
  return row;
}

std::string JobTable::PastText(const JobFile& job) const {
  const bool waits = job.status == JobStatus::kQueued || job.status == JobStatus::kWaiting;
  const std::optional<PastRun> past = waits && PastRunOf ? PastRunOf(job) : std::nullopt;
  if (!past) return {};
  const std::string took = ShownDuration(past->seconds, texts_);
  const std::string when = ShownMoment(past->started, texts_);
  if (past->cpus == 1) return texts_.Format("ui_past_run_one", took, when);
  return texts_.Format("ui_past_run", took, std::to_string(past->cpus), when);
}

// Empty for a job that has been removed meanwhile.
JobTable::Row JobTable::ReadRow(int index) const {
  Row row;
  list_->ReadJob(JobAt(index), [&](const JobFile& job) { row = MakeRow(job); });
  return row;
}

void JobTable::PrepareRows(int first, int last) {
  firstRow_ = first;
  shown_.clear();
  for (int index = first; index < last; ++index) shown_.push_back(ReadRow(index));
}

void JobTable::DrawCell(const Cell& cell) {
  const Row& row = shown_[static_cast<std::size_t>(cell.row - firstRow_)];
  const std::string& text = row.cells[cell.column];
  const CellArea area = {cell.x, cell.y, cell.w, cell.h};
  CellDrawing::UseFont();
  fl_color(Theme::kText);
  switch (cell.column) {
    case kFolder:
      fl_color(Theme::kMuted);
      CellDrawing::Words(area, text, true);
      break;
    case kStages:
      if (row.multiStage) {
        CellDrawing::Link(area, text, true, cell.hovered);
      } else {
        fl_color(Theme::kMuted);
        CellDrawing::Words(area, text);
      }
      break;
    case kStatus:
      DrawStatus({cell.x, cell.y, cell.w - (row.dump.empty() ? 0 : kGoOnSize), cell.h}, row.shown);
      if (!row.dump.empty()) DrawGoOn(cell);
      break;
    case kMessage:
      CellDrawing::Link(area, text, !row.multiStage && CanViewMessage(row.shown.status),
                        cell.hovered);
      break;
    case kSummary:
      CellDrawing::Link(area, text, !row.multiStage && HasEnded(row.shown.status), cell.hovered);
      break;
    case kForce:
      DrawCheck(cell, row);
      break;
    default:
      CellDrawing::Words(area, text);
  }
}

// At the end of the status: what a press does.
void JobTable::DrawGoOn(const Cell& cell) {
  const int x = cell.x + cell.w - CellDrawing::kPadding / 2 - kGoOnSize;
  const int y = cell.y + (cell.h - kGoOnSize) / 2;
  if (cell.hovered) {
    Theme::DrawRounded(x - 2, y - 2, kGoOnSize + 4, kGoOnSize + 4, Theme::kSurface, Theme::kAccent);
  }
  if (Fl_RGB_Image* icon = Icon("state_go_on")) icon->draw(x, y);
}

void JobTable::DrawCheck(const Cell& cell, const Row& row) {
  if (!row.dyna) {
    fl_color(Theme::kDisabledText);
    CellDrawing::Words({cell.x, cell.y, cell.w, cell.h}, row.cells[kForce]);
    return;
  }
  const bool enabled = row.shown.status != JobStatus::kRunning;
  const int x = cell.x + CellDrawing::kPadding;
  const int y = cell.y + (cell.h - kCheckSize) / 2;
  const Fl_Color on = enabled ? Theme::kAccent : Theme::kDisabledText;
  const Fl_Color line = enabled && cell.hovered ? Theme::kAccent : Theme::kLine;
  Theme::DrawRounded(x, y, kCheckSize, kCheckSize, row.force ? on : Theme::kSurface,
                     row.force ? on : line);
  if (row.force) {
    fl_color(Theme::kSurface);
    fl_line_style(FL_SOLID, 2);
    fl_line(x + 3, y + 6, x + 5, y + 9, x + 9, y + 3);
    fl_line_style(0);
  }
  fl_color(enabled ? Theme::kText : Theme::kDisabledText);
  constexpr int kIndent = kCheckSize + 5;
  CellDrawing::Words({cell.x + kIndent, cell.y, cell.w - kIndent, cell.h}, row.cells[kForce]);
}

void JobTable::DrawEmpty(int x, int y, int w, int h) {
  const std::string& title = texts_.Get("ui_empty_title");
  const std::string& hint = texts_.Get("ui_empty_hint");
  fl_color(Theme::kText);
  fl_font(FL_HELVETICA_BOLD, Layout::kFontSize);
  fl_draw(title.c_str(), x, y + h / 2 - 22, w, 20, FL_ALIGN_CENTER, nullptr, 0);
  fl_color(Theme::kMuted);
  CellDrawing::UseFont();
  fl_draw(FitHead(hint, w - 2 * CellDrawing::kPadding).c_str(), x, y + h / 2, w, 20,
          FL_ALIGN_CENTER, nullptr, 0);
}

// Of the status the arrow at its end alone: a double click on the rest opens the monitor.
bool JobTable::PressesAt(int column, int beforeEnd) const {
  return column != kStatus || beforeEnd <= kGoOnSize + CellDrawing::kPadding;
}

bool JobTable::IsButton(int row, int column) {
  switch (column) {
    case kMessage:
    case kSummary:
      return true;  // says why when there is nothing to view
    case kStages:
      return ReadRow(row).multiStage;
    case kStatus:
      return !ReadRow(row).dump.empty();
    case kForce:
      return ReadRow(row).dyna;
    default:
      return false;
  }
}

std::string JobTable::CellTip(int index, int column) {
  const Row row = ReadRow(index);
  switch (column) {
    case kName:
      return row.past.empty() ? row.path : row.path + '\n' + row.past;
    case kFolder:
      return row.path;
    case kStatus:
      return row.tip;
    case kForce:
      return row.dyna ? texts_.Get("ui_tip_iforce") : std::string();
    case kOther:
      return row.cells[kOther];
    default:
      return {};
  }
}

int JobTable::IconWidth(int column) const {
  return column == kStatus ? 2 * CellDrawing::kIconSize : column == kForce ? kCheckSize : 0;
}
