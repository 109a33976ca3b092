// Writes what happens to the queue, and the runs, on a thread of its own.
#ifndef KR_RECORD_RECORDWRITER_H
#define KR_RECORD_RECORDWRITER_H

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "messages/Message.h"
#include "record/Journal.h"
#include "record/PastRuns.h"
#include "record/QueueImage.h"
#include "record/RecordFiles.h"
#include "util/files/FileLock.h"
#include "util/signals/Mutex.h"

// Takes changes from any thread, which costs it a lock and a move, and never waits for the disk.
// What was put is written within some milliseconds, however long the disk takes to synchronise, and
// on the disk within half a second when it is quick. Where it cannot be written it is kept and
// tried again every few seconds; that is reported once for each file, and noted when it works
// again.
class RecordWriter {
 public:
  RecordWriter(RecordFiles files, MessageSink report, MessageSink note);
  // Writes what was put, if it can.
  ~RecordWriter();
  RecordWriter(const RecordWriter&) = delete;
  RecordWriter& operator=(const RecordWriter&) = delete;

  // Reads the record and begins a session of it. Once, before anything is put. What it gives is the
  // record as the last session left it. `keepQueue` false: the queue is not written, and what the
  // file has of it is dropped; of the last session only one that wanted to be restored is read, and
  // the runs that were to end.
  QueueImage Begin(bool keepQueue);

  // Each counts whole or not at all, and so does what is put between Hold and Release.
  void Put(QueueChange change);
  void Put(std::vector<QueueChange> changes);  // all of them or none
  void PutRun(const RunRecord& run);           // for the history
  void Hold();
  void Release();
  // From now on the queue is written in any case.
  void KeepQueue();

  // Waits until what was put is on the disk. False when it is not by then; at once when it is known
  // that it cannot be written.
  bool Flush(std::chrono::milliseconds limit);
  // The same, but for a power cut: what was put survives the end of the program.
  bool AwaitWritten(std::chrono::milliseconds limit);

  // What was put up to now.
  std::uint64_t Mark() const;
  // What was put up to then is on the disk, or is not to be kept at all.
  bool IsSafe(std::uint64_t mark) const;

  const RecordFiles& Files() const { return files_; }

  // Those of the file are in it a moment after Begin, those that are put at once.
  const PastRuns& Past() const { return past_; }
  // Another number whenever the file of the history has something new. Any thread.
  std::uint64_t HistoryVersion() const { return historyVersion_; }

  // The bytes of the queue's file.
  std::uint64_t QueueBytes() const;

 private:
  using Clock = std::chrono::steady_clock;

  // One file with what has to be in it; the writer's thread. While its file is synchronised on
  // another thread, more is appended to it.
  struct Target {
    Target(const std::string& path, JournalName name, MessageIdFor<std::string> whenItFails,
           MessageIdFor<std::string> whenItWorks)
        : journal(path, std::move(name)), fails(whenItFails), works(whenItWorks) {}
    Journal journal;
    const MessageIdFor<std::string> fails, works;  // said of it
    bool broken = true;                            // to be written anew
    bool dirty = false;                            // written, and no sync has begun since
    bool told = false;                             // the user knows that it is broken
    std::uint64_t records = 0;
    bool moved = false;               // the folder is to be synchronised too
    std::future<bool> sync;           // the one that runs, or has ended and is not looked at
    std::atomic<bool> synced{false};  // it has ended
    bool syncsNew = false;            // of a file that takes the place then
    std::uint64_t syncs = 0;          // what was put up to then it brings to the disk
    std::uint64_t onDisk = 0;
  };

  // What the writer's thread has at hand.
  struct Round {
    std::vector<QueueChange> changes = {};
    std::size_t applied = 0;          // of these, to the image
    std::deque<RunRecord> runs = {};  // that the history does not have yet
    std::uint64_t taken = 0;          // all that was put up to then is, or was, among them
    std::uint64_t asked = 0;
    bool keptQueue = true;
    bool hasBegun = false;
    bool isLast = false;
    Target* at = nullptr;  // what it works at
  };

  void Work();
  bool Ends() const;
  void DoRound(Round& round);
  void FailRound(Round& round);
  void Tell(Target& target);
  bool HasNothingToWrite() const KR_REQUIRES(mutex_);
  bool IsBroken() const { return queue_.broken || history_.broken; }
  bool IsOwed() const;
  bool WaitFor(std::uint64_t RecordWriter::*done, std::chrono::milliseconds limit);
  void Apply(Round& round);
  void WriteQueue(const std::vector<QueueChange>& changes, bool tryAgain);
  void DropQueue();
  void WriteHistory(std::deque<RunRecord>& runs, bool tryAgain);
  void LearnPast();
  std::vector<std::string> HistorySnapshot();
  void Mend(Target& target, const std::vector<std::string>& records);
  bool IsTooLong(const Target& target, bool isLong) const;
  void Prepare(Target& target, const std::vector<std::string>& records);
  void BeginSync(Target& target, std::uint64_t taken);
  void TakeSync(Target& target);
  void SyncAtEnd(Target& target);
  void TellFound(Target& target, Journal::Found found);

  const RecordFiles files_;
  const MessageSink report_;
  const MessageSink note_;
  FileLock lock_;
  std::atomic<bool> keepQueue_ = true;

  // The writer's thread, once it runs.
  Target queue_;
  Target history_;
  QueueImage image_;
  std::vector<std::string> unwrittenHistory_;  // while that file is broken
  std::vector<std::string> unlearned_;         // records that past_ does not have yet
  Clock::time_point synced_{};
  Clock::time_point tried_{};

  PastRuns past_;
  std::atomic<std::uint64_t> historyVersion_{0};

  mutable Mutex mutex_;
  std::condition_variable changed_;
  std::vector<QueueChange> changes_ KR_GUARDED_BY(mutex_);
  std::vector<RunRecord> runs_ KR_GUARDED_BY(mutex_);
  int holds_ KR_GUARDED_BY(mutex_) = 0;
  bool end_ KR_GUARDED_BY(mutex_) = false;
  std::uint64_t syncWanted_ KR_GUARDED_BY(mutex_) = 0;  // somebody waits for what was put by then
  std::uint64_t put_ KR_GUARDED_BY(mutex_) = 0;
  std::uint64_t written_ KR_GUARDED_BY(mutex_) = 0;
  std::uint64_t onDisk_ KR_GUARDED_BY(mutex_) = 0;
  std::uint64_t queueOnDisk_ KR_GUARDED_BY(mutex_) = 0;  // of it, what is of the queue
  bool cannotWrite_ KR_GUARDED_BY(mutex_) = false;
  std::uint64_t asked_ KR_GUARDED_BY(mutex_) = 0;     // counts who has begun to wait
  std::uint64_t answered_ KR_GUARDED_BY(mutex_) = 0;  // of them, for whom writing was tried
  std::uint64_t queueBytes_ KR_GUARDED_BY(mutex_) = 0;
  std::thread worker_;
};

#endif
