// The host file and the group file.
#include "core/HostFileText.h"
#include "core/SettingsAndPaths.h"
#include "core/SmallTextFile.h"
#include "util/files/FileDirWrapper.h"

namespace {

constexpr char kHostHeader[] = "#Host Name          Cpu Count";

bool IsComment(const std::string& line) {
  return line.empty() || line.front() == '#';
}

// A name that would read back as another one, or as a comment, changes as little as it must.
std::string StorableName(const std::string& name) {
  std::string stored = OneLine(name);
  for (char& c : stored) {
    if (c == '=') c = '_';
  }
  if (stored.starts_with('#')) stored.front() = '_';
  return stored;
}

}  // namespace

void SettingsAndPaths::ReadHostFile() {
  std::string text;
  if (!ReadWholeText(hostFile, text)) {
    log_.Report(Message(MessageId::kHostsUnreadable, hostFile));
    return;
  }
  settings_.host_lines = HostLinesOf(text);
  Publish();
}

void SettingsAndPaths::WriteHostFile() {
  if (FileDirWrapper::FileExists(hostFile)) return;
  StoreHostFile(WithHostLines(std::string(kHostHeader) + kLineEnd, settings_.host_lines));
}

bool SettingsAndPaths::StoreHostFile(const std::string& text) {
  if (HasWorkFolder() && FileDirWrapper::WriteFileWhole(hostFile, text)) return true;
  log_.Report(Message(MessageId::kHostsNotWritten, hostFile));
  return false;
}

SettingsAndPaths::HostChange SettingsAndPaths::ChangeHosts(const std::vector<std::string>& hosts) {
  std::string text = std::string(kHostHeader) + kLineEnd;
  if (FileDirWrapper::FileExists(hostFile)) {
    if (!ReadWholeText(hostFile, text)) {
      log_.Report(Message(MessageId::kHostsUnreadable, hostFile));
      return HostChange::kFailed;
    }
    if (HostLinesOf(text) != settings_.host_lines) return HostChange::kFileIsNewer;
  }
  if (!StoreHostFile(WithHostLines(text, hosts))) return HostChange::kFailed;
  settings_.host_lines = hosts;
  Publish();
  return HostChange::kDone;
}

void SettingsAndPaths::ReadGroupFile() {
  groupEntries.clear();
  groupFileKept_ = false;
  if (!FileDirWrapper::FileExists(groupFile)) return;
  std::string text;
  if (!ReadWholeText(groupFile, text)) {
    log_.Report(Message(MessageId::kGroupsUnreadable, groupFile));
    groupFileKept_ = true;
    return;
  }
  for (const std::string& line : LinesOf(text)) {
    const std::size_t equals = line.find('=');
    if (IsComment(line) || equals == std::string::npos) continue;
    groupEntries.emplace_back(line.substr(0, equals), line.substr(equals + 1));
  }
}

void SettingsAndPaths::WriteGroupFile(const std::vector<GroupEntry>& groups) {
  if (groups.empty()) return;
  std::string text;
  for (const auto& [name, groupText] : groups) {
    text.append(StorableName(name)).append("=").append(OneLine(groupText)).append(kLineEnd);
  }
  if (groupFileKept_ || !HasWorkFolder() || !FileDirWrapper::WriteFileWhole(groupFile, text)) {
    log_.Report(Message(MessageId::kGroupsNotWritten, groupFile));
  }
}
