#include "util/process/ConsoleLines.h"

#include <algorithm>

#include "util/files/InputFile.h"
#include "util/files/LineBlocks.h"
#include "util/text/DateTimeWrapper.h"
#include "util/text/PlainText.h"

std::string ConsoleFirstLine() {
  std::tm now{};
  std::string time;
  if (DateTimeWrapper::CurrentLocalTime(&now)) DateTimeWrapperStr::DateTimeString(&now, time);
  return std::string(kConsoleNote) + "What the program printed from " + time + " on\n";
}

bool IsConsoleFile(const std::string& file) {
  InputFile input;
  std::string begin(kConsoleNote.size(), '\0');
  return input.Open(file) &&
         input.ReadAt(0, begin.data(), begin.size()) == static_cast<std::ptrdiff_t>(begin.size()) &&
         begin == kConsoleNote;
}

std::vector<std::string> LastConsoleLines(const std::string& file, std::size_t most,
                                          std::size_t longest) {
  constexpr std::size_t kLookedAt = 64 << 10;
  InputFile input;
  if (!input.Open(file)) return {};
  const std::uint64_t from = input.Size() > kLookedAt ? input.Size() - kLookedAt : 0;
  std::string block(kLookedAt, '\0');
  block.resize(static_cast<std::size_t>(
      std::max<std::ptrdiff_t>(input.ReadAt(from, block.data(), block.size()), 0)));
  std::vector<std::string> lines;
  // What the block begins within is no whole line.
  std::size_t at = from == 0 ? 0 : std::min(block.find('\n'), block.size() - 1) + 1;
  while (at < block.size()) {
    const std::string_view line = TakeLine(block, at);
    if (!line.starts_with(kConsoleNote)) lines.emplace_back(line.substr(0, longest));
  }
  while (!lines.empty() && Trimmed(lines.back()).empty()) lines.pop_back();
  if (lines.size() > most) lines.erase(lines.begin(), lines.end() - static_cast<long>(most));
  return lines;
}
