// What other users, dying processes and a full disk do to the application.
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <filesystem>

#include "core/Application.h"
#include "CoreFixture.h"
#include "support/ChildProcesses_posix.h"

namespace {

class HostileSystem : public CoreTest, protected ChildProcesses {
 protected:
  static std::ptrdiff_t NamesLeft(const SettingsAndPaths& files) {
    const std::filesystem::directory_iterator names(files.workFolder);
    return std::distance(begin(names), end(names));
  }
};

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

TEST_F(HostileSystem, APipeInThePlaceOfTheLogHoldsNobodyUp) {
  const TempFolder folder;
  ASSERT_EQ(mkfifo((folder / "kr.log").c_str(), 0600), 0);
  const int code = InChild([&] {
    alarm(20);
    AppLog(folder / "kr.log").Note(Message(MessageId::kReportNotWritten, "a"));
    return 0;
  });
  EXPECT_EQ(code, 0);
}

// As who clears the temporary folders does.
TEST_F(HostileSystem, APlaceThatIsRemovedIsHeldAgain) {
  Application application;
  const char* arguments[] = {"kestrun"};
  ASSERT_TRUE(application.Initialise(1, arguments));
  const HandOverPlace place = application.SettingsAndFiles().handOverPlaces.front();
  std::filesystem::remove_all(place.folder);
  EXPECT_TRUE(application.Tick());
  FileLock other;
  EXPECT_EQ(other.Take(place.lock, 0), FileLock::Result::kBusy);
  EXPECT_EQ(application.Shutdown(), 0);
  EXPECT_EQ(other.Take(place.lock, 0), FileLock::Result::kTaken);
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
  EXPECT_FALSE(application.ViewTextFile(home_ / "none"));
  EXPECT_EQ(fallback, "");
  EXPECT_TRUE(LogHolds(application.SettingsAndFiles(), "File [" + home_ / "none" + "] does"));
  for (const std::string& missing : {std::string("notepad.exe"), home_ / "no editor"}) {
    application.SettingsAndFiles().Set(&Settings::viewer, missing);
    fallback.clear();
    EXPECT_TRUE(application.ViewTextFile(text));
    EXPECT_EQ(fallback, text) << missing;
  }

  const std::string viewer =
      home_.WriteProgram("my viewer", "#!/bin/sh\nprintf %s \"$1\" > '" + shownName + "'\n");
  application.SettingsAndFiles().Set(&Settings::viewer, viewer);
  fallback.clear();
  EXPECT_TRUE(application.ViewTextFile(text));
  EXPECT_TRUE(WaitUntil([&] { return TempFolder::Read(shownName) == text; }));
  EXPECT_EQ(fallback, "");
}

TEST_F(HostileSystem, NoDisplayIsNoWindowAndTakesNoJobs) {
  EXPECT_FALSE(RaiseWindow("Kestrun 2016 R1"));
  Application application;
  const char* arguments[] = {"kestrun", "/a.k"};
  EXPECT_FALSE(application.Initialise(2, arguments, {.hasWindow = true}));
  EXPECT_EQ(Words(application.Failures()),
            std::vector<std::string>{"No display can be opened; no jobs were taken"});
  EXPECT_FALSE(FileDirWrapper::FileExists(application.SettingsAndFiles().handOverFile));
  EXPECT_EQ(application.Shutdown(), 1);
  const ScopedVariable nonsense("DISPLAY", ":54321");
  EXPECT_FALSE(RaiseWindow("Kestrun 2016 R1"));
}

}  // namespace
