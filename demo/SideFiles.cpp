#include "SideFiles.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>

#include "System.h"
#include "Text.h"

namespace {

constexpr char kDumpHead[] = "stand-in restart dump";
constexpr std::size_t kDumpBytes = 2048;
constexpr char kSenseSwitchFile[] = "d3kil";

std::string Arguments(const Options& options) {
  std::string text;
  for (const std::string& word : options.words) text += word + "\n";
  return text;
}

}  // namespace

std::string EnvironmentText(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "(not set)";
}

bool IsFile(const std::string& path) {
  return !path.empty() && !IsFolder(path) && std::ifstream(path, std::ios::binary).is_open();
}

bool WriteTextFile(const std::string& path, const std::string& text) {
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (file == nullptr) return false;
  const bool written = std::fwrite(text.data(), 1, text.size(), file) == text.size();
  return std::fclose(file) == 0 && written;
}

bool WriteListing(const Options& options, const Deck& deck) {
  std::string text = " Stand-in solver: this listing holds no results\n\n";
  text += " " + deck.title + "\n\n arguments\n";
  for (const std::string& word : options.words) text += "   " + word + "\n";
  text += " LSTC_MEMORY=" + EnvironmentText("LSTC_MEMORY") + "\n\n";
  text += Format(" memory (words) ............. %lld\n", options.memoryWords);
  text += Format(" memory2 (words) ............ %lld\n", options.memory2Words);
  text += Format(" processors ................. %d\n", options.cpus);
  text += Format(" cases ...................... %s\n", options.cases ? "yes" : "no");
  text += Format(" end time ................... %.6E\n", deck.endTime.value_or(0));
  text += Format(" nodes ...................... %zu\n", deck.nodes.size());
  text += Format(" solid elements ............. %zu\n", deck.Of(ElementKind::kSolid).size());
  text += Format(" thick shell elements ....... %zu\n", deck.Of(ElementKind::kThickShell).size());
  text += Format(" beam elements .............. %zu\n", deck.Of(ElementKind::kBeam).size());
  text += Format(" shell elements ............. %zu\n", deck.Of(ElementKind::kShell).size());
  text += Format(" parts with elements ........ %zu\n", deck.parts.size());
  for (const std::string& keyword : deck.skipped) text += " not read: *" + keyword + "\n";
  return WriteTextFile(options.prefix + "d3hsp", text);
}

bool WriteEcho(const Options& options) {
  return WriteTextFile("standin_echo.txt", Arguments(options) + "cwd=" + CurrentFolder() +
                                               "\nLSTC_MEMORY=" + EnvironmentText("LSTC_MEMORY") +
                                               "\n");
}

std::string RankFile(const std::string& dump, const Rank& rank) {
  return rank.parallel ? Format("%s.%04d", dump.c_str(), rank.number) : dump;
}

bool WriteDump(const std::string& path, const RestartState& state) {
  std::string text =
      Format("%s\n%.17g %.17g %d\n", kDumpHead, state.time, state.endTime, state.dumps);
  text.resize(kDumpBytes, ' ');
  return WriteTextFile(path, text);
}

std::optional<RestartState> ReadDump(const std::string& path) {
  if (IsFolder(path)) return std::nullopt;
  std::ifstream file(path, std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  std::istringstream lines(text);
  std::string head;
  std::string numbers;
  if (text.size() != kDumpBytes || !std::getline(lines, head) || head != kDumpHead) return {};
  std::getline(lines, numbers);
  const std::vector<std::string> words = Words(numbers);
  if (words.size() != 3) return std::nullopt;
  const auto time = ToReal(words[0]);
  const auto endTime = ToReal(words[1]);
  const auto dumps = ToInteger(words[2]);
  if (!time || !endTime || !dumps) return std::nullopt;
  return RestartState{*time, *endTime, static_cast<int>(*dumps)};
}

bool WriteFormedResult(const std::string& prefix, const Deck& deck) {
  const auto set = deck.partSets.find(deck.formedSet.value_or(0));
  const auto isWanted = [&](const Element& shell) {
    return set == deck.partSets.end() || set->second.contains(shell.part);
  };
  std::set<std::int64_t> used;
  std::string shells;
  for (const Element& shell : deck.Of(ElementKind::kShell)) {
    if (!isWanted(shell)) continue;
    used.insert(shell.nodes.begin(), shell.nodes.begin() + 4);
    shells +=
        Format("%8lld%8lld", static_cast<long long>(shell.id), static_cast<long long>(shell.part));
    for (std::size_t i = 0; i < 4; ++i) {
      shells += Format("%8lld", static_cast<long long>(shell.nodes[i]));
    }
    shells += '\n';
  }
  std::string nodes;
  for (const Node& node : deck.nodes) {
    if (!used.contains(node.id)) continue;
    nodes += Format("%8lld%16.8E%16.8E%16.8E\n", static_cast<long long>(node.id), node.x[0],
                    node.x[1], node.x[2]);
  }
  return WriteTextFile(prefix + "dynain",
                       "$ Stand-in solver: the shells as they were before the run\n"
                       "*KEYWORD\n*NODE\n" +
                           nodes + "*ELEMENT_SHELL\n" + shells + "*END\n");
}

bool WriteAdaptDump(const std::string& prefix, int number) {
  return WriteTextFile(prefix + Format("adapt%02d.adaptdmp", number), "stand-in adaptive dump\n");
}

std::optional<SenseSwitch> ReadSenseSwitch(const std::string& prefix) {
  constexpr char kEndTime[] = "ENDTIME=";
  constexpr std::size_t kLongest = 64;
  const std::string path = prefix + kSenseSwitchFile;
  if (IsFolder(path)) return std::nullopt;
  std::ifstream file(path);
  char text[kLongest] = "";
  file.read(text, sizeof text - 1);
  const std::string word = Upper(Trim(text));
  if (word.starts_with(kEndTime)) {
    const auto endTime = ToReal(Trim(word.substr(sizeof kEndTime - 1)));
    return endTime ? std::optional(SenseSwitch{0, *endTime}) : std::nullopt;
  }
  if (word.size() < 3 || !word.starts_with("SW") || word[2] < '1' || word[2] > '4') {
    return std::nullopt;
  }
  return SenseSwitch{word[2] - '0', 0};
}

void RemoveSenseSwitch(const std::string& prefix) {
  std::remove((prefix + kSenseSwitchFile).c_str());
}
