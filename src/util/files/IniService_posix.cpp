#include "util/files/IniService.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "util/files/FileReplace_posix.h"
#include "util/files/FileSystemCalls.h"
#include "util/files/IniText_posix.h"
#include "util/files/ReadAll_posix.h"
#include "util/signals/Mutex.h"

namespace {

// Bytes. Each access reads the whole file, and each of its lines costs memory.
constexpr off_t kLargestFile = off_t{1} << 20;

enum class Loaded { kText, kMissing, kUnreadable };

bool ReadFile(int file, std::string& bytes) {
  struct stat info {};
  return fstat(file, &info) == 0 && S_ISREG(info.st_mode) && info.st_size <= kLargestFile &&
         ReadAll(file, static_cast<std::size_t>(kLargestFile), bytes);
}

// A file of wide characters is left alone: lines of bytes among them would destroy it.
bool IsWideText(const std::string& bytes) {
  return bytes.compare(0, 2, "\xFF\xFE") == 0 || bytes.compare(0, 2, "\xFE\xFF") == 0;
}

Loaded Load(const std::string& fileName, std::string& bytes) {
  const std::string path = file_system::ForSystem(fileName);
  const int file = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (file < 0) return errno == ENOENT ? Loaded::kMissing : Loaded::kUnreadable;
  const bool ok = ReadFile(file, bytes) && !IsWideText(bytes);
  close(file);
  if (!ok) bytes.clear();
  return ok ? Loaded::kText : Loaded::kUnreadable;
}

std::string_view WithoutQuotes(std::string_view value) {
  const bool quoted = value.size() >= 2 && (value.front() == '"' || value.front() == '\'') &&
                      value.back() == value.front();
  return quoted ? value.substr(1, value.size() - 2) : value;
}

}  // namespace

std::string ini_service::ReadValue(const std::string& section, const std::string& key,
                                   const std::string& fileName) {
  std::string bytes;
  if (Load(fileName, bytes) != Loaded::kText) return {};
  const IniText text(bytes);
  const auto value = text.Value(section, key);
  if (!value) return {};
  const std::string_view bare = WithoutQuotes(*value).substr(0, kLongestValue);
  return std::string(bare.substr(0, bare.find('\0')));
}

void ini_service::Write(const std::string& section, const std::string* key,
                        const std::string* value, const std::string& fileName) {
  // Two threads that change two keys of one file must not undo each other's change.
  static Mutex guard;
  const MutexLock lock(guard);
  std::string bytes;
  if (Load(fileName, bytes) == Loaded::kUnreadable) return;
  IniText text(bytes);
  bool changed = false;
  if (key == nullptr) {
    changed = text.RemoveSection(section);
  } else if (value == nullptr) {
    changed = text.RemoveKey(section, *key);
  } else {
    changed = text.Set(section, *key, *value);
  }
  if (changed) ReplaceContents(fileName, text.Bytes(), Flush::kNo);
}

std::string ini_service::SectionNames(const std::string& fileName) {
  constexpr std::size_t kMost = kSectionListBuffer - 2;
  std::string bytes;
  std::string names;
  Load(fileName, bytes);
  const IniText text(bytes);
  for (const std::string_view name : text.Sections()) {
    names.append(name) += '\0';
    if (names.size() >= kMost) break;
  }
  if (names.size() > kMost) names.resize(kMost);
  return names;
}
