#include "util/text/StrWrapper.h"

#include <algorithm>
#include <cstdint>
#include <limits>

#include "util/text/PlainText.h"

namespace {

bool IsBlank(char c) {
  return c == ' ' || c == '\t';
}

struct Number {
  bool negative = false;
  unsigned long long magnitude = 0;  // stays at the largest value when there are more digits
};

Number ParseLeading(const std::string& text) {
  constexpr unsigned long long kMax = std::numeric_limits<unsigned long long>::max();
  Number number;
  std::size_t i = text.find_first_not_of(" \t\n\v\f\r");
  if (i == std::string::npos) return number;
  if (text[i] == '-' || text[i] == '+') number.negative = text[i++] == '-';
  for (; i < text.size() && IsDigit(text[i]); ++i) {
    const auto digit = static_cast<unsigned long long>(text[i] - '0');
    number.magnitude =
        number.magnitude > (kMax - digit) / 10 ? kMax : number.magnitude * 10 + digit;
  }
  return number;
}

// The program's name: up to the next quote when it begins with one, else up to the next blank.
std::size_t TakeProgramName(const std::string& line, std::vector<std::string>& args) {
  if (line[0] == '"') {
    const std::size_t close = line.find('"', 1);
    if (close == std::string::npos) {
      args.push_back(line.substr(1));
      return line.size();
    }
    args.push_back(line.substr(1, close - 1));
    return close + 1;
  }
  const std::size_t end = std::min(line.find_first_of(" \t"), line.size());
  args.push_back(line.substr(0, end));
  return end;
}

// Takes one argument that starts at `i`, and returns where it ends. Counting quotes up to three
// gives the system's odd rule that a second quote right after a closing one is a literal quote and
// leaves the quoted part.
std::size_t TakeArgument(const std::string& line, std::size_t i, std::string& arg) {
  int quotes = 0;  // 0 outside, 1 inside, 2 just closed
  for (; i < line.size(); ++i) {
    std::size_t slashes = 0;
    for (; i < line.size() && line[i] == '\\'; ++i) ++slashes;
    const bool atQuote = i < line.size() && line[i] == '"';
    arg.append(atQuote ? slashes / 2 : slashes, '\\');
    if (slashes > 0 && quotes == 2) quotes = 0;
    if (i == line.size()) break;
    if (atQuote && slashes % 2 == 0) {
      if (++quotes == 3) {
        arg += '"';
        quotes = 0;
      }
      continue;
    }
    if (quotes == 2) quotes = 0;
    if (quotes == 0 && IsBlank(line[i])) break;
    arg += line[i];
  }
  return i;
}

}  // namespace

bool StrWrapperTxt::Trim(const std::string& in, std::string& out) {
  out = std::string(Trimmed(in));  // a copy: `out` may be `in`
  return !out.empty();
}

void StrWrapperTxt::SeparateString(const std::string& line, std::vector<std::string>& pieces,
                                   char separator) {
  pieces.clear();
  std::size_t start = 0;
  while (start < line.size()) {
    const std::size_t end = std::min(line.find(separator, start), line.size());
    if (end > start) pieces.push_back(line.substr(start, end - start));
    start = end + 1;
  }
}

void StrWrapperTxt::SplitCommandLine(const std::string& commandLine,
                                     std::vector<std::string>& args) {
  args.clear();
  if (commandLine.empty()) return;
  std::size_t i = TakeProgramName(commandLine, args);
  for (;;) {
    while (i < commandLine.size() && IsBlank(commandLine[i])) ++i;
    if (i >= commandLine.size()) return;
    std::string arg;
    i = TakeArgument(commandLine, i, arg);
    args.push_back(std::move(arg));
  }
}

int StrWrapperTxt::LeadingInt(const std::string& text) {
  constexpr auto kMax = static_cast<unsigned long long>(std::numeric_limits<std::int32_t>::max());
  const Number number = ParseLeading(text);
  if (number.negative) {
    if (number.magnitude > kMax) return std::numeric_limits<std::int32_t>::min();
    return -static_cast<int>(number.magnitude);
  }
  return static_cast<int>(std::min(number.magnitude, kMax));
}

unsigned long long StrWrapperTxt::LeadingUnsigned(const std::string& text) {
  const Number number = ParseLeading(text);
  return number.negative ? 0 : number.magnitude;
}
