#include "record/QueueImage.h"

#include <gtest/gtest.h>

#include "RandomQueue.h"
#include "record/Form.h"
#include "record/Journal.h"

namespace {

JobImage Waits(std::uint64_t id, JobStatus status) {
  JobImage job;
  job.id = static_cast<JobId>(id);
  job.fields.status = status;
  return job;
}

// After each of its records; where a file is cut is the journal's business.
TEST(QueueImage, IsReadBackAsItWas) {
  for (unsigned seed = 1; seed <= 4; ++seed) {
    RandomQueue user(seed);
    QueueImage model;
    std::string bytes = JournalLine("kestrun queue 1 here 0");
    std::vector<QueueImage> states = {model};
    for (int step = 0; step < 40; ++step) {
      std::vector<QueueChange> changes;
      for (int i = 0; i <= step % 3; ++i) changes.push_back(user.Next());
      for (const QueueChange& change : changes) model.Apply(change);
      model.now.last = step;
      bytes += JournalLine(RecordOf(changes, step));
      states.push_back(model);
    }
    const JournalText whole = ReadJournalText(bytes, {"queue", "here"});
    ASSERT_EQ(whole.records.size() + 1, states.size());
    QueueImage read;
    for (std::size_t i = 0; i < whole.records.size(); ++i) {
      ASSERT_TRUE(ApplyRecord(whole.records[i], read));
      ASSERT_TRUE(read == states[i + 1]) << "seed " << seed << " record " << i;
    }
    QueueImage again;
    for (const std::string& record : SnapshotOf(model)) ASSERT_TRUE(ApplyRecord(record, again));
    EXPECT_TRUE(again == model) << "seed " << seed;
  }
}

TEST(QueueImage, WhatASessionLeavesIsKeptUntilItIsTaken) {
  QueueImage image;
  image.Apply(change::GroupSet{1, "A", ""});
  image.Apply(change::JobAdded{1, Waits(1, JobStatus::kQueued)});
  image.Apply(change::JobAdded{1, Waits(2, JobStatus::kFinished)});
  image.Apply(change::SessionBegins());
  ASSERT_EQ(image.left.size(), 1U);
  EXPECT_EQ(image.left[0].jobs.size(), 2U);
  EXPECT_TRUE(image.now.groups.empty());

  // The same numbers, another session.
  image.Apply(change::GroupSet{1, "B", ""});
  image.Apply(change::JobAdded{1, Waits(1, JobStatus::kRunning)});
  image.Apply(change::SessionBegins());
  image.Apply(change::GroupSet{1, "C", ""});
  image.Apply(change::JobAdded{1, Waits(1, JobStatus::kAborted)});
  image.Apply(change::SessionOver());
  image.Apply(change::SessionBegins());  // nothing that had not ended, and no crash
  ASSERT_EQ(image.left.size(), 2U);
  EXPECT_EQ(image.left[1].groups[0].name, "B");
  image.Apply(change::LeftTaken());
  EXPECT_TRUE(image.left.empty());
}

TEST(QueueImage, ARunStaysWithItsJobUntilTheJobHasEnded) {
  QueueImage image;
  image.Apply(change::GroupSet{1, "A", ""});
  image.Apply(change::JobAdded{1, Waits(1, JobStatus::kRunning)});
  RunRecord run;
  run.process.id = 7;
  image.Apply(change::Run{JobId{1}, run});
  image.Apply(change::JobSet{Waits(1, JobStatus::kRunning)});
  EXPECT_EQ(image.now.Find(JobId{1})->run->process.id, 7);
  JobProgress aborted;
  aborted.status = JobStatus::kAborted;
  image.Apply(change::Progress{JobId{1}, JobId::kNone, aborted});
  EXPECT_FALSE(image.now.Find(JobId{1})->run);
}

TEST(Form, AMessageThatTheTableDoesNotHaveComesBackInItsWords) {
  const Message known(MessageId::kNotNormal, "a\xFF.k", Message(MessageId::kNoResult, "b.lin"));
  form::Json json = form::Of(known);
  Message read;
  ASSERT_TRUE(form::Take(form::Parsed(json.dump()), read));
  EXPECT_EQ(read, known);

  for (form::Json other : {form::Json{{"id", "kOfNextYear"}}, form::Json{{"with", {1, 2, 3}}},
                           form::Json{{"with", form::Json::array()}}}) {
    form::Json changed = json;
    changed.update(other);
    ASSERT_TRUE(form::Take(form::Parsed(changed.dump()), read));
    EXPECT_EQ(read.Id(), MessageId::kForeignWords);
    EXPECT_EQ(read.English(), known.English());
  }
  json.erase("text");
  json["id"] = "kOfNextYear";
  EXPECT_FALSE(form::Take(form::Parsed(json.dump()), read));
}

TEST(Form, NumbersThatDoNotFitAreLeftOut) {
  JobFields fields;
  fields.ncpu = 3;
  form::Read(form::Parsed(R"({"cpus":4294967296,"pause":-2147483648,"memory":-1,"status":9,
                              "first":1.5,"file":7,"options":null})"),
             fields);
  JobFields expected;
  expected.ncpu = 3;
  expected.pause = -2147483648;
  EXPECT_EQ(fields, expected);
}

}  // namespace
