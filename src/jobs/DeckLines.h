// Reads a keyword deck line by line, passing quickly over what is not a keyword or a comment.
#ifndef KR_JOBS_DECKLINES_H
#define KR_JOBS_DECKLINES_H

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "util/files/InputFile.h"

// Lines come without their end (LF or CRLF) and cut to kLongestLine bytes; a byte order mark in
// front of the first is passed over. A line is valid until the next call. Memory is bounded
// whatever the file holds. One thread at a time.
class DeckLines {
 public:
  static constexpr std::size_t kLongestLine = 4096;

  // Bytes read and the file's size, now and then; false stops the reading as the file's end would.
  using Progress = std::function<bool(std::uint64_t done, std::uint64_t size)>;
  void SetProgress(Progress progress) { progress_ = std::move(progress); }

  bool Open(const std::string& path);

  // The next line that begins with '*' or '$'. False at the end of the file.
  bool NextCard(std::string_view& line);

  // The next line, whatever it is.
  bool NextLine(std::string_view& line);

  // The next call gives the last line again.
  void Unread() { again_ = true; }

  bool Failed() const { return failed_; }    // the file could not be read to its end
  bool Stopped() const { return stopped_; }  // by the progress function

 private:
  bool Fill();
  void TakeLine();

  InputFile file_;
  std::unique_ptr<char[]> buffer_;
  const char* next_ = nullptr;  // unread bytes of the buffer
  const char* end_ = nullptr;
  bool atLineStart_ = true;
  bool failed_ = false;
  bool stopped_ = false;
  Progress progress_;
  std::uint64_t done_ = 0;          // bytes read
  std::uint64_t nextProgress_ = 0;  // the value of done_ at which to tell
  std::string_view last_;
  bool again_ = false;
  std::string joined_;  // a line that lies in two buffers
};

#endif
