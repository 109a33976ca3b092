// A library that is loaded while the program runs.
#ifndef KR_UTIL_PROCESS_SHAREDLIBRARY_H
#define KR_UTIL_PROCESS_SHAREDLIBRARY_H

#include <string>

// Stays loaded to the end of the process unless Unload is called: what a foreign library has
// started may outlive the last call into it. One thread at a time.
class SharedLibrary {
 public:
  // The file of a library with this name: "NAME.dll" on Windows, "libNAME.so" on Linux.
  static std::string FileName(const std::string& name);

  // `path` is absolute; the libraries that it needs are also looked for beside it. False with the
  // system's reason in `error`.
  bool Load(const std::string& path, std::string& error);
  void Unload();

  // Null when nothing is loaded or the library does not export the name.
  void* Find(const char* name) const;

 private:
  void* handle_ = nullptr;
};

#endif
