// Real second processes: this test program, started again, is another copy of the program.
#include <cstdlib>
#include <filesystem>

#include "core/Application.h"
#include "CoreFixture.h"

namespace {

constexpr char kBehaviour[] = "KR_TEST_COPY";  // "wait", or the configuration folder of a real copy
constexpr int kStaysOpen = 100;

int RunCopy([[maybe_unused]] const std::string& configuration) {
#ifdef _WIN32
  const ScratchAppData appData(configuration);
#endif
  Application application;
  const char* arguments[] = {"kestrun", "/a.k", "/b.k"};
  if (application.Initialise(3, arguments)) return kStaysOpen;
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
    std::filesystem::copy_file(FileDirWrapper::ProgramPath(), program);
    return Start(process, program, "wait");
  }
  int ExitCodeOfACopy() {
    PTWrapperProcess process;
    EXPECT_TRUE(Start(process, FileDirWrapper::ProgramPath(), home_ / "config"));
    EXPECT_TRUE(process.WaitProc());
    return process.ExitCode();
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
  EXPECT_TRUE(WaitUntil([&] { return (code = ExitCodeOfACopy()) != kStaysOpen; }));
  EXPECT_EQ(code, 0);
  EXPECT_TRUE(running.Tick());
  running.Intake().Drain();
  EXPECT_GE(running.Manager().CurrentGroup()->JobCount(), 2);
  SettingsAndPaths stored(kTitle);
  stored.ReadSettings();
  EXPECT_EQ(stored.Get().cpu_count, 12);

  EXPECT_TRUE(first.Terminate());
  EXPECT_TRUE(second.Terminate());
  running.Shutdown();
  EXPECT_EQ(ExitCodeOfACopy(), kStaysOpen) << "alone again";
}

}  // namespace
