// The stages of a job as a table.
#ifndef KR_UI_DIALOGS_STAGETABLE_H
#define KR_UI_DIALOGS_STAGETABLE_H

#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "core/JobList.h"
#include "ui/dialogs/Flx_Base_Dialog.h"
#include "ui/dialogs/RunWords.h"
#include "ui/fltk/Flx_Table.h"
#include "ui/text/TextTable.h"

// Its rows are the stages that it was told of last; what they show is read when they are drawn.
// Stages before the first one to run are drawn pale. Interface thread.
class StageTable : public Flx_Table {
 public:
  enum Column { kFile, kType, kSolver, kMemory, kStatus, kMessage, kSummary, kColumns };

  // What it says; the dialog that holds it sets these texts.
  static const std::span<const DialogText> kTexts;
  // Gives one of them by its key, in UTF-8.
  using Texts = std::function<std::string(const std::string& key)>;

  // `words` has the texts of the main window and outlives the table.
  StageTable(int x, int y, int w, int h, std::shared_ptr<JobList> list, JobId job, Texts texts,
             const TextTable& words, RunStateOf stateOf = {});

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
  std::string CellText(int row, int column) override { return ReadRow(row).cells[column]; }
  int IconWidth(int column) const override;

 private:
  struct Row {
    std::string cells[kColumns];
    std::string path, tip;  // of the file, of the status
    StatusShown shown;
    bool skipped = false;
  };
  Row MakeRow(const JobFile& stage, const std::optional<RunState>& state) const;
  std::vector<Row> ReadRows(int first, int last) const;
  Row ReadRow(int row) const { return ReadRows(row, row + 1).front(); }

  const std::shared_ptr<JobList> list_;
  const JobId job_;
  const Texts texts_;
  const TextTable& words_;
  const RunStateOf stateOf_;
  std::vector<JobId> stages_;  // by row
  int firstRow_ = 0;           // the row of shown_[0]
  std::vector<Row> shown_;
};

#endif
