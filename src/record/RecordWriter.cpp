#include "record/RecordWriter.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "record/History.h"
#include "util/files/FileDirWrapper.h"
#include "util/text/DateTimeWrapper.h"

namespace {

constexpr std::chrono::milliseconds kBetweenSyncs{300};
constexpr std::chrono::seconds kBetweenTries{3};
constexpr long kLockPatienceMs = 500;              // for a copy that was killed a moment ago
constexpr std::uint64_t kSpareBytes = 512 * 1024;  // that a journal may have beyond its snapshot
constexpr std::size_t kSpareHistory = 5000;        // records

}  // namespace

RecordWriter::RecordWriter(RecordFiles files, MessageSink report, MessageSink note)
    : files_(std::move(files)),
      report_(std::move(report)),
      note_(std::move(note)),
      queue_(files_.queue, {kQueueKind, files_.machine, files_.machineId},
             MessageId::kRecordNotWritten, MessageId::kRecordWritable),
      history_(files_.history, {kHistoryKind, files_.machine, files_.machineId},
               MessageId::kHistoryNotWritten, MessageId::kHistoryWritable) {}

RecordWriter::~RecordWriter() {
  {
    const MutexLock lock(mutex_);
    end_ = true;
    holds_ = 0;
  }
  changed_.notify_all();
  if (worker_.joinable()) worker_.join();
}

void RecordWriter::TellFound(Target& target, Journal::Found found) {
  const Journal& journal = target.journal;
  if (found == Journal::Found::kAside) {
    report_(Message(MessageId::kRecordAside, journal.Path(), journal.Aside()));
  } else if (found == Journal::Found::kInTheWay) {
    report_(Message(MessageId::kRecordUnreadable, journal.Path()));
    target.told = true;
  }
}

QueueImage RecordWriter::Begin(bool keepQueue) {
  keepQueue_ = keepQueue;
  if (lock_.Take(files_.lock, kLockPatienceMs) == FileLock::Result::kBusy) {
    {
      const MutexLock lock(mutex_);
      end_ = true;  // nobody would take what is put
    }
    report_(Message(MessageId::kRecordBusy, files_.queue));
    return {};
  }
  TakeFilesOfOldName(files_, note_);
  QueueImage before;
  const Journal::Found found =
      queue_.journal.Read([&](std::string_view record) { return ApplyRecord(record, before); });
  TellFound(queue_, found);
  std::vector<std::string> runs;
  const Journal::Found history = history_.journal.Read([&](std::string_view record) {
    runs.emplace_back(record);
    return true;
  });
  TellFound(history_, history);
  if (history != Journal::Found::kRecords) unwrittenHistory_ = runs;
  unlearned_ = std::move(runs);
  if (!keepQueue) {
    before.left.clear();
    if (!before.now.resume) before = {};
  }
  image_ = before;
  image_.Apply(change::SessionBegins());
  image_.now.last = DateTimeWrapper::CurrentTime();
  worker_ = std::thread([this] { Work(); });
  return before;
}

void RecordWriter::Put(QueueChange change) {
  std::vector<QueueChange> changes;
  changes.push_back(std::move(change));
  Put(std::move(changes));
}

void RecordWriter::Put(std::vector<QueueChange> changes) {
  {
    const MutexLock lock(mutex_);
    if (end_) return;
    std::move(changes.begin(), changes.end(), std::back_inserter(changes_));
    ++put_;
  }
  changed_.notify_all();
}

void RecordWriter::PutRun(const RunRecord& run) {
  past_.Add(run);
  {
    const MutexLock lock(mutex_);
    if (end_) return;
    runs_.push_back(run);
    ++put_;
  }
  changed_.notify_all();
}

void RecordWriter::Hold() {
  const MutexLock lock(mutex_);
  ++holds_;
}

void RecordWriter::Release() {
  {
    const MutexLock lock(mutex_);
    if (holds_ > 0) --holds_;
  }
  changed_.notify_all();
}

void RecordWriter::KeepQueue() {
  keepQueue_ = true;
}

bool RecordWriter::Flush(std::chrono::milliseconds limit) {
  return WaitFor(&RecordWriter::onDisk_, limit);
}

bool RecordWriter::AwaitWritten(std::chrono::milliseconds limit) {
  return WaitFor(&RecordWriter::written_, limit);
}

bool RecordWriter::WaitFor(std::uint64_t RecordWriter::*done, std::chrono::milliseconds limit) {
  const auto end = Clock::now() + limit;
  MutexLock lock(mutex_);
  const std::uint64_t wanted = put_;
  const std::uint64_t mine = ++asked_;
  syncNow_ = syncNow_ || done == &RecordWriter::onDisk_;
  changed_.notify_all();
  while (this->*done < wanted && !(cannotWrite_ && answered_ >= mine) &&
         lock.WaitUntil(changed_, end)) {
  }
  return this->*done >= wanted;
}

std::uint64_t RecordWriter::Mark() const {
  const MutexLock lock(mutex_);
  return put_;
}

bool RecordWriter::IsSafe(std::uint64_t mark) const {
  const MutexLock lock(mutex_);
  return queueOnDisk_ >= mark || !keepQueue_ || end_;
}

std::uint64_t RecordWriter::QueueBytes() const {
  const MutexLock lock(mutex_);
  return queueBytes_;
}

bool RecordWriter::HasNothingToWrite() const {
  return !end_ && answered_ == asked_ && (holds_ > 0 || (changes_.empty() && runs_.empty()));
}

// What is written is not on the disk yet, or could not be written.
bool RecordWriter::IsOwed() const {
  return queue_.dirty || history_.dirty || IsBroken();
}

