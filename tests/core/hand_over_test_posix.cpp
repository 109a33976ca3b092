// What other users, dying processes and a full disk do to the hand-over.
#include <fcntl.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <cstring>
#include <filesystem>
#include <set>

#include "core/Application.h"
#include "core/HandOver.h"
#include "core/HandOverPlace.h"
#include "CoreFixture.h"
#include "support/ChildProcesses_posix.h"

namespace {

using hand_over_file::Result;

constexpr char kEventFile[] = "/dev/shm/kr-global-KESTRUN_TEMP_FILE_READWRITE";

class HostileHandOver : public CoreTest, protected ChildProcesses {
 protected:
  static Result Read(const std::string& path) {
    std::string text;
    return hand_over_file::Read(path, 1000, text);
  }
  static Result Append(const std::string& path, const std::string& text) {
    hand_over_file::Record record;
    return hand_over_file::Append(path, text, {}, 1000, record);
  }
  static bool Write(SettingsAndPaths& files, std::vector<const char*> arguments) {
    arguments.insert(arguments.begin(), "kestrun");
    return HandOverWriter(files).Write(static_cast<int>(arguments.size()), arguments.data());
  }
  static std::vector<std::string> JobsOf(SettingsAndPaths& files) {
    std::vector<std::string> jobs;
    HandOverReader reader(files, JobsInto(jobs));
    reader.Poll();
    return jobs;
  }

