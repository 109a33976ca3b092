// A disk that is really full, and the records of two users.
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <mutex>
#include <thread>

#include "record/RecordWriter.h"
#include "support/TempFolder.h"
#include "support/WaitUntil.h"

namespace {

using namespace std::chrono_literals;

std::atomic<std::chrono::milliseconds> g_syncTime{0ms};
std::atomic<bool> g_syncFails{false};

}  // namespace

// In the place of the C library's: a disk that takes its time.
extern "C" int fdatasync(int file) {
  std::this_thread::sleep_for(g_syncTime.load());
  return g_syncFails ? -1 : static_cast<int>(syscall(SYS_fdatasync, file));
}

namespace {

struct Said {
  MessageSink Sink() {
    return [this](const Message& message) {
      const std::lock_guard lock(mutex);
      list.push_back(message.Id());
    };
  }
  std::mutex mutex;
  std::vector<MessageId> list;
};

// A file system of so many bytes, for this thread and those that it starts.
class SmallDisk {
 public:
  SmallDisk(const std::string& path, const char* size) : path_(path) {
    mounted_ = unshare(CLONE_NEWNS) == 0 &&
               mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
               mount("tmpfs", path.c_str(), "tmpfs", 0, size) == 0;
  }
  ~SmallDisk() {
    if (mounted_) umount2(path_.c_str(), MNT_DETACH);
  }
  bool IsThere() const { return mounted_; }