// The first round writes the session's beginning, whatever was put, once nothing is held.
void RecordWriter::Work() {
  std::uint64_t taken = 0;
  bool keptQueue = keepQueue_;
  for (bool begun = false;; begun = true) {
    std::vector<QueueChange> changes;
    std::vector<RunRecord> runs;
    bool end = false;
    bool syncNow = false;
    bool tryNow = false;
    std::uint64_t asked = 0;
    {
      MutexLock lock(mutex_);
      while (begun ? unlearned_.empty() && HasNothingToWrite() : holds_ > 0) {
        if (!begun || !IsOwed()) {
          lock.Wait(changed_);
        } else if (!lock.WaitUntil(changed_, Clock::now() + kBetweenSyncs)) {
          break;
        }
      }
      end = end_;
      syncNow = std::exchange(syncNow_, false);
      asked = asked_;
      tryNow = asked != answered_;
      if (holds_ == 0) {
        changes.swap(changes_);
        runs.swap(runs_);
        taken = put_;
      }
    }
    const bool tryAgain = end || tryNow || Clock::now() - tried_ >= kBetweenTries;
    const bool keepsQueue = keepQueue_;
    if (keepsQueue && !keptQueue) queue_.broken = true;
    keptQueue = keepsQueue;
    Apply(changes);
    if (keepsQueue) {
      WriteQueue(changes, tryAgain);
    } else if (queue_.broken && tryAgain) {
      DropQueue();
    }
    WriteHistory(runs, tryAgain);
    LearnPast();
    if (end || syncNow || Clock::now() - synced_ >= kBetweenSyncs) {
      Sync(queue_);
      Sync(history_);
      synced_ = Clock::now();
    }
    {
      const MutexLock lock(mutex_);
      answered_ = asked;
      cannotWrite_ = IsBroken();
      if (!cannotWrite_) written_ = taken;
      if (!IsOwed()) onDisk_ = taken;
      if (!queue_.dirty && !queue_.broken) queueOnDisk_ = taken;
      queueBytes_ = queue_.journal.Size();
    }
    changed_.notify_all();
    if (end) return;
  }
}

void RecordWriter::Mend(Target& target, const std::vector<std::string>& records) {
  if (target.journal.Rewrite(records)) {
    target.broken = target.dirty = false;
    target.records = records.size();
    if (target.told) note_(Message(target.works, target.journal.Path()));
    target.told = false;
    return;
  }
  target.broken = true;
  tried_ = Clock::now();
  if (target.told) return;
  report_(Message(target.fails, target.journal.Path()));
  target.told = true;
}

void RecordWriter::Apply(const std::vector<QueueChange>& changes) {
  for (const QueueChange& change : changes) image_.Apply(change);
  if (!changes.empty()) image_.now.last = DateTimeWrapper::CurrentTime();
}

void RecordWriter::WriteQueue(const std::vector<QueueChange>& changes, bool tryAgain) {
  const bool wasBroken = queue_.broken;
  if (!changes.empty() && !wasBroken) {
    queue_.broken = !queue_.journal.Append(RecordOf(changes, image_.now.last));
    queue_.dirty = true;
  }
  const bool isLong = queue_.journal.Size() > 2 * queue_.journal.SnapshotSize() + kSpareBytes;
  const bool mend = queue_.broken ? !wasBroken || tryAgain : isLong;
  if (mend) Mend(queue_, SnapshotOf(image_));
}

// Of a session whose queue is not kept.
void RecordWriter::DropQueue() {
  if (FileDirWrapper::FileExists(files_.queue)) {
    Mend(queue_, {});
  } else {
    queue_.broken = false;
  }
}

// A few at a time, so that what is put does not wait.
void RecordWriter::LearnPast() {
  constexpr std::size_t kAtOnce = 200;
  for (std::size_t i = 0; i < kAtOnce && !unlearned_.empty(); ++i) {
    if (const auto run = RunOfHistoryRecord(unlearned_.back())) past_.Add(*run);
    unlearned_.pop_back();
  }
}

std::vector<std::string> RecordWriter::HistorySnapshot() {
  std::vector<std::string> records;
  history_.journal.Read([&](std::string_view record) {
    records.emplace_back(record);
    return true;
  });
  records.insert(records.end(), unwrittenHistory_.begin(), unwrittenHistory_.end());
  DropOldHistory(records);
  return records;
}

void RecordWriter::WriteHistory(const std::vector<RunRecord>& runs, bool tryAgain) {
  const bool wasBroken = history_.broken;
  for (const RunRecord& run : runs) {
    std::string record = HistoryRecordOf(run);
    if (!history_.broken && history_.journal.Append(record)) {
      history_.dirty = true;
      ++history_.records;
      continue;
    }
    history_.broken = true;
    unwrittenHistory_.push_back(std::move(record));
  }
  if (!runs.empty()) ++historyVersion_;
  if (unwrittenHistory_.size() > kMostHistory) DropOldHistory(unwrittenHistory_);
  const bool isLong = history_.records > 2 * kMostHistory + kSpareHistory;
  const bool mend = history_.broken ? !wasBroken || tryAgain : isLong;
  if (!mend) return;
  Mend(history_, HistorySnapshot());
  if (history_.broken) return;
  unwrittenHistory_.clear();
  ++historyVersion_;
}

void RecordWriter::Sync(Target& target) {
  if (!target.dirty || target.broken) return;
  if (target.journal.Sync()) {
    target.dirty = false;
  } else {
    target.broken = true;
  }
}
