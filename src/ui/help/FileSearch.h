// Looks for words in a file of any size, a piece at a time.
#ifndef KR_UI_HELP_FILESEARCH_H
#define KR_UI_HELP_FILESEARCH_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "util/files/InputFile.h"

// Reads the file that it has opened, also when that is renamed meanwhile. One thread at a time.
class FileSearch {
 public:
  // In bytes of the file.
  struct Range {
    std::int64_t begin, end;
  };
  enum class State { kGoesOn, kFound, kNotThere };

  // `words` are folded (ui/text/FileText.h) and not empty. The ranges are looked through one after
  // the other, each from its end when `back`.
  FileSearch(const std::string& path, const std::string& words, bool back,
             std::vector<Range> ranges);

  // Looks through one more piece, which takes some milliseconds. A file that cannot be read holds
  // nothing.
  State Step();

  bool Back() const { return back_; }
  // After kFound: the words' first byte in the file, and the range it is in.
  std::int64_t Found() const { return found_; }
  std::size_t FoundRange() const { return range_; }
  // How much of the ranges is done, in percent.
  int Done() const;

 private:
  static constexpr std::int64_t kPiece = 2 * 1024 * 1024;

  InputFile file_;
  const bool open_;
  const std::string words_;
  const bool back_;
  std::vector<Range> ranges_;  // what is left of them
  std::size_t range_ = 0;
  std::int64_t all_ = 0;
  std::int64_t found_ = -1;
};

#endif
