#include <windows.h>

#include <exception>
#include <mutex>
#include <utility>

#include "util/files/FileDirWrapper.h"
#include "util/process/PTWrapper.h"

namespace {

constexpr std::size_t kMostPathBytes = 259;
constexpr std::size_t kMostCommandBytes = 2047;
constexpr int kStillActive = 259;

class Handle {
 public:
  Handle() = default;
  explicit Handle(HANDLE handle) : handle_(handle) {}
  ~Handle() { Close(); }
  Handle(Handle&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  Handle& operator=(Handle&& other) noexcept {
    if (this != &other) {
      Close();
      handle_ = std::exchange(other.handle_, nullptr);
    }
    return *this;
  }

  HANDLE get() const { return handle_; }
  explicit operator bool() const { return handle_ != nullptr; }
  void Close() {
    if (handle_) CloseHandle(std::exchange(handle_, nullptr));
  }

 private:
  HANDLE handle_ = nullptr;
};

struct Pipe {
  Handle read, write, writeAgain;
};

// Null, or the message of the step that failed.
const char* MakePipe(Pipe& pipe) {
  SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
  HANDLE read = nullptr, write = nullptr;
  if (!CreatePipe(&read, &write, &inheritable, 0)) return "RUNAPP ERROR: Could not redirect STDIO";
  pipe.read = Handle(read);
  pipe.write = Handle(write);
  HANDLE again = nullptr;
  if (!DuplicateHandle(GetCurrentProcess(), write, GetCurrentProcess(), &again, 0, TRUE,
                       DUPLICATE_SAME_ACCESS))
    return "RUNAPP ERROR: Could not duplicate STDIO handle";
  pipe.writeAgain = Handle(again);
  return nullptr;
}

bool IsEmpty(HANDLE job) {
  JOBOBJECT_BASIC_ACCOUNTING_INFORMATION info{};
  return QueryInformationJobObject(job, JobObjectBasicAccountingInformation, &info, sizeof info,
                                   nullptr) &&
         info.ActiveProcesses == 0;
}

// A child that has ended stays readable here: a code of 259 is then its own.
bool HasEnded(HANDLE process) {
  return WaitForSingleObject(process, 0) == WAIT_OBJECT_0;
}

}  // namespace

struct PTWrapperProcess::Private {
  bool Start(const char* program, std::string& commandLine, STARTUPINFOA& startup, DWORD flags);
  bool End(bool leftovers);

