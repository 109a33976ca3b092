#include "ui/window/JobRows.h"

#include <algorithm>
#include <iterator>
#include <tuple>
#include <utility>

#include "ui/text/Encoding.h"
#include "ui/text/FileText.h"
#include "ui/text/ShownValues.h"

JobRows::JobRows(std::shared_ptr<JobList> list, const TextTable& texts)
    : list_(std::move(list)), texts_(texts) {}

void JobRows::Fill(Entry& entry, const JobFile& job) const {
  entry.id = job.id;
  entry.status = ClassOf(job.status, job.StoppedAt());
  entry.failed = job.status == JobStatus::kAborted && job.HowFailed().kind != FailureKind::kStopped;
  entry.name = Folded(ShownJob(job.jobFile, job.restartFile));
  entry.folder = Folded(ToUi(job.Folder()));
  entry.searched = entry.name + '\n' + entry.folder;
  const bool tells = job.status == JobStatus::kAborted || job.status == JobStatus::kWaiting;
  const std::string why = tells ? FailureWords(job, texts_) : std::string();
  if (!why.empty()) entry.searched += '\n' + Folded(why);
  if (keyOf_) entry.key = keyOf_(job, entry);
}

void JobRows::ReadAll(bool anew) {
  ++readings_;
  all_.clear();
  counts_ = {};
  list_->ReadJobs([&](const JobFile& job) {
    const auto [found, isNew] = entries_.try_emplace(job.id);
    Entry& entry = found->second;
    entry.place = all_.size();
    entry.seen = readings_;
    if (isNew || anew) Fill(entry, job);
    Count(entry, 1);
    all_.push_back(&entry);
  });
  std::erase_if(entries_, [this](const auto& item) { return item.second.seen != readings_; });
  Arrange();
}

// Those that stay where they are are in order; the others are merged in.
bool JobRows::Read(const std::set<JobId>& jobs) {
  std::vector<Entry*> moved;
  for (const JobId job : jobs) {
    Entry* const entry = Find(job);
    if (entry == nullptr) continue;
    const SortKey before = entry->key;
    Count(*entry, -1);
    list_->ReadJob(job, [&](const JobFile& read) { Fill(*entry, read); });
    Count(*entry, 1);
    if (entry->key == before && Passes(*entry) == (entry->row >= 0)) continue;
    entry->moves = true;
    moved.push_back(entry);
  }
  if (moved.empty()) return false;
  std::erase_if(shown_, [](const Entry* entry) { return entry->moves; });
  for (Entry* entry : moved) entry->moves = false;
  std::erase_if(moved, [this](const Entry* entry) {
    if (Passes(*entry)) return false;
    Find(entry->id)->row = -1;
    return true;
  });
  const auto before = [this](const Entry* one, const Entry* other) { return Before(one, other); };
  std::sort(moved.begin(), moved.end(), before);
  std::vector<Entry*> merged;
  merged.reserve(shown_.size() + moved.size());
  std::merge(shown_.begin(), shown_.end(), moved.begin(), moved.end(), std::back_inserter(merged),
             before);
  shown_ = std::move(merged);
  Number();
  return true;
}

void JobRows::SetFilter(const std::string& words, const StatusClasses& classes) {
  filter_ = WordFilter(words);
  classes_ = classes;
  Arrange();
}

void JobRows::Sort(KeyOf keyOf, bool descending) {
  keyOf_ = std::move(keyOf);
  descending_ = descending;
  if (keyOf_) {
    list_->ReadJobs([&](const JobFile& job) {
      if (Entry* const entry = Find(job.id)) entry->key = keyOf_(job, *entry);
    });
  }
  Arrange();
}

JobRows::Entry* JobRows::Find(JobId job) {
  const auto found = entries_.find(job);
  return found == entries_.end() ? nullptr : &found->second;
}

bool JobRows::Passes(const Entry& entry) const {
  return (classes_.empty() || classes_.count(entry.status)) && filter_.Matches(entry.searched);
}

bool JobRows::Before(const Entry* one, const Entry* other) const {
  if (keyOf_ && one->key.isUnknown != other->key.isUnknown) return other->key.isUnknown;
  if (keyOf_ && !one->key.isUnknown) {
    const SortKey& a = descending_ ? other->key : one->key;
    const SortKey& b = descending_ ? one->key : other->key;
    if (a.number != b.number) return a.number < b.number;
    if (const int order = a.text.compare(b.text); order != 0) return order < 0;
  }
  return one->place < other->place;
}

void JobRows::Arrange() {
  shown_.clear();
  for (Entry* entry : all_) {
    entry->row = -1;
    if (Passes(*entry)) shown_.push_back(entry);
  }
  if (keyOf_) {
    std::sort(shown_.begin(), shown_.end(),
              [this](const Entry* one, const Entry* other) { return Before(one, other); });
  }
  Number();
}

void JobRows::Number() {
  for (std::size_t row = 0; row < shown_.size(); ++row) shown_[row]->row = static_cast<int>(row);
}
