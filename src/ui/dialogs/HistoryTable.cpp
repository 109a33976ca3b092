#include "ui/dialogs/HistoryTable.h"

#include <FL/fl_draw.H>

#include <algorithm>
#include <iterator>
#include <utility>

#include "record/History.h"
#include "ui/dialogs/StatusCell.h"
#include "ui/fltk/CellDrawing.h"
#include "ui/fltk/Theme.h"
#include "ui/text/Encoding.h"

namespace {

struct Shape {
  const char* title;
  int width, least;
  int share;
};

// In the order of HistoryColumn.
constexpr Shape kShapes[] = {
    {"ui_past_when", 126, 126, 0},  {"lab_job_name", 150, 90, 3},    {"lab_in_folder", 190, 90, 4},
    {"lab_solv", 104, 104, 0},      {"ui_past_took", 92, 84, 0},     {"ui_past_verdict", 92, 92, 0},
    {"ui_past_reason", 170, 80, 4}, {"ui_past_cpus", 58, 58, 0},     {"lab_memory", 74, 74, 0},
    {"ui_past_nodes", 80, 76, 0},   {"ui_past_elements", 84, 84, 0},
};
static_assert(std::size(kShapes) == kHistoryColumns);

}  // namespace

HistoryTable::HistoryTable(int x, int y, int w, int h, const TextTable& texts)
    : Flx_Table(x, y, w, h), texts_(texts) {
  for (const Shape& shape : kShapes)
    AddColumn({texts.Get(shape.title), shape.width, shape.least, shape.share});
  OnHead = [this](int column) { SortBy(static_cast<HistoryColumn>(column)); };
  ShowSorted(static_cast<int>(view_.sortedBy), view_.descending);
}

void HistoryTable::SetRows(Rows rows) {
  Arrange([&] { rows_.swap(rows); });
}

void HistoryTable::SetFilter(const std::string& words, const std::set<HistoryVerdict>& verdicts) {
  Arrange([&] {
    view_.words = words;
    view_.verdicts = verdicts;
  });
}

void HistoryTable::SetNothing(const std::string& words) {
  if (std::exchange(nothing_, words) != words) redraw();
}

// Times begin with the newest, texts with the first one of the alphabet.
void HistoryTable::SortBy(HistoryColumn column) {
  Arrange([&] {
    const bool again = column == view_.sortedBy;
    view_.descending = again ? !view_.descending : column == HistoryColumn::kWhen;
    view_.sortedBy = column;
  });
}

void HistoryTable::Arrange(const std::function<void()>& change) {
  const HistoryRow* const before = CurrentRun();
  const std::string name = before != nullptr ? HistoryName(before->run) : std::string();
  change();
  places_ = ShownRows(*rows_, view_);
  ShowSorted(static_cast<int>(view_.sortedBy), view_.descending);
  RowsChanged();
  const auto found = std::find_if(places_.begin(), places_.end(), [&](std::size_t place) {
    return HistoryName((*rows_)[place].run) == name;
  });
  SelectRow(found == places_.end() ? 0 : static_cast<int>(found - places_.begin()));
  if (OnSelect) OnSelect();
}

const HistoryRow& HistoryTable::RowAt(int row) const {
  return (*rows_)[places_[static_cast<std::size_t>(row)]];
}

const HistoryRow* HistoryTable::CurrentRun() const {
  return CurrentRow() < 0 || CurrentRow() >= RowCount() ? nullptr : &RowAt(CurrentRow());
}

std::string HistoryTable::CellText(int row, int column) {
  return RowAt(row).Cell(static_cast<HistoryColumn>(column));
}

void HistoryTable::DrawCell(const Cell& cell) {
  const HistoryRow& row = RowAt(cell.row);
  const auto column = static_cast<HistoryColumn>(cell.column);
  const CellArea area = {cell.x, cell.y, cell.w, cell.h};
  CellDrawing::UseFont();
  fl_color(Theme::kText);
  if (column == HistoryColumn::kVerdict && row.verdict != HistoryVerdict::kUnknown)
    return DrawStatus(area,
                      {.status = row.run.verdict,
                       .words = {row.Cell(column), texts_.Say(JobStatusWord(row.run.verdict))},
                       .marked = row.run.stoppedAt != kNotStopped,
                       .stopped = row.run.failure.kind == FailureKind::kStopped});
  if (column == HistoryColumn::kFolder || column == HistoryColumn::kVerdict)
    fl_color(Theme::kMuted);
  CellDrawing::Words(area, row.Cell(column), column == HistoryColumn::kFolder);
}

void HistoryTable::DrawEmpty(int x, int y, int w, int h) {
  CellDrawing::UseFont();
  fl_color(Theme::kMuted);
  fl_draw(nothing_.c_str(), x + CellDrawing::kPadding, y, w - 2 * CellDrawing::kPadding, h,
          FL_ALIGN_CENTER | FL_ALIGN_WRAP, nullptr, 0);
}

std::string HistoryTable::CellTip(int index, int column) {
  const HistoryRow& row = RowAt(index);
  switch (static_cast<HistoryColumn>(column)) {
    case HistoryColumn::kJob:
    case HistoryColumn::kFolder:
      return row.path;
    case HistoryColumn::kReason:
      return row.Cell(HistoryColumn::kReason);
    case HistoryColumn::kVerdict: {
      if (row.verdict == HistoryVerdict::kUnknown) return texts_.Get("ui_past_unknown_tip");
      const RunRecord& run = row.run;
      std::string tip = run.stoppedAt == kNotStopped ? "" : row.Cell(HistoryColumn::kVerdict);
      if (!run.errors || !run.warnings) return tip;
      return tip + (tip.empty() ? "" : "\n") +
             texts_.Format("ui_past_counts", std::to_string(*run.errors),
                           std::to_string(*run.warnings));
    }
    default:
      return {};
  }
}

int HistoryTable::IconWidth(int column) const {
  return static_cast<HistoryColumn>(column) == HistoryColumn::kVerdict ? CellDrawing::kIconSize : 0;
}
