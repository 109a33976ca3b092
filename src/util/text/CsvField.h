// Texts as tables take them that people open in a spreadsheet.
#ifndef KR_UTIL_TEXT_CSVFIELD_H
#define KR_UTIL_TEXT_CSVFIELD_H

#include <initializer_list>
#include <string>

// A text as it stands between commas, on one line. A spreadsheet would compute what begins with
// "=", "+", "-" or "@": an apostrophe in front makes it a text, but for numbers. Any thread.
std::string CsvField(std::string text);

// A line of them with its end.
std::string CsvLine(std::initializer_list<std::string> fields);

#endif
