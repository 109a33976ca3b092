#include <pthread.h>
#include <sched.h>
#include <setjmp.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <atomic>
#include <condition_variable>
#include <cstdlib>
#include <exception>
#include <optional>

#include "util/process/PTWrapper.h"
#include "util/signals/Mutex.h"

namespace {

// Outlives the wrapper and the thread, whichever goes last. A thread runs detached, so its id means
// nothing once it has ended: it is only used while `mutex` is held and `ended` is not set.
struct Control {
  PTWrapperThread::Routine routine = nullptr;
  void* argument = nullptr;
  bool startSuspended = false;
  std::atomic<bool> ending{false};  // by TerminateThread or ExitThread
  jmp_buf leave{};                  // out of the routine, past its destructors

  Mutex mutex;
  std::condition_variable begun;
  pthread_t thread KR_GUARDED_BY(mutex){};
  pid_t systemId KR_GUARDED_BY(mutex) = 0;  // 0 until it runs
  bool ended KR_GUARDED_BY(mutex) = false;
};

using ControlPtr = std::shared_ptr<Control>;

// Marks the end, whether the routine returns or the thread is ended from outside.
class Running {
 public:
  explicit Running(ControlPtr control) : control_(std::move(control)) {
    const MutexLock lock(control_->mutex);
    control_->systemId = gettid();
    control_->begun.notify_all();
  }
  ~Running() {
    const MutexLock lock(control_->mutex);
    control_->ended = true;
  }
  Running(const Running&) = delete;
  Running& operator=(const Running&) = delete;

 private:
  ControlPtr control_;
};

// Until the thread is ended from outside: nothing resumes a thread.
[[noreturn]] void StayStopped(Control& control) {
  MutexLock lock(control.mutex);
  for (;;) lock.Wait(control.begun);
}

thread_local Control* ofThisThread = nullptr;
std::terminate_handler formerTerminate = nullptr;

// A thread that is ended unwinds its stack, which may not go through a destructor: the runtime
// would end the whole program. Then the thread leaves the rest of its stack as it is, as a killed
// one does on Windows.
[[noreturn]] void LeaveOrTerminate() {
  if (ofThisThread != nullptr && ofThisThread->ending) longjmp(ofThisThread->leave, 1);
  if (formerTerminate != nullptr) formerTerminate();
  std::abort();
}

void LetThreadsLeave() {
  static const bool done = [] {
    formerTerminate = std::set_terminate(LeaveOrTerminate);
    return true;
  }();
  static_cast<void>(done);
}

void* ThreadMain(void* start) {
  const std::unique_ptr<ControlPtr> control(static_cast<ControlPtr*>(start));
  const Running running(*control);
  ofThisThread = control->get();
  if ((*control)->startSuspended) StayStopped(**control);
  if (setjmp((*control)->leave) == 0) (*control)->routine((*control)->argument);
  return nullptr;
}

void SuspendHandler(int) {
  // Unwinding from the middle of anything would be worse than staying.
  pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr);
  for (;;) pause();
}

int SuspendSignal() {
  static const int number = [] {
    const int chosen = SIGRTMIN + 5;
    struct sigaction action {};
    action.sa_handler = SuspendHandler;
    sigfillset(&action.sa_mask);
    sigaction(chosen, &action, nullptr);
    return chosen;
  }();
  return number;
}

std::optional<int> NiceOf(int priority) {
  switch (priority) {
    case 15:
      return -20;
    case 2:
      return -10;
    case 1:
      return -5;
    case 0:
      return 0;
    case -1:
      return 5;
    case -2:
      return 10;
    default:
      return std::nullopt;
  }
}

bool ApplyPriority(pid_t thread, int priority) {
  constexpr int kIdle = -15;
  const sched_param none{};
  if (priority == kIdle) return sched_setscheduler(thread, SCHED_IDLE, &none) == 0;
  const std::optional<int> nice = NiceOf(priority);
  return nice && sched_setscheduler(thread, SCHED_OTHER, &none) == 0 &&
         setpriority(PRIO_PROCESS, static_cast<id_t>(thread), *nice) == 0;
}

}  // namespace

struct PTWrapperThread::Private {
  ControlPtr control;
};

PTWrapperThread::PTWrapperThread() : p_(std::make_unique<Private>()) {}

PTWrapperThread::~PTWrapperThread() = default;

bool PTWrapperThread::CreateThread(Routine routine, void* argument, int creationFlags) {
  if (!routine) {
    SetLastError("thread function is null");
    return false;
  }
  LetThreadsLeave();
  auto control = std::make_shared<Control>();
  control->routine = routine;
  control->argument = argument;
  control->startSuspended = (creationFlags & kCreateSuspended) != 0;
  auto start = std::make_unique<ControlPtr>(control);

  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
  int error = 0;
  {
    const MutexLock lock(control->mutex);
    error = pthread_create(&control->thread, &attributes, ThreadMain, start.get());
  }
  pthread_attr_destroy(&attributes);
  if (error != 0) {
    p_->control.reset();
    SetLastError("Create new thread failed");
    return false;
  }
  start.release();
  p_->control = std::move(control);
  return true;
}

bool PTWrapperThread::SetThreadPriority(int priority) {
  if (!p_->control) {
    SetLastError("thread is not created");
    return false;
  }
  Control& control = *p_->control;
  {
    MutexLock lock(control.mutex);
    while (control.systemId == 0) lock.Wait(control.begun);
    if (!control.ended && ApplyPriority(control.systemId, priority)) return true;
  }
  SetLastError("Set thread priority failed");
  return false;
}

bool PTWrapperThread::TerminateThread() {
  if (!p_->control) {
    SetLastError("thread is not created");
    return false;
  }
  {
    const MutexLock lock(p_->control->mutex);
    p_->control->ending = true;
    if (!p_->control->ended) pthread_cancel(p_->control->thread);
  }
  p_->control.reset();
  return true;
}

bool PTWrapperThread::SuspenThread() {
  if (!p_->control) return true;
  const int signal = SuspendSignal();
  const MutexLock lock(p_->control->mutex);
  if (!p_->control->ended) pthread_kill(p_->control->thread, signal);
  return true;
}

void PTWrapperThread::ExitThread() {
  if (ofThisThread != nullptr) ofThisThread->ending = true;
  pthread_exit(nullptr);
}

bool PTWrapperThread::IsThreadRunning() const {
  return p_->control != nullptr;
}
