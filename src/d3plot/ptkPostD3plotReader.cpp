#include "d3plot/ptkPostD3plotReader.h"

#include <algorithm>
#include <utility>

#include "d3plot/ResultFile.h"

namespace {

std::string WithoutTrailingSpace(const std::string& name) {
  return name.substr(0, name.find_last_not_of(" \t\r\n\v\f") + 1);
}

}  // namespace

bool ptkPostD3plotReader::Open(const std::string& fileName) {
  families_.clear();
  if (fileName.size() >= kLongestBaseName) return Fail(MessageId::kResultNameTooLong);
  const std::string base = WithoutTrailingSpace(fileName);
  return Open(FindFamilies(base.empty() ? "d3plot" : base));
}

bool ptkPostD3plotReader::Open(std::vector<FileFamily> families) {
  families_ = std::move(families);
  format_ = WordFormat();
  error_ = Message();
  ResultFile file;
  unsigned char head[kFormatBytes];
  if (families_.empty() || !file.Open(families_[0].members[0].name.c_str())) {
    return Fail(MessageId::kResultUnreadable);
  }
  if (!file.ReadAt(0, head, sizeof head)) return Fail(MessageId::kResultHeadCut);
  return RecogniseFormat(head, format_) || Fail(MessageId::kResultIsOther);
}

std::int64_t ptkPostD3plotReader::WordsInBaseFile() const {
  return static_cast<std::int64_t>(families_[0].members[0].size / format_.wordSize);
}

std::int64_t ptkPostD3plotReader::WordsInFamily() const {
  std::uint64_t words = 0;
  for (const FileFamily::Member& member : families_[0].members) {
    words += member.size / format_.wordSize;
  }
  return static_cast<std::int64_t>(words);
}

bool ptkPostD3plotReader::ReadWords(std::int64_t first, std::size_t count,
                                    std::vector<unsigned char>& bytes) const {
  bytes.clear();
  std::uint64_t skip = static_cast<std::uint64_t>(first);
  std::uint64_t wanted = count;
  for (const FileFamily::Member& member : families_[0].members) {
    const std::uint64_t words = member.size / format_.wordSize;
    if (skip >= words) {
      skip -= words;
      continue;
    }
    const std::uint64_t here = std::min(wanted, words - skip);
    const std::size_t filled = bytes.size();
    bytes.resize(filled + static_cast<std::size_t>(here) * format_.wordSize);
    ResultFile file;
    if (!file.Open(member.name.c_str()) ||
        !file.ReadAt(skip * format_.wordSize, bytes.data() + filled, bytes.size() - filled)) {
      return false;
    }
    skip = 0;
    wanted -= here;
    if (wanted == 0) return true;
  }
  return false;
}

bool ptkPostD3plotReader::ReadInteger(std::int64_t word, std::int64_t& value) const {
  std::vector<unsigned char> bytes;
  if (!ReadWords(word, 1, bytes)) return false;
  value = format_.Integer(bytes.data());
  return true;
}

bool ptkPostD3plotReader::Fail(PlainMessageId reason) {
  error_ = Message(reason);
  return false;
}
