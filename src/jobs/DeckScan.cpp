#include "jobs/DeckScan.h"

#include <algorithm>
#include <cctype>
#include <optional>
#include <string_view>
#include <vector>

#include "jobs/DeckLines.h"
#include "util/files/FileDirWrapper.h"
#include "util/text/PlainText.h"
#include "util/text/StrWrapper.h"

namespace {

constexpr std::size_t kMostIncludes = 10000;

// What one deck says.
struct DeckFacts {
  std::uint64_t memory = 0;
  std::optional<SolverKind> solverType;
  std::optional<int> firstStage;
  bool keepDeck = false;
  bool cases = false;
  std::string simulationType;
  std::string calculationMethod;
  std::optional<std::string> identifier;
  std::vector<std::string> includes;
  std::size_t moreIncludes = 0;  // beyond what is kept
};

// `prefix` in upper case.
bool HasPrefix(std::string_view text, std::string_view prefix) {
  return text.size() >= prefix.size() &&
         std::equal(prefix.begin(), prefix.end(), text.begin(),
                    [](char wanted, char c) { return Upper(c) == wanted; });
}

// Takes a keyword, or a word of one, off the front of the text.
bool TakePrefix(std::string_view& text, std::string_view prefix) {
  if (!HasPrefix(text, prefix)) return false;
  text.remove_prefix(prefix.size());
  return true;
}

bool EndsWord(std::string_view rest) {
  return rest.empty() || rest[0] == ' ' || rest[0] == '\t' || rest[0] == ',';
}

// Megabytes of a number that is given in megabytes, or in words of four bytes.
std::uint64_t ToMegabytes(std::string_view number, bool inMegabytes) {
  const std::uint64_t value = StrWrapperTxt::LeadingUnsigned(std::string(number));
  return inMegabytes ? value : value >> 18;
}

// Whether a text that begins with a number gives it in megabytes: it holds an "M", alone or in any
// word ("800 MB", "12Mw"), but for the options behind it ("MEMORY2=100"). A small one counts as
// well where it stands at the number.
bool SaysMegabytes(std::string_view text) {
  const std::size_t unit = text.find_first_not_of("+0123456789 \t");
  if (unit != std::string_view::npos && text[unit] == 'm' &&
      (unit + 1 == text.size() || std::isalpha(text[unit + 1] & 0x7f) == 0)) {
    return true;
  }
  while (!text.empty()) {
    const std::string_view word = text.substr(0, text.find_first_of(" \t,"));
    if (Holds(word, "M") && !Holds(word, "=")) return true;
    text.remove_prefix(std::min(word.size() + 1, text.size()));
  }
  return false;
}

// Where the value of the option MEMORY begins, npos without one. MEMORY2 is another option.
std::size_t MemoryOption(std::string_view upper) {
  constexpr std::string_view kKey = "MEMORY";
  for (std::size_t key = upper.find(kKey); key != std::string_view::npos;
       key = upper.find(kKey, key + 1)) {
    const std::size_t end = key + kKey.size();
    const std::size_t number = upper.find_first_not_of(" \t=", end);
    if (number != std::string_view::npos && number > end && IsDigit(upper[number])) return number;
  }
  return std::string_view::npos;
}

// The memory on a KEYWORD card: a number right behind the keyword, or "MEMORY=" and a number
// anywhere. A card may name other things too.
std::uint64_t CardMemory(std::string_view rest) {
  const std::string_view text = Trimmed(rest);
  if (text.empty()) return 0;
  if (IsDigit(text[0]) || text[0] == '+') return ToMegabytes(text, SaysMegabytes(text));
  const std::string upper = Upper(text);
  const std::size_t number = MemoryOption(upper);
  if (number == std::string::npos) return 0;
  const std::string_view value = std::string_view(upper).substr(number);
  const std::size_t end = std::min(value.find_first_not_of("0123456789"), value.size());
  const std::string_view unit = value.substr(end, value.find_first_of(" \t,", end) - end);
  const std::string_view next = Trimmed(value.substr(end));  // "800 MB", but not "800 MEMORY2=50M"
  const std::string_view word = next.substr(0, next.find_first_of(" \t,"));
  return ToMegabytes(value, unit.starts_with('M') || word == "M" || word == "MB");
}

class DeckScanner {
 public:
  DeckScanner(DeckLines& reader, DeckFacts& facts) : reader_(reader), facts_(facts) {}

  void ScanAll() {
    for (std::string_view line; reader_.NextCard(line);) {
      if (line[0] == '$') {
        ReadComment(line);
      } else {
        ReadKeyword(line.substr(1));
      }
    }
  }

 private:
  void ReadComment(std::string_view line) {
    if (Holds(line, "SIMULATION")) {
      facts_.simulationType = SimulationType(line);
      return;
    }
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos) return;
    if (Holds(line, "CALC-METHOD")) {
      facts_.calculationMethod = Trimmed(line.substr(colon + 1));
    } else if (Holds(line, "RCMD-SOLVER")) {
      ReadRecommendedSolver(Trimmed(line.substr(colon + 1)));
    } else if (Holds(line, "RUNFIRST")) {
      const int stage = StrWrapperTxt::LeadingInt(std::string(line.substr(colon + 1)));
      facts_.firstStage = std::max(stage, 1) - 1;
    } else if (Holds(line, "SPC WORKS IN ALL STAGES")) {
      ReadKeepDeck(line.substr(colon + 1));
    }
  }

