// What a monitor says of its run in words.
#ifndef KR_UI_MONITOR_HEADINGTEXTS_H
#define KR_UI_MONITOR_HEADINGTEXTS_H

#include <FL/Enumerations.H>

#include <optional>
#include <string>
#include <vector>

#include "progress/RunReader.h"
#include "ui/monitor/MonitoredRun.h"
#include "ui/text/TextTable.h"

// The texts of a heading, in UTF-8.
struct HeadingTexts {
  std::string title;                  // how it stands: "Running 43% · 1 h 12 min left"
  std::string details;                // cycle, problem time, time step
  std::vector<std::string> findings;  // what is wrong
  std::optional<double> percent;
  Fl_Color color = 0;  // of the title and the bar
  bool operator==(const HeadingTexts&) const = default;
};

// `picture` may be null: nothing was read yet.
HeadingTexts HeadingOf(const MonitoredRun::State& run, bool isJob, const RunPicture* picture,
                       const TextTable& texts);

#endif
