#include "ui/window/JobTable.h"

#include <FL/fl_draw.H>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <sstream>

#include "ui/dialogs/StatusCell.h"
#include "ui/fltk/CellDrawing.h"
#include "ui/fltk/Icons.h"
#include "ui/fltk/Labels.h"
#include "ui/fltk/PopupMenu.h"
#include "ui/fltk/Theme.h"
#include "ui/window/Layout.h"
#include "util/text/StrWrapper.h"

namespace {

constexpr int kCheckSize = 13;
constexpr int kGoOnSize = CellDrawing::kIconSize;

struct Shape {
  const char* word;  // of the settings
  const char* title;
  int width, least;
  int share;  // of what a window has more or less than the widths
};

// In the order of Column.
// clang-format off
constexpr Shape kShapes[] = {
    {"name", "lab_job_name", 128, 90, 3},
    {"folder", "lab_in_folder", 112, 80, 5},
    {"solver", "lab_solv", 110, 110, 0},
    {"stages", "lab_mstage", 68, 68, 0},
    {"memory", "lab_memory", 70, 66, 0},
    {"status", "lab_status", 190, 110, 2},
    {"message", "lab_messag", 70, 70, 0},
    {"summary", "lab_result", 76, 76, 0},
    {"iforce", "lab_iforce", 64, 64, 0},
    {"other", "lab_other_para", 80, 70, 3},
    {"order", "ui_column_order", 50, 50, 0},
    {"cpus", "ui_past_cpus", 58, 58, 0},
    {"progress", "ui_column_progress", 74, 74, 0},
    {"started", "ui_column_started", 126, 126, 0},
    {"elapsed", "ui_column_elapsed", 96, 90, 0},
    {"ends", "ui_column_ends", 110, 100, 0},
    {"where", "ui_column_where", 110, 80, 0},
    {"result", "ui_column_result", 130, 80, 0},
    {"errors", "ui_column_errors", 62, 62, 0},
    {"warnings", "ui_column_warnings", 76, 70, 0},
    {"restart", "ui_column_restart", 110, 80, 0},
    {"group", "lab_group", 90, 70, 0},
};
// clang-format on
static_assert(std::size(kShapes) == JobTable::kColumns);

}  // namespace

JobTable::JobTable(int x, int y, int w, int h, std::shared_ptr<JobList> list,
                   const TextTable& texts, RunStateOf stateOf)
    : Flx_Table(x, y, w, h),
      list_(std::move(list)),
      texts_(texts),
      stateOf_(std::move(stateOf)),
      rows_(list_, texts) {
  for (const Shape& shape : kShapes)
    AddColumn({texts.Get(shape.title), shape.width, shape.least, shape.share,
               &shape >= kShapes + kOrder});
  ShowSorted(kOrder, false);
  OnHead = [this](int column) { SortByHead(static_cast<Column>(column)); };
  JobsChanged();
}

void JobTable::SelectJob(JobId job) {
  const JobRows::Entry* const entry = rows_.Find(job);
  if (entry && entry->row >= 0) SelectRow(entry->row);
}

JobId JobTable::JobAt(int row) const {
  const auto index = static_cast<std::size_t>(row);
  return row >= 0 && index < rows_.Shown().size() ? rows_.Shown()[index]->id : JobId::kNone;
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
  std::set<int> rows;
  for (const JobId job : jobs) {
    const JobRows::Entry* const entry = rows_.Find(job);
    if (entry && entry->row >= 0) rows.insert(entry->row);
  }
  SelectRows({rows.begin(), rows.end()}, CurrentRow());
  if (!rows.empty()) ScrollToRow(CurrentRow());
}

bool JobTable::SelectFailed() {
  std::vector<int> rows;
  for (const JobRows::Entry* entry : rows_.Shown())
    if (entry->failed) rows.push_back(entry->row);
  if (rows.empty()) return false;
  SelectRows(rows, CurrentRow());
  ScrollToRow(CurrentRow());
  return true;
}

