// What other users, dying processes and a full disk do to the application.
#include <fcntl.h>
#include <pwd.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <set>

#include "core/Application.h"
#include "core/HandOverFile.h"
#include "CoreFixture.h"

namespace {

using hand_over_file::Result;

class HostileSystem : public CoreTest {
 protected:
  static pid_t StartChild(const std::function<int()>& run) {
    const pid_t pid = fork();
    if (pid == 0) _exit(run());
    return pid;
  }
  // Runs the function in a process of its own and gives its exit code.
  static int InChild(const std::function<int()>& run) { return WaitFor(StartChild(run)); }
  static int WaitFor(pid_t pid) {
    int status = -1;
    waitpid(pid, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

  static bool Become(const char* user) {
    const passwd* entry = getpwnam(user);
    return entry != nullptr && setgid(entry->pw_gid) == 0 && setuid(entry->pw_uid) == 0;
  }

  static std::ptrdiff_t NamesLeft(const SettingsAndPaths& files) {
    const std::filesystem::directory_iterator names(files.workFolder);
    return std::distance(begin(names), end(names));
  }

  Result Read(const std::string& path) {
    hand_over_file::Contents contents;
    return hand_over_file::Read(path, 1000, contents);
  }

  // A running process whose program has this name.
  void StartNamed(const std::string& name, const char* user) {
    const std::string program = home_ / name;
    std::filesystem::copy_file("/bin/sleep", program, std::filesystem::copy_options::skip_existing);
    const pid_t pid = fork();
    if (pid == 0) {
      if (Become(user)) execl(program.c_str(), name.c_str(), "100", nullptr);
      _exit(127);
    }
    started_.push_back(pid);
  }

  ~HostileSystem() override {
    for (const pid_t pid : started_) {
      kill(pid, SIGKILL);
      waitpid(pid, nullptr, 0);
    }
  }

  const std::string file_ = home_ / "handover.txt";
  std::vector<pid_t> started_;
};

TEST_F(HostileSystem, OnlyAFileOfThisUserAloneIsReadOrWritten) {
  EXPECT_EQ(Read(file_), Result::kMissing);
  ASSERT_EQ(hand_over_file::Write(file_, "a\n", false), Result::kDone);
  struct stat info {};
  ASSERT_EQ(stat(file_.c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777, 0600u);
  EXPECT_EQ(Read(file_), Result::kDone);

  const auto refused = [&](const std::string& path) {
    EXPECT_EQ(Read(path), Result::kRefused) << path;
    EXPECT_EQ(hand_over_file::Write(path, "x", false), Result::kRefused) << path;
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
  if (geteuid() == 0) {
    ASSERT_EQ(chown(file_.c_str(), 1, 1), 0);
    refused(file_);
    ASSERT_EQ(chown(file_.c_str(), 0, 0), 0);
  }
  EXPECT_EQ(TempFolder::Read(file_), "a\n");
  hand_over_file::Contents contents;
  home_.Write("handover.txt", std::string(1001, 'x'));
  EXPECT_EQ(Read(file_), Result::kRefused);
}

TEST_F(HostileSystem, ARefusedFileIsReportedOnceAndEndsTheWriterWithNine) {
  const std::string target = home_.Write("precious", "data");
  const std::string path = SettingsAndPaths(kTitle).handOverFile;
  ASSERT_EQ(symlink(target.c_str(), path.c_str()), 0);
  const char* arguments[] = {"kestrun", "/a.k"};
  Application application;
  ASSERT_TRUE(application.Initialise(2, arguments));
  EXPECT_EQ(application.exitCode, 9);
  for (int i = 0; i < 3; ++i) application.Tick();
  const std::string log = TempFolder::Read(application.SettingsAndFiles().Log().Path());
  EXPECT_NE(log.find("Write tmp file [" + path + "] failed"), std::string::npos);
  const std::size_t report = log.find("refused");
  ASSERT_NE(report, std::string::npos);
  EXPECT_EQ(log.find("refused", report + 1), std::string::npos);
  EXPECT_EQ(TempFolder::Read(target), "data");
  EXPECT_EQ(application.Shutdown(), 9);
}

TEST_F(HostileSystem, AProcessThatDiesWithTheEventStopsNobody) {
  Application application;
  const char* arguments[] = {"kestrun"};
  ASSERT_TRUE(application.Initialise(1, arguments));
  EXPECT_EQ(InChild([] {
              PTWrapperSignal event;
              event.OpenEventSignal("Global\\KESTRUN_TEMP_FILE_READWRITE");
              return event.WaitForEventSignal(1000);
            }),
            0);
  SettingsAndPaths& settings = application.SettingsAndFiles();
  ASSERT_EQ(hand_over_file::Write(settings.handOverFile, "#krjob\n/a.k\n", false), Result::kDone);
  const auto begin = std::chrono::steady_clock::now();
  for (int i = 0; i < 4; ++i) application.Tick();
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
  application.Intake().Drain();
  EXPECT_EQ(application.Manager().CurrentGroup()->JobCount(), 1);
}

TEST_F(HostileSystem, CopiesOfTwoUsersDoNotCountAsTwo) {
  if (geteuid() != 0) GTEST_SKIP() << "needs root";
  chmod(home_.Path().c_str(), 0755);
  StartNamed("kestrun_a", "nobody");
  StartNamed("kestrun_b", "daemon");
  ASSERT_TRUE(WaitUntil([&] {
    std::vector<PTWrapperProcessInfo> processes;
    PTWrapperProcess::FindRunningProcessName(processes);
    std::set<std::string> users;
    for (const PTWrapperProcessInfo& process : processes) {
      std::string user;
      PTWrapperProcess::GetProcessUser(process.processId, user);
      if (process.exeName.starts_with("kestrun_")) users.insert(user);
    }
    return users == std::set<std::string>{"nobody", "daemon"};
  }));
  Application application;
  const char* arguments[] = {"kestrun"};
  EXPECT_TRUE(application.Initialise(1, arguments));
}

TEST_F(HostileSystem, UsersOfOneTemporaryFolderWaitForEachOther) {
  if (geteuid() != 0) GTEST_SKIP() << "needs root";
  chmod(home_.Path().c_str(), 01777);
  SettingsAndPaths ours(kTitle);
  const std::string path = ours.handOverFile;
  ASSERT_EQ(hand_over_file::Write(path, "#krjob\n/ours.k\n", false), Result::kDone);
  const pid_t other = fork();
  if (other == 0) {
    setenv("XDG_CONFIG_HOME", (home_ / "other").c_str(), 1);
    if (!Become("nobody")) _exit(100);
    SettingsAndPaths theirs(kTitle);
    const char* arguments[] = {"kestrun", "/theirs.k"};
    _exit(WriteHandOver(theirs, 2, arguments) ? 0 : 1);
  }
  std::this_thread::sleep_for(std::chrono::milliseconds(500));
  EXPECT_EQ(TempFolder::Read(path), "#krjob\n/ours.k\n");
  std::filesystem::remove(path);
  int status = -1;
  waitpid(other, &status, 0);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(TempFolder::Read(path), "#krjob\n/theirs.k\n");
  EXPECT_EQ(Read(path), Result::kRefused);
}

TEST_F(HostileSystem, AFullDiskLeavesTheOldFiles) {
  SettingsAndPaths files(kTitle);
  files.Set(&Settings::memory_size, std::uint64_t{111});
  ASSERT_TRUE(files.WriteSettings());
  files.WriteGroupFile({{"Old", "text"}});
  const std::string settingsBefore = TempFolder::Read(files.settingsFile);
  const std::string groupsBefore = TempFolder::Read(files.groupFile);
  const int code = InChild([&] {
    signal(SIGXFSZ, SIG_IGN);
    const rlimit full = {300, 300};
    setrlimit(RLIMIT_FSIZE, &full);
    files.Set(&Settings::memory_size, std::uint64_t{222});
    files.WriteGroupFile({{"New", std::string(5000, 'x')}});
    return files.WriteSettings() ? 1 : files.Dirty() ? 0 : 2;
  });
  EXPECT_EQ(code, 0);
  EXPECT_EQ(TempFolder::Read(files.settingsFile), settingsBefore);
  EXPECT_EQ(TempFolder::Read(files.groupFile), groupsBefore);
  EXPECT_LE(NamesLeft(files), 3) << "with the log";
}

// The access key in it is nobody else's business, and the file may be kept in another place.
TEST_F(HostileSystem, StoringTheSettingsKeepsRightsAndLink) {
  SettingsAndPaths files(kTitle);
  std::filesystem::create_directories(files.workFolder);
  const std::string kept = home_ / "kept.ini";
  std::ofstream(kept) << "[SOLVER]\ninc_token=secret\n";
  chmod(kept.c_str(), 0600);
  ASSERT_EQ(symlink(kept.c_str(), files.settingsFile.c_str()), 0);
  files.Set(&Settings::cpu_count, 4);
  ASSERT_TRUE(files.WriteSettings());
  EXPECT_TRUE(std::filesystem::is_symlink(files.settingsFile));
  struct stat info {};
  ASSERT_EQ(stat(kept.c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777, 0600u);
  EXPECT_NE(TempFolder::Read(kept).find("cpu_count=4"), std::string::npos);
  EXPECT_EQ(NamesLeft(files), 1);
}

// As at the end of copies of the program that were started together.
TEST_F(HostileSystem, ProcessesThatStoreTheSettingsTogetherDoNotMeet) {
  for (int round = 0; round < 10; ++round) {
    SettingsAndPaths files(kTitle);
    FileDirWrapper::RemoveFile(files.settingsFile);
    std::vector<pid_t> processes;
    for (int cpus = 2; cpus < 6; ++cpus) {
      processes.push_back(StartChild([&] {
        files.Set(&Settings::cpu_count, cpus);
        return files.WriteSettings() ? 0 : 1;
      }));
    }
    for (const pid_t process : processes) EXPECT_EQ(WaitFor(process), 0);
    EXPECT_EQ(NamesLeft(files), 1) << "nothing beside the settings file";
  }
}

TEST_F(HostileSystem, TheViewerOfTheSettingsOrTheFallbackShowsAFile) {
  Application application;
  const char* arguments[] = {"kestrun"};
  ASSERT_TRUE(application.Initialise(1, arguments));
  const std::string shownName = home_ / "shown";
  const std::string text = home_.Write("a \"file\".txt", "x");
  std::string fallback;
  application.TextFallback = [&](const std::string& path) {
    fallback = path;
    return true;
  };
  for (const std::string& missing : {std::string("notepad.exe"), home_ / "no editor"}) {
    application.SettingsAndFiles().Set(&Settings::viewer, missing);
    fallback.clear();
    EXPECT_TRUE(application.ViewTextFile(text));
    EXPECT_EQ(fallback, text) << missing;
  }

  const std::string viewer =
      home_.Write("my viewer", "#!/bin/sh\nprintf %s \"$1\" > '" + shownName + "'\n");
  chmod(viewer.c_str(), 0755);
  application.SettingsAndFiles().Set(&Settings::viewer, viewer);
  fallback.clear();
  EXPECT_TRUE(application.ViewTextFile(text));
  EXPECT_TRUE(WaitUntil([&] { return TempFolder::Read(shownName) == text; }));
  EXPECT_EQ(fallback, "");
}

TEST_F(HostileSystem, NoDisplayIsNoWindow) {
  EXPECT_FALSE(RaiseWindow("Kestrun 2016 R1"));
  const ScopedVariable nonsense("DISPLAY", ":54321");
  EXPECT_FALSE(RaiseWindow("Kestrun 2016 R1"));
}

}  // namespace
