#include <windows.h>

#include <exception>
#include <iomanip>
#include <map>
#include <random>
#include <sstream>
#include <utility>

#include "util/files/FileDirWrapper.h"
#include "util/process/PTWrapper.h"
#include "util/signals/Mutex.h"

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

// The same in all sessions of the machine.
std::string JobName(const std::string& token) {
  return "Global\\KR_RUN_" + token;
}

// Everything that the child will start, where the system lets us have it. It ends nothing when we
// end. A name lasts as long as somebody holds the object: the child does, and what inherits from
// it.
Handle NewJob(const std::string& token, HANDLE child) {
  Handle job(CreateJobObjectA(nullptr, JobName(token).c_str()));
  if (!job) job = Handle(CreateJobObjectA(nullptr, nullptr));
  if (!job || !AssignProcessToJobObject(job.get(), child)) return {};
  HANDLE its = nullptr;
  DuplicateHandle(GetCurrentProcess(), job.get(), child, &its, JOB_OBJECT_QUERY, TRUE, 0);
  return job;
}

bool IsEmpty(HANDLE job) {
  JOBOBJECT_BASIC_ACCOUNTING_INFORMATION info{};
  return QueryInformationJobObject(job, JobObjectBasicAccountingInformation, &info, sizeof info,
                                   nullptr) &&
         info.ActiveProcesses == 0;
}

// The id of a process in the job; 0 when there is none, or none is told.
std::int32_t OneOf(HANDLE job) {
  JOBOBJECT_BASIC_PROCESS_ID_LIST list{};  // room for one, which is enough
  if (!QueryInformationJobObject(job, JobObjectBasicProcessIdList, &list, sizeof list, nullptr) &&
      GetLastError() != ERROR_MORE_DATA) {
    return 0;
  }
  return list.NumberOfProcessIdsInList > 0 ? static_cast<std::int32_t>(list.ProcessIdList[0]) : 0;
}

// A child that has ended stays readable here: a code of 259 is then its own.
bool HasEnded(HANDLE process) {
  return WaitForSingleObject(process, 0) == WAIT_OBJECT_0;
}

std::wstring Wide(const std::string& text) {
  const int bytes = static_cast<int>(text.size());
  const int size = MultiByteToWideChar(CP_ACP, 0, text.data(), bytes, nullptr, 0);
  std::wstring wide(static_cast<std::size_t>(size), L'\0');
  MultiByteToWideChar(CP_ACP, 0, text.data(), bytes, wide.data(), size);
  return wide;
}

struct IgnoringCase {
  bool operator()(const std::wstring& a, const std::wstring& b) const {
    return CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(),
                                static_cast<int>(b.size()), TRUE) == CSTR_LESS_THAN;
  }
};
using Variables = std::map<std::wstring, std::wstring, IgnoringCase>;

// Names may begin with "=": there the system keeps the folders of the drives.
Variables CurrentVariables() {
  Variables variables;
  wchar_t* const block = GetEnvironmentStringsW();
  if (block == nullptr) return variables;
  for (const wchar_t* at = block; *at != L'\0';) {
    const std::wstring entry = at;
    at += entry.size() + 1;
    const std::size_t equals = entry.find(L'=', 1);
    if (equals != std::wstring::npos) variables[entry.substr(0, equals)] = entry.substr(equals + 1);
  }
  FreeEnvironmentStringsW(block);
  return variables;
}

// A block in the order that the system wants; empty when the child's variables are ours.
std::wstring EnvironmentFor(const PTWrapperProcessStart& start) {
  std::wstring block;
  if (start.variables.empty()) return block;
  Variables variables = CurrentVariables();
  for (const auto& [name, value] : start.variables) variables[Wide(name)] = Wide(value);
  for (const auto& [name, value] : variables) block += name + L'=' + value + L'\0';
  return block + L'\0';
}

// Who keeps what the child prints, see ConsoleKeeper; none where there is nothing to keep, or the
// program for it is missing. Ready for a child that ends as soon as it goes on.
Handle StartKeeper(const PTWrapperProcessStart& what, DWORD child) {
  constexpr DWORD kReadyMilliseconds = 2000;
  if (what.outputFile.empty() || !(what.creationFlags & PTWrapperProcess::kNewConsole)) return {};
  std::string folder;
  FileDirWrapper::DirOf(FileDirWrapper::ProgramPath(), folder);
  const std::string host =
      what.console.host.empty() ? FileDirWrapper::Join(folder, "krconsole.exe") : what.console.host;
  if (!FileDirWrapper::FileExists(host)) return {};
  const std::string name = "Local\\kestrun-console-" + std::to_string(child);
  const Handle ready(CreateEventA(nullptr, TRUE, FALSE, name.c_str()));
  std::string line = '"' + host + "\" " + std::to_string(child) + " \"" +
                     FileDirWrapper::AbsolutePath(what.outputFile) + "\" " + name;
  STARTUPINFOA startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION info{};
  // Not in the child's folder, which somebody may want to remove.
  if (!CreateProcessA(host.c_str(), line.data(), nullptr, nullptr, FALSE, DETACHED_PROCESS, nullptr,
                      folder.c_str(), &startup, &info)) {
    return {};
  }
  CloseHandle(info.hThread);
  const HANDLE any[] = {info.hProcess, ready.get()};
  if (ready) WaitForMultipleObjects(2, any, FALSE, kReadyMilliseconds);
  return Handle(info.hProcess);
}

}  // namespace

