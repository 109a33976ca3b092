#include "core/AppLog.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

#include "util/files/FileDirWrapper.h"
#include "util/files/IOWrapper.h"
#include "util/text/DateTimeWrapper.h"

namespace {

constexpr std::size_t kFormatBytes = 4096;

std::string Now() {
  std::tm now{};
  std::string text;
  if (DateTimeWrapper::CurrentLocalTime(&now)) DateTimeWrapperStr::DateTimeString(&now, text);
  return text;
}

std::string OneLine(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
  return text;
}

void AppendLine(const std::string& path, const std::string& line) {
  std::FILE* file = std::fopen(path.c_str(), "a");
  std::string folder;
  if (file == nullptr && FileDirWrapper::DirOf(path, folder) &&
      FileDirWrapper::CreateDirTree(folder))
    file = std::fopen(path.c_str(), "a");
  if (file == nullptr) return;
  std::fwrite(line.data(), 1, line.size(), file);
  std::fclose(file);
}

}  // namespace

void AppLog::Report(const char* format, ...) {
  char text[kFormatBytes] = {};
  std::va_list args;
  va_start(args, format);
  const int length = std::vsnprintf(text, sizeof(text), format, args);
  va_end(args);
  ReportLine(length < 0 ? format : text);
}

void AppLog::NoteLine(const std::string& line) {
  const std::lock_guard<std::mutex> lock(mutex_);
  AppendLine(path_, Now() + ">> " + OneLine(line) + '\n');
}

void AppLog::ReportLine(const std::string& message) {
  const std::string line = OneLine(message);
  NoteLine(line);
  const std::lock_guard<std::recursive_mutex> lock(listenerMutex_);
  if (listener_) listener_(line);
}

void AppLog::SetListener(std::function<void(const std::string& message)> listener) {
  const std::lock_guard<std::recursive_mutex> lock(listenerMutex_);
  listener_ = std::move(listener);
}

void AppLog::StartNewWhenBig() {
  const std::lock_guard<std::mutex> lock(mutex_);
  std::int64_t created = 0;
  std::int64_t accessed = 0;
  std::int64_t modified = 0;
  std::int64_t size = 0;
  if (!IOWrapperTxt::FileStatInfo(path_, created, accessed, modified, size)) return;
  if (size <= kKeptBytes) return;
  const std::string old = path_ + ".old";
  FileDirWrapper::RemoveFile(old);
  std::rename(path_.c_str(), old.c_str());
}
