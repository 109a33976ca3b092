#include "util/text/ConsoleText.h"

namespace {

constexpr char kEscape = '\x1b';
constexpr char kBell = '\a';
constexpr std::size_t kLongestLine = 64 << 10;
constexpr std::size_t kMostParameters = 64;

bool IsContinuation(char c) {
  return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

}  // namespace

void ConsoleText::Take(std::string_view bytes, std::string& lines) {
  for (const char c : bytes) {
    switch (state_) {
      case State::kText:
        TakeText(c, lines);
        break;
      case State::kEscape:
        TakeEscape(c);
        break;
      case State::kCharset:
        state_ = State::kText;
        break;
      case State::kSequence:
        if (c >= '@' && c <= '~') {
          EndSequence(c, lines);
        } else if (c == kEscape) {
          state_ = State::kEscape;
        } else if (parameters_.size() < kMostParameters) {
          parameters_ += c;
        }
        break;
      case State::kString:
        // A line feed ends one that somebody forgot to end.
        if (c == kBell || c == '\n') state_ = State::kText;
        if (c == '\n') EndLine(lines);
        if (c == kEscape) state_ = State::kStringEscape;
        break;
      case State::kStringEscape:
        state_ = c == '\\' ? State::kText : State::kString;
        break;
    }
  }
}

void ConsoleText::End(std::string& lines) {
  if (!line_.empty()) EndLine(lines);
}

void ConsoleText::TakeText(char c, std::string& lines) {
  switch (c) {
    case kEscape:
      state_ = State::kEscape;
      return;
    case '\n':
      return EndLine(lines);
    case '\r':
      returned_ = true;
      return;
    case '\b':
      return RemoveLast();
    default:
      break;
  }
  const auto byte = static_cast<unsigned char>(c);
  if ((byte < ' ' && c != '\t') || byte == 0x7f) return;
  if (returned_) line_.clear();
  returned_ = false;
  line_ += c;
  if (line_.size() < kLongestLine) return;
  lines += line_;
  line_.clear();
}

void ConsoleText::TakeEscape(char c) {
  state_ = State::kText;
  if (c == '[') {
    parameters_.clear();
    state_ = State::kSequence;
  } else if (c == ']' || c == 'P' || c == '^' || c == '_' || c == 'X') {
    state_ = State::kString;
  } else if (c == kEscape) {
    state_ = State::kEscape;
  } else if (c >= ' ' && c <= '/') {
    state_ = State::kCharset;
  }
}

void ConsoleText::EndSequence(char last, std::string& lines) {
  state_ = State::kText;
  switch (last) {
    case 'K':  // erase from here on, up to here, or the whole line
      if (returned_ || parameters_ == "1" || parameters_ == "2") line_.clear();
      return;
    case 'G':  // to a column
      returned_ = returned_ || parameters_.empty() || parameters_ == "1";
      return;
    case 'A':
    case 'B':
    case 'E':
    case 'F':
    case 'H':
    case 'd':
    case 'f':  // to another line
      if (!line_.empty()) EndLine(lines);
      return;
    default:
      return;
  }
}

void ConsoleText::EndLine(std::string& lines) {
  lines += line_;
  lines += '\n';
  line_.clear();
  returned_ = false;
}

void ConsoleText::RemoveLast() {
  while (!line_.empty() && IsContinuation(line_.back())) line_.pop_back();
  if (!line_.empty()) line_.pop_back();
}
