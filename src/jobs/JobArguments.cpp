#include "jobs/JobArguments.h"

#include <algorithm>
#include <limits>
#include <vector>

#include "jobs/HostLine.h"
#include "jobs/JobFile.h"
#include "jobs/OutputPrefix.h"
#include "util/files/FileDirWrapper.h"
#include "util/text/PlainText.h"
#include "util/text/StrWrapper.h"

namespace {

constexpr int kMpich2 = 0;
constexpr int kPlatformMpi = 3;

std::vector<std::string> Separate(const std::string& line, char separator) {
  std::vector<std::string> pieces;
  StrWrapperTxt::SeparateString(line, pieces, separator);
  return pieces;
}

std::string HostListOption(int mpi, int hosts) {
  return mpi == kPlatformMpi ? " -hostlist " : " -hosts " + std::to_string(hosts) + ' ';
}

std::string ShortQuotedPath(const std::string& path) {
  return QuotedPath(FileDirWrapper::ShortPath(path));
}

std::string MemoryArgument(std::uint64_t megabytes) {
  return std::to_string(MegaWords(megabytes)) + 'm';
}

// The ranks that the launcher's arguments ask for; 0: they do not say.
long long RanksIn(const std::string& launcherArguments) {
  std::vector<std::string> words;
  StrWrapperTxt::SplitCommandLine(launcherArguments, words);
  long long ranks = 0;
  for (std::size_t i = 0; i + 1 < words.size(); ++i) {
    const std::string& word = words[i];
    const bool asks = word == "-n" || word == "-np" || word == "--n" || word == "--np";
    if (asks) ranks += std::max(0, StrWrapperTxt::LeadingInt(words[i + 1]));
  }
  return ranks;
}

// Of a solver that says "ncpu=4", or "ncpu=-4"; the last one counts.
int ThreadsIn(const std::string& commandLine) {
  constexpr char kWord[] = "ncpu=";
  std::vector<std::string> words;
  StrWrapperTxt::SplitCommandLine(commandLine, words);
  int threads = 1;
  for (const std::string& word : words) {
    if (!Lower(word).starts_with(kWord)) continue;
    const int value = StrWrapperTxt::LeadingInt(word.substr(sizeof kWord - 1));
    if (value != 0) threads = value < 0 ? -value : value;
  }
  return threads;
}

void DropFirst(std::string& text) {
  if (!text.empty()) text.erase(0, 1);
}

std::string SharedMemoryArguments(const JobFileDyna& job, const Settings& settings) {
  const bool utilityBatch = job.solverType == SolverKind::kUtilityBatch;
  std::string text;
  if (!job.restartFile.empty()) text += " r=" + ShortQuotedPath(job.restartFile);
  if (!job.jobFile.empty()) text += " i=" + ShortQuotedPath(job.jobFile);
  if (job.memory != 0 && !utilityBatch) text += " memory=" + MemoryArgument(job.memory);
  if (settings.use_mpp && settings.memory2 > 0 && !utilityBatch) {
    text += " memory2=" + MemoryArgument(settings.memory2);
  }
  const int cpus = job.ncpu < 1 ? settings.cpu_count : job.ncpu;
  if (!settings.use_mpp && cpus >= 2 && !utilityBatch) text += " ncpu=" + std::to_string(cpus);
  if (job.useSFile) text += " s=" + ShortQuotedPath(settings.force);
  if (!settings.output_dump || !job.dump) text += " d=nodump";
  if (job.caseRun) text += " CASE";
  const bool isNamed = !job.outputName.empty() && TakesJobId(job.solverType);
  if (isNamed && TypedJobId(job.extraOptions).empty()) text += " jobid=" + job.outputName;
  if (!job.extraOptions.empty()) text += ' ' + job.extraOptions;
  DropFirst(text);
  return text;
}

std::string MppArguments(const JobFileDyna& job, const Settings& settings, const HostList& hosts,
                         const std::string& solverArguments) {
  std::string text;
  if (!settings.mpi_param.empty()) text += ' ' + settings.mpi_param;
  if (!hosts.text.empty() && hosts.hosts > 0) {
    text += HostListOption(settings.mpi, hosts.hosts) + hosts.text;
  }
  text += ' ' + ShortQuotedPath(SolverProgram(settings, job.solverType));
  if (!solverArguments.empty()) text += ' ' + solverArguments;
  if (!settings.mpp_param.empty()) text += ' ' + settings.mpp_param;
  DropFirst(text);
  return text;
}

}  // namespace

bool TakesHostList(int mpi) {
  return mpi >= kMpich2 && mpi <= kPlatformMpi;
}

GroupHosts HostsOfGroup(const Settings& settings, const std::string& groupText) {
  GroupHosts group;
  for (const std::string& line : settings.host_lines) {
    HostLine host;
    if (ParseHostLine(line, host)) group.hosts.push_back({host.name, host.cpus});
  }
  const std::vector<std::string> assignment = Separate(groupText, ',');
  group.assigned = std::max(0, static_cast<int>(assignment.size()) - 1);
  group.followed = assignment.size() == group.hosts.size() + 1;
  for (std::size_t i = 0; group.followed && i < group.hosts.size(); ++i) {
    group.hosts[i].cpus = StrWrapperTxt::LeadingInt(assignment[i + 1]);
  }
  return group;
}

