// The runs of the past as a table.
#ifndef KR_UI_DIALOGS_HISTORYTABLE_H
#define KR_UI_DIALOGS_HISTORYTABLE_H

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "ui/dialogs/HistoryRows.h"
#include "ui/fltk/Flx_Table.h"
#include "ui/text/TextTable.h"

// Sorts itself when a head is pressed. The current run stays current wherever it moves; when it
// goes the first one is. Interface thread.
class HistoryTable : public Flx_Table {
 public:
  using Rows = std::shared_ptr<const std::vector<HistoryRow>>;

  // The texts outlive the table.
  HistoryTable(int x, int y, int w, int h, const TextTable& texts);

  void SetRows(Rows rows);
  void SetFilter(const std::string& words, const std::set<HistoryVerdict>& verdicts);
  // What stands in the table as long as it has nothing to show.
  void SetNothing(const std::string& words);

  // Null when none is current.
  const HistoryRow* CurrentRun() const;
  // All rows, and the places of those that are shown, in their order.
  const Rows& AllRows() const { return rows_; }
  const std::vector<std::size_t>& Places() const { return places_; }

 protected:
  int RowCount() const override { return static_cast<int>(places_.size()); }
  void PrepareRows(int, int) override {}
  void DrawCell(const Cell& cell) override;
  void DrawEmpty(int x, int y, int w, int h) override;
  bool IsButton(int, int) override { return false; }
  std::string CellTip(int row, int column) override;
  bool EscapeDeselects() const override { return false; }
  std::string CellText(int row, int column) override;
  int IconWidth(int column) const override;

 private:
  const HistoryRow& RowAt(int row) const;
  void SortBy(HistoryColumn column);
  void Arrange(const std::function<void()>& change);

  const TextTable& texts_;
  Rows rows_ = std::make_shared<const std::vector<HistoryRow>>();
  HistoryView view_;
  std::vector<std::size_t> places_;
  std::string nothing_;
};

#endif
