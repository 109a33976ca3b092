#include "core/HostFileText.h"

#include <algorithm>

#include "core/SmallTextFile.h"

namespace {

bool IsHost(const std::string& line) {
  return !line.empty() && line.front() != '#';
}

// How many elements two ranges have in common at their beginning.
template <typename Iterator>
std::size_t CommonLength(Iterator begin, Iterator end, Iterator other, Iterator otherEnd) {
  return static_cast<std::size_t>(std::mismatch(begin, end, other, otherEnd).first - begin);
}

}  // namespace

std::vector<std::string> HostLinesOf(const std::string& text) {
  std::vector<std::string> lines = LinesOf(text);
  std::erase_if(lines, [](const std::string& line) { return !IsHost(line); });
  return lines;
}

std::string WithHostLines(const std::string& text, const std::vector<std::string>& hosts) {
  const std::vector<std::string> old = HostLinesOf(text);
  const std::size_t head = CommonLength(old.begin(), old.end(), hosts.begin(), hosts.end());
  const std::size_t room = std::min(old.size(), hosts.size()) - head;
  const std::size_t tail =
      std::min(room, CommonLength(old.rbegin(), old.rend(), hosts.rbegin(), hosts.rend()));
  const std::size_t oldEnd = old.size() - tail;
  const std::size_t newEnd = hosts.size() - tail;

  std::vector<std::string> lines;
  std::size_t seen = 0;  // old host lines
  std::size_t next = head;
  const auto addNew = [&](std::size_t end) {
    while (next < end) lines.push_back(OneLine(hosts[next++]));
  };
  for (const std::string& line : LinesOf(text)) {
    const bool host = IsHost(line);
    // New lines follow the ones that they were added behind, before any comment on the next host.
    if (seen == oldEnd && (seen > 0 || host)) addNew(newEnd);
    if (!host || seen < head || seen >= oldEnd) {
      lines.push_back(line);
    } else if (next < newEnd) {
      addNew(next + 1);
    }
    if (host) ++seen;
  }
  addNew(newEnd);

  const char* end = text.find("\r\n") != std::string::npos ? "\r\n" : "\n";
  std::string out;
  for (const std::string& line : lines) out.append(line).append(end);
  return out;
}
