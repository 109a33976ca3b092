#include "d3plot/ResultFile.h"

bool ResultFile::Open(const char* name) {
  file_.emplace(InputFile::Access::kAnywhere);
  if (file_->Open(name)) return true;
  Close();
  return false;
}

bool ResultFile::ReadAt(std::uint64_t offset, void* buffer, std::size_t bytes) const {
  char* at = static_cast<char*>(buffer);
  while (bytes > 0) {
    const std::ptrdiff_t count = file_->ReadAt(offset, at, bytes);
    if (count <= 0) return false;
    at += count;
    offset += static_cast<std::uint64_t>(count);
    bytes -= static_cast<std::size_t>(count);
  }
  return true;
}