  std::mutex mutex;          // guards what follows
  HANDLE process = nullptr;  // forgotten by Terminate, never closed: its id cannot be taken over
  DWORD processId = 0;
  Handle job;  // everything that the child starts, where the system lets us have one
  Handle pipeRead;
  Handle ioEvent;
  std::string childFolder;
};

// Starts the child stopped, so that nothing of it escapes the job.
bool PTWrapperProcess::Private::Start(const char* program, std::string& commandLine,
                                      STARTUPINFOA& startup, DWORD flags) {
  PROCESS_INFORMATION info{};
  if (!CreateProcessA(program, commandLine.empty() ? nullptr : commandLine.data(), nullptr, nullptr,
                      TRUE, flags | CREATE_SUSPENDED, nullptr,
                      childFolder.empty() ? nullptr : childFolder.c_str(), &startup, &info))
    return false;
  job = Handle(CreateJobObjectA(nullptr, nullptr));
  if (job && !AssignProcessToJobObject(job.get(), info.hProcess)) job.Close();
  ResumeThread(info.hThread);
  CloseHandle(info.hThread);
  process = info.hProcess;
  processId = info.dwProcessId;
  return true;
}

// Forgets the child. True when it has ended, and with it all that it started; of a child that had
// ended before, the latter only counts with `leftovers`.
bool PTWrapperProcess::Private::End(bool leftovers) {
  const HANDLE ending = std::exchange(process, nullptr);
  const Handle tree = std::move(job);
  processId = 0;
  if (HasEnded(ending) && !leftovers) return true;
  DWORD code = 0;
  GetExitCodeProcess(ending, &code);
  if (!TerminateProcess(ending, code) && !HasEnded(ending)) return false;
  if (tree && !TerminateJobObject(tree.get(), code)) return false;
  constexpr ULONGLONG kEndMilliseconds = 1900;
  constexpr DWORD kPauseMilliseconds = 10;
  const ULONGLONG deadline = GetTickCount64() + kEndMilliseconds;
  while (!HasEnded(ending) || (tree && !IsEmpty(tree.get()))) {
    if (GetTickCount64() >= deadline) return false;
    Sleep(kPauseMilliseconds);
  }
  return true;
}

PTWrapperProcess::PTWrapperProcess() : p_(std::make_unique<Private>()) {}

PTWrapperProcess::~PTWrapperProcess() {
  if (p_->process) CloseHandle(p_->process);
}

bool PTWrapperProcess::Create(const std::string& exePath, const std::string& commandLine,
                              const std::string& label, bool, unsigned creationFlags,
                              const std::string& workDir, bool showWindow) try {
  const std::lock_guard<std::mutex> lock(p_->mutex);
  if (p_->process) {
    SetLastError("the process is opened");
    return false;
  }
  if (!exePath.empty() && !FileDirWrapper::FileExists(exePath)) {
    SetLastError("%s does not exist", exePath.c_str());
    return false;
  }
  if (exePath.size() > kMostPathBytes || commandLine.size() > kMostCommandBytes) {
    SetLastError("CreateProcess %s %s failed: the command is too long", exePath.c_str(),
                 commandLine.c_str());
    return false;
  }

  std::string title = label.empty() ? exePath : label;
  STARTUPINFOA startup{};
  startup.cb = sizeof startup;
  if (!showWindow) {
    startup.dwFlags = STARTF_USESHOWWINDOW;
    startup.wShowWindow = SW_HIDE;
  }
  if ((creationFlags & kNewConsole) && !title.empty()) startup.lpTitle = title.data();

  // Without the flag that would make them count: the child writes to its console.
  Pipe pipe;
  if (const char* failed = MakePipe(pipe)) {
    SetLastError("%s", failed);
    return false;
  }
  startup.hStdOutput = pipe.write.get();
  startup.hStdError = pipe.writeAgain.get();
  Handle ioEvent(CreateEventA(nullptr, TRUE, FALSE, nullptr));
  if (!ioEvent) {
    SetLastError("RUNAPP ERROR: Could not create I/O Event");
    return false;
  }

  const bool inFolder = workDir.empty() || FileDirWrapper::SetCurrentDir(workDir);
  const std::string program = exePath.empty() ? exePath : FileDirWrapper::ShortPath(exePath);
  std::string line = commandLine;
  const bool named = !program.empty() || !line.empty();  // the system reads through two nulls
  if (!inFolder || !named ||
      !p_->Start(program.empty() ? nullptr : program.c_str(), line, startup, creationFlags)) {
    SetLastError("CreateProcess %s %s failed", program.c_str(), commandLine.c_str());
    return false;
  }
  p_->pipeRead = std::move(pipe.read);
  p_->ioEvent = std::move(ioEvent);
  return true;
} catch (const std::exception&) {
  SetLastError("Unknown error when create process");
  return false;
}

bool PTWrapperProcess::WaitProc() {
  HANDLE process = nullptr;
  {
    const std::lock_guard<std::mutex> lock(p_->mutex);
    process = p_->process;
  }
  if (!process) {
    SetLastError("the process is not opened");
    return false;
  }
  if (WaitForSingleObject(process, INFINITE) != WAIT_FAILED) return true;
  SetLastError("Invalid thread handle\n");
  const std::lock_guard<std::mutex> lock(p_->mutex);
  p_->process = nullptr;
  p_->processId = 0;
  return false;
}

bool PTWrapperProcess::IsActive() const {
  const std::lock_guard<std::mutex> lock(p_->mutex);
  return p_->process && !HasEnded(p_->process);
}

bool PTWrapperProcess::Terminate() {
  const std::lock_guard<std::mutex> lock(p_->mutex);
  if (!p_->process || p_->End(false)) return true;
  SetLastError("TerminateProcess failed, It might be closed by System");
  return false;
}

bool PTWrapperProcess::TerminateAll() {
  const std::lock_guard<std::mutex> lock(p_->mutex);
  if (!p_->process || p_->End(true)) return true;
  SetLastError("TerminateProcess failed, It might be closed by System");
  return false;
}

int PTWrapperProcess::ExitCode() const {
  const std::lock_guard<std::mutex> lock(p_->mutex);
  if (!p_->process) return -1;
  DWORD code = kStillActive;
  GetExitCodeProcess(p_->process, &code);
  return static_cast<int>(code);
}

std::int32_t PTWrapperProcess::ProcessId() const {
  return static_cast<std::int32_t>(GetCurrentProcessId());
}

std::int32_t PTWrapperProcess::ChildId() const {
  const std::lock_guard<std::mutex> lock(p_->mutex);
  return static_cast<std::int32_t>(p_->processId);
}

void PTWrapperProcess::SetChildFolder(const std::string& folder) {
  p_->childFolder = folder;
}

// A child always has its console here.
void PTWrapperProcess::SetOutputFile(const std::string&) {}
void PTWrapperProcess::SetConsoleProgram(const std::string&) {}
void PTWrapperProcess::SetConsoleHost(const std::string&) {}
