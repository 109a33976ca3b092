#include "core/AppLog.h"

#include <cstdio>
#include <filesystem>

#include "core/SmallTextFile.h"
#include "util/files/FileDirWrapper.h"
#include "util/files/IOWrapper.h"
#include "util/text/DateTimeWrapper.h"

namespace {

constexpr std::size_t kMostBytes = 4095;

std::string Now() {
  std::tm now{};
  std::string text;
  if (DateTimeWrapper::CurrentLocalTime(&now)) DateTimeWrapperStr::DateTimeString(&now, text);
  return text;
}

void AppendLine(const std::string& path, const std::string& line) {
  std::error_code error;
  if (std::filesystem::is_fifo(path, error)) return;  // to open it waits for who reads
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

void AppLog::Note(const Message& message) {
  const std::string line = OneLine(message.English()).substr(0, kMostBytes);
  const MutexLock lock(mutex_);
  AppendLine(path_, Now() + ">> " + line + '\n');
}

void AppLog::Report(const Message& message) {
  Note(message);
  const RecursiveLock lock(listenerMutex_);
  if (listener_) listener_(message);
}

MessageSink AppLog::Sink() {
  return [this](const Message& message) { Report(message); };
}

void AppLog::SetListener(MessageSink listener) {
  const RecursiveLock lock(listenerMutex_);
  listener_ = std::move(listener);
}

void AppLog::StartNewWhenBig() {
  const MutexLock lock(mutex_);
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
