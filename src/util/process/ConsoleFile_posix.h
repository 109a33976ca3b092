// The file that keeps what a program prints.
#ifndef KR_UTIL_PROCESS_CONSOLEFILE_POSIX_H
#define KR_UTIL_PROCESS_CONSOLEFILE_POSIX_H

#include <chrono>
#include <memory>
#include <string>

#include "util/files/UniqueFd_posix.h"

// A new, empty file of that name with a first line by which it is known as ours. One that has that
// line gives way, also where it is a link to another file; what anybody else has put there is kept
// as the name and ".old1", ".old2"... Not open when there can be no file.
UniqueFd OpenConsoleFile(const std::string& path);

// Written by a thread of its own, so that a disk that is full or does not answer stops nobody: what
// finds no room meanwhile is left out, and the file says so. Up to 16 MB it holds everything, from
// then on the newest 8 to 16 MB. The object belongs to one thread.
class ConsoleFile {
 public:
  ConsoleFile() = default;
  ~ConsoleFile() { Close(std::chrono::milliseconds(0)); }
  ConsoleFile(const ConsoleFile&) = delete;
  ConsoleFile& operator=(const ConsoleFile&) = delete;

  // There may be no such file to have: then what is written is lost. False without a thread.
  bool Open(const std::string& path);
  // Whole lines.
  void Write(const std::string& lines);
  // Returns when everything is written, or after this time; the rest is then lost with the process.
  void Close(std::chrono::milliseconds limit);

 private:
  struct Shared;  // with the thread, which a disk may hold longer than we wait
  std::shared_ptr<Shared> shared_;
};

#endif
