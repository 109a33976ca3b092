#include "Options.h"

#include "Text.h"

namespace {

constexpr long long kMaximumWords = 1LL << 50;
constexpr long long kMaximumCpus = 65536;

void Complain(Options& options, const std::string& word, const char* what) {
  if (options.error.empty()) options.error = "argument " + word + ": " + what;
}

long long ReadMemory(Options& options, const std::string& word, std::string value) {
  long long unit = 1;
  if (value.back() == 'm' || value.back() == 'M') {
    unit = 1'000'000;
    value.pop_back();
  }
  const auto number = ToInteger(value);
  if (!number || *number < 0 || *number > kMaximumWords / unit) {
    Complain(options, word, "not a number of words");
    return 0;
  }
  return *number * unit;
}

int ReadCount(Options& options, const std::string& word, const std::string& value) {
  const auto number = ToInteger(value);
  if (!number || *number < 1 || *number > kMaximumCpus) {
    Complain(options, word, "not a positive number");
    return 1;
  }
  return static_cast<int>(*number);
}

// What would lead to another folder, or end the name, cannot stand in it.
std::string ReadJobId(Options& options, const std::string& word, const std::string& value) {
  constexpr std::size_t kLongest = 72;
  if (value.size() <= kLongest && value.find_first_of("()*/?\\") == std::string::npos) {
    return value + ".";
  }
  Complain(options, word, "not a job id");
  return "";
}

void ReadPair(Options& options, const std::string& word, const std::string& key,
              const std::string& value) {
  const bool known = key == "I" || key == "R" || key == "S" || key == "D" || key == "MEMORY" ||
                     key == "MEMORY2" || key == "NCPU" || key == "PRECISION" || key == "JOBID" ||
                     key == "STANDIN-SLEEP";
  if (!known) return;
  if (value.empty()) return Complain(options, word, "a value is missing");
  if (key == "I") options.deck = value;
  if (key == "R") options.restart = value;
  if (key == "D") options.noDump = Upper(value) == "NODUMP";
  if (key == "MEMORY") options.memoryWords = ReadMemory(options, word, value);
  if (key == "MEMORY2") options.memory2Words = ReadMemory(options, word, value);
  if (key == "NCPU") options.cpus = ReadCount(options, word, value);
  if (key == "JOBID") options.prefix = ReadJobId(options, word, value);
  if (key == "PRECISION") options.doublePrecision = Upper(value) == "DOUBLE";
  if (key == "STANDIN-SLEEP") options.sleepSeconds = ReadCount(options, word, value);
}

}  // namespace

Options ParseOptions(const std::vector<std::string>& words) {
  Options options;
  options.words = words;
  for (const std::string& word : words) {
    const std::size_t equals = word.find('=');
    if (equals != std::string::npos) {
      ReadPair(options, word, Upper(Trim(word.substr(0, equals))), word.substr(equals + 1));
    } else if (Upper(word) == "CASE") {
      options.cases = true;
    } else if (Upper(word) == "INFO") {
      options.info = true;
    }
  }
  return options;
}
