#include "ui/window/EndRequests.h"

#include <fcntl.h>
#include <FL/Fl.H>
#include <signal.h>
#include <unistd.h>
#include <X11/Xlib.h>

#include <cerrno>
#include <cstdlib>
#include <utility>

namespace {

int g_wakeUp[2] = {-1, -1};  // written by the signal handler, read by the event loop

std::function<void()>& Leave() {
  static std::function<void()> leave;
  return leave;
}

std::function<void()>& Save() {
  static std::function<void()> save;
  return save;
}

// The toolkit's own handler would leave at once, with the queue's threads at work.
int EndWithoutDisplay(Display*) {
  if (const auto save = std::exchange(Save(), nullptr)) save();
  _exit(EXIT_FAILURE);
}

void TakeSignal(int) {
  const int before = errno;
  const char byte = 0;
  if (write(g_wakeUp[1], &byte, 1) < 0) errno = before;
}

void ReadSignals(int fd, void*) {
  if (!Leave()) return;
  char bytes[16];
  while (read(fd, bytes, sizeof bytes) > 0) {
  }
  Leave()();
}

}  // namespace

void OnEndRequest(const std::function<void()>& leave) {
  Leave() = leave;
  if (g_wakeUp[0] >= 0 || pipe2(g_wakeUp, O_CLOEXEC | O_NONBLOCK) != 0) return;
  Fl::add_fd(g_wakeUp[0], FL_READ, ReadSignals);
  struct sigaction action = {};
  action.sa_handler = TakeSignal;
  sigemptyset(&action.sa_mask);
  for (const int number : {SIGTERM, SIGINT}) sigaction(number, &action, nullptr);
  struct sigaction former = {};
  sigaction(SIGHUP, nullptr, &former);
  if (former.sa_handler != SIG_IGN) sigaction(SIGHUP, &action, nullptr);
}

void OnDisplayLost(const std::function<void()>& save) {
  Save() = save;
  XSetIOErrorHandler(EndWithoutDisplay);
}
