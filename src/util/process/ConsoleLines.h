// What was kept of a program's console, read again.
#ifndef KR_UTIL_PROCESS_CONSOLELINES_H
#define KR_UTIL_PROCESS_CONSOLELINES_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// Begins the lines of such a file that are not the program's; its first line is one.
inline constexpr std::string_view kConsoleNote = "[Kestrun] ";

// The first line of such a file, with its line feed: when the program began.
std::string ConsoleFirstLine();
// Whether that file has one.
bool IsConsoleFile(const std::string& file);

// The last lines, as bytes, without those that are blank at the end and without our own. A line is
// cut to `longest` bytes. Empty for a file that is not there. Any thread.
std::vector<std::string> LastConsoleLines(const std::string& file, std::size_t most,
                                          std::size_t longest = 500);

#endif
