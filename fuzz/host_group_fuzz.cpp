// The host and the group file: read, written back and read again.
#include <algorithm>

#include "core/HostFileText.h"
#include "core/SmallTextFile.h"
#include "ScratchSettings.h"

// The hosts as they can stand in the file, without line breaks and blanks behind them.
static std::vector<std::string> Storable(std::vector<std::string> hosts) {
  for (std::string& host : hosts) {
    host = OneLine(host);
    host.erase(host.find_last_not_of(' ') + 1);
  }
  std::erase(hosts, "");
  return hosts;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  SettingsAndPaths& settings = ScratchSettings::Get();
  const std::string text(reinterpret_cast<const char*>(data), size);
  const std::size_t half = size / 2;
  const std::vector<std::string> hosts = HostLinesOf(text.substr(0, half));
  const std::string written = WithHostLines(text.substr(half), hosts);
  const bool mark = text.find("\xEF\xBB\xBF") != std::string::npos;  // goes when it comes first
  if (!mark && Storable(HostLinesOf(written)) != Storable(hosts)) std::abort();

  ScratchSettings::Write(settings.hostFile, text);
  settings.ReadHostFile();
  ScratchSettings::Write(settings.groupFile, text);
  settings.ReadGroupFile();
  const auto groups = settings.groupEntries;
  settings.WriteGroupFile(groups);
  settings.ReadGroupFile();
  if (!mark && !groups.empty() && settings.groupEntries.size() != groups.size()) std::abort();
  return 0;
}
