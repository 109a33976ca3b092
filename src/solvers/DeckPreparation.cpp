#include "solvers/DeckPreparation.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

#include "jobs/DeckLines.h"
#include "jobs/StageDecks.h"
#include "solvers/KeywordCards.h"
#include "solvers/NewFile.h"
#include "solvers/NodeSet.h"
#include "util/files/FileDirWrapper.h"
#include "util/text/PlainText.h"

namespace {

bool SaysResult(std::string_view comment) {
  constexpr std::string_view kWords = "result from previous case";
  const std::size_t start = comment.find_first_not_of(" \t", 1);
  return start != std::string_view::npos && comment.substr(start, kWords.size()) == kWords;
}

// Which results a deck includes, and the format of its cards.
struct DeckResults {
  std::vector<std::string> files;
  CardFormat format = CardFormat::kStandard;
};

// The name behind an INCLUDE card, when a comment between says that it is a result.
void ReadInclude(DeckLines& reader, std::vector<std::string>& results) {
  constexpr int kMostComments = 1000;
  bool isResult = false;
  std::string name;
  std::string_view line;
  for (int i = 0; i < kMostComments && reader.NextLine(line); ++i) {
    if (!line.empty() && line[0] == '*') {
      reader.Unread();
      break;
    }
    if (!line.empty() && line[0] == '$') {
      isResult = isResult || SaysResult(line);
      continue;
    }
    name += Trimmed(line);
    if (!name.ends_with(" +")) break;
    name = std::string(Trimmed(std::string_view(name).substr(0, name.size() - 2)));
  }
  if (isResult && !name.empty()) results.push_back(name);
}

DeckResults FindResults(DeckLines& reader) {
  DeckResults results;
  for (std::string_view line; reader.NextCard(line);) {
    if (line[0] != '*') continue;
    const Keyword keyword = ParseKeyword(line, results.format);
    if (keyword.name == "END") break;
    if (keyword.name.starts_with("KEYWORD")) {
      results.format = DeckFormat(keyword, results.format);
    } else if (keyword.name == "INCLUDE") {
      ReadInclude(reader, results.files);
    }
  }
  return results;
}

void ReadNodes(DeckLines& reader, CardFormat format, NodeSet& nodes) {
  for (std::string_view line; reader.NextLine(line);) {
    if (line.empty() || line[0] == '$') continue;
    if (line[0] == '*') {
      reader.Unread();
      return;
    }
    if (const auto node = NodeNumber(line, format)) nodes.Add(*node);
  }
}

void ReadResult(DeckLines& reader, CardFormat format, NodeSet& nodes) {
  for (std::string_view line; reader.NextCard(line);) {
    if (line[0] != '*') continue;
    const Keyword keyword = ParseKeyword(line, format);
    if (keyword.name == "END") return;
    if (keyword.name.starts_with("KEYWORD")) {
      format = DeckFormat(keyword, format);
    } else if (keyword.name == "NODE") {
      ReadNodes(reader, keyword.format, nodes);
    }
  }
}

// The lines of a file with their ends, byte for byte.
class ExactLines {
 public:
  bool Open(const std::string& path) {
    buffer_.resize(kBlock);
    return file_.Open(path);
  }

  // A line that is longer than the buffer comes in pieces, which are not `whole`.
  bool Next(std::string_view& piece, bool& whole) {
    std::size_t length = 0;
    do {
      length = Rest().find('\n') + 1;
    } while (length == 0 && Fill());
    if (length == 0) length = Rest().size();
    if (length == 0) return false;
    piece = Rest().substr(0, length);
    const bool ends = piece.back() == '\n' || atEnd_;
    whole = atStart_ && ends;
    atStart_ = ends;
    begin_ += length;
    return true;
  }

  bool Failed() const { return failed_; }

 private:
  static constexpr std::size_t kBlock = std::size_t{1} << 20;