 private:
  const std::string path_;
  bool mounted_ = false;
};

TEST(RecordOnAFullDisk, IsToldOnceForEachFileAndCatchesUpWithoutATornRecord) {
  const TempFolder folder;
  const SmallDisk disk(folder.Path(), "size=256k");
  if (!disk.IsThere()) GTEST_SKIP() << "needs the right to mount a file system";
  const RecordFiles files = RecordFilesIn(folder.Path());
  Said said, noted;
  JobImage job;
  job.fields.jobFile = std::string(3000, 'x');
  std::uint64_t jobs = 0;
  {
    RecordWriter writer(files, said.Sink(), noted.Sink());
    writer.Begin(true);
    writer.Put(change::GroupSet{1, "A", ""});
    writer.PutRun({});
    ASSERT_TRUE(writer.Flush(20s));
    const std::string ballast = folder.Write("ballast", std::string(180000, 'x'));
    const auto add = [&] {
      job.id = static_cast<JobId>(++jobs);
      writer.Put(change::JobAdded{1, job});
    };
    do add();
    while (writer.Flush(20s) && jobs < 100);
    ASSERT_LT(jobs, 100U);
    RunRecord run;
    run.jobFile = std::string(15000, 'x');
    for (run.started = 1; run.started < 5; ++run.started) writer.PutRun(run);
    add();
    EXPECT_FALSE(writer.Flush(20s));
    EXPECT_FALSE(writer.Flush(20s));
    EXPECT_EQ(said.list,
              (std::vector{MessageId::kRecordNotWritten, MessageId::kHistoryNotWritten}));
    std::filesystem::remove(ballast);
    EXPECT_TRUE(writer.Flush(20s));
  }
  EXPECT_EQ(noted.list, (std::vector{MessageId::kRecordWritable, MessageId::kHistoryWritable}));
  RecordWriter again(files, said.Sink(), noted.Sink());
  EXPECT_EQ(again.Begin(true).now.jobs.size(), jobs);
  EXPECT_EQ(said.list.size(), 2U) << "whole files";
}

// What a kill would leave is looked at in the file.
TEST(RecordOnASlowDisk, IsWrittenWhileTheDiskSynchronises) {
  const TempFolder folder;
  const RecordFiles files = RecordFilesIn(folder.Path());
  Said said;
  JobImage job;
  job.fields.jobFile = std::string(3000, 'x');
  std::uint64_t jobs = 0;
  constexpr std::chrono::milliseconds kSync = 3s, kSooner = 2500ms;
  const auto sessionsWith = [&](std::size_t wanted) {
    QueueImage image;
    for (const auto end = std::chrono::steady_clock::now() + kSooner;
         image.now.jobs.size() != wanted && std::chrono::steady_clock::now() < end;) {
      image = {};
      std::string bytes;
      ReadJournalBytes(files.queue, bytes);
      const JournalText text = ReadJournalText(bytes, {kQueueKind, files.machine});
      for (const std::string_view record : text.records) EXPECT_TRUE(ApplyRecord(record, image));
    }
    EXPECT_EQ(image.now.jobs.size(), wanted);
    return image.left.size();
  };
  const auto add = [&](RecordWriter& writer) {
    job.id = static_cast<JobId>(++jobs);
    writer.Put(change::JobAdded{1, job});
    if (jobs % 20 != 0) return;
    EXPECT_TRUE(writer.AwaitWritten(kSooner)) << jobs;
    sessionsWith(jobs);
  };
  g_syncTime = kSync;
  for (int session = 0; session < 2; ++session) {
    RecordWriter writer(files, said.Sink(), said.Sink());
    writer.Begin(true);
    jobs = 0;
    writer.Put(change::GroupSet{1, "A", ""});
    EXPECT_TRUE(writer.AwaitWritten(kSooner));
    const std::uint64_t begin = writer.QueueBytes();
    add(writer);
    EXPECT_EQ(sessionsWith(1), session == 0 ? 0U : 1U) << "a later one goes on with the file";
    while (writer.QueueBytes() - begin < 900'000) add(writer);  // two snapshots are due
    g_syncFails = true;  // the old file goes on until a whole one is there
    for (int i = 0; i < 400; ++i) {
      writer.Put(change::JobGone{static_cast<JobId>(jobs)});
      writer.Put(change::JobAdded{1, job});
    }
    EXPECT_TRUE(writer.AwaitWritten(kSooner));
    sessionsWith(jobs);
    writer.Flush(kSync + 1s);
    g_syncFails = false;
    EXPECT_TRUE(writer.Flush(20s));
    sessionsWith(jobs);
    g_syncTime = session == 0 ? kSync : 0ms;
  }
  EXPECT_FALSE(FileDirWrapper::FileExists(files.queue + ".new"));
}

// What one user has written is neither read nor changed for another.
TEST(RecordOfTwoUsers, IsEachOnesOwn) {
  if (geteuid() != 0) GTEST_SKIP() << "needs root to become another user";
  const TempFolder folder;
  const std::string theirs = folder / "theirs";
  std::filesystem::create_directory(theirs);
  constexpr uid_t kNobody = 65534;
  ASSERT_EQ(chown(theirs.c_str(), kNobody, kNobody), 0);
  Said said;
  const auto session = [&](const std::string& place) {
    RecordWriter writer(RecordFilesIn(place), said.Sink(), said.Sink());
    const std::size_t groups = writer.Begin(true).now.groups.size();
    writer.Put(change::GroupSet{1, "A", ""});
    writer.PutRun({});
    return writer.Flush(20s) ? static_cast<int>(groups) : -1;
  };
  EXPECT_EQ(session(folder.Path()), 0);
  const RecordFiles mine = RecordFilesIn(folder.Path());
  const std::string before = TempFolder::Read(mine.queue);
  const pid_t other = fork();
  if (other == 0) {
    if (setgid(kNobody) != 0 || setuid(kNobody) != 0) _exit(9);
    const bool own = session(theirs) == 0 && session(theirs) == 1;
    const bool isClosed = TempFolder::Read(mine.queue).empty() && session(folder.Path()) == -1;
    _exit((own ? 0 : 1) + (isClosed ? 0 : 2));
  }
  int status = -1;
  ASSERT_EQ(waitpid(other, &status, 0), other);
  EXPECT_EQ(WEXITSTATUS(status), 0);
  EXPECT_EQ(TempFolder::Read(mine.queue), before);
  EXPECT_EQ(session(folder.Path()), 1);
  EXPECT_TRUE(said.list.empty());
}

}  // namespace
