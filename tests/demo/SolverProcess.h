// Runs the stand-in solver as a process in a scratch folder of its own, and reads what it left.
#ifndef KR_TESTS_DEMO_SOLVERPROCESS_H
#define KR_TESTS_DEMO_SOLVERPROCESS_H

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <thread>

#include "util/process/PTWrapper.h"

#ifdef _WIN32
constexpr char kExecutableSuffix[] = ".exe";
inline void SetVariable(const char* name, const char* value) {
  _putenv_s(name, value);
}
inline void ClearVariable(const char* name) {
  _putenv_s(name, "");
}
#else
constexpr char kExecutableSuffix[] = "";
inline void SetVariable(const char* name, const char* value) {
  setenv(name, value, 1);
}
inline void ClearVariable(const char* name) {
  unsetenv(name);
}
#endif

inline std::string SolverPath(const char* name = "standin_solver") {
  return std::string(KR_TEST_BIN_DIR) + "/" + name + kExecutableSuffix;
}

class ScratchFolder : public ::testing::Test {
 protected:
  void SetUp() override {
    const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
    home_ = std::filesystem::current_path();
    folder_ = std::filesystem::temp_directory_path() /
              (std::string("standin_") + test->name() + "_" +
               std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()));
    std::filesystem::create_directories(folder_);
    std::filesystem::current_path(folder_);
  }
  void TearDown() override {
    std::filesystem::current_path(home_);
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }

  void Write(const std::string& name, const std::string& text) {
    std::ofstream(folder_ / name, std::ios::binary) << text;
  }
  std::string Read(const std::string& name) {
    std::ifstream file(folder_ / name, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
  }
  bool Exists(const std::string& name) { return std::filesystem::exists(folder_ / name); }

  // A whole deck around the given lines.
  void WriteDeck(const std::string& lines) {
    Write("deck.k", "*KEYWORD\n" + lines + "*CONTROL_TERMINATION\n       1.0\n*END\n");
  }

  bool Start(PTWrapperProcess& process, const std::string& arguments,
             const std::string& program = SolverPath()) {
    return process.Create("", "\"" + program + "\" " + arguments, "", false, 0, folder_.string(),
                          false);
  }
  // The exit code.
  int Run(const std::string& arguments, const std::string& program = SolverPath()) {
    PTWrapperProcess process;
    EXPECT_TRUE(Start(process, arguments, program));
    process.WaitProc();
    const int code = process.ExitCode();
    process.Terminate();
    return code;
  }
  static bool WaitFor(const std::function<bool()>& condition) {
    for (int i = 0; i < 500; ++i) {
      if (condition()) return true;
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return false;
  }

  std::filesystem::path home_;
  std::filesystem::path folder_;
};

inline int CountOf(const std::string& text, const std::string& part) {
  int count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
    ++count;
  }
  return count;
}

inline bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

#endif
