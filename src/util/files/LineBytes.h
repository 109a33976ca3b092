// How lines of text files are read, whatever the system's call for a character is.
#ifndef KR_UTIL_FILES_LINEBYTES_H
#define KR_UTIL_FILES_LINEBYTES_H

#include <cstdio>
#include <string>

// Appends what `next` gives, one character or EOF a call, up to a line's end, which is taken but
// not appended; the byte 0xFF ends a line too.
template <typename Next>
void AppendLine(Next next, std::string& line) {
  constexpr int kEndByte = 0xFF;
  char piece[512];
  std::size_t used = 0;
  for (int c = next(); c != EOF && c != '\n' && c != kEndByte; c = next()) {
    piece[used++] = static_cast<char>(c);
    if (used == sizeof(piece)) {
      line.append(piece, used);
      used = 0;
    }
  }
  line.append(piece, used);
}

#endif