  std::string_view Rest() const { return {buffer_.data() + begin_, end_ - begin_}; }

  // False when the buffer is full and at the end of the file.
  bool Fill() {
    std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
    end_ -= begin_;
    begin_ = 0;
    if (end_ == buffer_.size()) return false;
    const std::ptrdiff_t count = file_.Read(buffer_.data() + end_, buffer_.size() - end_);
    failed_ = failed_ || count < 0;
    atEnd_ = count <= 0;
    if (!atEnd_) end_ += static_cast<std::size_t>(count);
    return !atEnd_;
  }

  InputFile file_;
  std::vector<char> buffer_;
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
  bool atStart_ = true;
  bool atEnd_ = false;
  bool failed_ = false;
};

// What becomes of the lines of a deck. Lines come without their ends.
class LineRules {
 public:
  LineRules(CardFormat format, NodeSet& resultNodes) : format_(format), nodes_(resultNodes) {}

  enum class Fate { kKeep, kComment, kCut };

  // For kCut, `length` is what stays of the line.
  Fate Judge(std::string_view line, std::size_t& length) {
    if (ended_ || line.empty() || line[0] == '$' || IsEncrypted(line)) return Fate::kKeep;
    if (line[0] == '*') {
      Enter(ParseKeyword(line, format_));
      return Fate::kKeep;
    }
    if (block_ == Block::kNode) return JudgeNode(line, length);
    if (block_ == Block::kSpcNode) return Known(SpcNodeNumber(line, blockFormat_));
    return Fate::kKeep;
  }

 private:
  enum class Block { kOther, kNode, kSpcNode };

  void Enter(const Keyword& keyword) {
    blockFormat_ = keyword.format;
    block_ = keyword.name == "NODE"                ? Block::kNode
             : keyword.name == "BOUNDARY_SPC_NODE" ? Block::kSpcNode
                                                   : Block::kOther;
    ended_ = keyword.name == "END";
  }

  // Cards of any kind may be encrypted; a byte less and they cannot be read.
  bool IsEncrypted(std::string_view line) {
    if (line.starts_with("-----BEGIN PGP ")) encrypted_ = true;
    if (!encrypted_) return false;
    encrypted_ = !line.starts_with("-----END PGP ");
    return true;
  }

  Fate Known(std::optional<std::uint64_t> node) {
    return node && nodes_.Contains(*node) ? Fate::kComment : Fate::kKeep;
  }

  Fate JudgeNode(std::string_view line, std::size_t& length) {
    if (Known(NodeNumber(line, blockFormat_)) == Fate::kComment) return Fate::kComment;
    length = CoordinatesEnd(line, blockFormat_);
    return length < line.size() ? Fate::kCut : Fate::kKeep;
  }

