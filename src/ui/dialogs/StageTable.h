// The stages of a job as a table.
#ifndef KR_UI_DIALOGS_STAGETABLE_H
#define KR_UI_DIALOGS_STAGETABLE_H

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/JobGroup.h"
#include "ui/fltk/Flx_Table.h"
#include "ui/text/Language.h"

// Reads the stages when it draws them. Stages before the first one to run are drawn pale. Interface
// thread.
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

  // `solverName` gives the name of a solver type. `words` translates what the core says and
  // outlives the table.
  StageTable(int x, int y, int w, int h, std::shared_ptr<JobGroup> group,
             std::shared_ptr<JobFile> job, Texts texts,
             std::function<std::string(int type)> solverName, const TextTable& words);

  // The job's place in its group now, -1 when it is gone.
  int JobIndex() const;
  // Calls `read` with the job while it cannot change.
  void Read(const std::function<void(const JobFile& job)>& read) const;

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
    int status = 0;
    bool skipped = false;
  };
  Row MakeRow(const JobFile& job, int index) const;
  Row ReadRow(int index) const;

  const std::shared_ptr<JobGroup> group_;
  const std::shared_ptr<JobFile> job_;
  const Texts texts_;
  const std::function<std::string(int)> solverName_;
  const TextTable& words_;
  int firstRow_ = 0;  // the row of shown_[0]
  std::vector<Row> shown_;
};

#endif