  const std::string file_ = home_ / "file.txt";
};

TEST_F(HostileHandOver, OnlyAFileOfThisUserAloneIsReadOrWritten) {
  EXPECT_EQ(Read(file_), Result::kMissing);
  ASSERT_EQ(Append(file_, "a\n"), Result::kDone);
  struct stat info {};
  ASSERT_EQ(stat(file_.c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777, 0600u);
  EXPECT_EQ(Read(file_), Result::kDone);

  const auto refused = [&](const std::string& path) {
    EXPECT_EQ(Read(path), Result::kRefused) << path;
    EXPECT_EQ(Append(path, "x"), Result::kRefused) << path;
    EXPECT_EQ(hand_over_file::TakeAway(path, 1000, home_ / "taken"), Result::kRefused) << path;
  };
  const std::string link = home_ / "link";
  ASSERT_EQ(symlink(file_.c_str(), link.c_str()), 0);
  refused(link);
  const std::string nowhere = home_ / "nowhere";
  ASSERT_EQ(symlink((home_ / "made").c_str(), nowhere.c_str()), 0);
  refused(nowhere);
  EXPECT_FALSE(std::filesystem::exists(home_ / "made"));
  const std::string pipe = home_ / "pipe";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  refused(pipe);
  refused(home_.Path());
  chmod(file_.c_str(), 0620);
  refused(file_);
  chmod(file_.c_str(), 0600);
  ASSERT_EQ(::link(file_.c_str(), (home_ / "second").c_str()), 0);
  refused(file_);
  std::filesystem::remove(home_ / "second");
  chmod(home_.Path().c_str(), 01777);
  EXPECT_EQ(Append(file_, "x"), Result::kRefused) << "others may take it away";
  chmod(home_.Path().c_str(), 0755);
  if (geteuid() == 0) {
    ASSERT_EQ(chown(file_.c_str(), 1, 1), 0);
    refused(file_);
    ASSERT_EQ(chown(file_.c_str(), 0, 0), 0);
  }
  EXPECT_EQ(TempFolder::Read(file_), "a\n");
  home_.Write("file.txt", std::string(1001, 'x'));
  EXPECT_EQ(Read(file_), Result::kTooBig);
}

TEST_F(HostileHandOver, ARefusedFileIsReportedOnceAndEndsTheWriterWithNine) {
  const std::string target = home_.Write("precious", "data");
  const std::string path = SettingsAndPaths(kTitle).handOverFile;
  ASSERT_EQ(symlink(target.c_str(), path.c_str()), 0);
  const char* arguments[] = {"kestrun", "/a.k"};
  Application application;
  ASSERT_TRUE(application.Initialise(2, arguments));
  EXPECT_EQ(application.exitCode, 9);
  EXPECT_EQ(Words(application.Failures()),
            (std::vector<std::string>{"Hand-over file [" + path + "] refused",
                                      "Write tmp file [" + path + "] failed"}));
  for (int i = 0; i < 3; ++i) application.Tick();
  const std::string log = TempFolder::Read(application.SettingsAndFiles().Log().Path());
  EXPECT_NE(log.find("Write tmp file [" + path + "] failed"), std::string::npos);
  std::size_t reports = 0;
  for (std::size_t at = 0; (at = log.find("refused", at)) != std::string::npos; ++at) ++reports;
  EXPECT_EQ(reports, 2u) << "the writer's and the reader's";
  EXPECT_EQ(TempFolder::Read(target), "data");
  EXPECT_EQ(application.Shutdown(), 9);
}

TEST_F(HostileHandOver, ThePlaceFollowsFromTheUserAlone) {
  if (geteuid() != 0) GTEST_SKIP() << "needs root";
  // A user without a home that could be written to.
  const int code = InChild([&] {
    if (!Become("nobody")) return 1;
    unsetenv("KESTRUN_HANDOVER_FOLDER");
    const std::string place = HandOverPlaces().front().folder;
    setenv("HOME", home_.Path().c_str(), 1);
    setenv("XDG_RUNTIME_DIR", home_.Path().c_str(), 1);
    unsetenv("XDG_CONFIG_HOME");
    unsetenv("TMPDIR");
    struct stat info {};
    if (HandOverPlaces().front().folder != place || stat(place.c_str(), &info) != 0) return 2;
    return info.st_uid == geteuid() && (info.st_mode & 0777) == 0700 ? 0 : 3;
  });
  EXPECT_EQ(code, 0);
  // A folder that others may enter is closed to them, one of theirs is not used.
  const std::string moved = home_ / "handover";
  ASSERT_EQ(mkdir(moved.c_str(), 0777), 0);
  ASSERT_EQ(chmod(moved.c_str(), 0777), 0);
  EXPECT_EQ(HandOverPlaces().front().folder, moved);
  struct stat info {};
  ASSERT_EQ(stat(moved.c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777, 0700u);
}

// A batch job may have other variables, another name of the computer, no home, or a /dev/shm of its
// own; and somebody else may have taken the user's name there before, so that the home is left.
TEST_F(HostileHandOver, ASecondCopyFindsTheFirstWhateverTheEnvironment) {
  const std::string own = home_ / "nobody", other = home_ / "other", taken = home_ / "taken";
  for (const std::string& folder : {own, other, taken, home_ / "config"}) {
    ASSERT_TRUE(FileDirWrapper::CreateDirTree(folder));
    ASSERT_EQ(chmod(folder.c_str(), 01777), 0);
  }
  ASSERT_TRUE(FileDirWrapper::CreateDirTree(taken + "/kr-65534"));
  chmod(home_.Path().c_str(), 0755);
  const std::string users = home_.Write("passwd", "nobody:x:65534:65534::" + own + ":/bin/sh\n");
  constexpr int kNotAllowed = 77;
  const auto copy = [&](bool isTaken, const std::string& differs, const auto& run) {
    return StartChild([&] {
      const auto put = [](const std::string& from, const std::string& to) {
        return mount(from.c_str(), to.c_str(), nullptr, MS_BIND, nullptr) == 0;
      };
      if (unshare(CLONE_NEWNS | CLONE_NEWUTS) != 0 ||
          mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
          !put(users, "/etc/passwd"))
        return kNotAllowed;
      if (differs == "name" && sethostname("other", 5) != 0) return 1;
      if (differs == "home" && !put("/proc", own)) return 1;
      if (differs == "shm" && !put(other, "/dev/shm")) return 1;
      if (isTaken && !put(taken, "/dev/shm")) return 1;
      if (differs == "variables") {
        for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_RUNTIME_DIR", "TMPDIR"})
          setenv(name, other.c_str(), 1);
      }
      if (!Become("nobody")) return 1;
      unsetenv("KESTRUN_HANDOVER_FOLDER");
      const std::string job = "/" + differs + ".k";
      const char* arguments[] = {"kestrun", job.c_str()};
      Application application;
      return run(application.Initialise(2, arguments), application);
    });
  };
  const std::string seen = home_ / "config/seen";
  const auto expectFound = [&](bool isTaken, const std::vector<std::string>& all) {
    FileDirWrapper::RemoveFile(seen);
    const pid_t first = copy(isTaken, "", [&](bool isFirst, Application& application) {
      while (isFirst && application.Tick()) {
        application.Intake().Drain();
        std::string jobs;
        application.Manager().CurrentGroup()->ReadJobs(
            [&](const JobFile& job) { jobs += job.jobFile + " "; });
        std::ofstream(seen) << jobs;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
      }
      return 1;
    });
    EXPECT_TRUE(WaitUntil([&] {
      return FileDirWrapper::FileExists(seen) || waitpid(first, nullptr, WNOHANG) == first;
    }));
    if (!FileDirWrapper::FileExists(seen)) return false;
    for (const std::string& differs : all) {
      const pid_t second = copy(isTaken, differs, [](bool isFirst, Application& application) {
        return isFirst ? 1 : application.exitCode;
      });
      EXPECT_EQ(WaitFor(second), 0) << differs;
      EXPECT_TRUE(WaitUntil([&] {
        return TempFolder::Read(seen).find("/" + differs + ".k ") != std::string::npos;
      })) << differs;
    }
    kill(first, SIGKILL);
    WaitFor(first);
    return true;
  };
  if (!expectFound(false, {"name", "home", "shm", "variables"}))
    GTEST_SKIP() << "needs root and name spaces";
  EXPECT_TRUE(expectFound(true, {"again", "variables"}));
  const std::string log = TempFolder::Read(SettingsAndPaths(kTitle).Log().Path());
  const std::string words = "Folder [/dev/shm/kr-65534] is somebody else's";
  const std::size_t said = log.find(words);
  EXPECT_NE(said, std::string::npos) << log;
  EXPECT_EQ(log.find(words, said + 1), std::string::npos) << log;
}

// The locks under which the event's state is read and its holders come and go; somebody else's
// object in its place; and nothing that is one.
TEST_F(HostileHandOver, AnotherUserWhoKeepsTheEventStopsNobody) {
  if (geteuid() != 0) GTEST_SKIP() << "needs root";
  chmod(home_.Path().c_str(), 0755);
  const auto handsOver = [&](const char* what) {
    SettingsAndPaths files(kTitle);
    EXPECT_TRUE(Write(files, {"/a.k"})) << what;
    EXPECT_EQ(JobsOf(files).size(), 1u) << what;
    EXPECT_TRUE(LogHolds(files, "cannot be used")) << what;
    FileDirWrapper::RemoveFile(files.Log().Path());
  };
  const std::string ready = home_ / "ready";
  {
    SettingsAndPaths holder(kTitle);  // the object is there before
    const pid_t other = StartChild([&] {
      const int done = open(ready.c_str(), O_CREAT | O_WRONLY, 0666);
      const int file = open(kEventFile, O_RDWR);
      if (!Become("nobody")) return 1;
      for (const off_t byte : {0, 2}) {
        struct flock lock {};
        lock.l_type = F_WRLCK;
        lock.l_start = byte;
        lock.l_len = 1;
        if (fcntl(file, F_OFD_SETLK, &lock) != 0) return 1;
      }
      if (write(done, "x", 1) != 1) return 1;
      pause();
      return 0;
    });
    EXPECT_TRUE(WaitUntil([&] { return TempFolder::Read(ready) == "x"; }));
    handsOver("locks");
    kill(other, SIGKILL);
    WaitFor(other);
  }
  ASSERT_EQ(mkdir(kEventFile, 0777), 0);
  handsOver("a folder");
  rmdir(kEventFile);
}

TEST_F(HostileHandOver, KilledWritersLeaveWholeRecordsOrNone) {
  constexpr int kWriters = 30;
  constexpr int kPaths = 500;
  SettingsAndPaths files(kTitle);
  std::vector<std::string> jobs;
  HandOverReader reader(files, JobsInto(jobs));
  for (int i = 0; i < kWriters; ++i) {
    const pid_t writer = StartChild([&] {
      std::vector<std::string> paths;
      for (int k = 0; k < kPaths; ++k)
        paths.push_back("/" + std::to_string(i) + "/" + std::to_string(k) + "/whole.k");
      std::vector<const char*> arguments;
      for (const std::string& path : paths) arguments.push_back(path.c_str());
      SettingsAndPaths own(kTitle);
      while (Write(own, arguments)) {
      }
      return 1;
    });
    EXPECT_TRUE(WaitUntil([&] { return FileDirWrapper::FileExists(files.handOverFile); }));
    std::this_thread::sleep_for(std::chrono::milliseconds(i % 7));  // anywhere in its writing
    kill(writer, SIGKILL);
    WaitFor(writer);
    reader.Poll();
  }
  for (int poll = 0; poll < 5; ++poll) reader.Poll();
  ASSERT_FALSE(jobs.empty());
  EXPECT_EQ(jobs.size() % kPaths, 0u);
  for (std::size_t i = 0; i < jobs.size(); ++i) {
    const std::string end = "/" + std::to_string(i % kPaths) + "/whole.k";
    ASSERT_TRUE(jobs[i].ends_with(end)) << jobs[i];
  }
}

TEST_F(HostileHandOver, AFullDiskLeavesTheFileAsItWas) {
  SettingsAndPaths files(kTitle);
  ASSERT_TRUE(Write(files, {"/a.k"}));
  const std::string before = TempFolder::Read(files.handOverFile);
  EXPECT_EQ(InChild([&] {
              signal(SIGXFSZ, SIG_IGN);
              const rlimit full = {300, 300};
              setrlimit(RLIMIT_FSIZE, &full);
              const std::string name(400, 'x');
              return Write(files, {name.c_str()}) ? 1 : 0;
            }),
            0);
  EXPECT_EQ(TempFolder::Read(files.handOverFile), before);
  EXPECT_EQ(JobsOf(files).size(), 1u);
}

}  // namespace
