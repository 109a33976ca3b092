// A display without a screen, for tests that open windows.
#ifndef KR_TESTS_VIRTUALDISPLAY_H
#define KR_TESTS_VIRTUALDISPLAY_H

#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

// Runs an Xvfb, which ends with the object and with the thread that made it.
class VirtualDisplay {
 public:
  explicit VirtualDisplay(const std::string& size) {
    int pipe[2];
    if (::pipe(pipe) != 0) return;
    const std::string number = std::to_string(pipe[1]);
    server_ = fork();
    if (server_ == 0) {
      prctl(PR_SET_PDEATHSIG, SIGKILL);
      close(pipe[0]);
      execlp("Xvfb", "Xvfb", "-displayfd", number.c_str(), "-screen", "0", (size + "x24").c_str(),
             "-nolisten", "tcp", "-noreset", "-ac", static_cast<char*>(nullptr));
      _exit(127);
    }
    close(pipe[1]);
    name_ = ":";
    pollfd answer = {pipe[0], POLLIN, 0};
    char digit = 0;
    while (poll(&answer, 1, kStartMs) == 1 && read(pipe[0], &digit, 1) == 1 && digit != '\n')
      name_ += digit;
    if (digit != '\n') name_.clear();
    close(pipe[0]);
  }
  ~VirtualDisplay() {
    if (server_ <= 0) return;
    kill(server_, SIGKILL);
    waitpid(server_, nullptr, 0);
  }
  VirtualDisplay(const VirtualDisplay&) = delete;
  VirtualDisplay& operator=(const VirtualDisplay&) = delete;

  // For DISPLAY; empty when no display could be started.
  const std::string& Name() const { return name_; }

 private:
  static constexpr int kStartMs = 20000;

  std::string name_;
  pid_t server_ = -1;
};

#endif
