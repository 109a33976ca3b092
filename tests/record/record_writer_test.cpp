#include "record/RecordWriter.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <mutex>
#include <thread>

#include "RandomQueue.h"
#include "record/History.h"
#include "support/TempFolder.h"
#include "support/WaitUntil.h"

namespace {

using namespace std::chrono_literals;

class RecordWriterTest : public testing::Test {
 protected:
  std::unique_ptr<RecordWriter> Writer() {
    return std::make_unique<RecordWriter>(
        RecordFilesIn(folder_.Path()),
        [this](const Message& message) {
          Say(said_, message);
          if (throws_) throw std::bad_alloc();
        },
        [this](const Message& message) { Say(noted_, message); });
  }
  void Say(std::vector<MessageId>& list, const Message& message) {
    const std::lock_guard lock(mutex_);
    list.push_back(message.Id());
  }
  std::vector<MessageId> Said() {
    const std::lock_guard lock(mutex_);
    return said_;
  }

  const TempFolder folder_;
  const RecordFiles files_ = RecordFilesIn(folder_.Path());
  std::mutex mutex_;
  std::vector<MessageId> said_, noted_;
  std::atomic<bool> throws_{false};  // on the writer's thread
};

TEST_F(RecordWriterTest, TheNextSessionFindsWhatThisOneDid) {
  QueueImage model;
  RandomQueue user(5);
  {
    const auto writer = Writer();
    writer->Begin(true);
    for (int i = 0; i < 1000; ++i) {
      const QueueChange change = user.Next();
      model.Apply(change);
      writer->Put(change);
    }
    EXPECT_TRUE(writer->Flush(20s));
    EXPECT_EQ(std::filesystem::file_size(files_.queue), writer->QueueBytes());
  }
  QueueImage read = Writer()->Begin(true);
  read.now.last = model.now.last;
  EXPECT_TRUE(read == model);
  EXPECT_TRUE(Said().empty());
#ifndef _WIN32
  using std::filesystem::perms;
  for (const std::string& path : {files_.queue, files_.history}) {
    EXPECT_EQ(std::filesystem::status(path).permissions(), perms::owner_read | perms::owner_write);
  }
#endif
}

TEST_F(RecordWriterTest, WhatIsHeldCountsAsOne) {
  auto writer = Writer();
  writer->Hold();
  writer->Begin(true);
  writer->Put(change::GroupSet{1, "A", ""});
  EXPECT_FALSE(writer->Flush(400ms));
  EXPECT_FALSE(std::filesystem::exists(files_.queue)) << "the beginning too";
  writer->Put(change::GroupSet{2, "B", ""});
  writer->Release();
  EXPECT_TRUE(writer->Flush(20s));
  Journal journal(files_.queue, {kQueueKind, files_.machine});
  std::vector<int> groups;
  journal.Read([&](std::string_view record) {
    QueueImage image;
    EXPECT_TRUE(ApplyRecord(record, image));
    if (!image.now.groups.empty()) groups.push_back(static_cast<int>(image.now.groups.size()));
    return true;
  });
  EXPECT_EQ(groups, std::vector<int>{2});
}

TEST_F(RecordWriterTest, AWeekStaysSmallAndALongJournalBecomesAShortOne) {
  const auto writer = Writer();
  writer->Begin(true);
  writer->Put(change::GroupSet{1, "A", ""});
  JobImage job;
  job.fields.jobFile = std::string(300, 'x');
  for (std::uint64_t i = 1; i <= 4000; ++i) {
    job.id = static_cast<JobId>(i);
    writer->Put(change::JobAdded{1, job});
    writer->Put(change::JobGone{job.id});
    if (i % 100 == 0) {
      ASSERT_TRUE(writer->Flush(20s));
    }
    ASSERT_LT(writer->QueueBytes(), 1000000U);
  }
}

TEST_F(RecordWriterTest, OnlyTheFirstWrites) {
  const auto first = Writer();
  first->Begin(true);
  first->Put(change::GroupSet{1, "A", ""});
  ASSERT_TRUE(first->Flush(20s));
  const std::string before = TempFolder::Read(files_.queue);
  {
    const auto second = Writer();
    EXPECT_TRUE(second->Begin(true).now.groups.empty());
    second->Put(change::GroupSet{1, "B", ""});
    second->PutRun({});
    EXPECT_TRUE(second->Flush(0ms)) << "nothing to wait for";
  }
  EXPECT_EQ(TempFolder::Read(files_.queue), before);
  EXPECT_EQ(Said(), std::vector{MessageId::kRecordBusy});
}

TEST_F(RecordWriterTest, AQueueThatIsNotKeptIsDroppedAndNotWaitedFor) {
  const auto putAndFlush = [this](bool keepQueue) {
    const auto writer = Writer();
    writer->Begin(keepQueue);
    writer->Put(change::GroupSet{1, "A", ""});
    EXPECT_TRUE(writer->Flush(4s)) << keepQueue;
  };
  putAndFlush(false);
  EXPECT_FALSE(std::filesystem::exists(files_.queue));
  putAndFlush(true);
  putAndFlush(false);
  EXPECT_TRUE(Writer()->Begin(true).now.groups.empty());
}

// A folder in the place of the file: as full as a disk can be, for root too.
TEST_F(RecordWriterTest, GoesOnWhereNothingCanBeWrittenAndCatchesUp) {
  throws_ = true;
  const std::string fresh = files_.queue + ".new";
  const auto writer = Writer();
  writer->Begin(true);
  writer->Put(change::GroupSet{1, "A", ""});
  ASSERT_TRUE(writer->Flush(20s));
  std::filesystem::remove(files_.queue);
  if (std::filesystem::exists(files_.queue)) GTEST_SKIP() << "an open file stays here";
  std::filesystem::create_directories(fresh + "/full");
  writer->Put(change::GroupSet{2, "B", ""});
  RunRecord run;
  run.jobFile = "b.k";
  run.verdict = JobStatus::kFinished;
  writer->PutRun(run);
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_FALSE(writer->Flush(20s));
  writer->Put(change::GroupSet{3, "C", ""});
  EXPECT_FALSE(writer->AwaitWritten(20s));
  EXPECT_LT(std::chrono::steady_clock::now() - begin, 10s) << "nothing to wait for";
  EXPECT_EQ(Said(), std::vector{MessageId::kRecordNotWritten});
  std::filesystem::remove_all(fresh);
  EXPECT_TRUE(writer->Flush(20s));
  EXPECT_EQ(noted_, std::vector{MessageId::kRecordWritable});
  EXPECT_NE(TempFolder::Read(files_.history).find("b.k"), std::string::npos);
  Journal journal(files_.queue, {kQueueKind, files_.machine});
  QueueImage image;
  journal.Read([&](std::string_view record) { return ApplyRecord(record, image); });
  EXPECT_EQ(image.now.groups.size(), 3U);
}

TEST_F(RecordWriterTest, KeepsTheNewestRunsEachOnce) {
  std::vector<std::string> records;
  RunRecord run;
  for (int i = 0; i < 30; ++i) {
    run.started = 1000 + i;
    run.verdict = JobStatus::kRunning;
    records.push_back(HistoryRecordOf(run));
    run.verdict = JobStatus::kFinished;
    records.push_back(HistoryRecordOf(run));
  }
  DropOldHistory(records, 10);
  ASSERT_EQ(records.size(), 10U);
  {
    const auto writer = Writer();
    writer->Begin(false);
    run.filesBefore = "not for the history";
    run.started = 5;
    writer->PutRun(run);
    run.started = 6;
    writer->PutRun(run);
    run.verdict = JobStatus::kAborted;
    writer->PutRun(run);
    run.token = "of the same second";
    run.solver = SolverKind::kVorel;
    writer->PutRun(run);
  }
  const std::vector<RunRecord> runs = ReadHistory(files_.history, files_.machine);
  ASSERT_EQ(runs.size(), 3U);
  EXPECT_EQ(runs[1].verdict, JobStatus::kAborted);
  const auto name = [](SolverKind kind) {
    return kind == SolverKind::kVorel ? "One, \"step\"" : "Other";
  };
  const std::string csv = HistoryCsv(runs, name);
  EXPECT_TRUE(csv.ends_with(",\"One, \"\"step\"\"\"\n")) << csv;
  EXPECT_NE(HistoryJson(runs, name).find("\"solver\": \"Other\""), std::string::npos);
  EXPECT_EQ(runs[1].filesBefore, "");
  EXPECT_FALSE(FileDirWrapper::FileExists(files_.queue)) << "nothing of the queue was wanted";
}

// Also of files that have no id, as they were written once.
TEST_F(RecordWriterTest, AMachineThatWasRenamedGoesOnWithItsRecord) {
  if (files_.machineId.empty()) GTEST_SKIP() << "this machine has no id";
  const auto begin = [this] {
    const auto writer = Writer();
    const std::size_t groups = writer->Begin(true).now.groups.size();
    writer->Put(change::GroupSet{1, "A", ""});
    writer->PutRun({});
    return groups;
  };
  const auto rename = [this](const std::string& file, const char* machine) {
    std::string other = file;
    other.replace(other.find(files_.machine), files_.machine.size(), machine);
    std::filesystem::rename(file, other);
    return other;
  };
  begin();
  rename(files_.queue, "old");
  const std::string history = rename(files_.history, "old");
  EXPECT_EQ(HistoryToRead(files_), history);
  EXPECT_EQ(begin(), 1U);
  EXPECT_EQ(HistoryToRead(files_), files_.history);
  EXPECT_EQ(ReadHistory(files_.history, "").size(), 1U);
  EXPECT_EQ(noted_, std::vector(2, MessageId::kRecordOfOldName));

  const std::string one = rename(files_.queue, "one");
  EXPECT_EQ(begin(), 1U);
  std::filesystem::copy(files_.queue, one);
  const std::string two = rename(files_.queue, "two");
  EXPECT_EQ(begin(), 0U) << "which one is it?";
  EXPECT_EQ(noted_.back(), MessageId::kRecordOfWhichName);

  for (const std::string& path : {one, files_.queue}) std::filesystem::remove(path);
  const std::string text = TempFolder::Read(two);
  for (const std::string id : {"", " -", " another"}) {
    std::ofstream(two, std::ios::binary)
        << JournalLine("kestrun queue 1 two 0" + id) << text.substr(text.find('\n') + 1);
    Journal journal(two, {kQueueKind, "two"});
    EXPECT_EQ(journal.Read([](std::string_view) { return true; }), Journal::Found::kRecords);
    EXPECT_EQ(begin(), 0U) << "nobody knows whose it is";
    std::filesystem::remove(files_.queue);
  }
}

TEST_F(RecordWriterTest, KnowsWhatTheNewestGoodRunOfADeckTook) {
  RunRecord run;
  const auto put = [&run](RecordWriter& writer, std::int64_t started, std::int64_t seconds,
                          JobStatus verdict = JobStatus::kFinished) {
    run.started = started;
    run.ended = started + seconds;
    run.verdict = verdict;
    writer.PutRun(run);
  };
  {
    const auto writer = Writer();
    writer->Begin(true);
    run.cpus = 8;
    run.jobFile = "/a.k";
    put(*writer, 1000, 70);
    run.seconds = 50;  // somebody set the clock an hour on meanwhile
    put(*writer, 2000, 3650);
    run.seconds.reset();
    put(*writer, 3000, 5, JobStatus::kAborted);
    run.reason = Message(MessageId::kEndedUnwatched, run.jobFile);
    put(*writer, 4000, 9999);
    run.reason = {};
    run.restartFile = "/d3dump01";
    put(*writer, 5000, 7);
    run.restartFile = "";
    run.jobFile = "/b.k";
    put(*writer, 1500, 20);
  }
  const auto writer = Writer();
  writer->Begin(true);
  const auto job = [](const char* deck) {
    auto made = std::make_shared<JobFileDyna>(Settings());
    made->jobFile = deck;
    return made;
  };
  const auto a = job("/a.k");
  ASSERT_TRUE(WaitUntil([&] { return writer->Past().Of(*a).has_value(); }));
  ASSERT_TRUE(WaitUntil([&] { return writer->Past().Of(*job("/b.k")).has_value(); }));
  EXPECT_EQ(writer->Past().Of(*a)->seconds, 50);
  EXPECT_EQ(writer->Past().Of(*a)->cpus, 8);
  const auto staged = job("/main.k");
  staged->stages = {job("/b.k"), a};
  EXPECT_EQ(writer->Past().Of(*staged)->seconds, 70);
  EXPECT_EQ(writer->Past().Of(*staged)->started, 2000);
  staged->stages.push_back(job("/new.k"));
  EXPECT_FALSE(writer->Past().Of(*staged)) << "nobody knows how long the last stage takes";
  run.jobFile = "/new.k";
  const std::uint64_t version = writer->HistoryVersion();
  put(*writer, 6000, 30);
  EXPECT_EQ(writer->Past().Of(*staged)->seconds, 100);
  EXPECT_TRUE(WaitUntil([&] { return writer->HistoryVersion() != version; }));
}

}  // namespace
