#include "Answers.h"

#include <windows.h>
// Needs the one above.
#include <shellapi.h>

std::vector<std::string> SystemArguments(const std::string& commandLine) {
  const std::wstring wide(commandLine.begin(), commandLine.end());  // ASCII
  int count = 0;
  LPWSTR* const words = CommandLineToArgvW(wide.c_str(), &count);
  std::vector<std::string> out;
  for (int i = 0; words && i < count; ++i) {
    std::string word;
    for (const wchar_t* at = words[i]; *at; ++at) word += static_cast<char>(*at);
    out.push_back(word);
  }
  LocalFree(words);
  return out;
}
