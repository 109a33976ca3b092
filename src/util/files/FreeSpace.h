// How much room a folder has.
#ifndef KR_UTIL_FILES_FREESPACE_H
#define KR_UTIL_FILES_FREESPACE_H

#include <cstdint>
#include <optional>
#include <string>

// The bytes that this user may still write where the folder lies: what is kept for the system or is
// beyond the user's quota does not count, where the system tells. None when the folder cannot be
// looked at. Asks the file system, so a network folder may take its time: not on the interface
// thread. Any other thread.
std::optional<std::uint64_t> FreeSpace(const std::string& folder);

#endif
