// A file that only grows, for its user's eyes alone where files have rights of their own.
#ifndef KR_UTIL_FILES_APPENDFILE_H
#define KR_UTIL_FILES_APPENDFILE_H

#include <cstdint>
#include <string>
#include <string_view>

// One thread at a time. Children do not inherit the file.
class AppendFile {
 public:
  AppendFile() = default;
  ~AppendFile() { Close(); }
  AppendFile(const AppendFile&) = delete;
  AppendFile& operator=(const AppendFile&) = delete;

  // A new, empty file. Never through a link; false when something of that name is there.
  bool Make(const std::string& path);
  // The file that is there, cut to this many bytes. Never through a link.
  bool Open(const std::string& path, std::uint64_t bytes);
  // The file that `other` has open, for a Sync on another thread while `other` goes on. It stays
  // that file when another one takes its name.
  bool Share(const AppendFile& other);
  void Close();
  bool IsOpen() const { return handle_ != -1; }

  // Where that fails the file is cut back to what it was, as far as the system can.
  bool Append(std::string_view bytes);
  // What was appended is on the disk, a power cut or not.
  bool Sync();

  std::uint64_t Size() const { return size_; }
  // False when the file has been removed or replaced behind our back.
  bool IsAt(const std::string& path) const;

 private:
  std::intptr_t handle_ = -1;
  std::uint64_t size_ = 0;
};

#endif
