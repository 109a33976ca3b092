// Folders that the system names.
#ifndef KR_UTIL_FILES_SPECIALFOLDER_WIN32_H
#define KR_UTIL_FILES_SPECIALFOLDER_WIN32_H

#include <windows.h>

#include <string>

// Of the user of this token, or of the current one, which variables may change. `id` is a CSIDL,
// its flags included. A path that the code page cannot write is told by its short names. Empty
// where the folder is missing.
std::string SpecialFolder(int id, HANDLE token = nullptr);

#endif