  const CardFormat format_;
  NodeSet& nodes_;
  Block block_ = Block::kOther;
  CardFormat blockFormat_ = CardFormat::kStandard;
  bool encrypted_ = false;
  bool ended_ = false;
};

enum class Outcome { kChanged, kSame, kUnreadable, kFailed };

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

bool Write(std::FILE* file, std::string_view text) {
  return std::fwrite(text.data(), 1, text.size(), file) == text.size();
}

std::size_t LineEndLength(std::string_view line) {
  if (line.ends_with("\r\n")) return 2;
  return line.ends_with('\n') ? 1 : 0;
}

// A line of a million bytes is no node line: its pieces are kept as they are.
Outcome WriteNewDeck(const std::string& deck, std::FILE* to, LineRules& rules,
                     const std::atomic<bool>& stop) {
  ExactLines lines;
  if (!lines.Open(deck)) return Outcome::kUnreadable;
  Outcome outcome = Outcome::kSame;
  bool whole = true;
  for (std::string_view line; lines.Next(line, whole);) {
    const std::string_view text = line.substr(0, line.size() - LineEndLength(line));
    std::size_t length = text.size();
    const LineRules::Fate fate = whole ? rules.Judge(text, length) : LineRules::Fate::kKeep;
    bool written = true;
    if (fate == LineRules::Fate::kComment) {
      written = Write(to, "$") && Write(to, line);
    } else if (fate == LineRules::Fate::kCut) {
      written = Write(to, text.substr(0, length)) && Write(to, line.substr(text.size()));
    } else {
      written = Write(to, line);
    }
    if (!written || stop) return Outcome::kFailed;
    if (fate != LineRules::Fate::kKeep) outcome = Outcome::kChanged;
  }
  return lines.Failed() ? Outcome::kUnreadable : outcome;
}

std::string BackupOf(const std::string& deck) {
  return deck + ".bak";
}

// Puts the new deck in the old one's place, which becomes DECK.bak. There is a deck at any moment.
bool Exchange(const std::string& newDeck, const std::string& deck) {
  const std::string backup = BackupOf(deck);
  if (FileDirWrapper::FileExists(backup) && !FileDirWrapper::RemoveFile(backup)) return false;
  if (!KeepAs(deck, backup)) return false;
  if (FileDirWrapper::ReplaceFileWith(newDeck, deck)) return true;
  if (FileDirWrapper::FileExists(deck)) FileDirWrapper::RemoveFile(backup);
  return false;
}

Outcome RewriteDeck(const std::string& deck, CardFormat format, NodeSet& nodes,
                    const std::atomic<bool>& stop) {
  const std::string newDeck = deck + "~~";
  FileDirWrapper::RemoveFile(newDeck);
  std::unique_ptr<std::FILE, CloseFile> file(CreateFileLike(newDeck, deck));
  if (!file) return Outcome::kFailed;
  LineRules rules(format, nodes);
  Outcome outcome = WriteNewDeck(deck, file.get(), rules, stop);
  if (std::fclose(file.release()) != 0) outcome = Outcome::kFailed;
  if (outcome == Outcome::kChanged) {
    if (Exchange(newDeck, deck)) return outcome;
    outcome = Outcome::kFailed;
  }
  FileDirWrapper::RemoveFile(newDeck);
  return outcome;
}

Message Unreadable(const std::string& file) {
  return Message(MessageId::kFileUnreadable, file);
}

Message HowItFailed(const std::string& deck, Outcome outcome) {
  if (outcome == Outcome::kUnreadable) return Unreadable(deck);
  if (FileDirWrapper::FileExists(deck)) return Message(MessageId::kDeckUnchanged, deck);
  return Message(MessageId::kDeckMoved, deck, BackupOf(deck));
}

}  // namespace

bool PrepareDeck(const std::string& deckPath, const MessageSink& report,
                 const std::atomic<bool>& stop) {
  const std::string deck = FileDirWrapper::AbsolutePath(deckPath);
  const auto goOn = [&stop](std::uint64_t, std::uint64_t) { return !stop; };
  DeckLines deckReader;
  deckReader.SetProgress(goOn);
  const bool opened = deckReader.Open(deck);
  const DeckResults results = opened ? FindResults(deckReader) : DeckResults();
  if (stop) return false;
  if (!opened || deckReader.Failed()) {
    report(Unreadable(deck));
    return false;
  }
  if (results.files.empty()) return true;

  NodeSet nodes;
  for (const std::string& name : results.files) {
    const std::string file = IncludedPath(deck, name);
    DeckLines reader;
    reader.SetProgress(goOn);
    const bool found = reader.Open(file);
    if (found) ReadResult(reader, results.format, nodes);
    if (stop) return false;
    if (!found || reader.Failed()) {
      report(Unreadable(file));
      return false;
    }
  }
  const Outcome outcome = RewriteDeck(deck, results.format, nodes, stop);
  if (outcome == Outcome::kChanged || outcome == Outcome::kSame) return true;
  if (!stop) report(HowItFailed(deck, outcome));
  return false;
}
