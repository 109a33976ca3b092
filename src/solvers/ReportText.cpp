#include "solvers/ReportText.h"

namespace {

constexpr std::size_t kMostBytes = std::size_t{8} << 20;
constexpr std::size_t kLongestShown = 4096;
constexpr char kLeftOut[] = "(more lines are in the file)";

}  // namespace

void GatheredLines::Add(std::string_view line) {
  line = line.substr(0, kLongestShown);
  bytes_ += line.size() + sizeof(std::string);
  full_ = full_ || bytes_ > kMostBytes;
  if (!full_) lines_.emplace_back(line);
}

std::string Translated(const AnalysisHooks& hooks, const char* english) {
  return hooks.translate ? hooks.translate(english) : english;
}

void AppendLines(const GatheredLines& from, const AnalysisHooks& hooks,
                 std::vector<std::string>& to) {
  to.insert(to.end(), from.Lines().begin(), from.Lines().end());
  if (from.Full()) to.push_back(Translated(hooks, kLeftOut));
}

bool Holds(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

std::string_view Trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") + 1 - first);
}
