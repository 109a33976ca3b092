#include <windows.h>

#include "util/process/PTWrapper.h"

namespace {

struct Start {
  PTWrapperThread::Routine routine;
  void* argument;
};

DWORD WINAPI ThreadMain(void* parameter) {
  const std::unique_ptr<Start> start(static_cast<Start*>(parameter));
  return start->routine(start->argument);
}

}  // namespace

struct PTWrapperThread::Private {
  HANDLE handle = nullptr;
  DWORD id = 0;
};

PTWrapperThread::PTWrapperThread() : p_(std::make_unique<Private>()) {}

PTWrapperThread::~PTWrapperThread() = default;

bool PTWrapperThread::CreateThread(Routine routine, void* argument, int creationFlags) {
  if (!routine) {
    SetLastError("thread function is null");
    return false;
  }
  auto start = std::make_unique<Start>(Start{routine, argument});
  p_->handle = ::CreateThread(nullptr, 0, ThreadMain, start.get(),
                              static_cast<DWORD>(creationFlags), &p_->id);
  if (!p_->handle) {
    SetLastError("Create new thread failed");
    return false;
  }
  start.release();
  return true;
}

bool PTWrapperThread::SetThreadPriority(int priority) {
  if (!p_->handle) {
    SetLastError("thread is not created");
    return false;
  }
  if (::SetThreadPriority(p_->handle, priority)) return true;
  SetLastError("Set thread priority failed");
  return false;
}

// The handle is forgotten, not closed.
bool PTWrapperThread::TerminateThread() {
  if (!p_->handle) {
    SetLastError("thread is not created");
    return false;
  }
  ::TerminateThread(p_->handle, 0);
  p_->handle = nullptr;
  p_->id = 0;
  return true;
}

bool PTWrapperThread::SuspenThread() {
  ::SuspendThread(p_->handle);
  return true;
}

void PTWrapperThread::ExitThread() {
  ::ExitThread(0);
  for (;;) {
  }
}

bool PTWrapperThread::IsThreadRunning() const {
  return p_->handle != nullptr;
}
