// Replacing a file's contents in one step. Inside util/ only; any thread.
#ifndef KR_UTIL_FILES_FILEREPLACE_POSIX_H
#define KR_UTIL_FILES_FILEREPLACE_POSIX_H

#include <string>

// Whether the new contents are on the disk when they take the old ones' place. Without, a crash of
// the program leaves one of the two whole, but not a crash of the machine; it costs a hundredth.
enum class Flush { kNo, kYes };

// Whether the file that a link leads to is written, or a new one takes the link's place.
enum class Links { kFollow, kReplace };

// FileDirWrapper::WriteFileWhole. A failure leaves its reason in errno.
bool ReplaceContents(const std::string& path, const std::string& contents, Flush flush,
                     Links links = Links::kFollow);

#endif
