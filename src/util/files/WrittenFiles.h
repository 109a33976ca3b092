// What a run has written into its folder.
#ifndef KR_UTIL_FILES_WRITTENFILES_H
#define KR_UTIL_FILES_WRITTENFILES_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

struct WrittenFile {
  std::string path;
  std::uint64_t size = 0;    // bytes
  std::int64_t written = 0;  // seconds since 1970
};

// The files directly in the folder that were written in that second (since 1970) or later. Looks at
// no more entries than `most`. Asks for each: not on the interface thread. Any other thread.
std::vector<WrittenFile> FilesWrittenSince(const std::string& folder, std::int64_t since,
                                           std::size_t most = 100000);

#endif
