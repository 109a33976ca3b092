// Links to files.
#ifndef KR_UTIL_TEXT_FILEURL_H
#define KR_UTIL_TEXT_FILEURL_H

#include <string>

// "file:///home/a%20b" of an absolute path of either system, in ASCII; "C:\x" and "\\server\x" as
// browsers take them. The bytes of the path become those of the link: UTF-8 where they are. Empty
// for a path that is not absolute. Any thread.
std::string FileUrl(const std::string& path);

#endif