// When the current job goes and others are selected, the nearest of them becomes current.
void JobTable::Arrange(const std::function<void()>& change, bool inPlace) {
  const JobId before = CurrentJob();
  const int oldRow = CurrentRow();
  int selectedBefore = 0;
  for (JobRows::Entry* entry : rows_.All()) {
    entry->selected = entry->row >= 0 && IsSelected(entry->row);
    selectedBefore += entry->selected;
  }
  change();
  Selection now(rows_.Shown().size());
  int current = -1;
  int selected = 0;
  for (const JobRows::Entry* entry : rows_.Shown()) {
    if (!entry->selected) continue;
    ++selected;
    now[static_cast<std::size_t>(entry->row)] = true;
    const bool nearer = std::abs(entry->row - oldRow) < std::abs(current - oldRow);
    if (entry->id == before || current < 0 || (JobAt(current) != before && nearer))
      current = entry->row;
  }
  const bool isGone = before != JobId::kNone && rows_.Find(before) == nullptr;
  if (current < 0 && isGone && inPlace && RowCount() > 0) {
    current = std::min(oldRow, RowCount() - 1);
    now[static_cast<std::size_t>(current)] = true;
  }
  RowsReplaced(std::move(now), current);
  FollowRunning();
  if ((CurrentJob() != before || selected != selectedBefore) && OnSelect) OnSelect();
  if (OnView) OnView();
}

void JobTable::JobsChanged(bool anew) {
  Arrange([&] { rows_.ReadAll(anew); }, true);
}

void JobTable::JobsChanged(const std::set<JobId>& jobs) {
  const StatusCounts before = Counts();
  bool arranged = false;
  if (IsFiltered() || sortedBy_) {
    Arrange([&] { arranged = rows_.Read(jobs); }, false);
  } else {
    rows_.Read(jobs);
    FollowRunning();
  }
  for (int row = FirstVisibleRow(); row < LastVisibleRow() && !arranged; ++row)
    if (jobs.count(JobAt(row))) RowChanged(row);
  if (Counts() != before && OnView) OnView();
}

void JobTable::SetFilter(const std::string& words, const StatusClasses& classes) {
  if (words == words_ && classes == classes_) return;
  words_ = words;
  classes_ = classes;
  Arrange([&] { rows_.SetFilter(words, classes); }, false);
}

void JobTable::SortBy(Column column, bool descending) {
  if (SurroundingsNow) around_ = SurroundingsNow();
  if (column == kEnds) EstimateEnds();
  sortedBy_ = column;
  descending_ = descending;
  ShowSorted(column, descending);
  Arrange([&] { rows_.Sort(KeyOf(column), descending); }, false);
}

void JobTable::ShowRunningOrder() {
  if (!sortedBy_) return;
  sortedBy_.reset();
  ShowSorted(kOrder, false);
  Arrange([&] { rows_.Sort({}, false); }, false);
}

// Of times and progress the newest and the farthest come first.
void JobTable::SortByHead(Column column) {
  if (column == kOrder) return ShowRunningOrder();
  const bool largestFirst = column == kStarted || column == kElapsed || column == kProgress;
  SortBy(column, sortedBy_ == column ? !descending_ : largestFirst);
}

void JobTable::SetFollow(bool follow) {
  follow_ = follow;
  followed_ = {JobId::kNone, -1};
  FollowRunning();
}

void JobTable::FollowRunning() {
  if (!follow_) return;
  const auto& shown = rows_.Shown();
  const auto running = std::find_if(shown.begin(), shown.end(), [](const JobRows::Entry* entry) {
    return entry->status == StatusClass::kRunning;
  });
  if (running == shown.end()) return;
  const std::pair now((*running)->id, (*running)->row);
  if (std::exchange(followed_, now) != now) ScrollToRow(now.second);
}

int JobTable::RowCount() const {
  return static_cast<int>(rows_.Shown().size());
}

std::string JobTable::ColumnsText() const {
  std::string text;
  const auto add = [&](int column) {
    const std::optional<int> width = GivenWidth(column);
    if (column < kOrder && !width) return;
    text += (text.empty() ? "" : " ") + std::string(kShapes[column].word);
    if (width) text += "=" + std::to_string(*width);
  };
  for (const int column : ShownColumns()) add(column);
  return text;
}

