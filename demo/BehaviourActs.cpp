#include "BehaviourActs.h"

#include <chrono>
#include <thread>

#include "SideFiles.h"
#include "System.h"
#include "Text.h"

namespace {

constexpr auto kLongestHang = std::chrono::hours(1);

}  // namespace

void ActAtStart(const Behaviour& behaviour, const Options& options, bool first) {
  if (behaviour.ignoreTerm) IgnorePoliteTermination();
  if (!first) return;
  if (behaviour.echo) WriteEcho(options);
  if (behaviour.child) {
    WriteTextFile("standin_child.pid", std::to_string(StartSleepingChild()) + "\n");
  }
}

void ActInTheMiddle(const Behaviour& behaviour) {
  if (behaviour.crash) Crash();
  if (behaviour.hang) std::this_thread::sleep_for(kLongestHang);
}

std::string NoticeText(const char* kind, int index, int count) {
  return Format("%s %d of %d, which the deck asked the stand-in for", kind, index, count);
}