struct PTWrapperProcess::Private {
  bool Start(const PTWrapperProcessStart& what, const std::string& program, STARTUPINFOA& startup)
      KR_REQUIRES(mutex);
  bool End(bool leftovers) KR_REQUIRES(mutex);
  void AwaitKeeper() KR_REQUIRES(mutex);

  Mutex mutex;
  // Forgotten by Terminate, never closed: its id cannot be taken over.
  HANDLE process KR_GUARDED_BY(mutex) = nullptr;
  DWORD processId KR_GUARDED_BY(mutex) = 0;
  ProcessIdentity notEnded KR_GUARDED_BY(mutex);
  Handle job KR_GUARDED_BY(mutex);     // may be none
  Handle keeper KR_GUARDED_BY(mutex);  // may be none
  std::string token KR_GUARDED_BY(mutex);
  Handle pipeRead KR_GUARDED_BY(mutex);
  Handle ioEvent KR_GUARDED_BY(mutex);
};

// Starts the child stopped, so that nothing of it escapes the job.
bool PTWrapperProcess::Private::Start(const PTWrapperProcessStart& what, const std::string& program,
                                      STARTUPINFOA& startup) {
  std::string line = what.commandLine;
  std::wstring environment = EnvironmentFor(what);
  PROCESS_INFORMATION info{};
  if (!CreateProcessA(program.empty() ? nullptr : program.c_str(),
                      line.empty() ? nullptr : line.data(), nullptr, nullptr, TRUE,
                      what.creationFlags | CREATE_SUSPENDED | CREATE_UNICODE_ENVIRONMENT,
                      environment.empty() ? nullptr : environment.data(),
                      what.folder.empty() ? nullptr : what.folder.c_str(), &startup, &info))
    return false;
  token = what.token.empty() ? NewToken() : what.token;
  job = NewJob(token, info.hProcess);
  keeper = StartKeeper(what, info.dwProcessId);
  ResumeThread(info.hThread);
  CloseHandle(info.hThread);
  process = info.hProcess;
  processId = info.dwProcessId;
  return true;
}

// The child has ended. Who does not get ready would keep its console open.
void PTWrapperProcess::Private::AwaitKeeper() {
  constexpr DWORD kMilliseconds = 2000;
  const Handle waited = std::move(keeper);
  if (waited && WaitForSingleObject(waited.get(), kMilliseconds) == WAIT_TIMEOUT) {
    TerminateProcess(waited.get(), 1);
  }
}

// Forgets the child. True when it has ended, and with it all that it started; of a child that had
// ended before, the latter only counts with `leftovers`.
bool PTWrapperProcess::Private::End(bool leftovers) {
  notEnded = {};
  const HANDLE ending = std::exchange(process, nullptr);
  const Handle tree = std::move(job);
  keeper.Close();  // it ends by itself
  const ProcessIdentity identity = IdentityOfProcess(static_cast<std::int32_t>(processId));
  processId = 0;
  token.clear();
  if (HasEnded(ending) && !leftovers) return true;
  const auto fail = [&] {
    notEnded = HasEnded(ending) ? IdentityOfProcess(tree ? OneOf(tree.get()) : 0) : identity;
    return false;
  };
  DWORD code = 0;
  GetExitCodeProcess(ending, &code);
  if (!TerminateProcess(ending, code) && !HasEnded(ending)) return fail();
  if (tree && !TerminateJobObject(tree.get(), code)) return fail();
  constexpr ULONGLONG kEndMilliseconds = 1900;
  constexpr DWORD kPauseMilliseconds = 10;
  const ULONGLONG deadline = GetTickCount64() + kEndMilliseconds;
  while (!HasEnded(ending) || (tree && !IsEmpty(tree.get()))) {
    if (GetTickCount64() >= deadline) return fail();
    Sleep(kPauseMilliseconds);
  }
  return true;
}

PTWrapperProcess::PTWrapperProcess() : p_(std::make_unique<Private>()) {}

PTWrapperProcess::~PTWrapperProcess() {
  if (p_->process) CloseHandle(p_->process);
}

