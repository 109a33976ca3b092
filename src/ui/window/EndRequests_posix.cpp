#include "ui/window/EndRequests.h"

#include <fcntl.h>
#include <FL/Fl.H>
#include <poll.h>
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

std::function<void()>& HangUp() {
  static std::function<void()> hangUp;
  return hangUp;
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

void TakeSignal(int number) {
  const int before = errno;
  const char byte = number == SIGHUP ? 1 : 0;
  if (write(g_wakeUp[1], &byte, 1) < 0) errno = before;
}

// Takes what waits.
void Take(bool& end, bool& hangUp) {
  char byte = 0;
  while (read(g_wakeUp[0], &byte, 1) > 0) (byte == 1 ? hangUp : end) = true;
}

// Who asks for the end at the same moment wants what runs to be stopped.
void ReadSignals(int, void*) {
  constexpr int kSameMomentMs = 100;
  if (!Leave()) return;
  bool end = false;
  bool hangUp = false;
  Take(end, hangUp);
  pollfd more = {g_wakeUp[0], POLLIN, 0};
  if (hangUp && !end && poll(&more, 1, kSameMomentMs) == 1) Take(end, hangUp);
  if (end || (hangUp && !HangUp())) return Leave()();
  if (hangUp) HangUp()();
}

}  // namespace

void OnEndRequest(const std::function<void()>& leave, const std::function<void()>& hangUp) {
  Leave() = leave;
  HangUp() = hangUp;
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

bool EndRequestWaits() {
  pollfd pipe = {g_wakeUp[0], POLLIN, 0};
  return poll(&pipe, 1, 0) == 1;
}

void OnDisplayLost(const std::function<void()>& save) {
  Save() = save;
  XSetIOErrorHandler(EndWithoutDisplay);
}
