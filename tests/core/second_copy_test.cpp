// Real second processes: this test program, started again, is another copy of the program.
#include <cstdlib>
#include <filesystem>
#include <future>
#include <map>

#include "core/Application.h"
#include "CoreFixture.h"

namespace {

// "wait", or the configuration folder of a real copy, a semicolon, and its argument.
constexpr char kBehaviour[] = "KR_TEST_COPY";
constexpr char kOwnRun[] = "--submit";
constexpr int kStaysOpen = 100;

int RunCopy(const std::string& behaviour) {
  const std::size_t end = behaviour.find(';');
#ifdef _WIN32
  const ScratchAppData appData(behaviour.substr(0, end));
#endif
  const std::string argument = behaviour.substr(end + 1);
  Application application;
  const char* arguments[] = {"kestrun", argument.c_str(), "/b.k"};
  if (application.Initialise(3, arguments, {.ownRun = argument == kOwnRun})) return kStaysOpen;
  return application.Shutdown();
}

// Takes the place of the tests in a process that is to be a copy.
class Copy : public testing::Environment {
 public:
  void SetUp() override {
    const char* set = std::getenv(kBehaviour);
    const std::string behaviour = set != nullptr ? set : "";
    if (behaviour.empty()) return;
    if (behaviour == "wait") {
      std::this_thread::sleep_for(std::chrono::minutes(1));
      std::_Exit(1);
    }
    std::_Exit(RunCopy(behaviour));
  }
};
[[maybe_unused]] const auto* const copy = testing::AddGlobalTestEnvironment(new Copy);

class SecondCopy : public CoreTest {
 protected:
  bool Start(PTWrapperProcess& process, const std::string& program, const std::string& behaviour) {
    const ScopedVariable set(kBehaviour, behaviour);
    // As of a log-on script.
    const ScopedVariable temporary("TMP", home_ / "config");
    std::string quoted;
    FileDirWrapper::QuotePath(program, quoted);
    return process.Create(program, quoted, "", false, 0, "", false);
  }
  // A running process whose program has this name.
  bool StartNamed(PTWrapperProcess& process, const std::string& name) {
#ifdef _WIN32
    const std::string program = home_ / (name + ".exe");
#else
    const std::string program = home_ / name;
#endif
    using std::filesystem::copy_options;
    std::filesystem::copy_file(FileDirWrapper::ProgramPath(), program, copy_options::skip_existing);
    return Start(process, program, "wait");
  }
  // Starts another copy, which a running one must look out for.
  bool StartCopy(PTWrapperProcess& process, const std::string& argument) {
    return Start(process, FileDirWrapper::ProgramPath(), home_ / "config" + ";" + argument);
  }
  static int ExitCodeOf(PTWrapperProcess& process, Application* running) {
    auto end = std::async(std::launch::async, [&process] { return process.WaitProc(); });
    while (end.wait_for(std::chrono::milliseconds(20)) != std::future_status::ready) {
      if (running) running->Tick();
    }
    return end.get() ? process.ExitCode() : -1;
  }
  int ExitCodeOfACopy(Application* running, const std::string& argument = "/a.k") {
    PTWrapperProcess process;
    EXPECT_TRUE(StartCopy(process, argument));
    return ExitCodeOf(process, running);
  }
};

TEST_F(SecondCopy, HandsOverAndEndsAndChangesNoSettings) {
  Application running;
  const char* alone[] = {"kestrun"};
  ASSERT_TRUE(running.Initialise(1, alone));
  running.SettingsAndFiles().Set(&Settings::cpu_count, 12);
  ASSERT_TRUE(running.SettingsAndFiles().WriteSettings());
  PTWrapperProcess first, second;
  ASSERT_TRUE(StartNamed(first, "kestrun_a"));
  ASSERT_TRUE(StartNamed(second, "KESTRUN_B"));
  int code = -1;
  EXPECT_TRUE(WaitUntil([&] { return (code = ExitCodeOfACopy(&running)) != kStaysOpen; }));
  EXPECT_EQ(code, 0);
  EXPECT_EQ(ExitCodeOfACopy(&running, kOwnRun), 8);

  constexpr int kCopies = 10;
  PTWrapperProcess copies[kCopies];
  for (int i = 0; i < kCopies; ++i)
    EXPECT_TRUE(StartCopy(copies[i], "/" + std::to_string(i) + ".k"));
  for (PTWrapperProcess& one : copies) EXPECT_EQ(ExitCodeOf(one, &running), 0);
  running.Intake().Drain();
  std::map<std::string, int> times;
  running.Manager().CurrentGroup()->ReadJobs([&](const JobFile& job) {
    std::string name;
    FileDirWrapper::FileNameOf(job.jobFile, name, false);
    ++times[name];
  });
  for (int i = 0; i < kCopies; ++i) EXPECT_EQ(times[std::to_string(i)], 1) << i;
  EXPECT_EQ(times["b"], kCopies + 1);
  EXPECT_EQ(times["a"], 1);
  SettingsAndPaths stored(kTitle);
  stored.ReadSettings();
  EXPECT_EQ(stored.Get().cpu_count, 12);

  EXPECT_TRUE(first.Terminate());
  EXPECT_TRUE(second.Terminate());
  running.Shutdown();
  EXPECT_EQ(ExitCodeOfACopy(nullptr), kStaysOpen) << "alone again";
}

// Its jobs are not lost with it, and nobody has to try again.
TEST_F(SecondCopy, TakesThePlaceOfACopyThatEnds) {
  const SettingsAndPaths files(kTitle);
  for (const std::string argument : {"/a.k", kOwnRun}) {
    PTWrapperProcess others[2], next;
    ASSERT_TRUE(StartNamed(others[0], "kestrun_a"));
    ASSERT_TRUE(StartNamed(others[1], "kestrun_b"));
    ASSERT_TRUE(StartCopy(next, argument));
    // It has seen them then, or is about to.
    EXPECT_TRUE(WaitUntil([&] {
      FileLock probe;
      return argument == kOwnRun
                 ? probe.Take(files.handOverPlaces.front().lock, 0) == FileLock::Result::kBusy
                 : FileDirWrapper::FileExists(files.handOverFile);
    }));
    for (PTWrapperProcess& other : others) EXPECT_TRUE(other.Terminate());
    EXPECT_EQ(ExitCodeOf(next, nullptr), kStaysOpen) << argument;
    std::filesystem::remove(files.handOverFile);
  }
}

}  // namespace
