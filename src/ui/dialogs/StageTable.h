// The stages of a job as a table.
#ifndef KR_UI_DIALOGS_STAGETABLE_H
#define KR_UI_DIALOGS_STAGETABLE_H

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/JobGroup.h"
#include "ui/fltk/Flx_Table.h"
#include "ui/text/TextTable.h"

// Its rows are the stages that it was told of last; what they show is read when they are drawn.
// Stages before the first one to run are drawn pale. Interface thread.
class StageTable : public Flx_Table {
 public:
  enum Column { kFile, kType, kSolver, kMemory, kStatus, kMessage, kSummary, kColumns };

  // Ready to be drawn.
  struct Texts {
    std::string heads[kColumns];
    std::string view;
    std::string messageTip, summaryTip;
    std::string skipped;  // tip of a stage that does not run
    std::string reason;   // "%s" is why a stage was aborted
  };

  // `words` translates what the core says and
  // outlives the table.
  StageTable(int x, int y, int w, int h, std::shared_ptr<JobGroup> group, JobId job, Texts texts,
             const TextTable& words);

  // Other stages, or what they show changed. The current one stays current wherever it moved.
  void SetStages(std::vector<JobId> stages);
  // kNone out of range.
  JobId StageAt(int row) const;
  JobId CurrentStage() const { return StageAt(CurrentRow()); }

 protected:
  int RowCount() const override;
  void PrepareRows(int first, int last) override;
  void DrawCell(const Cell& cell) override;
  void DrawEmpty(int, int, int, int) override {}
  bool IsButton(int row, int column) override;
  std::string CellTip(int row, int column) override;
  bool EscapeDeselects() const override { return false; }
  int NeededWidth(int column) override;

 private:
  struct Row {
    std::string cells[kColumns];
    std::string path, reason;
    JobStatus status = JobStatus::kQueued;
    bool skipped = false;
  };
  Row MakeRow(const JobFile& stage) const;
  std::vector<Row> ReadRows(int first, int last) const;
  Row ReadRow(int row) const { return ReadRows(row, row + 1).front(); }

  const std::shared_ptr<JobGroup> group_;
  const JobId job_;
  const Texts texts_;
  const TextTable& words_;
  std::vector<JobId> stages_;  // by row
  int firstRow_ = 0;           // the row of shown_[0]
  std::vector<Row> shown_;
};

#endif
