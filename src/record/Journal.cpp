#include "record/Journal.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <optional>
#include <sstream>
#include <utility>

#include "record/RecordFiles.h"
#include "util/files/FileDirWrapper.h"
#include "util/files/InputFile.h"

namespace {

constexpr std::size_t kDigits = 8;
constexpr std::size_t kHead = 2 * (kDigits + 1);
constexpr int kMostAside = 1000;                // files with the same name but for their number
constexpr std::uint64_t kMostBytes = 1U << 30;  // more than a record of ours ever has

constexpr std::array<std::uint32_t, 256> MakeCrcTable() {
  std::array<std::uint32_t, 256> table{};
  for (std::uint32_t i = 0; i < table.size(); ++i) {
    std::uint32_t value = i;
    for (int bit = 0; bit < 8; ++bit) value = (value >> 1) ^ ((value & 1) != 0 ? 0xEDB88320U : 0);
    table[i] = value;
  }
  return table;
}

std::uint32_t Crc(std::string_view bytes) {
  static constexpr std::array<std::uint32_t, 256> kTable = MakeCrcTable();
  std::uint32_t crc = 0xFFFFFFFFU;
  for (const char c : bytes)
    crc = kTable[(crc ^ static_cast<unsigned char>(c)) & 0xFF] ^ (crc >> 8);
  return ~crc;
}

void AppendHex(std::string& text, std::uint32_t value) {
  for (int shift = 28; shift >= 0; shift -= 4) text += "0123456789abcdef"[(value >> shift) & 0xF];
  text += ' ';
}

std::optional<std::uint32_t> Hex(std::string_view text) {
  std::uint32_t value = 0;
  const char* const end = text.data() + kDigits;
  const auto [stop, error] = std::from_chars(text.data(), end, value, 16);
  if (error != std::errc() || stop != end || *end != ' ') return std::nullopt;
  return value;
}

// The record that begins there, when it is whole.
std::optional<std::string_view> RecordAt(std::string_view bytes) {
  if (bytes.size() < kHead + 1) return std::nullopt;
  const std::optional<std::uint32_t> length = Hex(bytes);
  const std::optional<std::uint32_t> crc = Hex(bytes.substr(kDigits + 1));
  if (!length || !crc || *length > bytes.size() - kHead - 1) return std::nullopt;
  const std::string_view record = bytes.substr(kHead, *length);
  if (bytes[kHead + *length] != '\n' || Crc(record) != *crc) return std::nullopt;
  return record;
}

// A torn end holds no whole record.
bool HoldsRecord(std::string_view bytes) {
  constexpr int kMostLooks = 1000;  // of a file that is no journal at all from here on
  for (int look = 0; look < kMostLooks; ++look) {
    const std::size_t line = bytes.find('\n');
    if (line == std::string_view::npos) return false;
    bytes.remove_prefix(line + 1);
    if (RecordAt(bytes)) return true;
  }
  return true;
}

std::string Word(const std::string& text) {
  return text.empty() ? "-" : text;
}

// The newest that is read and the one that is written. Version 2 of the queue has changes of
// several jobs, at which a program that knows version 1 alone would stop.
int VersionOf(const std::string& kind) {
  return kind == kQueueKind ? 2 : 1;
}

std::string Title(const JournalName& name, std::size_t count) {
  return "kestrun " + name.kind + ' ' + std::to_string(VersionOf(name.kind)) + ' ' +
         Word(name.machine) + ' ' + std::to_string(count) + ' ' + Word(name.id);
}

JournalText::State StateOfTitle(std::string_view title, const JournalName& name,
                                std::size_t& count) {
  std::istringstream words{std::string(title)};
  std::string program, kind, machine;
  int version = 0;
  if (!(words >> program >> kind >> version) || program != "kestrun" || kind != name.kind) {
    return JournalText::State::kForeign;
  }
  if (version > VersionOf(kind)) return JournalText::State::kNewer;
  // A machine that has been renamed keeps its file when that is.
  if (!(words >> machine >> count) || version < 1) {
    return JournalText::State::kForeign;
  }
  return JournalText::State::kWhole;
}

}  // namespace

bool ReadJournalBytes(const std::string& path, std::string& bytes) {
  InputFile file;
  if (!file.Open(path) || file.Size() > kMostBytes) return false;
  bytes.resize(static_cast<std::size_t>(file.Size()));
  std::size_t done = 0;
  while (done < bytes.size()) {
    const std::ptrdiff_t read = file.Read(bytes.data() + done, bytes.size() - done);
    if (read < 0) return false;
    if (read == 0) break;
    done += static_cast<std::size_t>(read);
  }
  bytes.resize(done);
  return true;
}

std::string MachineIdOfJournal(const std::string& path, const std::string& kind) {
  constexpr std::size_t kMostTitle = 1024;
  constexpr int kWordsBefore = 5;
  InputFile file;
  if (!file.Open(path)) return {};
  std::string bytes(kMostTitle, '\0');
  const std::ptrdiff_t read = file.Read(bytes.data(), bytes.size());
  bytes.resize(static_cast<std::size_t>(std::max<std::ptrdiff_t>(read, 0)));
  const std::optional<std::string_view> title = RecordAt(bytes);
  std::size_t count = 0;
  if (!title || StateOfTitle(*title, {kind, {}}, count) != JournalText::State::kWhole) return {};
  std::istringstream words{std::string(*title)};
  std::string word;
  for (int i = 0; i < kWordsBefore; ++i) words >> word;
  return words >> word && word != "-" ? word : std::string();
}

