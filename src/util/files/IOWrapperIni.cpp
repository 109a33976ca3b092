#include <algorithm>

#include "util/files/FileDirWrapper.h"
#include "util/files/FileSystemCalls.h"
#include "util/files/IniService.h"
#include "util/files/IOWrapper.h"
#include "util/text/StrWrapper.h"

namespace {

// A line end inside a name or a value would let the rest pass for lines of its own, in any section.
std::string FirstLine(const std::string& text) {
  return text.substr(0, text.find_first_of(std::string("\r\n\0", 3)));
}

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

}  // namespace

IOWrapperIni::IOWrapperIni() = default;

IOWrapperIni::~IOWrapperIni() = default;

bool IOWrapperIni::ReadValFromIni(const std::string& section, const std::string& key,
                                  std::string& value, const std::string& fileName) {
  const std::string sectionName = FirstLine(section);
  const std::string keyName = FirstLine(key);
  if (sectionName.empty() || keyName.empty() || fileName.empty()) return false;
  value = ini_service::ReadValue(sectionName, keyName, fileName);
  return true;
}

bool IOWrapperIni::WriteValToIni(const std::string& section, const std::string& key,
                                 const std::string& value, const std::string& fileName) {
  const std::string sectionName = FirstLine(section);
  const std::string keyName = FirstLine(key);
  if (sectionName.empty() || keyName.empty() || fileName.empty()) return false;
  const std::string text = FirstLine(value);
  ini_service::Write(sectionName, &keyName, &text, fileName);
  return true;
}

bool IOWrapperIni::RemoveSectionInFile(const std::string& section, const std::string& fileName) {
  const std::string sectionName = FirstLine(section);
  if (sectionName.empty() || fileName.empty()) return false;
  ini_service::Write(sectionName, nullptr, nullptr, fileName);
  return true;
}

bool IOWrapperIni::RemoveKeyInFile(const std::string& section, const std::string& key,
                                   const std::string& fileName) {
  const std::string sectionName = FirstLine(section);
  const std::string keyName = FirstLine(key);
  if (sectionName.empty() || keyName.empty() || fileName.empty()) return false;
  ini_service::Write(sectionName, &keyName, nullptr, fileName);
  return true;
}

bool IOWrapperIni::GetAllSections(const std::string& fileName, std::vector<std::string>& names) {
  if (fileName.empty()) return false;
  const std::string list = ini_service::SectionNames(fileName);
  for (std::size_t start = 0; start < list.size();) {
    const std::size_t end = std::min(list.find('\0', start), list.size());
    if (end == start) break;
    names.push_back(list.substr(start, end - start));
    start = end + 1;
  }
  return true;
}

bool IOWrapperIni::ReadIni(const std::string& fileName) {
  ClearTmpData();
  if (fileName.empty()) return false;
  const std::string path = file_system::ForSystem(fileName);
  const file_system::Kind kind = file_system::KindOf(path);
  if (kind == file_system::Kind::kMissing) loaded_ = true;
  if (kind != file_system::Kind::kFile) return false;
  const std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path.c_str(), "r"));
  if (!file) return false;

  std::string line;
  std::string text;
  while (!std::feof(file.get()) && !std::ferror(file.get())) {
    IOWrapperTxt::ReadLine(file.get(), line);
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (!StrWrapperTxt::Trim(line, text)) continue;
    if (text.front() == '[' && text.back() == ']') {
      sections_.push_back({text.substr(1, text.size() - 2), {}});
    } else if (!sections_.empty()) {
      const std::size_t equals = text.find('=');
      const std::string value = equals == std::string::npos ? "" : text.substr(equals + 1);
      sections_.back().second.emplace(text.substr(0, equals), value);
    }
  }
  loaded_ = true;
  return true;
}

bool IOWrapperIni::WriteIni(const std::string& fileName) {
  if (fileName.empty() || !loaded_) return false;
#ifdef _WIN32
  const std::string lineEnd = "\r\n";
#else
  const std::string lineEnd = "\n";
#endif
  std::string text;
  for (const Section& section : sections_) {
    text += "[" + section.first + "]" + lineEnd;
    for (const auto& [key, value] : section.second) text += key + "=" + value + lineEnd;
  }
  return FileDirWrapper::WriteFileWhole(fileName, text);
}

void IOWrapperIni::ClearTmpData() {
  sections_.clear();
  loaded_ = false;
}
