#include "jobs/OutputPrefix.h"

#include <algorithm>
#include <vector>

#include "util/files/FileDirWrapper.h"
#include "util/text/PlainText.h"
#include "util/text/StrWrapper.h"

namespace {

constexpr std::size_t kLongestName = 72;

bool IsGap(char c) {
  return c == '_' || c == '-';
}

bool IsNameCharacter(char c) {
  return IsDigit(c) || (Lower(c) >= 'a' && Lower(c) <= 'z') || IsGap(c);
}

// A dot would read as the end of the name; what is no ASCII may come out differently in each
// program. A row of such characters becomes one "_", or nothing at an end. Empty when nothing of
// the name can be used.
std::string Cleaned(const std::string& name) {
  std::string clean;
  bool isCut = false;  // characters before this one were left out
  for (const char c : name) {
    if (!IsNameCharacter(c)) {
      isCut = true;
      continue;
    }
    if (isCut && clean.empty() && IsGap(c)) continue;
    if (isCut && !clean.empty() && !IsGap(c) && !IsGap(clean.back())) clean += '_';
    clean += c;
    isCut = false;
  }
  const std::size_t end = clean.find_last_not_of("_-") + 1;
  if (isCut || end == 0) clean.erase(end);
  return clean;
}

// "CASE2", as the solver itself calls the results of a case.
bool IsCaseName(std::string_view name) {
  return name.size() > 4 && SameButForCase(name.substr(0, 4), "case") &&
         name.find_first_not_of("0123456789", 4) == std::string_view::npos;
}

bool BeginsWith(std::string_view name, std::string_view prefix) {
  const std::string_view head = name.substr(0, prefix.size());
  constexpr bool kBothCases = FileDirWrapper::kSeparator == '\\';
  return kBothCases ? SameButForCase(head, prefix) : head == prefix;
}

}  // namespace

bool TakesJobId(SolverKind kind) {
  return kind == SolverKind::kLsDynaSingle || kind == SolverKind::kLsDynaDouble;
}

std::string TypedJobId(const std::string& extraOptions) {
  if (extraOptions.empty()) return {};
  constexpr std::string_view kKey = "jobid=";
  std::vector<std::string> words;
  StrWrapperTxt::SplitCommandLine("solver " + extraOptions, words);
  std::string found;
  for (const std::string& word : words) {
    if (SameButForCase(std::string_view(word).substr(0, kKey.size()), kKey))
      found = word.substr(kKey.size());
  }
  return found;
}

std::string OutputPrefix(SolverKind kind, const std::string& outputName,
                         const std::string& extraOptions) {
  if (!TakesJobId(kind)) return {};
  const std::string typed = TypedJobId(extraOptions);
  const std::string& name = typed.empty() ? outputName : typed;
  return name.empty() ? std::string() : name + '.';
}

std::string OutputPrefix(const JobFile& job) {
  const auto* const dyna = dynamic_cast<const JobFileDyna*>(&job);
  if (dyna == nullptr) return {};
  return OutputPrefix(dyna->solverType, dyna->outputName, dyna->extraOptions);
}

std::optional<std::string> BehindPrefix(std::string_view name, std::string_view prefix) {
  if (BeginsWith(name, prefix)) return std::string(name.substr(prefix.size()));
  const std::size_t ofCase = CaseLength(name);
  if (ofCase == 0 || !BeginsWith(name.substr(ofCase), prefix)) return std::nullopt;
  return std::string(name.substr(0, ofCase)).append(name.substr(ofCase + prefix.size()));
}

std::size_t CaseLength(std::string_view name) {
  const std::size_t dot = name.find('.');
  return dot != std::string_view::npos && IsCaseName(name.substr(0, dot)) ? dot + 1 : 0;
}

OutputNames OutputNamesOf(const JobFile& job) {
  const auto* const dyna = dynamic_cast<const JobFileDyna*>(&job);
  const bool hasCases =
      dyna != nullptr && (dyna->caseRun || AsksForCases("solver " + dyna->extraOptions));
  return {OutputPrefix(job), hasCases};
}

bool AsksForCases(const std::string& arguments) {
  std::vector<std::string> words;
  StrWrapperTxt::SplitCommandLine(arguments, words);
  return std::any_of(words.begin(), words.end(),
                     [](const std::string& word) { return SameButForCase(word, "case"); });
}

std::string OutputNameFor(const std::string& deck, const std::set<std::string>& taken) {
  std::string name;
  FileDirWrapper::FileNameOf(deck, name, false);
  name = Cleaned(name);
  if (IsCaseName(name)) name = "job_" + name;
  name.resize(std::min(name.size(), kLongestName));
  std::string free = name;
  for (int number = name.empty() ? 1 : 2; free.empty() || taken.contains(Lower(free)); ++number) {
    const std::string end = (name.empty() ? "job" : "_") + std::to_string(number);
    free = name.substr(0, kLongestName - end.size()) + end;
  }
  return free;
}
