#include "progress/TextOutput.h"

#include <algorithm>

#include "progress/LineWords.h"
#include "progress/SolverClock.h"
#include "util/files/LineBlocks.h"

namespace {

// What stands behind the label; both labels may stand in one line.
std::string_view Behind(std::string_view line, std::string_view label) {
  const std::size_t at = line.find(label);
  if (at == std::string_view::npos) return {};
  return LineWords(line.substr(at + label.size())).Next();
}

}  // namespace

void TextOutput::TakeLines(std::string_view block) {
  for (std::size_t position = 0; position < block.size();) {
    const std::string_view line = ::TakeLine(block, position);
    if (Holds(line, "ERROR")) error_ = true;
    if (Holds(line, "THE TOTAL TIME") && Holds(line, "ABOUT")) totalTime_ = true;
    const std::string_view date = Behind(line, "D A T E (MM/DD/YY):");
    if (!date.empty()) date_ = date.substr(0, 8);
    const std::string_view time = Behind(line, "TIME(HH:MM:SS:.01):");
    if (time.empty()) continue;
    ++stamps_;
    std::optional<std::int64_t> clock = ClockSeconds(date_, time.substr(0, 8));
    if (clock && Holds(line, "pm")) *clock += 12 * 3600;
    (stamps_ == 1 ? started_ : ended_) = clock;
  }
}

RunEnd TextOutput::End() const {
  if (totalTime_) return RunEnd::kNormal;
  if (stamps_ < 2) return RunEnd::kRunning;
  return error_ ? RunEnd::kError : RunEnd::kNormal;
}
