#include "util/text/ErrorRecord.h"

#include <clocale>
#include <cstdio>
#include <cstring>
#include <vector>

#include "util/signals/Mutex.h"

struct ErrorReporting::Record {
  Mutex mutex;  // waits of one object may fail in several threads at once
  ErrorPrinter printer KR_GUARDED_BY(mutex) = nullptr;
  void* userData KR_GUARDED_BY(mutex) = nullptr;
  std::string lastError KR_GUARDED_BY(mutex);
};

namespace {

constexpr std::size_t kStackBuffer = 4096;

// Changing the locale races with every other thread that formats numbers, so it is changed only
// when it has to be.
void UseCLocale() {
  static Mutex guard;
  const MutexLock lock(guard);
  const char* current = std::setlocale(LC_ALL, nullptr);
  if (current == nullptr || std::strcmp(current, "C") != 0) std::setlocale(LC_ALL, "C");
}

std::string Format(const char* format, std::va_list args) {
  char small[kStackBuffer];
  std::va_list again;
  va_copy(again, args);
  const int length = std::vsnprintf(small, sizeof(small), format, args);
  std::string text;
  if (length < 0) {
    text = format;
  } else if (static_cast<std::size_t>(length) < sizeof(small)) {
    text = small;
  } else {
    std::vector<char> large(static_cast<std::size_t>(length) + 1);
    std::vsnprintf(large.data(), large.size(), format, again);
    text = large.data();
  }
  va_end(again);
  return text;
}

}  // namespace

ErrorReporting::ErrorReporting() : record_(std::make_unique<Record>()) {}

ErrorReporting::~ErrorReporting() = default;

std::string ErrorReporting::LastError() const {
  const MutexLock lock(record_->mutex);
  return record_->lastError;
}

void ErrorReporting::SetErrorPrinterHandle(ErrorPrinter printer, void* userData) {
  const MutexLock lock(record_->mutex);
  record_->printer = printer;
  record_->userData = userData;
}

void ErrorReporting::SetLastError(const char* format, ...) {
  if (format == nullptr) return;
  UseCLocale();
  std::va_list args;
  va_start(args, format);
  const std::string text = Format(format, args);
  va_end(args);
  ErrorPrinter printer = nullptr;
  void* userData = nullptr;
  {
    const MutexLock lock(record_->mutex);
    record_->lastError = text;
    printer = record_->printer;
    userData = record_->userData;
  }
  if (printer != nullptr && !text.empty()) printer(text.c_str(), userData);
}
