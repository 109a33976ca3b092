// Readers of result databases.
#ifndef KR_D3PLOT_PTKPOSTD3PLOTREADER_H
#define KR_D3PLOT_PTKPOSTD3PLOTREADER_H

#include <cstdint>
#include <string>
#include <vector>

#include "d3plot/FileFamily.h"
#include "d3plot/ptkUnstructuredGrid.h"
#include "d3plot/WordFormat.h"
#include "messages/Message.h"

// Finds the files of a database and the format of its words. What the words mean is up to the
// reader of a version. An object belongs to one thread at a time; several may work at once.
class ptkPostD3plotReader {
 public:
  virtual ~ptkPostD3plotReader() = default;

  // Trailing white space of the name is dropped; an empty one means "d3plot". False, with the
  // reason in Error(), when the name is 1,024 bytes or longer, the file cannot be read or is no
  // result database.
  bool Open(const std::string& fileName);

  // A database whose files are known already.
  bool Open(std::vector<FileFamily> families);

  // Needs an open database. False, with the reason in Error() and an empty grid, when the database
  // does not hold what its head promises.
  virtual bool ReadGrid(ptkUnstructuredGrid& grid) = 0;

  const std::vector<FileFamily>& Families() const { return families_; }
  const WordFormat& Format() const { return format_; }
  const Message& Error() const { return error_; }

 protected:
  // Words of the first family's files, counted from 0 through all of them. False when they do not
  // all exist.
  bool ReadWords(std::int64_t first, std::size_t count, std::vector<unsigned char>& bytes) const;
  bool ReadInteger(std::int64_t word, std::int64_t& value) const;
  std::int64_t WordsInBaseFile() const;
  std::int64_t WordsInFamily() const;

  bool Fail(PlainMessageId reason);

 private:
  std::vector<FileFamily> families_;
  WordFormat format_;
  Message error_;
};

#endif
