// A result file opened for reading at any place.
#ifndef KR_D3PLOT_RESULTFILE_H
#define KR_D3PLOT_RESULTFILE_H

#include <cstddef>
#include <cstdint>
#include <string>

// Opens ordinary files only, so that a folder, a pipe or a device under a result file's name is not
// taken for one. The solver may go on writing the file. One thread at a time.
class ResultFile {
 public:
  ResultFile() = default;
  ~ResultFile() { Close(); }
  ResultFile(const ResultFile&) = delete;
  ResultFile& operator=(const ResultFile&) = delete;

  // Closes what was open before.
  bool Open(const char* name);
  void Close();

  // Bytes, as they were when the file was opened.
  std::uint64_t Size() const { return size_; }

  // All bytes or none: false when the file ends before.
  bool ReadAt(std::uint64_t offset, void* buffer, std::size_t bytes) const;

 private:
  std::intptr_t handle_ = -1;
  std::uint64_t size_ = 0;
};

#endif
