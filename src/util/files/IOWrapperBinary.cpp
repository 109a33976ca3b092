#include <algorithm>
#include <limits>

#include "util/files/FileSystemCalls.h"
#include "util/files/IOWrapper.h"

namespace {

using file_system::Kind;

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using FileHandle = std::unique_ptr<std::FILE, FileCloser>;

}  // namespace

std::int32_t IOWrapperBinary::ReadFileToBuffer(const std::string& fileName, char* buffer,
                                               std::int32_t capacity) {
  if (fileName.empty()) {
    SetLastError("file name is empty");
    return 0;
  }
  // Folders can be opened on some systems, and opening a pipe may wait for ever.
  const std::string path = file_system::ForSystem(fileName);
  FileHandle file;
  if (file_system::KindOf(path) == Kind::kFile) file.reset(std::fopen(path.c_str(), "rb"));
  std::int64_t size = 0;
  std::int64_t time = 0;
  if (!file || !IOWrapperTxt::FileStatInfo(path, time, time, time, size)) {
    SetLastError("open file %s failed", fileName.c_str());
    return 0;
  }
  if (size <= 0) {
    SetLastError("file size is zero");
    return 0;
  }
  size = std::min<std::int64_t>(size, std::numeric_limits<std::int32_t>::max());
  if (buffer == nullptr || capacity < 1) return static_cast<std::int32_t>(size);
  const auto wanted = static_cast<std::size_t>(std::min<std::int64_t>(size, capacity));
  return static_cast<std::int32_t>(std::fread(buffer, 1, wanted, file.get()));
}

bool IOWrapperBinary::WriteBufferToFile(const char* data, std::int32_t size,
                                        const std::string& fileName) {
  if (data == nullptr || size < 1) {
    SetLastError("data buffer is empty");
    return false;
  }
  if (fileName.empty()) {
    SetLastError("file name is empty");
    return false;
  }
  const std::string path = file_system::ForSystem(fileName);
  FileHandle file;
  if (file_system::KindOf(path) != Kind::kPipe) file.reset(std::fopen(path.c_str(), "wb"));
  if (!file) {
    SetLastError("write file %s failed", fileName.c_str());
    return false;
  }
  const auto wanted = static_cast<std::size_t>(size);
  const bool written = std::fwrite(data, 1, wanted, file.get()) == wanted;
  // A full disk may show only when the last bytes leave the buffer.
  if (std::fclose(file.release()) != 0 || !written) {
    SetLastError("fwrite failed");
    return false;
  }
  return true;
}
