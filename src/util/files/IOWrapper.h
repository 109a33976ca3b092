// Settings files, text lines, whole files and file locks.
//
// File names are byte strings in the system's code page (UTF-8 on Linux). Nothing here locks: an
// object belongs to the thread that uses it. Operations return false (or 0) on failure and leave
// their text in LastError(); the settings-file operations leave no text.
//
// The family is whole as others know it. The program itself calls neither IOWrapperBinary nor
// IOWrapperLocker nor the operations on whole settings files.
#ifndef KR_UTIL_FILES_IOWRAPPER_H
#define KR_UTIL_FILES_IOWRAPPER_H

#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "util/text/ErrorRecord.h"

class IOWrapper : public ErrorReporting {};

// Named values in sections of a text file, through the system's private-profile service or its
// equivalent: sections and keys are matched without regard to case, blanks around keys and values
// are dropped, a value between two single or double quotes loses them when it is read, lines that
// begin with ';' are comments, and other lines stay where they are. Texts end at their first line
// end. A relative file name is seen from the current folder.
//
// On Linux the file is replaced whole but not flushed to the disk (who needs that edits a copy and
// puts it in place with FileDirWrapper::WriteFileWhole), keeps its rights, and is left alone when
// it is read-only, holds wide characters or more than 1 MB; several threads may write one file.
// Keys that could not be found again (with '=', or beginning with '[' or ';') are not written.
class IOWrapperIni : public IOWrapper {
 public:
  IOWrapperIni();
  ~IOWrapperIni() override;

  // Puts the value, at most 4,095 bytes of it, into `value`. A missing file, section or key gives
  // an empty value and true. False, with `value` untouched, when an argument is empty.
  bool ReadValFromIni(const std::string& section, const std::string& key, std::string& value,
                      const std::string& fileName);

  // Creates file and section when missing. True whenever the three names are not empty: the
  // system's own result is not looked at.
  bool WriteValToIni(const std::string& section, const std::string& key, const std::string& value,
                     const std::string& fileName);

  bool RemoveSectionInFile(const std::string& section, const std::string& fileName);
  bool RemoveKeyInFile(const std::string& section, const std::string& key,
                       const std::string& fileName);

  // Appends the section names, as far as they fit into 2,048 bytes with their ends; the last one
  // may be cut.
  bool GetAllSections(const std::string& fileName, std::vector<std::string>& names);

 protected:
  // The in-memory image: sections in file order, keys in byte order. It knows no comments. ReadIni
  // gives false and an empty image, that may be written, when the file is missing.
  bool ReadIni(const std::string& fileName);
  bool WriteIni(const std::string& fileName);
  void ClearTmpData();

  using Section = std::pair<std::string, std::map<std::string, std::string>>;
  std::vector<Section> sections_;
  bool loaded_ = false;
};

class IOWrapperTxt : public IOWrapper {
 public:
  // Reads up to a line feed, a byte 0xFF or the end of file; none of them is stored, a carriage
  // return is. Always true; at the end of file the line is empty. Loops end on feof or ferror.
  static bool ReadLine(std::FILE* file, std::string& line);

  // The pieces between line feeds, empty ones too. False when the text is empty.
  static bool ParseLine(const std::string& text, std::vector<std::string>& lines);

  // Seconds since 1970 and bytes. False when the file cannot be looked at.
  static bool FileStatInfo(const std::string& path, std::int64_t& created, std::int64_t& accessed,
                           std::int64_t& modified, std::int64_t& size);
};

class IOWrapperBinary : public IOWrapper {
 public:
  // Returns the bytes read, at most `capacity`. With a null buffer or a capacity below 1 it returns
  // the file's size and reads nothing. 0 on failure.
  std::int32_t ReadFileToBuffer(const std::string& fileName, char* buffer, std::int32_t capacity);
  bool WriteBufferToFile(const char* data, std::int32_t size, const std::string& fileName);
};

// Holds files open so that others may read but neither write nor delete them (where the system
// enforces that: on Linux the file is open with a shared lock that only programs that ask for locks
// respect). Files are told apart by their spelling. Folders cannot be locked.
class IOWrapperLocker : public IOWrapper {
 public:
  IOWrapperLocker();
  ~IOWrapperLocker() override;

  bool Lock(const std::string& path);
  bool UnLock(const std::string& path);
  void UnLockAllFiles();

 private:
  bool IsLockable(const std::string& path);

  struct Entries;
  std::unique_ptr<Entries> entries_;
};

#endif
