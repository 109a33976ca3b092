// Processes, named signals and threads.
//
// Operations return false (or 0, or 3 for a wait) on failure and leave their text in LastError().
//
// The family is whole as others know it. The program itself has no use for its semaphores and
// critical sections, nor for starting by Launch and for the priorities and ends of threads.
#ifndef KR_UTIL_PROCESS_PTWRAPPER_H
#define KR_UTIL_PROCESS_PTWRAPPER_H

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "util/process/ProcessIdentity.h"
#include "util/text/ErrorRecord.h"

class PTWrapper : public ErrorReporting {};

struct PTWrapperProcessInfo {
  std::int32_t processId = 0;
  std::string exeName;  // the executable file's name, no folder; not a script's or thread's name
};

// Where a new console comes from. On Windows it comes from the system.
struct PTWrapperConsole {
  // A name looked up in PATH, or a path; it must know "-T title -e command...".
  std::string terminal = "xterm";
  // The path of the console host program; empty: krconsole, beside the running program.
  std::string host;
  // Its window begins minimised. Linux: the terminal must know "-iconic", as xterm does.
  bool minimised = false;
};

// What a child is started with. All of it is for the child alone: neither the current folder nor
// the environment of this process changes, so that several threads may start children at once.
struct PTWrapperProcessStart {
  // A path; empty: the first word of the command line, looked up in PATH.
  std::string program;
  // The whole line, first word included; split by the Windows quoting rules.
  std::string commandLine;
  std::string title;           // of the console; empty: the program
  unsigned creationFlags = 0;  // 0 or PTWrapperProcess::kNewConsole
  bool showWindow = true;
  std::string folder;  // its current folder; empty: ours
  // Names and values that it has beyond our environment, or in place of ours. An empty value is
  // one.
  std::vector<std::pair<std::string, std::string>> variables;
  // Keeps what the child prints, as text, see ConsoleFile; empty: nothing does. A file of that name
  // that an earlier run left is replaced, any other one renamed. Linux: in its console or without
  // one. Windows: what its console's buffer holds at the end.
  std::string outputFile;
  std::string token;  // from PTWrapperProcess::NewToken(); empty: the child gets one
  PTWrapperConsole console;
};

// One child program, or one that another copy of the program started. The object belongs to the
// thread that uses it, except Terminate(), TerminateAll() and IsActive(), which another thread may
// call once Create() or Open() has returned. Static operations: any thread.
//
// A child that has ended stays held: call Terminate() before the next Create() or Open().
class PTWrapperProcess : public PTWrapper {
 public:
  static constexpr unsigned kNewConsole = 16;
  static constexpr int kUnknownExitCode = -2;

  PTWrapperProcess();
  ~PTWrapperProcess() override;  // leaves a running child alone

  // With kNewConsole and `showWindow` the child gets a console of its own. On Linux that is the
  // terminal program, when there is a display and the program exists; else the child runs without
  // one. Without kNewConsole it shares nothing with our own terminal either. On Linux a child with
  // kNewConsole runs below the console host in any case, see Terminate().
  bool Create(const PTWrapperProcessStart& start);

  // The same for who wants this whole process to move: `workDir`, when not empty, becomes its
  // current folder, stays so, and is the child's too. `label` is the title, `flag` is not read. The
  // program never calls this.
  bool Create(const std::string& exePath, const std::string& commandLine, const std::string& label,
              bool flag, unsigned creationFlags, const std::string& workDir, bool showWindow);

  // Holds a running process that this object did not start, to wait for its end and to end it;
  // letting go of it leaves it alone. `process` names it beyond doubt: false when it does not run,
  // also when another has its id now. `token` is Token() of the object that started it: without it
  // less of what it started may be found.
  bool Open(const ProcessIdentity& process, const std::string& token = {});
  // The process that has this id now.
  bool Open(std::int32_t processId);

  // Waits for the child's end, however long it takes. False without a child.
  bool WaitProc();
  bool IsActive() const;

  // Ends the child and the processes that it started, within two seconds (politely first where the
  // system can, then by force), and forgets it in any case. A child that has ended by itself is
  // only forgotten. True when nothing that can be found is left of it, or no child was held.
  //
  // What can be found, besides the child: on Windows all that it started, unless the system lets it
  // leave the child's job object, or gave it none; of a process of Open() with its token. On Linux
  // who has the variable that Create() gave the child, who is in the session of one that was found,
  // and who descends from one by parents that live. The console host becomes the parent of those
  // whose parents died, so that below it nobody is lost, whatever he cleared or left, until the
  // child ends by itself or the host is killed. Nowhere what others started for the child:
  // services, timers, programs on other machines.
  bool Terminate();

  // The same, and what a child that has ended by itself left running ends too: for a run that is to
  // be over as a whole.
  bool TerminateAll();

  // A process that the last Terminate() or TerminateAll() could not end, such as one that runs as
  // another user; id 0 when there is none, or none can be told.
  ProcessIdentity NotEnded() const;

