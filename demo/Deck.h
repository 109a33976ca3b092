// The part of a keyword deck that the stand-in reads: title, end time, nodes and elements, with all
// decks that it includes.
#ifndef STANDIN_DECK_H
#define STANDIN_DECK_H

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

struct Node {
  std::int64_t id = 0;
  std::array<double, 3> x{};
};

enum class ElementKind { kSolid, kThickShell, kBeam, kShell };
constexpr std::size_t kElementKinds = 4;

// Corner nodes only; a beam has two nodes and the one that orients it. Missing ones are 0.
struct Element {
  std::int64_t id = 0;
  std::int64_t part = 0;
  std::array<std::int64_t, 8> nodes{};
};

// A load case and the blocks of lines that belong to it alone, by their numbers.
struct LoadCase {
  int number = 0;
  std::set<int> blocks;
};

struct Deck {
  std::string title;
  std::optional<double> endTime;
  std::vector<Node> nodes;                                   // by id, each id once
  std::array<std::vector<Element>, kElementKinds> elements;  // by id
  std::vector<std::int64_t> parts;                           // of the elements, by id
  std::size_t duplicateNodes = 0;                            // left out of `nodes`
  std::set<std::string> skipped;  // element keywords that the stand-in does not read
  std::vector<LoadCase> cases;    // by number

  const std::vector<Element>& Of(ElementKind kind) const {
    return elements[static_cast<std::size_t>(kind)];
  }
  std::size_t ElementCount() const;

  // The set of parts whose formed state the next stage wants, when the deck asks for it.
  std::optional<std::int64_t> formedSet;
  std::map<std::int64_t, std::set<std::int64_t>> partSets;
};

// Why a deck cannot be run.
struct DeckError {
  int number = 0;
  std::string text;
};

// "*CASE_BEGIN_2" and "*CASE_END_2", by what stands behind the "*": the number of the block;
// nothing for other keywords, 0 where a block ends.
std::optional<int> CaseEdge(const std::string& keyword);

// Reads the deck and what it includes, of the blocks of load cases only those of `only`; null: all.
// Stops after twenty errors.
Deck ReadDeck(const std::string& path, std::vector<DeckError>& errors,
              const LoadCase* only = nullptr);

#endif
