#include "DeckReader.h"

#include <algorithm>
#include <fstream>

#include "System.h"
#include "Text.h"

namespace {

constexpr std::size_t kMostErrors = 20;
constexpr std::size_t kDeepestInclude = 32;
constexpr std::size_t kMostFiles = 10000;

constexpr int kErrorOpen = 10103;
constexpr int kErrorInput = 10246;
constexpr int kErrorInclude = 10302;

bool StartsWith(std::string_view text, std::string_view start) {
  return text.substr(0, start.size()) == start;
}

bool Contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

// Options of element keywords that put one more card behind each element.
std::size_t ExtraCards(const std::string& keyword) {
  std::size_t cards = 0;
  if (Contains(keyword, "_THICKNESS") || Contains(keyword, "_BETA") || Contains(keyword, "_MCID")) {
    ++cards;
  }
  for (const char* option : {"_OFFSET", "_DOF", "_SECTION", "_SCALAR", "_SCALR", "_PID",
                             "_ORIENTATION", "_WARPAGE", "_ELBOW"}) {
    if (Contains(keyword, option)) ++cards;
  }
  return cards + (Contains(keyword, "_ORTHO") ? 2 : 0);
}

// Element keywords whose cards are laid out in a way of their own.
bool HasOtherLayout(const std::string& keyword) {
  for (const char* option : {"NURBS", "SOURCE", "COMPOSITE", "PULLEY", "_H", "_TET", "_P2", "_SHL4",
                             "_T4TOT", "_T15", "_P21", "_P40"}) {
    if (Contains(keyword, option)) return true;
  }
  return false;
}

std::string FolderOf(const std::string& path) {
  const std::size_t separator = path.find_last_of("\\/");
  return separator == std::string::npos ? std::string() : path.substr(0, separator + 1);
}

bool IsReadable(const std::string& path) {
  return !IsFolder(path) && std::ifstream(path, std::ios::binary).is_open();
}

}  // namespace

bool DeckReader::Stopped() const {
  return errors_.size() >= kMostErrors;
}

void DeckReader::Fail(int number, const std::string& text) {
  if (!Stopped()) errors_.push_back({number, text});
}

void DeckReader::FailHere(const std::string& text) {
  Fail(kErrorInput, text + ", line " + std::to_string(place_.line) + " of " + openFiles_.back());
}

void DeckReader::ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (IsFolder(path) || !file) return Fail(kErrorOpen, "the file cannot be read: " + path);
  ++filesRead_;
  openFiles_.push_back(path);
  const Place outer = place_;
  place_ = Place();
  std::string line;
  while (!ended_ && !Stopped() && std::getline(file, line)) {
    ++place_.line;
    ReadLine(std::move(line));
  }
  ended_ = false;
  place_ = outer;
  openFiles_.pop_back();
}

void DeckReader::ReadLine(std::string line) {
  while (!line.empty() && (line.back() == '\r' || line.back() == ' ')) line.pop_back();
  if (!line.empty() && line[0] == '$') return;
  if (!line.empty() && line[0] == '*') {
    if (const auto edge = CaseEdge(Upper(Trim(std::string_view(line).substr(1))))) {
      caseBlock_ = *edge;
      if (caseBlock_ > 0) caseBlocks_.insert(caseBlock_);
      place_.block = Block::kIgnored;
      return;
    }
  }
  if (caseBlock_ > 0 && only_ != nullptr && !only_->blocks.contains(caseBlock_)) return;
  if (!line.empty() && line[0] == '*') return BeginKeyword(line);
  ReadData(line);
}

void DeckReader::BeginKeyword(std::string_view line) {
  std::string keyword = Upper(Trim(line.substr(1)));
  place_.block = Block::kIgnored;
  place_.card = 0;
  place_.pendingName.clear();
  if (keyword == "KEYWORD" || StartsWith(keyword, "KEYWORD ") || StartsWith(keyword, "KEYWORD_")) {
    return BeginKeywordCard(keyword);
  }
  place_.form = place_.defaultForm;
  if (!keyword.empty() && Contains("+-%", keyword.substr(keyword.size() - 1))) {
    place_.form = keyword.back() == '+'   ? CardForm::Long()
                  : keyword.back() == '%' ? CardForm::WideIds()
                                          : CardForm::Standard();
    keyword = Trim(std::string_view(keyword).substr(0, keyword.size() - 1));
  }
  if (keyword == "END") {
    ended_ = true;
  } else if (keyword == "TITLE") {
    place_.block = Block::kTitle;
  } else if (keyword == "CONTROL_TERMINATION") {
    place_.block = Block::kTermination;
  } else if (keyword == "INTERFACE_SPRINGBACK_LSDYNA") {
    place_.block = Block::kFormedSet;
  } else if (keyword == "SET_PART_LIST") {
    place_.block = Block::kPartSet;
  } else if (keyword == "CASE" || keyword == "CASE_TITLE") {
    place_.block = Block::kCase;
    place_.loadCase = 0;
    place_.extraCards = keyword == "CASE_TITLE" ? 1 : 0;
  } else if (keyword == "NODE") {
    place_.block = Block::kNode;
  } else if (StartsWith(keyword, "PARAMETER_EXPRESSION")) {
    place_.block = Block::kExpression;
  } else if (keyword == "PARAMETER" || keyword == "PARAMETER_LOCAL") {
    place_.block = Block::kParameter;
  } else if (StartsWith(keyword, "INCLUDE_PATH")) {
    place_.block = Block::kIncludePath;
  } else if (keyword == "INCLUDE") {
    place_.block = Block::kInclude;
  } else if (StartsWith(keyword, "INCLUDE_TRANSFORM") || StartsWith(keyword, "INCLUDE_STAMPED") ||
             StartsWith(keyword, "INCLUDE_CID") || StartsWith(keyword, "INCLUDE CID")) {
    place_.block = Block::kIncludeOnce;
  } else if (BeginElement(keyword)) {
    place_.block = Block::kElement;
  }
}

