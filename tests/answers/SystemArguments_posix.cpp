#include "Answers.h"
#include "util/text/StrWrapper.h"

std::vector<std::string> SystemArguments(const std::string& commandLine) {
  std::vector<std::string> words;
  StrWrapperTxt::SplitCommandLine(commandLine, words);
  return words;
}