  // The child's exit state: its exit code, 128 + the signal's number when a signal ended it
  // (Linux), 259 while it runs, -1 when there is no child. kUnknownExitCode when nobody can tell
  // (Linux): of a process of Open() that is not our child, and when the console host was killed.
  int ExitCode() const;

  // The signal that an exit state tells of; 0 when it tells of none (Windows: always).
  static int SignalOf(int exitCode);

  // The calling process's own id.
  std::int32_t ProcessId() const;
  // The id of the child that was started (the solver, not the terminal around it); 0 when none.
  std::int32_t ChildId() const;
  // A word of ASCII that leads to what the child started, also in another process; empty when none.
  std::string Token() const;
  // One that no process has: for who wants to know it before the child starts.
  static std::string NewToken();

  // The id of a living process that was started below the child with this token and, where that can
  // be told, works in the folder; 0 when there is none, or none can be found.
  static std::int32_t FindStarted(const std::string& token, const std::string& folder);

  // The processes of all users; replaces what the list held.
  static bool FindRunningProcessName(std::vector<PTWrapperProcessInfo>& list);
  // Kills the first process, our own left out, whose executable name contains the text, with regard
  // to case.
  static bool Terminate(const std::string& exeName);
  static bool GetCurrProcessUser(std::string& user);
  static bool GetProcessUser(int pid, std::string& user);
  // The path of its executable file; of our own processes at least.
  static bool GetProcessPath(int pid, std::string& path);
  static bool GetLoginUser(std::string& user);

 private:
  // `ownFolder`, when not empty, becomes this process's current folder.
  bool Launch(const PTWrapperProcessStart& start, const std::string& ownFolder);

  struct Private;
  std::unique_ptr<Private> p_;
};

// A mutex, an event, a semaphore and a critical section in one object, each by its own operations.
//
// Names that begin with "Global\" are shared by all users of the machine, others by one user's
// session; mutexes, events and semaphores share one set of names. A named object lives as long as
// some process holds it; the end of a holder, however it comes, leaves it usable.
//
// Waits: milliseconds, negative for no limit; 0 signalled, 1 timed out, 2 abandoned (a mutex is
// then owned), 3 error. Creates: 0 failed, 1 new, 2 opened an existing one. Waits may run in
// several threads at once; one object must not be created, opened or closed from two threads.
class PTWrapperSignal : public PTWrapper {
 public:
  PTWrapperSignal();
  ~PTWrapperSignal() override;  // closes all four; each that is missing leaves its message

  // A mutex belongs to a thread and may be taken again by it. An empty name makes an unnamed one.
  int CreateMutexSignal(const std::string& name, bool initialOwner);
  bool OpenMutexSignal(const std::string& name);
  int WaitForMutexSignal(long milliseconds);
  bool ReleaseMutexSignal();
  bool CloseMutexSignal();

  // Events reset themselves when one waiter has passed; new ones are not signalled.
  int CreateEventSignal(const std::string& name);
  bool OpenEventSignal(const std::string& name);
  bool SetEventSignal();
  bool ResetEventSignal();
  bool CloseEventSignal();
  int WaitForEventSignal(long milliseconds);
  bool IsEventSignalCreated() const;

  int CreateSemaphoreSignal(const std::string& name, long initialCount, long maximumCount);
  int CreateSemaphoreSignal(long initialCount, long maximumCount);
  bool OpenSemaphoreSignal(const std::string& name);
  bool CloseSemaphoreSignal();
  // Forgets the semaphore's handle afterwards: further waits give 3.
  bool ReleaseSemaphoreSignal(int count);
  int WaitForSemaphoreSignal(long milliseconds);
  bool IsSemaphoreSignalCreated() const;

  bool InitializeCriticalSection();
  bool DeleteCriticalSection();
  bool EnterCriticalSection();
  bool LeaveCriticalSection();
  bool IsCriticalSectionCreated() const;

 private:
  struct Private;
  std::unique_ptr<Private> p_;
};

// One operating-system thread. The destructor neither waits for it nor ends it. The object itself
// belongs to the thread that uses it.
class PTWrapperThread : public PTWrapper {
 public:
  using Routine = std::uint32_t (*)(void* argument);
  static constexpr int kCreateSuspended = 4;

  PTWrapperThread();
  ~PTWrapperThread() override;

  bool CreateThread(Routine routine, void* argument, int creationFlags);
  // -2 to 2, -15 for idle and 15 for time-critical, relative to other threads (Linux: nice levels,
  // where raising takes a privilege).
  bool SetThreadPriority(int priority);
  // A last resort: what the thread holds stays as it is, but for named mutexes, which it abandons.
  // On Linux it ends when it next sleeps, waits, reads or writes; a suspended one stays as it is.
  bool TerminateThread();
  // Nothing resumes a thread.
  bool SuspenThread();
  [[noreturn]] void ExitThread();
  // True from CreateThread until TerminateThread, also after the routine has returned.
  bool IsThreadRunning() const;

 private:
  struct Private;
  std::unique_ptr<Private> p_;
};

#endif