void JobTable::SetColumns(const std::string& text) {
  std::vector<int> extra;
  std::istringstream words(text);
  for (std::string word; words >> word;) {
    const std::size_t equals = word.find('=');
    const auto shape = std::ranges::find(kShapes, word.substr(0, equals), &Shape::word);
    if (shape == std::end(kShapes)) continue;
    const int column = static_cast<int>(shape - kShapes);
    if (column >= kOrder) extra.push_back(column);
    constexpr int kWidest = 4000;
    const int width =
        equals == std::string::npos ? 0 : StrWrapperTxt::LeadingInt(word.substr(equals + 1));
    if (width > 0) GiveWidth(column, std::min(width, kWidest));
  }
  ShowExtraColumns(extra);
}

void JobTable::OpenColumnMenu(int column, int x, int y) {
  std::vector<int> extra;
  for (const int one : ShownColumns())
    if (one >= kOrder) extra.push_back(one);
  const auto at = std::ranges::find(extra, column);
  std::vector<PopupEntry> entries;
  for (int one = kOrder; one < kColumns; ++one)
    entries.push_back({ColumnTitle(one), true, true, std::ranges::count(extra, one) > 0});
  entries.back().endsPart = true;
  const bool movable = at != extra.end();
  entries.push_back({texts_.Get("ui_column_left"), movable && at != extra.begin()});
  entries.push_back({texts_.Get("ui_column_right"), movable && at + 1 != extra.end()});
  entries.push_back({texts_.Get("ui_column_running"), sortedBy_.has_value()});
  constexpr int kExtra = kColumns - kOrder;
  const int place = PickFromMenu(entries, x, y);
  if (place < 0) return;
  if (place == kExtra + 2) return ShowRunningOrder();
  if (place == kExtra) {
    std::iter_swap(at, at - 1);
  } else if (place == kExtra + 1) {
    std::iter_swap(at, at + 1);
  } else if (std::erase(extra, place + kOrder) == 0) {
    extra.push_back(place + kOrder);
  }
  ShowExtraColumns(extra);
  if (OnColumns) OnColumns();
}

// Empty for a job that has been removed meanwhile.
JobTable::Row JobTable::ReadRow(int index) const {
  Row row;
  list_->ReadJob(JobAt(index), [&](const JobFile& job) { row = MakeRow(job); });
  return row;
}

void JobTable::PrepareRows(int first, int last) {
  if (SurroundingsNow) around_ = SurroundingsNow();
  if (IsShown(kEnds)) EstimateEnds();
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
  const bool hidden = AllCount() > 0;
  const std::string& title = texts_.Get(hidden ? "ui_filter_none" : "ui_empty_title");
  const std::string hint = hidden ? texts_.Format("ui_filter_back", std::to_string(AllCount()))
                                  : texts_.Get("ui_empty_hint");
  fl_color(Theme::kText);
  fl_font(FL_HELVETICA_BOLD, Layout::kFontSize);
  fl_draw(title.c_str(), x, y + h / 2 - 22, w, 20, FL_ALIGN_CENTER, nullptr, 0);
  fl_color(hidden ? Theme::kAccent : Theme::kMuted);
  CellDrawing::UseFont();
  fl_draw(FitHead(hint, w - 2 * CellDrawing::kPadding).c_str(), x, y + h / 2, w, 20,
          FL_ALIGN_CENTER, nullptr, 0);
}

void JobTable::EmptyPressed() {
  SetFilter({}, {});
}

bool JobTable::NameBegins(int row, const std::string& folded) const {
  return rows_.Shown()[static_cast<std::size_t>(row)]->name.starts_with(folded);
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
    case kName: {
      std::string tip = row.path;
      for (const std::string& more : {row.results, row.past})
        if (!more.empty()) tip += '\n' + more;
      return tip;
    }
    case kFolder:
      return row.path;
    case kStatus:
      return row.tip;
    case kForce:
      return row.dyna ? texts_.Get("ui_tip_iforce") : std::string();
    case kOther:
    case kWhere:
      return row.cells[column];
    case kRestart:
      return row.restart;
    default:
      return {};
  }
}

int JobTable::IconWidth(int column) const {
  return column == kStatus ? 2 * CellDrawing::kIconSize : column == kForce ? kCheckSize : 0;
}
