// Named signals and processes, with real second threads and processes.

#include <chrono>
#include <cstdlib>
#include <functional>
#include <thread>

#include "Answers.h"
#include "support/TempFolder.h"
#include "util/process/PTWrapper.h"

namespace {

constexpr long kLong = 10000;  // milliseconds

std::string NewName(const std::string& prefix) {
  static int counter = 0;
  const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
  return prefix + "KR_ANSWERS_" + std::to_string(now) + "_" + std::to_string(counter++);
}

bool WaitForFile(const std::string& path) {
  for (int i = 0; i < 1000; ++i) {
    if (FileDirWrapper::FileExists(path)) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return false;
}

bool StartChild(PTWrapperProcess& process, const std::string& words) {
  std::string program;
  FileDirWrapper::QuotePath(FileDirWrapper::ProgramPath(), program);
  return process.Create("", program + " " + words, "", false, 0, {}, false);
}

// The child makes the file once it has what it is to hold.
bool StartHolder(PTWrapperProcess& process, const std::string& words, const TempFolder& folder) {
  static int counter = 0;
  const std::string file = folder / ("held" + std::to_string(counter++));
  return StartChild(process, words + " " + file) && WaitForFile(file);
}

std::string Number(int value) {
  return std::to_string(value);
}

std::string YesNo(bool value) {
  return value ? "yes" : "no";
}

void AnswerMutexes(const std::string& prefix, const TempFolder& folder) {
  const std::string service = prefix.empty() ? "mutex" : "global mutex";
  const std::string name = NewName(prefix);
  PTWrapperSignal first, second;
  Answer(service, "opened before it is there", YesNo(second.OpenMutexSignal(name)));
  Answer(service, "created", Number(first.CreateMutexSignal(name, true)));
  Answer(service, "created again", Number(second.CreateMutexSignal(name, true)));
  Answer(service, "taken again by its owner", Number(first.WaitForMutexSignal(0)));
  int other = -1;
  std::thread([&] { other = second.WaitForMutexSignal(20); }).join();
  Answer(service, "another thread waits", Number(other));
  bool released = true;
  std::thread([&] { released = second.ReleaseMutexSignal(); }).join();
  Answer(service, "another thread releases it", YesNo(released));
  Answer(service, "released as often as it was taken",
         YesNo(first.ReleaseMutexSignal()) + " " + YesNo(first.ReleaseMutexSignal()) + " " +
             YesNo(first.ReleaseMutexSignal()));
  std::thread([&] { second.WaitForMutexSignal(0); }).join();
  Answer(service, "its owner thread has ended", Number(first.WaitForMutexSignal(kLong)));
  Answer(service, "taken again after that", Number(first.WaitForMutexSignal(0)));
  Answer(service, "created as an event", Number(PTWrapperSignal().CreateEventSignal(name)));
  first.CloseMutexSignal();
  second.CloseMutexSignal();
  Answer(service, "created after all have closed it", Number(first.CreateMutexSignal(name, false)));
  PTWrapperProcess owner;
  if (!StartHolder(owner, "own " + name, folder)) return Answer(service, "a child", "none");
  Answer(service, "another process owns it", Number(first.WaitForMutexSignal(20)));
  owner.Terminate();
  Answer(service, "its owner process was killed", Number(first.WaitForMutexSignal(kLong)));
  first.ReleaseMutexSignal();
  Answer(service, "used after that", Number(first.WaitForMutexSignal(0)));
  first.ReleaseMutexSignal();
  PTWrapperProcess ended;
  StartChild(ended, "pass " + name);
  ended.WaitProc();
  Answer(service, "its owner process has ended by itself", Number(first.WaitForMutexSignal(kLong)));
  first.ReleaseMutexSignal();
  first.CloseMutexSignal();
  PTWrapperProcess alone;
  StartChild(alone, "pass " + name);
  alone.WaitProc();
  Answer(service, "made by a process that has ended", Number(first.CreateMutexSignal(name, false)));
  Answer(service, "in other case", Number(PTWrapperSignal().CreateMutexSignal(name + "x", false)));
}

void AnswerEvents(const std::string& prefix, const TempFolder& folder) {
  const std::string service = prefix.empty() ? "event" : "global event";
  const std::string name = NewName(prefix);
  PTWrapperSignal first, second;
  Answer(service, "opened before it is there", YesNo(second.OpenEventSignal(name)));
  Answer(service, "created", Number(first.CreateEventSignal(name)));
  Answer(service, "created again", Number(second.CreateEventSignal(name)));
  Answer(service, "not set", Number(first.WaitForEventSignal(0)));
  Answer(service, "set", YesNo(second.SetEventSignal()));
  Answer(service, "one wait passes, the next does not",
         Number(first.WaitForEventSignal(0)) + " " + Number(second.WaitForEventSignal(0)));
  second.SetEventSignal();
  second.SetEventSignal();
  Answer(service, "set twice is set once",
         Number(first.WaitForEventSignal(0)) + " " + Number(first.WaitForEventSignal(0)));
  second.SetEventSignal();
  Answer(service, "set and reset",
         YesNo(first.ResetEventSignal()) + " " + Number(second.WaitForEventSignal(0)));
  Answer(service, "created as a mutex", Number(PTWrapperSignal().CreateMutexSignal(name, false)));
  PTWrapperProcess holder;
  if (!StartHolder(holder, "hold " + name, folder)) return Answer(service, "a child", "none");
  second.SetEventSignal();
  first.CloseEventSignal();
  second.CloseEventSignal();
  Answer(service, "held by another process", Number(first.CreateEventSignal(name)));
  Answer(service, "still set then", Number(first.WaitForEventSignal(0)));
  first.CloseEventSignal();
  holder.Terminate();
  Answer(service, "its last holder was killed", Number(second.CreateEventSignal(name)));
}

void AnswerSemaphores() {
  const std::string name = NewName({});
  PTWrapperSignal first, second;
  Answer("semaphore", "created", Number(first.CreateSemaphoreSignal(name, 2, 3)));
  Answer("semaphore", "created again", Number(second.CreateSemaphoreSignal(name, 0, 1)));
  Answer("semaphore", "three waits at a count of two",
         Number(first.WaitForSemaphoreSignal(0)) + " " + Number(second.WaitForSemaphoreSignal(0)) +
             " " + Number(first.WaitForSemaphoreSignal(0)));
  Answer("semaphore", "released beyond its maximum", YesNo(first.ReleaseSemaphoreSignal(4)));
  PTWrapperSignal third;
  third.OpenSemaphoreSignal(name);
  Answer("semaphore", "released", YesNo(third.ReleaseSemaphoreSignal(3)));
  Answer("semaphore", "a wait after a release", Number(second.WaitForSemaphoreSignal(0)));
  PTWrapperSignal bad;
  Answer("semaphore", "a count above its maximum",
         Number(bad.CreateSemaphoreSignal(NewName({}), 2, 1)));
  Answer("semaphore", "a maximum of zero", Number(bad.CreateSemaphoreSignal(NewName({}), 0, 0)));
}

}  // namespace

void AnswerSignals() {
  const TempFolder folder;
  for (const char* prefix : {"", "Global\\"}) {
    AnswerMutexes(prefix, folder);
    AnswerEvents(prefix, folder);
  }
  AnswerSemaphores();
}

void AnswerProcesses() {
  const TempFolder folder;
  PTWrapperProcess process;
  Answer("process", "exit code without a child", Number(process.ExitCode()));
  Answer("process", "ended without a child", YesNo(process.Terminate()));
  StartHolder(process, "sleep x", folder);
  Answer("process", "exit code while it runs", Number(process.ExitCode()));
  Answer("process", "ended", YesNo(process.Terminate()));
  Answer("process", "exit code once it is forgotten", Number(process.ExitCode()));
  for (const int code : {0, 3, 255, 256, 259}) {
    PTWrapperProcess child;
    StartChild(child, "exit " + std::to_string(code));
    child.WaitProc();
    Answer("process", "exit code " + std::to_string(code),
           Number(child.ExitCode()) + (child.IsActive() ? " active" : ""));
    child.Terminate();
  }
  for (const char* words :
       {"a b", "\"a b\" c", "a\\b \"c\\\\\"", "a\\\"b c", "x\"y z\"", "\"\" a", "'a b'"}) {
    PTWrapperProcess child;
    const std::string file = folder / "words";
    StartChild(child, "words " + file + " " + words);
    child.WaitProc();
    Answer("words of a started program", words, TempFolder::Read(file));
  }
  PTWrapperProcess none;
  Answer("process", "a program that is not there",
         YesNo(none.Create("", "\"" + (folder / "none") + "\"", "", false, 0, {}, false)));
  Answer("process", "an empty command line", YesNo(none.Create("", "", "", false, 0, {}, false)));
}

int BehaveAsChild(const std::vector<std::string>& words) {
  const auto word = [&](std::size_t index) { return index < words.size() ? words[index] : ""; };
  const auto tellAndSleep = [](const std::string& file) {
    std::ofstream(file) << "x";
    std::this_thread::sleep_for(std::chrono::minutes(1));
    return 0;
  };
  PTWrapperSignal signal;
  if (word(0) == "exit") return std::stoi(word(1));
  if (word(0) == "sleep") return tellAndSleep(word(2));
  if (word(0) == "own") {
    signal.CreateMutexSignal(word(1), false);
    if (signal.WaitForMutexSignal(kLong) != 0) return 1;
    return tellAndSleep(word(2));
  }
  if (word(0) == "pass") {
    signal.CreateMutexSignal(word(1), false);
    signal.WaitForMutexSignal(kLong);
    std::_Exit(0);  // nothing of ours closes it
  }
  if (word(0) == "words") {
    std::ofstream file(word(1), std::ios::binary);
    for (std::size_t i = 2; i < words.size(); ++i) file << '<' << words[i] << '>';
    return 0;
  }
  if (word(0) == "hold") {
    if (!signal.OpenEventSignal(word(1))) return 1;
    return tellAndSleep(word(2));
  }
  return -1;
}