void DeckReader::BeginKeywordCard(const std::string& keyword) {
  sawKeywordCard_ = true;
  if (Contains(keyword, "LONG=Y") || Contains(keyword, "LONG=K")) {
    place_.defaultForm = CardForm::Long();
  } else if (Contains(keyword, "I10=Y")) {
    place_.defaultForm = CardForm::WideIds();
  }
}

bool DeckReader::BeginElement(const std::string& keyword) {
  struct Name {
    const char* text;
    ElementKind kind;
  };
  constexpr Name kNames[] = {{"ELEMENT_SOLID", ElementKind::kSolid},
                             {"ELEMENT_TSHELL", ElementKind::kThickShell},
                             {"ELEMENT_BEAM", ElementKind::kBeam},
                             {"ELEMENT_SHELL", ElementKind::kShell}};
  for (const Name& name : kNames) {
    if (keyword != name.text && !StartsWith(keyword, std::string(name.text) + "_")) continue;
    if (HasOtherLayout(keyword)) {
      deck_.skipped.insert(keyword);
      return false;
    }
    place_.kind = name.kind;
    place_.extraCards = ExtraCards(keyword);
    return true;
  }
  return false;
}

void DeckReader::ReadData(const std::string& line) {
  switch (place_.block) {
    case Block::kIgnored:
      return;
    case Block::kTitle:
      if (place_.card++ == 0 && deck_.title.empty()) deck_.title = Trim(line);
      return;
    case Block::kTermination:
      if (place_.card++ == 0) ReadTermination(line);
      return;
    case Block::kNode:
      return ReadNode(line);
    case Block::kElement:
      return ReadElement(line);
    case Block::kParameter:
      return ReadParameters(line);
    case Block::kExpression:
      return ReadExpression(line);
    case Block::kInclude:
      return ReadInclude(line);
    case Block::kIncludeOnce:
      if (place_.card++ == 0) ReadInclude(line);
      return;
    case Block::kFormedSet:
      if (place_.card++ == 0) Integer(ValueCard(line)[0], deck_.formedSet.emplace());
      return;
    case Block::kPartSet:
      return ReadPartSet(line);
    case Block::kCase:
      return ReadCase(line);
    case Block::kIncludePath:
      if (!Trim(line).empty()) includeFolders_.emplace_back(Trim(line));
      return;
  }
}

bool DeckReader::Integer(std::string_view field, std::int64_t& out) {
  out = 0;
  if (field.empty()) return true;
  if (const auto plain = ToInteger(field)) {
    out = *plain;
    return true;
  }
  const auto text = parameters_.Resolve(field);
  const auto value = text ? ToReal(*text) : std::nullopt;
  if (!value || *value < -9e15 || *value > 9e15) {
    FailHere("\"" + std::string(field) + "\" is not a whole number");
    return false;
  }
  out = static_cast<std::int64_t>(*value);
  return true;
}

bool DeckReader::Real(std::string_view field, double& out) {
  out = 0;
  if (field.empty()) return true;
  const auto text = parameters_.Resolve(field);
  const auto value = text ? ToReal(*text) : std::nullopt;
  if (!value) {
    FailHere("\"" + std::string(field) + "\" is " + (text ? "not a number" : "not defined"));
    return false;
  }
  out = *value;
  return true;
}

Card DeckReader::ValueCard(const std::string& line) const {
  return Card(line, place_.form.valueWidth, 0, place_.form.valueWidth);
}

void DeckReader::ReadTermination(const std::string& line) {
  const Card card = ValueCard(line);
  double endTime = 0;
  if (!Real(card[0], endTime)) return;
  if (endTime < 0) return FailHere("the end time is negative");
  deck_.endTime = endTime;
}

void DeckReader::ReadNode(const std::string& line) {
  if (line.empty()) return;
  const Card card(line, place_.form.idWidth, 1, place_.form.coordinateWidth);
  Node node;
  if (!Integer(card[0], node.id)) return;
  if (node.id <= 0) return FailHere("a node number must be positive");
  for (std::size_t i = 0; i < 3; ++i) {
    if (!Real(card[i + 1], node.x[i])) return;
  }
  deck_.nodes.push_back(node);
}

