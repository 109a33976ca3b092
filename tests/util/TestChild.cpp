#include "TestChild.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <thread>
#ifdef _WIN32
#include <windows.h>
#else
#include <filesystem>
#endif

#include "support/OwnProgram.h"
#include "util/files/FileLock.h"

namespace {

void SleepLong() {
  std::this_thread::sleep_for(std::chrono::minutes(1));
}

void MakeFile(const std::string& path) {
  if (std::FILE* file = std::fopen(path.c_str(), "wb")) std::fclose(file);
}

void StartTree(int depth, const std::string& file) {
  PTWrapperProcess below;
  if (depth > 0) {
    StartTestChild(below, "tree " + std::to_string(depth - 1) + " " + file);
  }
  std::ofstream(file + std::to_string(depth)) << below.ProcessId() << '\n';
  SleepLong();
}

void Look(const std::string& file) {
  std::string folder;
  FileDirWrapper::CurrentDir(folder);
  std::ofstream report(file);
  report << folder << '\n';
  for (const char* name : {"KR_WORD", "KR_EMPTY"}) {
    const char* value = std::getenv(name);
    report << (value != nullptr ? value : "none") << '\n';
  }
}

int Behave(const std::string& behaviour) {
  std::istringstream words(behaviour);
  std::string what, name, file;
  words >> what >> name >> file;
  PTWrapperSignal signal;
  if (what == "exit") return std::atoi(name.c_str());
  if (what == "sleep") SleepLong();
  if (what == "own") {
    signal.CreateMutexSignal(name, false);
    signal.WaitForMutexSignal(-1);
    MakeFile(file);
    SleepLong();
  }
  if (what == "take" || what == "hold") {
    if (!signal.OpenEventSignal(name)) signal.CreateEventSignal(name);
    MakeFile(file);
    if (what == "take") return signal.WaitForEventSignal(-1);
    SleepLong();
  }
  FileLock lock;
  if (what == "lock" && lock.Take(name, 0) == FileLock::Result::kTaken) {
    MakeFile(file);
    SleepLong();
  }
  if (what == "set") return signal.OpenEventSignal(name) && signal.SetEventSignal() ? 0 : 1;
  if (what == "tree") StartTree(std::atoi(name.c_str()), file);
  if (what == "leave") {
    PTWrapperProcess left;
    return StartTestChild(left, "tree 0 " + name) ? 0 : 1;
  }
  if (what == "look") {
    Look(name);
    return 0;
  }
  return 99;
}

const OwnProgramChild child(kTestChildSwitch, Behave);

}  // namespace

PTWrapperProcessStart TestChildStart(const std::string& behaviour) {
  return OwnProgram(kTestChildSwitch, behaviour);
}

bool StartTestChild(PTWrapperProcess& process, const std::string& behaviour,
                    const std::string& launcher) {
  PTWrapperProcessStart start = TestChildStart(behaviour);
  if (!launcher.empty()) {
    start.program.clear();
    start.commandLine = launcher + " " + start.commandLine;
  }
  return process.Create(start);
}

int OpenHandles() {
#ifdef _WIN32
  DWORD count = 0;
  GetProcessHandleCount(GetCurrentProcess(), &count);
  return static_cast<int>(count);
#else
  const std::filesystem::directory_iterator open("/proc/self/fd");
  return static_cast<int>(std::distance(begin(open), end(open)));
#endif
}
