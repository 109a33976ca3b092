#include "progress/GlobalStates.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "progress/LineWords.h"
#include "util/files/LineBlocks.h"

namespace {

// What stands where a row has no value: a NaN that no reading of numbers makes.
constexpr std::uint64_t kMissingBits = 0x7FF8'4B52'4D49'5353;
const double kMissing = std::bit_cast<double>(kMissingBits);

constexpr std::string_view kBlockBegins = "dt of cycle";

std::string_view WithoutEnd(std::string_view line) {
  return line.substr(0, line.find_last_not_of(" \t") + 1);
}

// The words with one blank between them, not too long.
std::string Words(std::string_view text) {
  std::string words;
  LineWords line(text.substr(0, 2 * GlobalStates::kLongestName));
  for (std::string_view word = line.Next(); !word.empty(); word = line.Next()) {
    if (!words.empty()) words += ' ';
    words += word;
  }
  words.resize(std::min(words.size(), GlobalStates::kLongestName));
  return words;
}

// Where the dots end that lead to a value; 0 when the line has none. Names have single dots too:
// "energy ratio w/o eroded energy.   1.0", "time per zone cycle.(nanosec)..   0".
std::size_t DotsEnd(std::string_view line) {
  for (std::size_t at = 0; (at = line.find('.', at)) != std::string_view::npos;) {
    const std::size_t end = std::min(line.find_first_not_of('.', at), line.size());
    const bool single = end - at == 1;
    const std::string_view behind = line.substr(end);
    at = end;
    if (behind.empty() || (single && behind[0] != ' ')) continue;
    if (LineWords(behind).NextNumber()) return end;
  }
  return 0;
}

// A value that was cut off with its line would be another one.
bool IsWholeValue(std::string_view value) {
  const std::size_t exponent = value.find_first_of("eEdD");
  return exponent != std::string_view::npos && value.size() - exponent >= 4;
}

}  // namespace

void GlobalStates::TakeLines(std::string_view block) {
  for (std::size_t position = 0; position < block.size();) {
    const std::string_view line = ::TakeLine(block, position);
    const bool whole = position < block.size() || block.back() == '\n';
    if (!whole || !TakeExpected(line)) TakeLine(WithoutEnd(line), whole);
  }
}

bool GlobalStates::TakeExpected(std::string_view line) {
  if (expected_ >= columns_.size() || cycles_.empty()) return false;
  const Written& written = written_[expected_];
  if (!line.starts_with(written.line) || written.first != first_) return false;
  LineWords rest(line.substr(written.line.size()));
  const std::optional<double> value = rest.NextNumber();
  if (!value || rest.Rest() != written.suffix) return false;
  Put(expected_, *value);
  return true;
}

void GlobalStates::TakeLine(std::string_view line, bool whole) {
  const std::size_t begin = line.find_first_not_of(" \t");
  if (begin == std::string_view::npos) {
    first_.clear();
    return;
  }
  if (line.substr(begin).starts_with(kBlockBegins)) {
    if (whole) BeginRow(line.substr(begin + kBlockBegins.size()));
    return;
  }
  if (cycles_.empty()) return;
  if (const std::size_t end = DotsEnd(line); end > 0) {
    TakeValue(line.substr(0, end), line.substr(end), whole);
  } else {
    first_ = Words(line);
  }
}

// "       1 is controlled by load curve"
void GlobalStates::BeginRow(std::string_view line) {
  if (lastIsExtra_) DropLastRow();
  if (!columns_.empty() && (cycles_.size() + 1) * columns_.size() > mostValues_) Thin();
  lastIsExtra_ = seen_++ % stride_ != 0;
  const std::size_t digits = std::min(line.find_first_not_of(' '), line.size());
  const std::size_t end = std::min(line.find_first_not_of("0123456789", digits), line.size());
  cycles_.push_back(Count(line.substr(digits, end - digits)).value_or(0));
  constexpr std::string_view kControlled = "controlled by";
  const std::size_t at = line.find(kControlled);
  controls_.push_back(at == std::string_view::npos ? std::string()
                                                   : Words(line.substr(at + kControlled.size())));
  expected_ = 0;
  first_.clear();
}

void GlobalStates::TakeValue(std::string_view written, std::string_view rest, bool whole) {
  LineWords words(rest);
  const std::string_view value = words.Next();
  if (!whole && !IsWholeValue(value)) return;
  const std::size_t column = ColumnOf(written, words.Rest());
  if (column < columns_.size()) Put(column, *AnyNumber(value));
}

std::size_t GlobalStates::ColumnOf(std::string_view written, std::string_view suffix) {
  if (written.size() + suffix.size() > kLongestName) return columns_.size();
  std::string key = first_;
  key.append(1, '\n').append(written).append(1, '\n').append(suffix);
  const auto known = columnNumbers_.find(key);
  if (known != columnNumbers_.end()) return known->second;

  const std::string_view dotless = written.substr(0, written.find_last_not_of(". \t") + 1);
  std::string name = first_;
  for (const std::string_view part : {dotless, suffix}) {
    const std::string words = Words(part);
    if (!words.empty()) name += (name.empty() ? "" : " ") + words;
  }
  if (name.empty()) return columns_.size();
  // The same name written another way is the same quantity.
  const auto same = std::find_if(columns_.begin(), columns_.end(),
                                 [&](const Column& column) { return column.name == name; });
  const auto number = static_cast<std::size_t>(same - columns_.begin());
  if (columnNumbers_.size() >= 2 * kMostColumns) return columns_.size();
  if (same == columns_.end()) {
    if (columns_.size() >= kMostColumns) return columns_.size();
    columns_.push_back({std::move(name), {}});
    written_.push_back({first_, std::string(written), std::string(suffix)});
  }
  columnNumbers_.emplace(std::move(key), number);
  return number;
}

void GlobalStates::Put(std::size_t column, double value) {
  if (!std::isfinite(value)) {
    if (notFinite_++ == 0) firstNotFinite_ = columns_[column].name;
  }
  std::vector<double>& values = columns_[column].values;
  values.resize(cycles_.size(), kMissing);
  values.back() = value;
  expected_ = column + 1;
  first_.clear();
}

const GlobalStates::Column* GlobalStates::Find(std::string_view name) const {
  const auto found = std::find_if(columns_.begin(), columns_.end(),
                                  [&](const Column& column) { return column.name == name; });
  return found == columns_.end() ? nullptr : &*found;
}

bool GlobalStates::Has(const Column& column, std::size_t row) {
  return row < column.values.size() &&
         std::bit_cast<std::uint64_t>(column.values[row]) != kMissingBits;
}

void GlobalStates::DropLastRow() {
  cycles_.pop_back();
  controls_.pop_back();
  for (Column& column : columns_) {
    column.values.resize(std::min(column.values.size(), cycles_.size()));
  }
}

void GlobalStates::Thin() {
  const auto everySecond = [](auto& items) {
    std::size_t kept = 0;
    for (std::size_t i = 0; i < items.size(); i += 2) {
      if (kept != i) items[kept] = std::move(items[i]);
      ++kept;
    }
    items.resize(kept);
  };
  everySecond(cycles_);
  everySecond(controls_);
  for (Column& column : columns_) everySecond(column.values);
  stride_ *= 2;
}
