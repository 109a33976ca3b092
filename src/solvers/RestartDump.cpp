#include "solvers/RestartDump.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <string_view>
#include <vector>

#include "jobs/OutputPrefix.h"
#include "solvers/MessageFiles.h"
#include "util/files/FileDirWrapper.h"
#include "util/files/InputFile.h"
#include "util/text/PlainText.h"

namespace {

constexpr std::size_t kRankDigits = 4;
constexpr std::uint64_t kTailBytes = 64 * 1024;

bool AllDigits(std::string_view text) {
  return std::all_of(text.begin(), text.end(), IsDigit);
}

bool IsDumpName(std::string_view name) {
  const std::string lower = Lower(name.substr(name.rfind('.') + 1));
  for (const std::string_view kind : {"d3dump", "runrsf"}) {
    if (!lower.starts_with(kind)) continue;
    const std::string_view number = std::string_view(lower).substr(kind.size());
    return AllDigits(number) && (!number.empty() || kind == "runrsf");
  }
  return false;
}

const auto NameOf = &FileDirWrapper::NameOf;

// The length of ".0003" at the end of a rank's file; 0 for a dump in one file.
std::size_t RankLength(std::string_view name) {
  const std::size_t dot = name.rfind('.');
  if (dot == std::string_view::npos || name.size() - dot - 1 < kRankDigits) return 0;
  const bool isRank = AllDigits(name.substr(dot + 1)) && IsDumpName(name.substr(0, dot));
  return isRank ? name.size() - dot : 0;
}

struct Dump {
  std::string path;  // without a rank
  int files = 0;
  int highestRank = -1;  // -1: all in one file
  std::uint64_t bytes = 0;
  bool isNew = true;
  bool hasEmpty = false;
  std::int64_t written = 0;
};

std::uint64_t SizeOf(const std::string& path) {
  InputFile file;
  return file.Open(path) ? file.Size() : 0;
}

std::vector<std::string> DumpFilesOf(const JobFile& job) {
  const std::string prefix = OutputPrefix(job);
  std::vector<std::string> files;
  std::vector<std::string> folders;
  FileDirWrapper::ListDir(job.Folder(), files, folders, false);
  std::erase_if(files, [&](const std::string& file) {
    const std::string name = NameOf(WithoutRank(file));
    return !IsDumpName(name) || !IsOutputName(job, name, prefix);
  });
  return files;
}

// Those that were written since its run began, the newest first.
std::vector<Dump> NewDumps(const JobFile& job) {
  std::map<std::string, Dump> found;
  for (const std::string& file : DumpFilesOf(job)) {
    const std::string path = WithoutRank(file);
    const std::int64_t written = FileDirWrapper::WriteTime(file);
    const std::uint64_t size = SizeOf(file);
    Dump& dump = found[path];
    dump.path = path;
    ++dump.files;
    if (path != file) {
      const std::string rank = file.substr(path.size() + 1);
      dump.highestRank = std::max(dump.highestRank, std::atoi(rank.c_str()));
    }
    dump.bytes += size;
    dump.isNew = dump.isNew && written > job.dumpsBefore;
    dump.hasEmpty = dump.hasEmpty || size == 0;
    dump.written = std::max(dump.written, written);
  }
  std::vector<Dump> dumps;
  for (auto& [path, dump] : found) {
    if (dump.isNew) dumps.push_back(std::move(dump));
  }
  // By the number where the times are the same.
  std::stable_sort(dumps.begin(), dumps.end(), [](const Dump& a, const Dump& b) {
    return a.written != b.written ? a.written > b.written : a.path > b.path;
  });
  return dumps;
}

// As many as the run had ranks, each of which writes a message file.
bool HasAllFiles(const Dump& dump, int ranks) {
  if (dump.hasEmpty) return false;
  return dump.highestRank < 0 || (dump.files == dump.highestRank + 1 && dump.files >= ranks);
}

int RanksOf(const JobFile& job) {
  constexpr std::string_view kMessage = "mes";
  int ranks = 0;
  for (const std::string& file : MessageAndKeptFiles(job)) {
    if (job.folderBefore.HoldsUnchanged(file)) continue;
    const std::string name = NameOf(file);
    const std::string rank = name.substr(name.rfind(kMessage) + kMessage.size(), kRankDigits);
    if (AllDigits(rank)) ranks = std::max(ranks, std::atoi(rank.c_str()) + 1);
  }
  return ranks;
}

// The message file of a run that ended normally, but not at its own end.
bool WasStoppedBySwitch(const std::string& messageFile) {
  InputFile file;
  if (!file.Open(messageFile)) return false;
  std::string tail(kTailBytes, '\0');
  const std::uint64_t from = file.Size() > kTailBytes ? file.Size() - kTailBytes : 0;
  tail.resize(static_cast<std::size_t>(
      std::max<std::ptrdiff_t>(file.ReadAt(from, tail.data(), tail.size()), 0)));
  return Holds(tail, "sense switch") && !Holds(tail, "termination time reached");
}

}  // namespace

bool RestartFileExists(const std::string& path) {
  return FileDirWrapper::FileExists(path) || FileDirWrapper::FileExists(path + ".0000");
}

std::string WithoutRank(const std::string& path) {
  return path.substr(0, path.size() - RankLength(NameOf(path)));
}

std::string NameOfDump(const std::string& path) {
  const std::string file = NameOf(WithoutRank(path));
  const std::size_t dot = file.rfind('.');
  if (dot == std::string::npos || !IsDumpName(file)) return {};
  std::string name = file.substr(0, dot);
  const std::string lastPart = file.substr(name.rfind('.') + 1);
  const bool isOfCase = CaseLength(file) > 0 || CaseLength(lastPart) > 0;
  const bool canBeGiven = name.find_first_of(" \t\"'") == std::string::npos;
  return canBeGiven && !isOfCase ? name : std::string();
}

std::int64_t NewestDumpTime(const JobFile& job) {
  std::int64_t newest = 0;
  for (const std::string& file : DumpFilesOf(job)) {
    newest = std::max(newest, FileDirWrapper::WriteTime(file));
  }
  return newest;
}

std::string DumpToGoOnFrom(const JobFile& job, JobStatus verdict) {
  const SolverKind kind = job.GetSolverType();
  const auto* const dyna = dynamic_cast<const JobFileDyna*>(&job);
  const bool takesDumps = kind == SolverKind::kLsDynaSingle || kind == SolverKind::kLsDynaDouble;
  if (!takesDumps || dyna == nullptr || dyna->caseRun) return {};
  if (verdict != JobStatus::kAborted && !WasStoppedBySwitch(job.MessageFile())) return {};
  const std::vector<Dump> dumps = NewDumps(job);
  const int ranks = RanksOf(job);
  for (std::size_t i = 0; i < dumps.size(); ++i) {
    const bool isLong = i + 1 == dumps.size() || dumps[i].bytes >= dumps[i + 1].bytes;
    if (HasAllFiles(dumps[i], ranks) && isLong) return dumps[i].path;
  }
  return {};
}
