#include "runs/SolverVersion.h"

#include <chrono>
#include <mutex>
#include <optional>
#include <string_view>

#include "jobs/JobArguments.h"
#include "solvers/AbortableWait.h"
#include "util/files/FileDirWrapper.h"
#include "util/files/InputFile.h"
#include "util/files/LineBlocks.h"
#include "util/process/PTWrapper.h"
#include "util/text/PlainText.h"
#include "util/text/StrWrapper.h"

namespace {

constexpr std::chrono::milliseconds kReportTime{2000};
constexpr std::uint64_t kMostReportBytes = 1024 * 1024;

std::optional<int> NumberAt(const std::string& text, std::size_t position) {
  if (position >= text.size() || !IsDigit(text[position])) return std::nullopt;
  return StrWrapperTxt::LeadingInt(text.substr(position));
}

std::optional<int> RevisionOf(const std::string& line, std::size_t colon) {
  return NumberAt(line, line.find_first_not_of(" \t", colon + 1));
}

// The number behind the first 'R' that has one: "LS971S R7.0.0".
std::optional<int> MajorOf(const std::string& line, std::size_t colon) {
  for (std::size_t r = colon; (r = line.find('R', r + 1)) != std::string::npos;) {
    if (const std::optional<int> major = NumberAt(line, r + 1)) return major;
  }
  return std::nullopt;
}

// "VERSION NUMBER:" in old reports; new ones have "|  VERSION :" in a frame.
bool NamesVersion(const std::string& line, std::size_t colon) {
  if (line.find("VERSION NUMBER") != std::string::npos) return true;
  constexpr char kFrame[] = " \t|";
  const std::size_t start = line.find_first_not_of(kFrame);
  const std::size_t end = line.find_last_not_of(kFrame, colon - 1);
  return start < end && end < colon && line.compare(start, end + 1 - start, "VERSION") == 0;
}

struct Report {
  bool readable = false;
  std::optional<int> major;
  std::optional<int> revision;
};

void ReadLine(std::string_view text, Report& report) {
  const std::string line = Upper(text);
  const std::size_t colon = line.find(':');
  if (colon == std::string::npos || colon == 0) return;
  if (line.find("REVISION") != std::string::npos) {
    if (const auto revision = RevisionOf(line, colon)) report.revision = revision;
  }
  if (NamesVersion(line, colon)) {
    if (const auto major = MajorOf(line, colon)) report.major = major;
  }
}

Report ReadReport(const std::string& path) {
  Report report;
  LineBlocks blocks;
  if (!blocks.Open(path)) return report;
  std::uint64_t read = 0;
  for (std::string_view block; read < kMostReportBytes && blocks.Next(block);) {
    read += block.size();
    for (std::size_t position = 0; position < block.size();) {
      ReadLine(TakeLine(block, position), report);
    }
  }
  report.readable = !blocks.Failed();
  return report;
}

// What tells one writing of a file from the next.
struct FileStamp {
  explicit FileStamp(const std::string& path) {
    InputFile file;
    exists = file.Open(path);
    size = file.Size();
    if (exists) time = FileDirWrapper::WriteTime(path);
  }
  bool operator==(const FileStamp&) const = default;

  bool exists = false;
  std::uint64_t size = 0;
  std::int64_t time = 0;
};

std::mutex& QueryMutex() {
  static std::mutex mutex;
  return mutex;
}

// Must not outlive the question, however that ends.
struct InfoProcess : PTWrapperProcess {
  ~InfoProcess() override { Terminate(); }
};

// Unseen: a console would be gone before anyone could read it, and takes the keys meanwhile.
bool StartInfo(const std::string& solver, const std::string& folder, PTWrapperProcess& process) {
  PTWrapperProcessStart start;
  start.program = solver;
  start.commandLine = QuotedPath(solver) + " info";
  start.title = "ORLA-KR/LS-DYNA";
  start.creationFlags = PTWrapperProcess::kNewConsole;
  start.showWindow = false;
  start.folder = folder;
  return process.Create(start);
}

}  // namespace

bool ReadSolverVersion(const std::string& solverPath, int& major, int& revision,
                       const VersionQuery& query) {
  static const std::atomic<bool> kNever{false};
  const std::atomic<bool>& abort = query.abort != nullptr ? *query.abort : kNever;
  const auto tell = [&query](const Message& message) {
    if (query.report) query.report(message);
  };
  if (!FileDirWrapper::FileExists(solverPath)) return false;
  const std::string solver = FileDirWrapper::AbsolutePath(solverPath);
  const std::string folder = FolderOf(solver);
  const std::string path = FileDirWrapper::Join(folder, "lstc.log");

  const std::unique_lock<std::mutex> turn = LockUnlessAborted(QueryMutex(), abort);
  if (abort) return false;
  const FileStamp before(path);
  Report report;
  InfoProcess process;
  if (StartInfo(solver, folder, process)) {
    WaitUnlessAborted(kReportTime, abort, [&] {
      if (process.IsActive() || FileStamp(path) == before) return false;
      report = ReadReport(path);
      return report.major && report.revision;
    });
    // The whole time has passed: an older report, if there is one, tells what it can.
    report = ReadReport(path);
    if (!(abort ? process.TerminateAll() : process.Terminate()))
      tell(Message(MessageId::kNotEnded, process.LastError()));
  } else {
    tell(Message(MessageId::kNotStarted, process.LastError()));
  }
  if (abort) return false;
  if (!report.readable) tell(Message(MessageId::kVersionFileUnreadable, path));
  if (!report.major || !report.revision) return false;
  major = *report.major;
  revision = *report.revision;
  return true;
}
