#include "JobText.h"

#include <fstream>

#include "SideFiles.h"
#include "Text.h"

namespace {

constexpr int kMostSteps = 1000;
constexpr int kMostElements = 1'000'000'000;

bool ReadCount(std::string_view text, int least, int most, int& out) {
  const auto number = ToInteger(Trim(text));
  if (!number || *number < least || *number > most) return false;
  out = static_cast<int>(*number);
  return true;
}

bool ReadLine(std::string_view line, JobText& job) {
  const std::size_t blank = line.find_first_of(" \t");
  const std::string name = Upper(line.substr(0, blank));
  const std::string_view value =
      blank == std::string_view::npos ? std::string_view() : Trim(line.substr(blank));
  if (name == "STEPS") return ReadCount(value, 1, kMostSteps, job.steps);
  if (name == "ELEMENTS") return ReadCount(value, 0, kMostElements, job.elements);
  if (name != "TITLE") return false;
  job.title = value;
  return true;
}

}  // namespace

std::string FindJobText(const std::string& withoutExtension, const std::string& extension) {
  for (const std::string& ending : {extension, Upper(extension), std::string()}) {
    if (IsFile(withoutExtension + ending)) return withoutExtension + ending;
  }
  return {};
}

JobText ReadJobText(const std::string& path) {
  JobText job;
  std::ifstream file(path, std::ios::binary);
  std::string line;
  for (int number = 1; std::getline(file, line); ++number) {
    const std::string_view text = Trim(line);
    if (text.empty() || text[0] == '$' || ReadLine(text, job)) continue;
    job.error = Format("LINE %d OF THE JOB FILE IS NOT UNDERSTOOD", number);
    return job;
  }
  return job;
}
