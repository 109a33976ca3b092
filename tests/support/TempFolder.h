// A new empty folder for one test, removed with its contents.
#ifndef KR_TESTS_TEMPFOLDER_H
#define KR_TESTS_TEMPFOLDER_H

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "util/files/FileDirWrapper.h"

class TempFolder {
 public:
  TempFolder() {
    static std::atomic<int> counter{0};
    const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
    std::string temp;
    FileDirWrapper::TempDir(temp);
    path_ = FileDirWrapper::Join(temp,
                                 "krtest_" + std::to_string(now) + "_" + std::to_string(counter++));
    FileDirWrapper::CreateDirTree(path_);
  }
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  const std::string& Path() const { return path_; }
  std::string operator/(const std::string& name) const { return FileDirWrapper::Join(path_, name); }

  // Returns the file's path.
  std::string Write(const std::string& name, const std::string& bytes) const {
    std::ofstream(*this / name, std::ios::binary) << bytes;
    return *this / name;
  }
  // One that can be started.
  std::string WriteProgram(const std::string& name, const std::string& script) const {
    std::filesystem::permissions(Write(name, script), std::filesystem::perms::owner_all);
    return *this / name;
  }

  static std::string Read(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();  // does not throw when a process ends whose file in /proc this is
    return text.str();
  }

 private:
  std::string path_;
};

// A file's lines, however they end.
inline std::vector<std::string> ReadLines(const std::string& path) {
  std::istringstream text(TempFolder::Read(path));
  std::vector<std::string> lines;
  for (std::string line; std::getline(text, line);) {
    if (line.ends_with('\r')) line.pop_back();
    lines.push_back(line);
  }
  return lines;
}

// A text as Windows writes it.
inline std::string WithReturns(const std::string& text) {
  std::string result;
  for (const char c : text) result += c == '\n' ? std::string("\r\n") : std::string(1, c);
  return result;
}

// Changes the current folder until the end of the test.
class InFolder {
 public:
  explicit InFolder(const std::string& folder) {
    FileDirWrapper::CurrentDir(before_);
    FileDirWrapper::SetCurrentDir(folder);
  }
  ~InFolder() { FileDirWrapper::SetCurrentDir(before_); }
  InFolder(const InFolder&) = delete;
  InFolder& operator=(const InFolder&) = delete;

 private:
  std::string before_;
};

#endif
