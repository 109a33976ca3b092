// A result file opened for reading at any place.
#ifndef KR_D3PLOT_RESULTFILE_H
#define KR_D3PLOT_RESULTFILE_H

#include <cstddef>
#include <cstdint>
#include <optional>

#include "util/files/InputFile.h"

// As InputFile: ordinary files only, and the solver may go on writing. One thread at a time.
class ResultFile {
 public:
  // Closes what was open before.
  bool Open(const char* name);
  void Close() { file_.reset(); }

  // Bytes, as they were when the file was opened; 0 for none.
  std::uint64_t Size() const { return file_ ? file_->Size() : 0; }

  // All bytes or none: false when the file ends before. A file is open.
  bool ReadAt(std::uint64_t offset, void* buffer, std::size_t bytes) const;

 private:
  std::optional<InputFile> file_;
};

#endif
