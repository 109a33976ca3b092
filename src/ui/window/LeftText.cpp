#include "ui/window/LeftText.h"

#include "ui/text/ShownValues.h"

std::string LeftText(const LeftBehind& left, const TextTable& texts) {
  std::string list;
  const auto add = [&](int count, const char* key) {
    if (count == 0) return;
    list +=
        (list.empty() ? "" : texts.Get("ui_left_and")) + texts.Format(key, std::to_string(count));
  };
  add(left.queued, "ui_left_queued");
  add(left.wereRunning, "ui_left_were_running");
  add(left.stillRun, "ui_left_still_run");
  add(left.ended, "ui_left_ended");
  return texts.Format("ui_left_jobs", std::to_string(left.Jobs()), ShownMoment(left.last, texts),
                      list);
}