bool PTWrapperProcess::Launch(const PTWrapperProcessStart& what, const std::string& ownFolder) try {
  const MutexLock lock(p_->mutex);
  if (p_->process) {
    SetLastError("the process is opened");
    return false;
  }
  if (!what.program.empty() && !FileDirWrapper::FileExists(what.program)) {
    SetLastError("%s does not exist", what.program.c_str());
    return false;
  }
  if (what.program.size() > kMostPathBytes || what.commandLine.size() > kMostCommandBytes) {
    SetLastError("CreateProcess %s %s failed: the command is too long", what.program.c_str(),
                 what.commandLine.c_str());
    return false;
  }

  std::string title = what.title.empty() ? what.program : what.title;
  STARTUPINFOA startup{};
  startup.cb = sizeof startup;
  if (!what.showWindow || what.console.minimised) {
    startup.dwFlags = STARTF_USESHOWWINDOW;
    startup.wShowWindow = what.showWindow ? SW_SHOWMINNOACTIVE : SW_HIDE;
  }
  if ((what.creationFlags & kNewConsole) && !title.empty()) startup.lpTitle = title.data();

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

  const bool inFolder = ownFolder.empty() || FileDirWrapper::SetCurrentDir(ownFolder);
  const std::string program =
      what.program.empty() ? what.program : FileDirWrapper::ShortPath(what.program);
  const bool named = !program.empty() || !what.commandLine.empty();  // not two nulls
  if (!inFolder || !named || !p_->Start(what, program, startup)) {
    SetLastError("CreateProcess %s %s failed", program.c_str(), what.commandLine.c_str());
    return false;
  }
  p_->pipeRead = std::move(pipe.read);
  p_->ioEvent = std::move(ioEvent);
  return true;
} catch (const std::exception&) {
  SetLastError("Unknown error when create process");
  return false;
}

// Opened before it is looked at: as long as it is open, its id is its own.
bool PTWrapperProcess::Open(const ProcessIdentity& process, const std::string& token) {
  const MutexLock lock(p_->mutex);
  if (p_->process) {
    SetLastError("the process is opened");
    return false;
  }
  constexpr DWORD kAccess = SYNCHRONIZE | PROCESS_TERMINATE | PROCESS_QUERY_LIMITED_INFORMATION;
  const HANDLE opened = OpenProcess(kAccess, FALSE, static_cast<DWORD>(process.id));
  if (opened == nullptr || !Runs(process)) {
    if (opened != nullptr) CloseHandle(opened);
    SetLastError("process %d does not run", static_cast<int>(process.id));
    return false;
  }
  p_->process = opened;
  p_->processId = static_cast<DWORD>(process.id);
  p_->token = token;
  if (!token.empty()) {
    p_->job = Handle(
        OpenJobObjectA(JOB_OBJECT_QUERY | JOB_OBJECT_TERMINATE, FALSE, JobName(token).c_str()));
  }
  return true;
}

bool PTWrapperProcess::WaitProc() {
  HANDLE process = nullptr;
  {
    const MutexLock lock(p_->mutex);
    process = p_->process;
  }
  if (!process) {
    SetLastError("the process is not opened");
    return false;
  }
  if (WaitForSingleObject(process, INFINITE) != WAIT_FAILED) {
    const MutexLock lock(p_->mutex);
    p_->AwaitKeeper();
    return true;
  }
  SetLastError("Invalid thread handle\n");
  const MutexLock lock(p_->mutex);
  p_->process = nullptr;
  p_->processId = 0;
  return false;
}

bool PTWrapperProcess::IsActive() const {
  const MutexLock lock(p_->mutex);
  if (!p_->process || !HasEnded(p_->process)) return p_->process != nullptr;
  p_->AwaitKeeper();
  return false;
}

bool PTWrapperProcess::Terminate() {
  const MutexLock lock(p_->mutex);
  if (!p_->process || p_->End(false)) return true;
  SetLastError("TerminateProcess failed, It might be closed by System");
  return false;
}

bool PTWrapperProcess::TerminateAll() {
  const MutexLock lock(p_->mutex);
  if (!p_->process || p_->End(true)) return true;
  SetLastError("TerminateProcess failed, It might be closed by System");
  return false;
}

ProcessIdentity PTWrapperProcess::NotEnded() const {
  const MutexLock lock(p_->mutex);
  return p_->notEnded;
}

int PTWrapperProcess::ExitCode() const {
  const MutexLock lock(p_->mutex);
  if (!p_->process) return -1;
  DWORD code = kStillActive;
  GetExitCodeProcess(p_->process, &code);
  return static_cast<int>(code);
}

int PTWrapperProcess::SignalOf(int) {
  return 0;
}

std::int32_t PTWrapperProcess::ProcessId() const {
  return static_cast<std::int32_t>(GetCurrentProcessId());
}

std::int32_t PTWrapperProcess::ChildId() const {
  const MutexLock lock(p_->mutex);
  return static_cast<std::int32_t>(p_->processId);
}

std::string PTWrapperProcess::Token() const {
  const MutexLock lock(p_->mutex);
  return p_->token;
}

std::string PTWrapperProcess::NewToken() {
  std::random_device random;
  std::ostringstream token;
  token << std::hex << std::setfill('0');
  for (int i = 0; i < 4; ++i) token << std::setw(8) << random();
  return token.str();
}

// A folder cannot be told.
std::int32_t PTWrapperProcess::FindStarted(const std::string& token, const std::string&) {
  if (token.empty()) return 0;
  const Handle job(OpenJobObjectA(JOB_OBJECT_QUERY, FALSE, JobName(token).c_str()));
  return job ? OneOf(job.get()) : 0;
}
