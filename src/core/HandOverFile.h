// The hand-over file on the disk. It lies in a folder that others may be able to write to, so
// nothing about it is taken on trust.
#ifndef KR_CORE_HANDOVERFILE_H
#define KR_CORE_HANDOVERFILE_H

#include <string>

namespace hand_over_file {

enum class Result {
  kDone,
  kMissing,
  kRefused,  // a link, no ordinary file, someone else's, or others may write to it
  kFailed,
};

struct Contents {
  std::string text;
  std::string identity;  // changes with every new or rewritten file
};

// Reads a file of up to `limit` bytes; a bigger one is refused. The identity is also set for a
// refused file, as far as it can be found out.
Result Read(const std::string& path, std::size_t limit, Contents& contents);

// Renames a file of this user's that is bigger than the limit; a former one of that name goes.
bool PutAsideWhenBigger(const std::string& path, std::size_t limit, const std::string& aside);

// Any kind of entry, a link that leads nowhere too.
bool Exists(const std::string& path);

// Writes the text, after what the file holds if `append`, to a file of this user's that nobody else
// may write; makes it when it is missing. Anything else under the name is refused and left alone.
Result Write(const std::string& path, const std::string& text, bool append);

}  // namespace hand_over_file

#endif
