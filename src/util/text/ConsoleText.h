// What a program sends to a terminal, as lines of plain text.
#ifndef KR_UTIL_TEXT_CONSOLETEXT_H
#define KR_UTIL_TEXT_CONSOLETEXT_H

#include <string>
#include <string_view>

// Colours, titles and other escape sequences are left out, and so are control characters but for
// tabs. A line that is written again and again behind carriage returns appears once, as it was
// last; what is put elsewhere on the screen becomes a line of its own. Characters stay as they are,
// in whatever encoding. Memory is bounded: a line beyond 64 KB is handed out in pieces. One thread.
class ConsoleText {
 public:
  // The finished lines, each with its line feed, are put behind what `lines` holds.
  void Take(std::string_view bytes, std::string& lines);
  // Nothing more comes: a line that has not ended is one, too.
  void End(std::string& lines);

 private:
  enum class State { kText, kEscape, kCharset, kSequence, kString, kStringEscape };

  void TakeText(char c, std::string& lines);
  void TakeEscape(char c);
  void EndSequence(char last, std::string& lines);
  void EndLine(std::string& lines);
  void RemoveLast();

  State state_ = State::kText;
  std::string parameters_;  // of a sequence
  std::string line_;
  bool returned_ = false;  // the next character begins the line anew
};

#endif
