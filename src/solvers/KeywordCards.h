// How the cards of a keyword deck are written.
#ifndef KR_SOLVERS_KEYWORDCARDS_H
#define KR_SOLVERS_KEYWORDCARDS_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// Column widths of data lines without commas.
enum class CardFormat {
  kStandard,
  kTenDigits,  // node and element numbers of ten columns ("I10=Y", or "%" on a keyword)
  kLong,       // twenty columns a field ("LONG=Y", or "+" on a keyword)
};

struct Keyword {
  std::string name;       // upper case, without the '*' and a format sign
  CardFormat format;      // of its data lines
  std::string_view rest;  // behind the name
};

// Of a line that begins with '*'. `format` is the deck's.
Keyword ParseKeyword(std::string_view line, CardFormat format);

// The format that a KEYWORD card sets; `format` when it says nothing.
CardFormat DeckFormat(const Keyword& keyword, CardFormat format);

// The first number of a data line of NODE or BOUNDARY_SPC_NODE.
std::optional<std::uint64_t> NodeNumber(std::string_view line, CardFormat format);
std::optional<std::uint64_t> SpcNodeNumber(std::string_view line, CardFormat format);

// The bytes of a NODE line up to the end of its coordinates; what follows are constraints.
std::size_t CoordinatesEnd(std::string_view line, CardFormat format);

#endif
