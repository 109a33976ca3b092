// What the threads of this program do at their top.
#ifndef KR_UTIL_PROCESS_OWNTHREAD_H
#define KR_UTIL_PROCESS_OWNTHREAD_H

#include <exception>
#include <functional>
#include <system_error>
#include <thread>
#include <utility>

// What leaves a thread ends the program: what the work throws (no memory, a file system that gives
// nonsense) goes to `failed`, on the same thread. Any thread.
template <typename Work, typename Failed>
void Guard(const Work& work, const Failed& failed) {
  try {
    work();
  } catch (const std::exception& error) {
    try {
      failed(error);
    } catch (const std::exception&) {
      // Not even that: whoever waits learns nothing.
    }
  }
}

// A guarded thread that nobody joins. False when there is none to be had.
inline bool StartGuarded(std::function<void()> work,
                         std::function<void(const std::exception& error)> failed) {
  try {
    std::thread([work = std::move(work), failed = std::move(failed)] {
      Guard(work, failed);
    }).detach();
  } catch (const std::system_error&) {
    return false;
  }
  return true;
}

#endif
