// The jobs of one group as a table.
#ifndef KR_UI_WINDOW_JOBTABLE_H
#define KR_UI_WINDOW_JOBTABLE_H

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "core/JobList.h"
#include "record/PastRuns.h"
#include "ui/dialogs/RunWords.h"
#include "ui/fltk/Flx_Table.h"
#include "ui/text/TextTable.h"
#include "ui/window/JobRows.h"

// Its rows are the jobs that the list had when the table looked last, or those of them that a
// filter lets through, in the order of running or sorted by a column; what they show is read when
// they are drawn. Selected jobs stay selected wherever they move. Interface thread.
class JobTable : public Flx_Table {
 public:
  enum Column {
    kName,
    kFolder,
    kSolver,
    kStages,
    kMemory,
    kStatus,
    kMessage,
    kSummary,
    kForce,
    kOther,
    // The extra ones, which are shown or not.
    kOrder,
    kCpus,
    kProgress,
    kStarted,
    kElapsed,
    kEnds,
    kWhere,
    kResult,
    kErrors,
    kWarnings,
    kRestart,
    kGroup,
    kColumns
  };

  // What a job is told by its group and the settings.
  struct Surroundings {
    int cpus = 1;          // of a job that says nothing of it
    int hostCpus = 0;      // of a run on several hosts; 0: there are none
    std::string hosts;     // UTF-8
    std::string computer;  // this one
    std::string group;     // UTF-8
    bool runs = false;     // the group
  };

  // The texts outlive the table.
  JobTable(int x, int y, int w, int h, std::shared_ptr<JobList> list, const TextTable& texts,
           RunStateOf stateOf = {});

  const std::shared_ptr<JobList>& List() const { return list_; }

  // kNone when no row is current.
  JobId CurrentJob() const;
  // kNone out of range.
  JobId JobAt(int row) const;

  void SelectJob(JobId job);

  // In the order of the rows that are shown. A row that goes out of sight by a filter is selected
  // no more; a job that moves stays selected.
  std::vector<JobId> SelectedJobs() const;
  // Those of them that have a row. The current job stays current if it is among them.
  void SelectJobs(const std::vector<JobId>& jobs);
  // Those that failed, not those that the user stopped. False, with nothing changed, when no job
  // that is shown did.
  bool SelectFailed();

  // Shows jobs that have all of the words in name, folder or reason and are of one of the classes;
  // without any: of all.
  void SetFilter(const std::string& words, const StatusClasses& classes);
  const std::string& FilterWords() const { return words_; }
  const StatusClasses& FilterClasses() const { return classes_; }
  bool IsFiltered() const { return rows_.IsFiltered(); }
  // The rows stand in this order; that of running does not change.
  void SortBy(Column column, bool descending);
  void ShowRunningOrder();
  // None in the order of running.
  std::optional<Column> SortedBy() const { return sortedBy_; }
  // Keeps the running job in sight: scrolls to it when another one runs or it changes its row.
  void SetFollow(bool follow);

  const StatusCounts& Counts() const { return rows_.Counts(); }
  int ShownCount() const { return RowCount(); }
  int AllCount() const { return static_cast<int>(rows_.All().size()); }

  // Which extra columns are shown and the widths that the user gave, as the settings keep it: words
  // like "folder=300 cpus progress=80".
  std::string ColumnsText() const;
  void SetColumns(const std::string& text);
  // To show and to hide extra columns, and to move the one whose head the mouse is on (-1: none).
  void OpenColumnMenu(int column, int x, int y);

  // Filter, order or counts are other ones.
  std::function<void()> OnView;

  std::function<Surroundings()> SurroundingsNow;
  // What the job took when it ran before; called with the list locked. Null: nobody knows.
  std::function<std::optional<PastRun>(const JobFile& job)> PastRunOf;

  // The list changed; `anew`: and perhaps what jobs of it show.
  void JobsChanged(bool anew = false);
  // What jobs show changed.
  void JobsChanged(const std::set<JobId>& jobs);

 protected:
  int RowCount() const override;
  bool SelectsSeveral() const override { return true; }
  void PrepareRows(int first, int last) override;
  void DrawCell(const Cell& cell) override;
  void DrawEmpty(int x, int y, int w, int h) override;
  bool IsButton(int row, int column) override;
  bool PressesAt(int column, int beforeEnd) const override;
  bool EscapeDeselects() const override { return CurrentRow() >= 0; }
  void EmptyPressed() override;
  bool NameBegins(int row, const std::string& folded) const override;
  std::string CellTip(int row, int column) override;
  std::string CellText(int row, int column) override { return ReadRow(row).cells[column]; }
  int IconWidth(int column) const override;

 private:
  // What a row shows, in UTF-8.
  struct Row {
    std::string cells[kColumns];
    std::string path, tip;  // of the file, of the status
    std::string restart;    // the path
    std::string results;    // what their names begin with; empty: nothing
    StatusShown shown;
    std::string past;  // what it took before; of a job that has not run yet
    std::string dump;  // the name of the one that the job can go on from
    bool multiStage = false;
    bool dyna = false;
    bool force = false;
  };
  static bool CanViewMessage(JobStatus status);
  Row MakeRow(const JobFile& job) const;
  void AddExtraCells(const JobFile& job, const std::optional<RunState>& state, Row& row) const;
  bool IsShown(Column column) const;
  // When a job that has not ended will have, in seconds since 1970.
  std::optional<double> EndOf(const JobFile& job) const;
  std::optional<double> TimeLeftOf(const JobFile& job, std::int64_t now) const;
  bool RunsOnHosts(const JobFile& job) const;
  void EstimateEnds() const;  // of those that wait in a running group
  int CpusOf(const JobFile& job) const;
  std::optional<RunState> StateOf(const JobFile& job) const;
  std::string PastText(const JobFile& job) const;
  Row ReadRow(int row) const;
  JobRows::KeyOf KeyOf(Column column) const;
  // Does what arranges the rows anew, and keeps what is selected. Rows that a filter has taken out
  // of sight are not selected any more; when the job in the current row is gone (`inPlace`), the
  // one that is there now is.
  void Arrange(const std::function<void()>& change, bool inPlace);
  void FollowRunning();
  void SortByHead(Column column);
  static void DrawGoOn(const Cell& cell);
  void DrawCheck(const Cell& cell, const Row& row);

  std::shared_ptr<JobList> list_;
  const TextTable& texts_;
  const RunStateOf stateOf_;
  mutable JobRows rows_;
  std::string words_;
  StatusClasses classes_;
  std::optional<Column> sortedBy_;
  bool descending_ = false;
  bool follow_ = false;
  std::pair<JobId, int> followed_{JobId::kNone, -1};  // and its row
  mutable Surroundings around_;                       // when the rows were prepared
  mutable std::unordered_map<JobId, double> ends_;
  mutable std::chrono::steady_clock::time_point endsUntil_;
  int firstRow_ = 0;  // the row of shown_[0]
  std::vector<Row> shown_;
};

#endif
