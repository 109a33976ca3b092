// Small text helpers shared by the stand-in solver's readers and writers.
#ifndef STANDIN_TEXT_H
#define STANDIN_TEXT_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

std::string_view Trim(std::string_view text);
std::string Upper(std::string_view text);
// Words between blanks and tabs.
std::vector<std::string> Words(std::string_view text);

// Whole numbers only: no rest, in range.
std::optional<long long> ToInteger(std::string_view text);
// A finite number in C or Fortran form: 1.5, +2, 1.0D-3, 1.0-3.
std::optional<double> ToReal(std::string_view text);

// printf into a string.
#if defined(__GNUC__) && !defined(_WIN32)
__attribute__((format(printf, 1, 2)))
#endif
std::string
Format(const char* format, ...);

#endif
