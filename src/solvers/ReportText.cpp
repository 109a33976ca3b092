#include "solvers/ReportText.h"

namespace {

constexpr std::size_t kMostBytes = std::size_t{8} << 20;
constexpr std::size_t kLongestShown = 4096;

}  // namespace

void GatheredLines::Add(std::string_view line) {
  Keep(line, false);
}

void GatheredLines::AddWords(std::string_view words) {
  Keep(words, true);
}

void GatheredLines::Keep(std::string_view line, bool words) {
  line = line.substr(0, kLongestShown);
  bytes_ += line.size() + sizeof(Line);
  full_ = full_ || bytes_ > kMostBytes;
  if (!full_) lines_.push_back({std::string(line), words});
}

void GatheredLines::AppendTo(std::vector<std::string>& lines, const AnalysisHooks& hooks) const {
  for (const Line& line : lines_)
    lines.push_back(line.words ? line.text : Decoded(hooks, line.text));
}

std::string Said(const AnalysisHooks& hooks, const Message& message) {
  return hooks.say ? hooks.say(message) : message.English();
}

std::string Decoded(const AnalysisHooks& hooks, const std::string& bytes) {
  return hooks.decode ? hooks.decode(bytes) : bytes;
}

void AppendLines(const GatheredLines& from, const AnalysisHooks& hooks,
                 std::vector<std::string>& to) {
  from.AppendTo(to, hooks);
  if (from.Full()) to.push_back(Said(hooks, Message(MessageId::kReportCut)));
}
