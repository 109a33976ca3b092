#include "jobs/DeckEndTime.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "jobs/DeckLines.h"
#include "jobs/DeckScan.h"
#include "jobs/StageDecks.h"
#include "util/files/FileDirWrapper.h"
#include "util/text/PlainText.h"
#include "util/text/StrWrapper.h"

namespace {

constexpr std::size_t kMostDecks = 100;
constexpr std::size_t kMostParameters = 10000;
constexpr std::size_t kFieldWidth = 10;
constexpr std::size_t kLongFieldWidth = 20;
constexpr std::size_t kFieldsPerCard = 8;
constexpr std::size_t kMostCases = 1000;
constexpr int kNoCase = 0;

// The index-th field of a card: between commas where the card has any, else by columns.
std::string Field(std::string_view card, std::size_t index, std::size_t width) {
  std::string_view field;
  if (card.find(',') == std::string_view::npos) {
    if (index * width < card.size()) field = card.substr(index * width, width);
  } else {
    for (; index > 0 && !card.empty(); --index) {
      card.remove_prefix(std::min(card.find(','), card.size() - 1) + 1);
    }
    field = card.substr(0, card.find(','));
  }
  return std::string(Trimmed(field));
}

std::optional<double> Number(std::string_view field) {
  const std::optional<double> value = AnyNumber(field);
  return value && std::isfinite(*value) ? value : std::nullopt;
}

class EndTimeSearch {
 public:
  void Read(const std::string& deck) {
    DeckLines reader;
    if (!reader.Open(deck)) return;
    std::string_view line;
    bool more = reader.NextCard(line);
    while (more) {
      const std::string keyword = Upper(line);
      if (keyword.starts_with("*CONTROL_TERMINATION")) {
        const std::size_t width = FieldWidth(keyword);
        std::string& text = texts_[block_];
        more = ReadCards(reader, line, [&](std::string_view card) {
          if (text.empty()) text = Field(card, 0, width);
        });
      } else if (keyword.starts_with("*CASE")) {
        more = ReadCase(reader, keyword, line);
      } else if (keyword.starts_with("*PARAMETER")) {
        const std::size_t width = FieldWidth(keyword);
        more = ReadCards(reader, line, [&](std::string_view card) { ReadParameters(card, width); });
      } else {
        if (keyword.starts_with("*KEYWORD")) {
          longCards_ = keyword.find("LONG=Y") != std::string::npos;
        }
        more = reader.NextCard(line);
      }
    }
  }

  bool Found() const {
    return std::any_of(texts_.begin(), texts_.end(),
                       [](const auto& text) { return !text.second.empty(); });
  }

  DeckEndTime Result() const {
    DeckEndTime result;
    result.text = TextOf(kNoCase);
    result.value = ValueOf(result.text);
    if (cases_.empty()) {
      for (const int block : blocks_) result.cases.push_back({block, ValueOf(TextOf(block))});
    }
    for (const auto& [number, blocks] : cases_) {
      DeckCase one{number, std::nullopt};
      for (const int block : blocks) {
        if (!one.endTime) one.endTime = ValueOf(TextOf(block));
      }
      result.cases.push_back(one);
    }
    for (DeckCase& one : result.cases) {
      if (!one.endTime) one.endTime = result.value;
    }
    if (result.text.empty() && !result.cases.empty()) {
      result.value = result.cases.front().endTime;
      const auto first = std::find_if(texts_.begin(), texts_.end(),
                                      [](const auto& text) { return !text.second.empty(); });
      if (first != texts_.end()) result.text = first->second;
    }
    return result;
  }

 private:
  // A sign behind a keyword counts for its cards alone.
  std::size_t FieldWidth(const std::string& keyword) const {
    const char sign = keyword[keyword.find_last_not_of(" \t")];
    const bool isLong = sign == '+' || (longCards_ && sign != '-');
    return isLong ? kLongFieldWidth : kFieldWidth;
  }

  // Hands out the lines below a keyword; the next keyword is then in `line`. False at the end.
  template <typename Take>
  static bool ReadCards(DeckLines& reader, std::string_view& line, const Take& take) {
    while (reader.NextLine(line)) {
      if (line.starts_with('*')) return true;
      if (!line.starts_with('$')) take(line);
    }
    return false;
  }

