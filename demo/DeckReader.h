// Reads keyword decks line by line into a Deck. One object reads one main deck.
#ifndef STANDIN_DECKREADER_H
#define STANDIN_DECKREADER_H

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Card.h"
#include "Deck.h"

class DeckReader {
 public:
  DeckReader(Deck& deck, std::vector<DeckError>& errors, const LoadCase* only)
      : deck_(deck), errors_(errors), only_(only) {}

  void ReadFile(const std::string& path);
  bool SawKeywordCard() const { return sawKeywordCard_; }
  // Where no card tells of cases, each block is one.
  std::vector<LoadCase> Cases() const;

 private:
  enum class Block {
    kIgnored,
    kTitle,
    kTermination,
    kNode,
    kElement,
    kParameter,
    kExpression,
    kInclude,      // every line a file
    kIncludeOnce,  // the first line a file, then cards
    kIncludePath,
    kFormedSet,
    kPartSet,
    kCase,
  };

  void ReadLine(std::string line);
  void BeginKeyword(std::string_view line);
  void BeginKeywordCard(const std::string& keyword);
  bool BeginElement(const std::string& keyword);
  void ReadData(const std::string& line);
  void ReadTermination(const std::string& line);
  void ReadNode(const std::string& line);
  void ReadElement(const std::string& line);
  void ReadPartSet(const std::string& line);
  void ReadCase(const std::string& line);
  void ReadParameters(const std::string& line);
  void ReadExpression(const std::string& line);
  void ReadInclude(const std::string& line);
  std::string FindInclude(const std::string& name) const;

  Card ValueCard(const std::string& line) const;
  bool Integer(std::string_view field, std::int64_t& out);
  bool Real(std::string_view field, double& out);
  void Fail(int number, const std::string& text);
  void FailHere(const std::string& text);
  bool Stopped() const;

  Deck& deck_;
  std::vector<DeckError>& errors_;
  const LoadCase* const only_;
  std::map<int, LoadCase> cases_;
  std::set<int> caseBlocks_;
  int caseBlock_ = 0;  // that the reading is in
  Parameters parameters_;
  std::vector<std::string> includeFolders_;
  std::vector<std::string> openFiles_;  // from the main deck inwards
  std::size_t filesRead_ = 0;
  bool sawKeywordCard_ = false;
  bool ended_ = false;  // *END in the file that is being read

  // What the current file is at. Saved and restored around an included file.
  struct Place {
    std::size_t line = 0;
    Block block = Block::kIgnored;
    CardForm defaultForm;  // of the file, by its *KEYWORD card
    CardForm form;         // of the current keyword
    std::size_t card = 0;  // data lines since the keyword, or since the element began
    std::size_t extraCards = 0;
    std::int64_t partSet = 0;
    int loadCase = 0;
    ElementKind kind = ElementKind::kSolid;
    bool nodesOnSecondLine = false;
    std::string pendingName;  // an include name that goes on in the next line
  };
  Place place_;
};

#endif