JournalText ReadJournalText(std::string_view bytes, const JournalName& name) {
  JournalText text;
  const std::optional<std::string_view> title = RecordAt(bytes);
  std::size_t count = 0;
  text.state = title ? StateOfTitle(*title, name, count) : JournalText::State::kForeign;
  if (text.state != JournalText::State::kWhole) return text;
  text.isOurs = *title == Title(name, count);
  text.end = kHead + title->size() + 1;
  while (const std::optional<std::string_view> record = RecordAt(bytes.substr(text.end))) {
    text.records.push_back(*record);
    text.end += kHead + record->size() + 1;
  }
  if (text.records.size() < count || HoldsRecord(bytes.substr(text.end))) {
    text.state = JournalText::State::kDamaged;
  }
  return text;
}

std::string JournalLine(std::string_view record) {
  std::string line;
  line.reserve(kHead + record.size() + 1);
  AppendHex(line, static_cast<std::uint32_t>(record.size()));
  AppendHex(line, Crc(record));
  line += record;
  line += '\n';
  return line;
}

Journal::Journal(std::string path, JournalName name)
    : path_(std::move(path)), name_(std::move(name)) {}

Journal::Found Journal::Read(const std::function<bool(std::string_view record)>& take) {
  inTheWay_ = false;
  end_ = 0;
  if (!FileDirWrapper::FileExists(path_)) return Found::kNothing;
  std::string bytes;
  if (ReadJournalBytes(path_, bytes)) {
    if (bytes.empty()) return Found::kNothing;
    const JournalText text = ReadJournalText(bytes, name_);
    const bool isTaken = std::all_of(text.records.begin(), text.records.end(), take);
    if (isTaken && text.state == JournalText::State::kWhole) {
      if (text.isOurs) end_ = text.end;
      return Found::kRecords;
    }
  }
  if (PutAside()) return Found::kAside;
  inTheWay_ = true;
  return Found::kInTheWay;
}

// The file has both names until a new one takes its own, so that a crash never finds none. What can
// have no second name, like a folder, is renamed.
bool Journal::PutAside() {
  for (int number = 1; number <= kMostAside; ++number) {
    aside_ = path_ + ".old" + std::to_string(number);
    if (FileDirWrapper::IsSameFile(path_, aside_)) return true;  // before a crash
    if (FileDirWrapper::FileExists(aside_)) continue;
    return FileDirWrapper::GiveSecondName(path_, aside_) ||
           std::rename(path_.c_str(), aside_.c_str()) == 0;
  }
  return false;
}

bool Journal::Continue() {
  const std::size_t end = std::exchange(end_, 0);
  return end != 0 && file_.Open(path_, end);
}

bool Journal::Rewrite(const std::vector<std::string>& records) {
  Drop();
  file_.Close();
  if (inTheWay_ && FileDirWrapper::FileExists(path_) && !PutAside()) return false;
  inTheWay_ = false;
  if (!Prepare(records)) return false;
  fresh_.Close();
  isOnDisk_ = FileDirWrapper::FileExists(path_);
  const bool isPlaced = isOnDisk_ ? FileDirWrapper::ReplaceFileWith(FreshPath(), path_)
                                  : FileDirWrapper::MoveFileOver(FreshPath(), path_);
  if (!isPlaced) {
    Drop();
    return false;
  }
  snapshotSize_ = freshSnapshotSize_;
  return file_.Open(path_, snapshotSize_);
}

bool Journal::Prepare(const std::vector<std::string>& records) {
  std::string text = JournalLine(Title(name_, records.size()));
  for (const std::string& record : records) text += JournalLine(record);
  Drop();
  freshSnapshotSize_ = text.size();
  if (fresh_.Make(FreshPath()) && fresh_.Append(text)) return true;
  Drop();
  return false;
}

// Both are closed meanwhile, for systems that move no open file.
bool Journal::TakePlace() {
  if (!IsPrepared() || !file_.IsAt(path_)) return false;
  const std::uint64_t sizeBefore = file_.Size();
  const std::uint64_t size = fresh_.Size();
  file_.Close();
  fresh_.Close();
  const bool isTaken = FileDirWrapper::MoveFileOver(FreshPath(), path_);
  if (isTaken) snapshotSize_ = freshSnapshotSize_;
  return file_.Open(path_, isTaken ? size : sizeBefore) && isTaken;
}

void Journal::Drop() {
  fresh_.Close();
  FileDirWrapper::RemoveFile(FreshPath());
}

bool Journal::Append(std::string_view record) {
  if (!file_.IsOpen()) return false;
  if (!file_.IsAt(path_)) {
    inTheWay_ = true;  // what lies there now is somebody else's
    return false;
  }
  const std::string line = JournalLine(record);
  if (IsPrepared() && !fresh_.Append(line)) Drop();
  return file_.Append(line);
}

bool Journal::Sync() {
  return file_.IsOpen() && file_.Sync();
}
