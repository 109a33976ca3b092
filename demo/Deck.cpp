#include "Deck.h"

#include <algorithm>
#include <string_view>

#include "DeckReader.h"
#include "Text.h"

namespace {

constexpr int kErrorNoKeyword = 10107;
constexpr int kErrorUnknownNode = 10305;

bool ById(const Node& a, const Node& b) {
  return a.id < b.id;
}

// The last definition of a node counts.
void SortNodes(Deck& deck) {
  std::stable_sort(deck.nodes.begin(), deck.nodes.end(), ById);
  std::vector<Node> unique;
  unique.reserve(deck.nodes.size());
  for (const Node& node : deck.nodes) {
    if (!unique.empty() && unique.back().id == node.id) {
      unique.back() = node;
      ++deck.duplicateNodes;
    } else {
      unique.push_back(node);
    }
  }
  deck.nodes.swap(unique);
}

void SortElements(Deck& deck) {
  for (std::vector<Element>& list : deck.elements) {
    std::stable_sort(list.begin(), list.end(),
                     [](const Element& a, const Element& b) { return a.id < b.id; });
    for (const Element& element : list) deck.parts.push_back(element.part);
  }
  std::sort(deck.parts.begin(), deck.parts.end());
  deck.parts.erase(std::unique(deck.parts.begin(), deck.parts.end()), deck.parts.end());
}

void CheckElementNodes(const Deck& deck, std::vector<DeckError>& errors) {
  constexpr std::size_t kMostReported = 20;
  for (const std::vector<Element>& list : deck.elements) {
    for (const Element& element : list) {
      for (const std::int64_t id : element.nodes) {
        if (errors.size() >= kMostReported) return;
        if (id == 0) continue;
        Node wanted;
        wanted.id = id;
        if (std::binary_search(deck.nodes.begin(), deck.nodes.end(), wanted, ById)) continue;
        errors.push_back({kErrorUnknownNode, "element " + std::to_string(element.id) +
                                                 " refers to node " + std::to_string(id) +
                                                 ", which is not defined"});
      }
    }
  }
}

}  // namespace

std::size_t Deck::ElementCount() const {
  std::size_t count = 0;
  for (const std::vector<Element>& list : elements) count += list.size();
  return count;
}

std::optional<int> CaseEdge(const std::string& keyword) {
  constexpr std::string_view kBegin = "CASE_BEGIN_";
  if (keyword.starts_with("CASE_END_")) return 0;
  if (!keyword.starts_with(kBegin)) return std::nullopt;
  return static_cast<int>(ToInteger(keyword.substr(kBegin.size())).value_or(0));
}

Deck ReadDeck(const std::string& path, std::vector<DeckError>& errors, const LoadCase* only) {
  Deck deck;
  DeckReader reader(deck, errors, only);
  reader.ReadFile(path);
  deck.cases = reader.Cases();
  if (errors.empty() && !reader.SawKeywordCard()) {
    errors.push_back({kErrorNoKeyword, "there is no *KEYWORD card in " + path});
  }
  if (!errors.empty()) return deck;
  SortNodes(deck);
  SortElements(deck);
  CheckElementNodes(deck, errors);
  return deck;
}