  // "*CASE_BEGIN_2", "*CASE_END_2" around lines of their own, and "*CASE", whose cards tell which
  // of them belong to a case. As ReadCards.
  bool ReadCase(DeckLines& reader, const std::string& keyword, std::string_view& line) {
    for (const std::string_view edge : {"*CASE_BEGIN_", "*CASE_END_"}) {
      if (!keyword.starts_with(edge)) continue;
      const int number = Numbered(std::string_view(keyword).substr(edge.size()));
      block_ = edge == "*CASE_BEGIN_" ? number : kNoCase;
      if (number != kNoCase && blocks_.size() < kMostCases) blocks_.insert(number);
      return reader.NextCard(line);
    }
    bool isTitle = keyword.starts_with("*CASE_TITLE");
    int number = kNoCase;
    return ReadCards(reader, line, [&](std::string_view card) {
      if (isTitle) {
        isTitle = false;
      } else if (number == kNoCase) {
        number = Numbered(Field(card, 0, kFieldWidth));
        if (number != kNoCase && cases_.size() < kMostCases) cases_[number];
      } else if (const auto known = cases_.find(number); known != cases_.end()) {
        for (std::size_t field = 0; field < kFieldsPerCard; ++field) {
          const int block = Numbered(Field(card, field, kFieldWidth));
          if (block != kNoCase && known->second.size() < kMostCases) known->second.push_back(block);
        }
      }
    });
  }

  static int Numbered(std::string_view text) {
    const std::string_view digits = text.substr(0, text.find_first_not_of("0123456789 "));
    return static_cast<int>(WholeNumber(digits, 1, 1000000000).value_or(kNoCase));
  }

  std::string TextOf(int block) const {
    const auto found = texts_.find(block);
    return found == texts_.end() ? std::string() : found->second;
  }

  // Behind a blank stands the next field, on a card that does not keep to the columns.
  std::optional<double> ValueOf(const std::string& text) const {
    const auto value = Number(std::string_view(text).substr(0, text.find_first_of(" \t")));
    const std::size_t name = text.find('&');
    if (value || name == std::string::npos || name > 1) return value;
    const auto parameter = parameters_.find(Upper(text.substr(name + 1)));
    if (parameter == parameters_.end()) return std::nullopt;
    return text[0] == '-' ? -parameter->second : parameter->second;
  }

  // Pairs of a name, behind a letter for its type, and a value.
  void ReadParameters(std::string_view card, std::size_t width) {
    constexpr std::size_t kPairs = 4;
    for (std::size_t pair = 0; pair < kPairs; ++pair) {
      const std::string typed = Field(card, 2 * pair, width);
      const std::optional<double> value = Number(Field(card, 2 * pair + 1, width));
      if (typed.empty() || !value || parameters_.size() >= kMostParameters) continue;
      std::string name;
      StrWrapperTxt::Trim(typed.substr(1), name);
      parameters_[Upper(name)] = *value;
    }
  }

  std::map<std::string, double> parameters_;
  std::map<int, std::string> texts_;       // as written, by the case's lines
  std::map<int, std::vector<int>> cases_;  // the lines that belong to each
  std::set<int> blocks_;                   // lines of cases, by their numbers
  int block_ = kNoCase;                    // that the reading is in
  bool longCards_ = false;
};

}  // namespace

DeckEndTime FindEndTime(const JobFileDyna& job) {
  EndTimeSearch search;
  search.Read(job.jobFile);
  std::vector<std::string> decks;
  const auto addIncludes = [&](const JobFileDyna& of) {
    for (const std::string& name : of.includes) {
      std::string deck = IncludedPath(job.jobFile, name);
      if (!FileDirWrapper::FileExists(deck)) deck = IncludedPath(of.jobFile, name);
      const bool known = std::find(decks.begin(), decks.end(), deck) != decks.end();
      if (!known && decks.size() < kMostDecks) decks.push_back(std::move(deck));
    }
  };
  addIncludes(job);
  if (decks.empty() || search.Found()) return search.Result();
  JobFileDyna included{Settings()};
  for (std::size_t i = 0; i < decks.size() && !search.Found(); ++i) {
    included.jobFile = decks[i];
    if (!ScanDeck(included, {})) continue;
    search.Read(included.jobFile);
    addIncludes(included);
  }
  return search.Result();
}
