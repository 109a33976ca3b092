// A file opened for reading in big pieces, or at any place.
#ifndef KR_UTIL_FILES_INPUTFILE_H
#define KR_UTIL_FILES_INPUTFILE_H

#include <cstddef>
#include <cstdint>
#include <string>

// Opens ordinary files only: a pipe or a device under the name of a deck must not block its reader.
// Others may write, rename and delete the file meanwhile; children do not inherit it. One thread at
// a time, but for ReadAt.
class InputFile {
 public:
  // How it is read, which the system likes to know.
  enum class Access { kOnwards, kAnywhere };
  explicit InputFile(Access access = Access::kOnwards) : access_(access) {}
  ~InputFile();
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;

  bool Open(const std::string& path);

  // Bytes, as they were when the file was opened.
  std::uint64_t Size() const { return size_; }

  // Reads on from where the last Read ended. The bytes read, 0 at the end of file, -1 on failure.
  std::ptrdiff_t Read(char* buffer, std::size_t capacity) {
    const std::ptrdiff_t count = ReadAt(position_, buffer, capacity);
    if (count > 0) position_ += static_cast<std::uint64_t>(count);
    return count;
  }

  // The same from a given place; does not move Read.
  std::ptrdiff_t ReadAt(std::uint64_t offset, char* buffer, std::size_t capacity) const;

 private:
  const Access access_;
  std::intptr_t handle_ = -1;
  std::uint64_t size_ = 0;
  std::uint64_t position_ = 0;
};

#endif
