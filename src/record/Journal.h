// A file of small checked records that only grows, and is written anew as a short one now and then.
//
// Each record is a line: its length and its CRC-32, eight hexadecimal digits each, then its text.
// The first one says what the file is: "kestrun KIND VERSION MACHINE COUNT ID", where so many
// records follow that were written together with it; older files have no ID. Records that a crash
// has torn are at the end and fail their checks; what stands from there on is not read.
#ifndef KR_RECORD_JOURNAL_H
#define KR_RECORD_JOURNAL_H

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "util/files/AppendFile.h"

struct JournalName {
  std::string kind;     // one word
  std::string machine;  // one word; "" is written as "-"
  std::string id = {};  // of the machine, the same
};

// What a file's bytes are.
struct JournalText {
  enum class State {
    kWhole,    // its end may be torn
    kDamaged,  // records of it can be read, but not all that there were
    kNewer,    // of a later version of the program
    kForeign   // rubbish, another kind of file
  };
  State state = State::kWhole;
  std::vector<std::string_view> records;  // inside the bytes; none of kNewer and kForeign
  std::size_t end = 0;                    // of the last record that is whole, in bytes
  bool isOurs = false;                    // its title is the one that we would give it
};
JournalText ReadJournalText(std::string_view bytes, const JournalName& name);

// Under which id of a machine the file was written; empty when it has none, or is no such journal.
std::string MachineIdOfJournal(const std::string& path, const std::string& kind);

std::string JournalLine(std::string_view record);

// The whole file; false when it cannot be read, or is far bigger than any of ours.
bool ReadJournalBytes(const std::string& path, std::string& bytes);

// One thread at a time.
class Journal {
 public:
  Journal(std::string path, JournalName name);

  enum class Found {
    kNothing,
    kRecords,
    kAside,    // there was something that cannot be believed as a whole: it is kept under another
               // name, and under its own until a Rewrite
    kInTheWay  // the same, but it cannot be kept; nothing is written while it lies there
  };
  // Hands each record to `take`, until it refuses one: the file is not to be believed then. What a
  // file that is put aside has of whole records is handed out too.
  Found Read(const std::function<bool(std::string_view record)>& take);
  // Where the last file that could not be believed lies now.
  const std::string& Aside() const { return aside_; }

  // After a Read that found records, goes on with that file. False when it has to be written anew.
  bool Continue();
  // Writes a new file of these records and puts it in the old one's place in one step. On failure
  // the old one stays. Waits for the disk, unless there is no old one, which a power cut could
  // lose.
  bool Rewrite(const std::vector<std::string>& records);
  bool IsOnDisk() const { return isOnDisk_; }  // what Rewrite wrote

  // After a Rewrite or Continue. False when not all of it could be written; Rewrite then makes it
  // whole again.
  bool Append(std::string_view record);
  bool Sync();

  // The same as Rewrite in steps, so that nothing that is appended waits for the disk: Prepare
  // writes the new file beside the old one, and what is appended goes into both. When its Newest
  // has been synchronised it takes the place, or is dropped. Where a step fails the old one goes
  // on.
  bool Prepare(const std::vector<std::string>& records);
  bool IsPrepared() const { return fresh_.IsOpen(); }
  bool TakePlace();
  void Drop();
  // The file to be synchronised.
  AppendFile& Newest() { return IsPrepared() ? fresh_ : file_; }

  // Bytes of the file, and those that Rewrite gave it.
  std::uint64_t Size() const { return file_.Size(); }
  std::uint64_t SnapshotSize() const { return snapshotSize_; }

  const std::string& Path() const { return path_; }

 private:
  bool PutAside();
  std::string FreshPath() const { return path_ + ".new"; }

  const std::string path_;
  const JournalName name_;
  std::string aside_;
  bool inTheWay_ = false;
  bool isOnDisk_ = false;
  AppendFile file_;
  AppendFile fresh_;
  std::size_t end_ = 0;  // of the records that Read found, under the title that we give; 0: none
  std::uint64_t snapshotSize_ = 0;
  std::uint64_t freshSnapshotSize_ = 0;
};

#endif
