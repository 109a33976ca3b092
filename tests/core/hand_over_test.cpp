// The hand-over file between writers and a reader, without an application.
#include "core/HandOver.h"

#include <filesystem>
#include <memory>

#include "CoreFixture.h"
#include "util/files/FileLock.h"

namespace {

constexpr char kEvent[] = "Global\\KESTRUN_TEMP_FILE_READWRITE";

class HandOverTest : public CoreTest {
 protected:
  static bool Write(HandOverWriter& writer, std::vector<const char*> arguments) {
    arguments.insert(arguments.begin(), "kestrun");
    return writer.Write(static_cast<int>(arguments.size()), arguments.data());
  }
  // What another program does.
  void WriteFile(const std::string& text, const std::string& ending = {}) {
    std::ofstream(files_.handOverFile + ending, std::ios::binary) << text;
  }
  // The files of the jobs after one more look.
  const std::vector<std::string>& Poll() {
    reader_.Poll();
    return jobs_;
  }

  using Paths = std::vector<std::string>;

  SettingsAndPaths files_{kTitle};
  Paths jobs_;
  HandOverReader reader_{files_, JobsInto(jobs_)};
};

// Absolute on both systems.
std::string Name(const std::string& name) {
  return FileDirWrapper::AbsolutePath("/" + name);
}

TEST_F(HandOverTest, ManyWritersAndAReaderAtWorkHandOverEachJobOnce) {
  constexpr int kWriters = 8;
  constexpr int kEach = 20;
  std::atomic<int> atWork{kWriters};
  std::vector<std::thread> threads;
  for (int i = 0; i < kWriters; ++i) {
    threads.emplace_back([&, i] {
      SettingsAndPaths files(kTitle);
      for (int k = 0; k < kEach; ++k) {
        HandOverWriter writer(files);
        EXPECT_TRUE(Write(writer, {Name(std::to_string(i * kEach + k) + ".k").c_str()}));
        if (k % 5 == 0) {
          EXPECT_TRUE(WaitUntil([&] { return !writer.Waits(); }, std::chrono::seconds(60)));
        }
      }
      --atWork;
    });
  }
  while (atWork > 0) Poll();
  for (std::thread& thread : threads) thread.join();
  Poll();
  Paths expected;
  for (int i = 0; i < kWriters * kEach; ++i) expected.push_back(Name(std::to_string(i) + ".k"));
  std::sort(expected.begin(), expected.end());
  std::sort(jobs_.begin(), jobs_.end());
  EXPECT_EQ(jobs_.size(), expected.size());
  EXPECT_EQ(jobs_, expected);
}

TEST_F(HandOverTest, WhatNobodyTakesIsTakenBackAndSaid) {
  HandOverWriter first(files_), second(files_);
  ASSERT_TRUE(Write(first, {"/a.k", "#krjob", "#mpp=1", "/b.k"}));
  ASSERT_TRUE(Write(second, {"/c.k"}));
  EXPECT_TRUE(first.Waits());
  EXPECT_FALSE(first.StopWaiting());
  EXPECT_TRUE(!first.Waits() && first.StopWaiting()) << "it is said once";
  ASSERT_EQ(first.Faults().size(), 1u);
  EXPECT_TRUE(LogHolds(files_, first.Faults().front().English()));
  EXPECT_EQ(Poll(), Paths{Name("c.k")});
  EXPECT_FALSE(second.Waits());
  EXPECT_FALSE(second.TakeBack());
  EXPECT_TRUE(second.StopWaiting());
}

TEST_F(HandOverTest, ATextWithoutItsEndIsTakenWhenItStaysSo) {
  WriteFile("#krjob\n/ha");
  EXPECT_TRUE(Poll().empty()) << "it may be half a path";
  const auto then = std::filesystem::file_time_type::clock::now() - std::chrono::seconds(10);
  std::filesystem::last_write_time(files_.handOverFile, then);
  EXPECT_EQ(Poll(), Paths{"/ha"});
  WriteFile("#krjob\n/early.k");
  HandOverWriter writer(files_);
  ASSERT_TRUE(Write(writer, {"/own.k"}));
  EXPECT_EQ(Poll(), (Paths{"/ha", "/early.k", Name("own.k")}));
}

TEST_F(HandOverTest, WhatAKilledReaderHadTakenIsReadFirstUnlessItsJobsAreKept) {
  const std::string name = std::filesystem::path(files_.handOverFile).filename().string();
  WriteFile("#krjob\n/kept.k\n", ".taken-1");
  WriteFile("#krjob\n/taken.k\n", ".taken-2");
  WriteFile("#krjob\n/next.k\n");
  bool isSafe = false;
  Paths kept{name + ".taken-1"};
  HandOverReader::Queue queue = JobsInto(jobs_);
  queue.apply = [&, add = queue.apply](const HandOverOrder& order, const Paths& files) {
    add(order, files);
    kept = files;
  };
  queue.has = [&](const std::string& file) { return std::count(kept.begin(), kept.end(), file); };
  queue.isSafe = [&] { return isSafe; };
  {
    HandOverReader reader(files_, queue);
    for (int i = 0; i < 3; ++i) reader.Poll();
  }
  EXPECT_EQ(jobs_, (Paths{"/taken.k", "/next.k"}));
  EXPECT_EQ(kept.size(), 3u) << "none of them may go as long as the jobs may be lost";
  HandOverReader reader(files_, queue);
  isSafe = true;
  reader.Poll();
  EXPECT_EQ(jobs_.size(), 2u);
  const auto here =
      std::filesystem::directory_iterator(std::filesystem::path(files_.handOverFile).parent_path());
  EXPECT_TRUE(std::none_of(begin(here), end(here), [](const auto& file) {
    return file.path().string().find(".taken") != std::string::npos;
  }));
}

TEST_F(HandOverTest, TheBoundsAreSaidAndKeepNobodyFromWriting) {
  const std::string big(std::size_t{8} << 20, 'x');
  WriteFile(big + 'x');
  EXPECT_TRUE(Poll().empty());
  EXPECT_EQ(std::filesystem::file_size(files_.handOverFile + ".big"), big.size() + 1);
  EXPECT_TRUE(LogHolds(files_, "holds more than 8 MB; put aside"));

  WriteFile(big);
  HandOverWriter none(files_);
  EXPECT_FALSE(Write(none, {"/a.k"}));
  EXPECT_FALSE(none.Waits());
  EXPECT_EQ(Words(none.Faults()),
            (Paths{"Hand-over file [" + files_.handOverFile + "] would hold more than 8 MB",
                   "Write tmp file [" + files_.handOverFile + "] failed"}));
  EXPECT_EQ(std::filesystem::file_size(files_.handOverFile), big.size());

  std::filesystem::remove(files_.handOverFile);
  HandOverWriter many(files_);
  EXPECT_FALSE(Write(many, std::vector<const char*>(50001, "/a.k")));
  EXPECT_EQ(many.Faults().size(), 1u);
  EXPECT_EQ(Poll().size(), 50000u);
}

TEST_F(HandOverTest, AnEventThatIsNeverGivenBackIsTakenOver) {
  PTWrapperSignal holder;
  ASSERT_TRUE(holder.OpenEventSignal(kEvent));
  ASSERT_EQ(holder.WaitForEventSignal(1000), 0);  // and then dies
  WriteFile("#krjob\n/a.k\n");
  for (int poll = 1; poll <= 3; ++poll) EXPECT_TRUE(Poll().empty()) << poll;
  EXPECT_EQ(Poll().size(), 1u);
  EXPECT_TRUE(LogHolds(files_, "taken over"));
  EXPECT_EQ(holder.WaitForEventSignal(1000), 0);  // somebody keeps it again and again
  WriteFile("#krjob\n/b.k\n");
  EXPECT_EQ(Poll().size(), 2u) << "at once";
  EXPECT_EQ(holder.WaitForEventSignal(1000), 0);
  HandOverWriter writer(files_);
  EXPECT_TRUE(Write(writer, {"/c.k"}));
  EXPECT_EQ(Poll().size(), 3u);
}

TEST_F(HandOverTest, WithoutTheEventTheLockIsEnough) {
  files_.handOverEvent.CloseEventSignal();
  HandOverWriter writer(files_);
  EXPECT_TRUE(Write(writer, {"/a.k"}));
  EXPECT_EQ(Poll().size(), 1u);
  EXPECT_EQ(files_.handOverEvent.LastError(), "EVENT handle is null");
  EXPECT_TRUE(LogHolds(files_, "cannot be used (EVENT handle is null); going on without it"));

  FileLock lock;
  ASSERT_EQ(lock.Take(files_.handOverFile + ".lock", 0), FileLock::Result::kTaken);
  WriteFile("#krjob\n/b.k\n");
  for (int i = 0; i < 5; ++i) EXPECT_EQ(Poll().size(), 1u);
  EXPECT_TRUE(LogHolds(files_, "is in use by another process"));
  lock.Release();
  EXPECT_EQ(Poll().size(), 2u);
}

}  // namespace
