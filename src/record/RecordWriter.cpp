#include "record/RecordWriter.h"

#include <algorithm>
#include <iterator>
#include <system_error>
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
    if (!before.now.resume) before = {{}, {}, std::move(before.leaving), {}};
  }
  image_ = before;
  queue_.broken = !keepQueue || found != Journal::Found::kRecords || !queue_.journal.Continue();
  history_.broken = history != Journal::Found::kRecords || !history_.journal.Continue();
  history_.records = unlearned_.size();
  {
    const MutexLock lock(mutex_);
    changes_.insert(changes_.begin(), change::SessionBegins());
  }
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
  if (done == &RecordWriter::onDisk_) syncWanted_ = wanted;
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
  return !end_ && answered_ == asked_ && (holds_ > 0 || (changes_.empty() && runs_.empty())) &&
         !queue_.synced && !history_.synced;
}

// What is written is not on the disk yet, or could not be written.
bool RecordWriter::IsOwed() const {
  return queue_.dirty || history_.dirty || queue_.sync.valid() || history_.sync.valid() ||
         IsBroken();
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
      syncNow = syncWanted_ > onDisk_;
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
    TakeSync(queue_);
    TakeSync(history_);
    Apply(changes);
    if (keepsQueue) {
      WriteQueue(changes, tryAgain);
    } else if (queue_.broken && tryAgain) {
      DropQueue();
    }
    WriteHistory(runs, tryAgain);
    LearnPast();
    if (end) {
      SyncAtEnd(queue_);
      SyncAtEnd(history_);
    } else if (syncNow || Clock::now() - synced_ >= kBetweenSyncs) {
      BeginSync(queue_, taken);
      BeginSync(history_, taken);
      synced_ = Clock::now();
    }
    for (Target* const target : {&queue_, &history_}) {
      if (!target->broken && !target->dirty && !target->sync.valid()) target->onDisk = taken;
    }
    {
      const MutexLock lock(mutex_);
      answered_ = asked;
      cannotWrite_ = IsBroken();
      if (!cannotWrite_) written_ = taken;
      onDisk_ = std::min(queue_.onDisk, history_.onDisk);
      queueOnDisk_ = queue_.onDisk;
      queueBytes_ = queue_.journal.Size();
    }
    changed_.notify_all();
    if (end) return;
  }
}

void RecordWriter::Mend(Target& target, const std::vector<std::string>& records) {
  if (target.sync.valid()) target.sync.wait();
  if (target.journal.Rewrite(records)) {
    target.broken = false;
    target.dirty = target.moved = !target.journal.IsOnDisk();
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
  if (queue_.broken) {
    if (!wasBroken || tryAgain) Mend(queue_, SnapshotOf(image_));
  } else if (IsTooLong(queue_, isLong)) {
    Prepare(queue_, SnapshotOf(image_));
  }
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
  if (!history_.broken) {
    if (IsTooLong(history_, isLong)) Prepare(history_, HistorySnapshot());
    return;
  }
  if (wasBroken && !tryAgain) return;
  Mend(history_, HistorySnapshot());
  if (history_.broken) return;
  unwrittenHistory_.clear();
  ++historyVersion_;
}

bool RecordWriter::IsTooLong(const Target& target, bool isLong) const {
  return isLong && !target.sync.valid() && Clock::now() - tried_ >= kBetweenTries;
}

// What cannot be shortened now goes on as it is.
void RecordWriter::Prepare(Target& target, const std::vector<std::string>& records) {
  if (!target.journal.Prepare(records)) {
    tried_ = Clock::now();
    return;
  }
  target.records = records.size();
  target.dirty = true;
}

// Where no thread can be had, or no descriptor, it is done here.
void RecordWriter::BeginSync(Target& target, std::uint64_t taken) {
  if (!target.dirty || target.broken || target.sync.valid()) return;
  target.dirty = false;
  target.syncs = taken;
  target.syncsNew = target.journal.IsPrepared();
  const auto sync = [this, &target, moved = std::exchange(target.moved, false)](AppendFile& file) {
    const bool isGood = file.Sync();
    if (isGood && moved) FileDirWrapper::SyncFolderOf(target.journal.Path());
    {
      const MutexLock lock(mutex_);
      target.synced = true;
    }
    changed_.notify_all();
    return isGood;
  };
  const auto file = std::make_shared<AppendFile>();
  if (file->Share(target.journal.Newest())) {
    try {
      target.sync = std::async(std::launch::async, [sync, file] { return sync(*file); });
      return;
    } catch (const std::system_error&) {
    }
  }
  target.sync =
      std::async(std::launch::deferred, [sync, &target] { return sync(target.journal.Newest()); });
  target.synced = true;
}

void RecordWriter::TakeSync(Target& target) {
  if (!target.synced) return;
  const bool isGood = target.sync.get();
  target.synced = false;
  if (target.syncsNew) {
    if (isGood && target.journal.TakePlace()) {
      target.moved = true;
      if (&target == &history_) ++historyVersion_;
    } else {
      target.journal.Drop();
      tried_ = Clock::now();
    }
    target.dirty = true;
  } else if (isGood) {
    target.onDisk = std::max(target.onDisk, target.syncs);
  } else {
    target.broken = true;
  }
}

void RecordWriter::SyncAtEnd(Target& target) {
  if (target.sync.valid()) target.sync.wait();
  TakeSync(target);
  if (!target.dirty || target.broken) return;
  target.journal.Drop();
  target.dirty = false;
  target.broken = !target.journal.Sync();
  if (target.moved) FileDirWrapper::SyncFolderOf(target.journal.Path());
}
