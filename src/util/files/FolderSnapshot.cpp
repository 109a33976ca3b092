#include "util/files/FolderSnapshot.h"

#include <algorithm>
#include <charconv>
#include <sstream>

#include "util/files/FileSystemCalls.h"

namespace {

constexpr char kUnknown = '?';
constexpr char kHexDigits[] = "0123456789abcdef";

bool IsPlain(char c) {
  return c > ' ' && c < 0x7f && c != '%';
}

// One word, whatever bytes the path holds.
std::string Encoded(const std::string& path) {
  std::string word;
  for (const char c : path) {
    const auto byte = static_cast<unsigned char>(c);
    if (IsPlain(c)) {
      word += c;
    } else {
      word += {'%', kHexDigits[byte >> 4], kHexDigits[byte & 15]};
    }
  }
  return word;
}

bool Decode(const std::string& word, std::string& path) {
  path.clear();
  for (std::size_t i = 0; i < word.size(); ++i) {
    if (word[i] != '%') {
      path += word[i];
      continue;
    }
    if (word.size() - i < 3) return false;
    unsigned byte = 0;
    const char* const end = word.data() + i + 3;
    if (std::from_chars(word.data() + i + 1, end, byte, 16).ptr != end) return false;
    path += static_cast<char>(byte);
    i += 2;
  }
  return !path.empty();
}

}  // namespace

void FolderSnapshot::Take(const std::vector<std::string>& files) {
  files_.clear();
  for (const std::string& path : files) {
    State state;
    state.isKnown = StateOf(path, state);
    if (state.isKnown || !file_system::IsMissing(file_system::ForSystem(path)))
      files_.emplace(path, state);
  }
}

void FolderSnapshot::ForgetWrittenSince(std::int64_t seconds) {
  std::erase_if(files_, [seconds](const auto& file) {
    return file.second.isKnown && file_system::SecondsOf(file.second.written) >= seconds;
  });
}

bool FolderSnapshot::HoldsUnchanged(const std::string& path) const {
  if (IsUnknown(path)) return true;
  State now;
  if (!StateOf(path, now)) return false;
  const auto before = files_.find(path);
  if (before != files_.end() && now == before->second) return true;
  // Where files have no numbers, equal ones may be two.
  return now.id != 0 && std::any_of(files_.begin(), files_.end(), [&](const auto& file) {
           return file.second.isKnown && file.second == now;
         });
}

bool FolderSnapshot::IsUnknown(const std::string& path) const {
  const auto before = files_.find(path);
  return before != files_.end() && !before->second.isKnown;
}

std::string FolderSnapshot::Text() const {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  for (const auto& [path, state] : files_) {
    if (!state.isKnown) {
      text << Encoded(path) << ' ' << kUnknown << '\n';
      continue;
    }
    text << Encoded(path) << ' ' << state.id << ' ' << state.size << ' ' << state.written << '\n';
  }
  return text.str();
}

bool FolderSnapshot::Read(const std::string& text) {
  files_.clear();
  std::map<std::string, State> files;
  std::istringstream lines(text);
  lines.imbue(std::locale::classic());
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    words.imbue(std::locale::classic());
    std::string word, path;
    State state;
    if (!(words >> word) || !Decode(word, path)) return false;
    state.isKnown = line.substr(word.size()) != std::string(" ") + kUnknown;
    if (state.isKnown && !(words >> state.id >> state.size >> state.written)) return false;
    files.emplace(path, state);
  }
  files_ = std::move(files);
  return true;
}

bool FolderSnapshot::StateOf(const std::string& path, State& state) {
  file_system::FileState found;
  if (!file_system::StateOf(file_system::ForSystem(path), found)) return false;
  state = {found.id.second, found.size, found.written};
  return true;
}
