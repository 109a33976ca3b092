// Pieces of a test that run in processes of their own, as another user too.
#ifndef KR_TESTS_SUPPORT_CHILDPROCESSES_POSIX_H
#define KR_TESTS_SUPPORT_CHILDPROCESSES_POSIX_H

#include <pwd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>

class ChildProcesses {
 public:
  static pid_t StartChild(const std::function<int()>& run) {
    const pid_t pid = fork();
    if (pid == 0) _exit(run());
    return pid;
  }

  // Runs the function in a process of its own and gives its exit code.
  static int InChild(const std::function<int()>& run) { return WaitFor(StartChild(run)); }
  static int WaitFor(pid_t pid) {
    int status = -1;
    waitpid(pid, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

  static bool Become(const char* user) {
    const passwd* entry = getpwnam(user);
    return entry != nullptr && setgid(entry->pw_gid) == 0 && setuid(entry->pw_uid) == 0;
  }
};

#endif
