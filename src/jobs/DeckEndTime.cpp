#include "jobs/DeckEndTime.h"

#include <algorithm>
#include <cmath>
#include <map>
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
      if (keyword.starts_with("*CONTROL_TERMINATION") && !Found()) {
        const std::size_t width = FieldWidth(keyword);
        more = ReadCards(reader, line, [&](std::string_view card) {
          if (!Found()) text_ = Field(card, 0, width);
        });
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

  bool Found() const { return !text_.empty(); }

  DeckEndTime Result() const {
    DeckEndTime result;
    result.text = text_;
    // Behind a blank stands the next field, on a card that does not keep to the columns.
    result.value = Number(std::string_view(text_).substr(0, text_.find_first_of(" \t")));
    const std::size_t name = text_.find('&');
    if (result.value || name == std::string::npos || name > 1) return result;
    const auto parameter = parameters_.find(Upper(text_.substr(name + 1)));
    if (parameter == parameters_.end()) return result;
    result.value = text_[0] == '-' ? -parameter->second : parameter->second;
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
  std::string text_;
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
