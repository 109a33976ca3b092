// The hand-over file on the disk. Nothing about it is taken on trust, and nothing is lost or read
// twice when a process dies at any point. Except for Record::IsIn, the caller holds the file's
// lock.
#ifndef KR_CORE_HANDOVERFILE_H
#define KR_CORE_HANDOVERFILE_H

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace hand_over_file {

enum class Result {
  kDone,
  kMissing,
  kRefused,  // a link, no ordinary file, someone else's, or others may write to it or its folder
  kTooBig,
  kGrowing,  // its last line has no end and was written a moment ago
  kFailed,
};

// What stands for the first byte of a record that is not whole yet, or was taken back.
inline constexpr char kNotValid = '\0';

// A text that was put into the file. Moves, does not copy.
class Record {
 public:
  Record();
  ~Record();
  Record(Record&& other) noexcept;
  Record& operator=(Record&& other) noexcept;

  // Whether it is in the file of this name, so that no reader has taken it away.
  bool IsIn(const std::string& path) const;
  // Makes it not valid, one byte a beginning. False when it is not in the file.
  bool TakeBack(const std::string& path);

 private:
  friend Result Append(const std::string&, const std::string&, const std::vector<std::size_t>&,
                       std::size_t, Record&);
  struct Place;
  std::unique_ptr<Place> place_;
};

// Puts the text behind what the file holds, which may be `limit` bytes in all. A missing file is
// made, for this user alone; what is no file of this user's alone is refused and left as it is. The
// text is written whole, in one write, with kNotValid at each of the `beginnings`; only then the
// bytes that belong there make it valid. When it fails the file is as it was.
Result Append(const std::string& path, const std::string& text,
              const std::vector<std::size_t>& beginnings, std::size_t limit, Record& record);

// Gives the file another name, so that it is this reader's alone. What cannot be read stays.
Result TakeAway(const std::string& path, std::size_t limit, const std::string& taken);

// Reads a file of up to `limit` bytes.
Result Read(const std::string& path, std::size_t limit, std::string& text);

// Renames a file of this user's that is bigger than the limit; a former one of that name goes.
bool PutAsideWhenBigger(const std::string& path, std::size_t limit, const std::string& aside);

// Any kind of entry, a link that leads nowhere too.
bool Exists(const std::string& path);

}  // namespace hand_over_file

#endif