HostList BuildHostList(const Settings& settings, const std::string& groupText) {
  HostList list;
  const bool platformMpi = settings.mpi == kPlatformMpi;
  for (const HostCpus& host : HostsOfGroup(settings, groupText).hosts) {
    list.cpus += host.cpus;
    if (host.cpus < 1) continue;
    ++list.hosts;
    if (!TakesHostList(settings.mpi)) continue;
    if (!list.text.empty()) list.text += platformMpi ? ',' : ' ';
    list.text += host.name + (platformMpi ? ':' : ' ') + std::to_string(host.cpus);
  }
  return list;
}

std::uint64_t MegabytesTaken(std::uint64_t megaWords, SolverKind kind) {
  return megaWords * (kind == SolverKind::kLsDynaDouble ? 8 : 4);
}

int CpusAskedFor(SolverKind kind, const JobRunContext& context, const std::string& commandLine) {
  const bool runsDeck = MppSolver(kind) != nullptr || kind == SolverKind::kUtilityBatch;
  if (!runsDeck) return 0;
  const Settings& settings = context.settings;
  const HostList hosts = BuildHostList(settings, context.groupText);
  const bool isDistributed = settings.use_mpp && MppSolver(kind) != nullptr && hosts.cpus > 0;
  if (!isDistributed) return ThreadsIn(commandLine);
  const long long ranks = RanksIn(settings.mpi_param);
  return static_cast<int>(ranks > 0 ? ranks : hosts.text.empty() ? 0 : hosts.cpus);
}

std::string MpiLauncher(const Settings& settings) {
  return settings.mpi == kPlatformMpi ? "mpirun" : "mpiexec";
}

std::string Settings::*MppSolver(SolverKind kind) {
  if (kind == SolverKind::kLsDynaSingle) return &Settings::mpp_solver_s;
  if (kind == SolverKind::kLsDynaDouble) return &Settings::mpp_solver_d;
  return nullptr;
}

const std::string& SolverProgram(const Settings& settings, SolverKind kind) {
  std::string Settings::*const mpp = settings.use_mpp ? MppSolver(kind) : nullptr;
  return mpp != nullptr ? settings.*mpp : settings.SolverPath(kind);
}

std::string QuotedPath(const std::string& path) {
  std::string quoted;
  FileDirWrapper::QuotePath(path, quoted);
  return quoted;
}

bool FitsCommandLine(const std::string& path, bool quoted) {
  if (path.find('"') != std::string::npos) return false;
  return !path.ends_with('\\') || (!quoted && QuotedPath(path) == path);
}

std::string FolderOf(const std::string& path) {
  std::string folder;
  if (!FileDirWrapper::DirOf(FileDirWrapper::AbsolutePath(path), folder)) return {};
  const bool root = folder.empty() || (FileDirWrapper::kSeparator == '\\' && folder.back() == ':');
  if (root) folder += FileDirWrapper::kSeparator;
  return folder;
}

std::string PathWithoutExtension(const std::string& path) {
  const std::size_t name = path.find_last_of("\\/");
  const std::size_t dot = path.rfind('.');
  if (dot == std::string::npos || (name != std::string::npos && dot < name)) return path;
  return path.substr(0, dot);
}

bool JobFileDyna::BuildArguments(std::string& arguments) const {
  arguments.clear();
  if (run == nullptr) return false;
  const Settings& settings = run->settings;
  arguments = SharedMemoryArguments(*this, settings);
  if (!settings.use_mpp || solverType == SolverKind::kUtilityBatch) return true;
  const HostList hosts = BuildHostList(settings, run->groupText);
  if (hosts.cpus < 1) return true;
  if (MppSolver(solverType) == nullptr) {
    arguments.clear();
    return false;
  }
  arguments = MppArguments(*this, settings, hosts, arguments);
  return true;
}

bool JobFileVorel::BuildArguments(std::string& arguments) const {
  arguments = QuotedPath(PathWithoutExtension(jobFile));
  if (memory != 0) {
    constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max() / 1000;
    arguments += ' ' + std::to_string(std::min(memory, kMost) * 1000);
  }
  if (!extraOptions.empty()) arguments += ' ' + extraOptions;
  return true;
}

bool JobFileInc::BuildArguments(std::string& arguments) const {
  arguments.clear();
  if (run == nullptr) return false;
  const Settings& settings = run->settings;
  if (settings.inc_token.empty()) return false;
  const std::string folder = FolderOf(settings.SolverPath(SolverKind::kInc));
  const std::string job = PathWithoutExtension(jobFile);
  arguments = ' ' + settings.inc_token + ' ' + QuotedPath(folder) + ' ' + QuotedPath(job);
  return true;
}