// A solid may have its nodes behind its part or, in the newer layout, on a second line.
void DeckReader::ReadElement(const std::string& line) {
  std::vector<Element>& list = deck_.elements[static_cast<std::size_t>(place_.kind)];
  const Card card(line, place_.form.idWidth, Card::kMostFields, place_.form.idWidth);
  const std::size_t at = place_.card++;
  const bool second = at == 1 && place_.nodesOnSecondLine;
  if (at == 0) {
    if (line.empty()) {
      place_.card = 0;
      return;
    }
    Element element;
    if (!Integer(card[0], element.id) || !Integer(card[1], element.part)) return;
    place_.nodesOnSecondLine = place_.kind == ElementKind::kSolid && card[2].empty();
    list.push_back(element);
  }
  if ((at == 0 && !place_.nodesOnSecondLine) || second) {
    const std::size_t count = place_.kind == ElementKind::kBeam    ? 3
                              : place_.kind == ElementKind::kShell ? 4
                                                                   : 8;
    for (std::size_t i = 0; i < count; ++i) {
      if (!Integer(card[i + (second ? 0 : 2)], list.back().nodes[i])) return;
    }
  }
  if (place_.card > place_.extraCards + (place_.nodesOnSecondLine ? 1 : 0)) place_.card = 0;
}

// The set's number on the first card, eight parts on each further one.
void DeckReader::ReadPartSet(const std::string& line) {
  const Card card = ValueCard(line);
  if (place_.card++ == 0) {
    Integer(card[0], place_.partSet);
    return;
  }
  for (std::size_t i = 0; i < 8; ++i) {
    std::int64_t part = 0;
    if (Integer(card[i], part) && part > 0) deck_.partSets[place_.partSet].insert(part);
  }
}

// The case's number, behind a title if there is one, then eight blocks on each further card.
void DeckReader::ReadCase(const std::string& line) {
  if (place_.card++ < place_.extraCards) return;
  const Card card = ValueCard(line);
  std::int64_t number = 0;
  if (place_.loadCase == 0) {
    if (!Integer(card[0], number)) return;
    place_.loadCase = static_cast<int>(number);
    cases_[place_.loadCase].number = place_.loadCase;
    return;
  }
  for (std::size_t i = 0; i < 8; ++i) {
    if (Integer(card[i], number) && number > 0)
      cases_[place_.loadCase].blocks.insert(static_cast<int>(number));
  }
}

std::vector<LoadCase> DeckReader::Cases() const {
  std::vector<LoadCase> cases;
  for (const auto& [number, one] : cases_) cases.push_back(one);
  if (!cases.empty()) return cases;
  for (const int block : caseBlocks_) cases.push_back({block, {block}});
  return cases;
}

void DeckReader::ReadParameters(const std::string& line) {
  const Card card = ValueCard(line);
  for (std::size_t i = 0; i + 1 < Card::kMostFields && !card[i].empty(); i += 2) {
    parameters_.Set(Trim(card[i].substr(1)), card[i + 1]);
  }
}

// Expressions are not evaluated: a name whose expression is a plain number gets it.
void DeckReader::ReadExpression(const std::string& line) {
  const Card card(line, place_.form.valueWidth, 1, 80);
  if (!card[0].empty() && ToReal(card[1])) parameters_.Set(Trim(card[0].substr(1)), card[1]);
}

// A name that ends in a blank and "+" goes on in the next line.
void DeckReader::ReadInclude(const std::string& line) {
  std::string name = place_.pendingName + std::string(Trim(line));
  if (name.size() > 2 && name.substr(name.size() - 2) == " +") {
    place_.pendingName = name.substr(0, name.size() - 2);
    place_.card = 0;
    return;
  }
  place_.pendingName.clear();
  if (name.empty()) return;
  const std::string path = FindInclude(name);
  if (path.empty()) return Fail(kErrorInclude, "the included file cannot be found: " + name);
  if (std::find(openFiles_.begin(), openFiles_.end(), path) != openFiles_.end() ||
      openFiles_.size() >= kDeepestInclude || filesRead_ >= kMostFiles) {
    return Fail(kErrorInclude, "the file includes itself, or too many files: " + name);
  }
  ReadFile(path);
}

// Beside the current folder, the including deck and the folders of *INCLUDE_PATH.
std::string DeckReader::FindInclude(const std::string& name) const {
  std::string slashed = name;
  std::replace(slashed.begin(), slashed.end(), '\\', '/');
  for (const std::string& text : {name, slashed}) {
    if (IsReadable(text)) return text;
    for (const std::string& file : {openFiles_.back(), openFiles_.front()}) {
      if (IsReadable(FolderOf(file) + text)) return FolderOf(file) + text;
    }
    for (const std::string& folder : includeFolders_) {
      for (const std::string& start : {folder, FolderOf(openFiles_.front()) + folder}) {
        if (IsReadable(start + "/" + text)) return start + "/" + text;
      }
    }
  }
  return {};
}
