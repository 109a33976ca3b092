// The states of "glstat": energies, time step, velocities and more over the problem time.
#ifndef KR_PROGRESS_GLOBALSTATES_H
#define KR_PROGRESS_GLOBALSTATES_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "util/files/GrowingFile.h"

// A table with a row for each block of the file and a column for each quantity that any block has.
// Takes the blocks as the file grows; the last row may lack what has not been written yet. One
// thread at a time.
class GlobalStates : public LineTaker {
 public:
  // Columns beyond this many, and names longer than so many bytes, are left out.
  static constexpr std::size_t kMostColumns = 512;
  static constexpr std::size_t kLongestName = 120;

  // When the table would hold more values, every second row is dropped; the last one stays.
  explicit GlobalStates(std::size_t mostValues = std::size_t{8} << 20) : mostValues_(mostValues) {}

  void BeginAnew() override { *this = GlobalStates(mostValues_); }
  void TakeLines(std::string_view block) override;

  std::size_t Rows() const { return cycles_.size(); }
  std::int64_t Cycle(std::size_t row) const { return cycles_[row]; }
  // "solid 100449 of part 10", "load curve"; empty where it is not told.
  const std::string& ControlledBy(std::size_t row) const { return controls_[row]; }

  struct Column {
    // As written, without dots: "kinetic energy", "total energy / initial energy". What stands
    // behind the value belongs to it: "stonewall energy wall# 1". A name over two lines is one.
    std::string name;
    std::vector<double> values;  // one a row at least up to the last that has one; NaN too
  };
  const std::vector<Column>& Columns() const { return columns_; }
  // Null when no block has it.
  const Column* Find(std::string_view name) const;
  // Whether the row has a value there; a value that the solver wrote as NaN is one.
  static bool Has(const Column& column, std::size_t row);

  // Values that are NaN or infinite: how many, and where the first was.
  std::size_t NotFinite() const { return notFinite_; }
  const std::string& FirstNotFinite() const { return firstNotFinite_; }  // the column's name

 private:
  // How a column's lines look in the file, to know them again at once.
  struct Written {
    std::string first;   // the line above, when the name begins there
    std::string line;    // up to the dots' end
    std::string suffix;  // behind the value
  };

  void TakeLine(std::string_view line, bool whole);
  void BeginRow(std::string_view line);
  bool TakeExpected(std::string_view line);
  void TakeValue(std::string_view name, std::string_view rest, bool whole);
  void Put(std::size_t column, double value);
  std::size_t ColumnOf(std::string_view written, std::string_view suffix);
  void DropLastRow();
  void Thin();

  std::size_t mostValues_;
  std::uint64_t stride_ = 1;  // of the blocks that are kept
  std::uint64_t seen_ = 0;
  bool lastIsExtra_ = false;  // the last row is there only because it is the last
  std::vector<std::int64_t> cycles_;
  std::vector<std::string> controls_;
  std::vector<Column> columns_;
  std::vector<Written> written_;                                // of each column
  std::unordered_map<std::string, std::size_t> columnNumbers_;  // by all of that
  std::size_t expected_ = 0;                                    // the next value's column
  std::string first_;  // the first line of a name that goes on in the next
  std::size_t notFinite_ = 0;
  std::string firstNotFinite_;
};

#endif
