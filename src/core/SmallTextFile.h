// Small text files of our own, read whole.
#ifndef KR_CORE_SMALLTEXTFILE_H
#define KR_CORE_SMALLTEXTFILE_H

#include <string>
#include <vector>

#include "util/files/FileDirWrapper.h"

// How lines of files that people edit end.
constexpr const char* kLineEnd = FileDirWrapper::kSeparator == '\\' ? "\r\n" : "\n";

// False for anything but an ordinary file of at most 16 MB that can be read.
bool ReadWholeText(const std::string& path, std::string& text);

// The lines without their ends (LF or CRLF), empty ones too; a byte order mark at the start of the
// text is dropped. A text that ends in a line end has no empty line after it.
std::vector<std::string> LinesOf(const std::string& text);

// The text with line breaks and zero bytes turned into blanks, for formats of one line a value.
std::string OneLine(std::string text);

#endif