  // Without a colon the value begins in column 10, or behind the key where that reaches further.
  static std::string SimulationType(std::string_view line) {
    constexpr std::string_view kKey = "SIMULATION";
    std::size_t start = line.find(':') + 1;
    if (start == 0) {
      const std::size_t key = line.find(kKey);
      start = key < 10 ? key + kKey.size() : 9;
    }
    return std::string(Trimmed(line.substr(start)));
  }

  void ReadRecommendedSolver(std::string_view value) {
    if (value == "SINGLE") facts_.solverType = SolverKind::kLsDynaSingle;
    if (value == "DOUBLE") facts_.solverType = SolverKind::kLsDynaDouble;
    if (value == "ORLASOLVER") facts_.solverType = SolverKind::kUtilityBatch;
  }

  void ReadKeepDeck(std::string_view value) {
    if (Holds(value, "YES") || Holds(value, "yes")) {
      facts_.keepDeck = true;
    } else if (Holds(value, "NO") || Holds(value, "no")) {
      facts_.keepDeck = false;
    }
  }

  void ReadKeyword(std::string_view rest) {
    if (TakePrefix(rest, "KEYWORD_JOBID") || TakePrefix(rest, "KEYWORD_ID")) {
      ReadMemory(rest);
      ReadIdentifier();
    } else if (TakePrefix(rest, "KEYWORD")) {
      ReadMemory(rest);
    } else if (TakePrefix(rest, "INCLUDE")) {
      if (NamesFile(rest)) ReadInclude();
    } else if (TakePrefix(rest, "CASE")) {
      ReadCase(rest);
    }
  }

  void ReadMemory(std::string_view rest) {
    if (const std::uint64_t memory = CardMemory(rest)) facts_.memory = memory;
  }

  void ReadCase(std::string_view rest) {
    if (HasPrefix(rest, "_BEGIN_")) {
      insideCase_ = facts_.cases = true;
    } else if (HasPrefix(rest, "_END_")) {
      insideCase_ = false;
    } else if (EndsWord(rest) || HasPrefix(rest, "_TITLE")) {
      facts_.cases = true;
    }
  }

  // "*INCLUDE" with any option but those whose next line is a folder or a number.
  static bool NamesFile(std::string_view rest) {
    if (EndsWord(rest)) return true;
    return rest[0] == '_' && !HasPrefix(rest, "_PATH") && !HasPrefix(rest, "_MULTISCALE");
  }

  // The line that belongs to a card: the next one that is not a comment. False at a further
  // keyword, which stays to be read, and at the end of the deck.
  bool NextData(std::string_view& line) {
    while (reader_.NextLine(line)) {
      if (line.empty() || (line[0] != '*' && line[0] != '$')) return true;
      if (line[0] == '*') {
        reader_.Unread();
        return false;
      }
      ReadComment(line);
    }
    return false;
  }

  void ReadIdentifier() {
    std::string_view line;
    if (NextData(line)) facts_.identifier = Trimmed(line);
  }

  // A name that ends in " +" goes on on the next line.
  void ReadInclude() {
    constexpr int kMostLines = 10;
    std::string name;
    std::string_view line;
    for (int i = 0; i < kMostLines && NextData(line); ++i) {
      name += Trimmed(line);
      if (!name.ends_with(" +")) break;
      name = std::string(Trimmed(std::string_view(name).substr(0, name.size() - 2)));
    }
    if (name.empty() || insideCase_) return;
    if (facts_.includes.size() < kMostIncludes) {
      facts_.includes.push_back(name);
    } else {
      ++facts_.moreIncludes;
    }
  }

  DeckLines& reader_;
  DeckFacts& facts_;
  bool insideCase_ = false;
};

bool ReadDeck(const std::string& path, const DeckScanHooks& hooks, DeckFacts& facts) {
  if (!FileDirWrapper::FileExists(path)) {
    if (hooks.report) hooks.report(Message(MessageId::kFileMissing, path));
    return false;
  }
  DeckLines reader;
  reader.SetProgress(hooks.progress);
  bool readable = reader.Open(path);
  if (readable) {
    DeckScanner(reader, facts).ScanAll();
    if (reader.Stopped()) return false;
    readable = !reader.Failed();
  }
  if (!readable && hooks.report) hooks.report(Message(MessageId::kFileUnreadable, path));
  if (readable && facts.moreIncludes > 0 && hooks.report) {
    hooks.report(Message(MessageId::kDeckIncludesCut, path, kMostIncludes, facts.moreIncludes));
  }
  return readable;
}

void ApplyDeck(JobFileDyna& job, const DeckFacts& deck) {
  job.deckMemory = deck.memory;
  job.hasRecommendedSolver = deck.solverType.has_value();
  job.solverType = deck.solverType.value_or(job.solverType);
  job.hasFirstStage = deck.firstStage.has_value();
  job.firstStage = deck.firstStage.value_or(job.firstStage);
  job.keepDeck = deck.keepDeck;
  job.caseRun = job.caseRun || deck.cases;
  job.simulationType = deck.simulationType;
  job.calculationMethod = deck.calculationMethod;
  job.deckIdentifier = deck.identifier.value_or(std::string());
  job.deckIdentifierFlag = deck.identifier.has_value() ? 1 : 0;
  job.includes = deck.includes;
}

}  // namespace

bool ScanDeck(JobFileDyna& job, const DeckScanHooks& hooks) {
  DeckFacts facts;
  if (!ReadDeck(job.jobFile, hooks, facts)) return false;
  ApplyDeck(job, facts);
  return true;
}

void ApplyDeckMemory(JobFileDyna& job, const Settings& settings) {
  const bool deckHasSay = settings.memory_auto && job.deckMemory != 0;
  job.memory = deckHasSay ? job.deckMemory : settings.memory_size;
}
