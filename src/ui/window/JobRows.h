// Which jobs of a group are shown, and in which order.
#ifndef KR_UI_WINDOW_JOBROWS_H
#define KR_UI_WINDOW_JOBROWS_H

#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "core/JobList.h"
#include "ui/dialogs/StatusCell.h"
#include "ui/text/TextTable.h"
#include "ui/text/WordFilter.h"

using StatusClasses = std::set<StatusClass>;
using StatusCounts = std::array<int, kStatusClasses>;

// Keeps of each job what it is searched and sorted by, so that a change of one costs no look at the
// others. Interface thread.
class JobRows {
 public:
  struct SortKey {
    bool isUnknown = false;  // these stand last in either direction
    double number = 0;
    std::string text = {};  // among equal numbers
    bool operator==(const SortKey&) const = default;
  };
  struct Entry {
    JobId id = JobId::kNone;
    std::size_t place = 0;  // in the order of running
    int row = -1;           // -1: not shown
    StatusClass status = StatusClass::kQueued;
    bool failed = false;       // Aborted, and not since the user stopped it
    std::string name, folder;  // folded
    std::string searched;      // name, folder and reason, folded
    SortKey key;
    bool selected = false;  // the table's, while the rows are arranged
    bool moves = false;
    unsigned seen = 0;
  };
  // Called while the list is locked.
  using KeyOf = std::function<SortKey(const JobFile& job, const Entry& entry)>;

  // The texts outlive the object.
  JobRows(std::shared_ptr<JobList> list, const TextTable& texts);

  // The list has other jobs or another order. `anew`: what they show may have changed as well.
  void ReadAll(bool anew = false);
  // What these show has changed. False when the rows stay the same.
  bool Read(const std::set<JobId>& jobs);

  // All words, and one of the classes; none given: any.
  void SetFilter(const std::string& words, const StatusClasses& classes);
  // Without a key: in the order of running.
  void Sort(KeyOf keyOf, bool descending);

  const std::vector<Entry*>& Shown() const { return shown_; }
  const std::vector<Entry*>& All() const { return all_; }  // in the order of running
  Entry* Find(JobId job);                                  // null when there is none
  const StatusCounts& Counts() const { return counts_; }
  bool IsFiltered() const { return !filter_.IsEmpty() || !classes_.empty(); }

 private:
  void Fill(Entry& entry, const JobFile& job) const;
  bool Passes(const Entry& entry) const;
  bool Before(const Entry* one, const Entry* other) const;
  void Count(const Entry& entry, int by) { counts_[static_cast<std::size_t>(entry.status)] += by; }
  void Arrange();
  void Number();

  const std::shared_ptr<JobList> list_;
  const TextTable& texts_;
  std::unordered_map<JobId, Entry> entries_;
  std::vector<Entry*> all_;
  std::vector<Entry*> shown_;
  StatusCounts counts_{};
  unsigned readings_ = 0;
  WordFilter filter_;
  StatusClasses classes_;
  KeyOf keyOf_;
  bool descending_ = false;
};

#endif
