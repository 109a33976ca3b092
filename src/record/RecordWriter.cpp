#include "record/RecordWriter.h"

#include <algorithm>
#include <iterator>
#include <system_error>
#include <utility>

#include "record/History.h"
#include "util/files/FileDirWrapper.h"
#include "util/process/OwnThread.h"
#include "util/text/DateTimeWrapper.h"

namespace {

constexpr std::chrono::milliseconds kBetweenSyncs{300};
constexpr std::chrono::seconds kBetweenTries{3};
constexpr long kLockPatienceMs = 500;              // for a copy that was killed a moment ago
constexpr std::uint64_t kSpareBytes = 512 * 1024;  // that a journal may have beyond its snapshot
constexpr std::size_t kSpareHistory = 5000;        // records

template <typename List, typename Value>
void MoveBehind(List& list, std::vector<Value>& more) {
  list.insert(list.end(), std::make_move_iterator(more.begin()),
              std::make_move_iterator(more.end()));
  more.clear();
}

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
    MoveBehind(changes_, changes);
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

// What a round could not do, the next one does. The last one is tried twice.
void RecordWriter::Work() {
  Round round{.keptQueue = keepQueue_, .at = &queue_};
  for (int lastRounds = 0; !round.isLast && lastRounds < 2; lastRounds += Ends()) {
    Guard([&] { DoRound(round); }, [&](const std::exception&) { FailRound(round); });
  }
}

bool RecordWriter::Ends() const {
  const MutexLock lock(mutex_);
  return end_;
}

// The first round writes the session's beginning, whatever was put, once nothing is held.
void RecordWriter::DoRound(Round& round) {
  bool end = false;
  bool syncNow = false;
  bool tryNow = false;
  {
    MutexLock lock(mutex_);
    while (round.hasBegun ? unlearned_.empty() && HasNothingToWrite() : holds_ > 0) {
      if (!round.hasBegun || !IsOwed()) {
        lock.Wait(changed_);
      } else if (!lock.WaitUntil(changed_, Clock::now() + kBetweenSyncs)) {
        break;
      }
    }
    round.hasBegun = true;
    end = end_;
    syncNow = syncWanted_ > onDisk_;
    tryNow = asked_ != answered_;
    round.asked = asked_;
    if (holds_ == 0) {
      MoveBehind(round.changes, changes_);
      MoveBehind(round.runs, runs_);
      round.taken = put_;
    }
  }
  const bool tryAgain = end || tryNow || Clock::now() - tried_ >= kBetweenTries;
  const bool keepsQueue = keepQueue_;
  round.at = &queue_;
  if (keepsQueue && !round.keptQueue) queue_.broken = true;
  round.keptQueue = keepsQueue;
  TakeSync(queue_);
  Apply(round);
  if (keepsQueue) {
    WriteQueue(round.changes, tryAgain);
  } else if (queue_.broken && tryAgain) {
    DropQueue();
  }
  round.changes.clear();
  round.applied = 0;
  round.at = &history_;
  TakeSync(history_);
  WriteHistory(round.runs, tryAgain);
  LearnPast();
  const bool syncs = syncNow || Clock::now() - synced_ >= kBetweenSyncs;
  if (syncs) synced_ = Clock::now();
  for (Target* const target : {&queue_, &history_}) {
    round.at = target;
    if (end) {
      SyncAtEnd(*target);
    } else if (syncs) {
      BeginSync(*target, round.taken);
    }
    if (!target->broken && !target->dirty && !target->sync.valid()) target->onDisk = round.taken;
  }
  {
    const MutexLock lock(mutex_);
    answered_ = round.asked;
    cannotWrite_ = IsBroken();
    if (!cannotWrite_) written_ = round.taken;
    onDisk_ = std::min(queue_.onDisk, history_.onDisk);
    queueOnDisk_ = queue_.onDisk;
    queueBytes_ = queue_.journal.Size();
  }
  changed_.notify_all();
  round.isLast = end;
}

// Like a file that cannot be written: it is to be written anew, and whoever waits is told.
void RecordWriter::FailRound(Round& round) {
  {
    const MutexLock lock(mutex_);
    answered_ = round.asked;
    cannotWrite_ = true;
  }
  changed_.notify_all();
  round.at->broken = true;
  tried_ = Clock::now();
  Tell(*round.at);
}

void RecordWriter::Mend(Target& target, const std::vector<std::string>& records) {
  if (target.sync.valid()) target.sync.wait();
  if (target.journal.Rewrite(records)) {
    target.broken = false;
    target.dirty = target.moved = !target.journal.IsOnDisk();
    target.records = records.size();
    const bool wasTold = std::exchange(target.told, false);
    if (wasTold) note_(Message(target.works, target.journal.Path()));
    return;
  }
  target.broken = true;
  tried_ = Clock::now();
  Tell(target);
}

void RecordWriter::Tell(Target& target) {
  if (std::exchange(target.told, true)) return;
  report_(Message(target.fails, target.journal.Path()));
}

// A change that fails half way is applied once more.
void RecordWriter::Apply(Round& round) {
  for (; round.applied < round.changes.size(); ++round.applied)
    image_.Apply(round.changes[round.applied]);
  if (!round.changes.empty()) image_.now.last = DateTimeWrapper::CurrentTime();
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
    const std::string record = std::move(unlearned_.back());
    unlearned_.pop_back();
    if (const auto run = RunOfHistoryRecord(record)) past_.Add(*run);
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

// Takes each run away once it is written or is among those to be written.
void RecordWriter::WriteHistory(std::deque<RunRecord>& runs, bool tryAgain) {
  const bool wasBroken = history_.broken;
  const bool isNew = !runs.empty();
  for (; !runs.empty(); runs.pop_front()) {
    std::string record = HistoryRecordOf(runs.front());
    if (!history_.broken && history_.journal.Append(record)) {
      history_.dirty = true;
      ++history_.records;
      continue;
    }
    history_.broken = true;
    unwrittenHistory_.push_back(std::move(record));
  }
  if (isNew) ++historyVersion_;
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
    bool isGood = file.Sync();
    Guard(
        [&] {
          if (isGood && moved) FileDirWrapper::SyncFolderOf(target.journal.Path());
        },
        [&](const std::exception&) { isGood = false; });
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
      // Not left open until somebody asks: some systems replace no open file.
      target.sync = std::async(std::launch::async, [sync, file] {
        const bool isGood = sync(*file);
        file->Close();
        return isGood;
      });
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
