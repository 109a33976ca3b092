#include "BehaviourActs.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "SideFiles.h"
#include "System.h"
#include "Text.h"

namespace {

constexpr auto kLongestHang = std::chrono::hours(1);

// In colours, each with a counter that is written anew in its place.
void Chatter(int lines) {
  for (int line = 1; line <= lines; ++line) {
    std::printf("\x1b[33m part %d\x1b[0m: ", line);
    for (int percent = 0; percent <= 100; percent += 25) {
      std::printf("\r part %d: %d%%", line, percent);
    }
    std::printf("\n");
  }
}

[[noreturn]] void EndWithoutLicence(int exitCode) {
  std::fputs(
      " *** licence error: no server answers at 27008@licences\n"
      "     checked 3 times within 15 seconds\n"
      " the run ends: no licence\n",
      stdout);
  std::exit(exitCode);
}

}  // namespace

void ActAtStart(const Behaviour& behaviour, const Options& options, bool first) {
  if (behaviour.ignoreTerm) IgnorePoliteTermination();
  if (first && behaviour.windowSize) {
    int lines = 0;
    int columns = 0;
    const bool known = ReadWindowSize(lines, columns);
    std::printf(known ? " console of %d lines, %d columns\n" : " no console\n", lines, columns);
  }
  if (first && behaviour.chatter > 0) Chatter(behaviour.chatter);
  if (behaviour.noLicence) EndWithoutLicence(behaviour.exitCode.value_or(1));
  if (!first) return;
  if (behaviour.echo) WriteEcho(options);
  if (behaviour.child) {
    WriteTextFile("standin_child.pid", std::to_string(StartSleepingChild()) + "\n");
  }
}

void ActInTheMiddle(const Behaviour& behaviour) {
  std::fflush(stdout);
  if (behaviour.crash) Crash();
  if (behaviour.killSignal) DieBySignal(*behaviour.killSignal);
  if (behaviour.hang) std::this_thread::sleep_for(kLongestHang);
}

std::string NoticeText(const char* kind, int index, int count) {
  return Format("%s %d of %d, which the deck asked the stand-in for", kind, index, count);
}
