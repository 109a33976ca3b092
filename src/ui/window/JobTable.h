// The jobs of one group as a table.
#ifndef KR_UI_WINDOW_JOBTABLE_H
#define KR_UI_WINDOW_JOBTABLE_H

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/JobList.h"
#include "record/PastRuns.h"
#include "ui/dialogs/RunWords.h"
#include "ui/fltk/Flx_Table.h"
#include "ui/text/TextTable.h"

// Its rows are the jobs that the list had when the table looked last; what they show is read when
// they are drawn. The current job stays current wherever it moves. Interface thread.
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
    kColumns
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

  // What the job took when it ran before; called with the list locked. Null: nobody knows.
  std::function<std::optional<PastRun>(const JobFile& job)> PastRunOf;

  // The list changed.
  void JobsChanged();
  // What a job shows changed.
  void JobChanged(JobId job);

 protected:
  int RowCount() const override;
  bool SelectsSeveral() const override { return true; }
  void PrepareRows(int first, int last) override;
  void DrawCell(const Cell& cell) override;
  void DrawEmpty(int x, int y, int w, int h) override;
  bool IsButton(int row, int column) override;
  bool PressesAt(int column, int beforeEnd) const override;
  std::string CellTip(int row, int column) override;
  std::string CellText(int row, int column) override { return ReadRow(row).cells[column]; }
  int IconWidth(int column) const override;

 private:
  // What a row shows, in UTF-8.
  struct Row {
    std::string cells[kColumns];
    std::string path, tip;  // of the file, of the status
    StatusShown shown;
    std::string past;  // what it took before; of a job that has not run yet
    std::string dump;  // the name of the one that the job can go on from
    bool multiStage = false;
    bool dyna = false;
    bool force = false;
  };
  Row MakeRow(const JobFile& job) const;
  std::string PastText(const JobFile& job) const;
  Row ReadRow(int row) const;
  int RowOf(JobId job) const;  // -1 when it has none
  static void DrawGoOn(const Cell& cell);
  void DrawCheck(const Cell& cell, const Row& row);

  std::shared_ptr<JobList> list_;
  const TextTable& texts_;
  const RunStateOf stateOf_;
  std::vector<JobId> jobs_;  // by row
  int firstRow_ = 0;         // the row of shown_[0]
  std::vector<Row> shown_;
};

#endif
