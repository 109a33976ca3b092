// A file held open for reading so that others may read it but not change it. Inside util/ only.
#ifndef KR_UTIL_FILES_FILEHOLD_H
#define KR_UTIL_FILES_FILEHOLD_H

#include <string>

// Owns the system's handle; moves, does not copy.
class FileHold {
 public:
  FileHold() = default;
  FileHold(FileHold&& other) noexcept;
  FileHold& operator=(FileHold&& other) noexcept;
  ~FileHold();

  // False when the file cannot be opened or someone else is writing it. The object is empty before.
  bool Open(const std::string& path);

 private:
  void* handle_ = nullptr;
};

#endif
