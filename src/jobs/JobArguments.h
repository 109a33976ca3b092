// The arguments of the solvers, those of every MPI kind too: the .cpp has BuildArguments of the
// jobs, and here are the pieces that others need for command lines.
#ifndef KR_JOBS_JOBARGUMENTS_H
#define KR_JOBS_JOBARGUMENTS_H

#include <cstdint>
#include <string>
#include <vector>

#include "jobs/Settings.h"

struct JobRunContext;

// The hosts of a distributed run, from the host table and the group's assignment.
struct HostList {
  long long cpus = 0;  // of all hosts
  int hosts = 0;       // with at least one CPU
  std::string text;    // in the form of the MPI kind; empty for kinds that take none
};

// The CPUs that a group runs with on each host of the table, in its order. `groupText` is the
// group's assignment: comma-separated numbers, the first unused, then one CPU count a host.
struct HostCpus {
  std::string name;
  int cpus = 0;
};
struct GroupHosts {
  std::vector<HostCpus> hosts;
  int assigned = 0;       // counts that the assignment has
  bool followed = false;  // it has one for each host; else the table's own counts are taken
};
GroupHosts HostsOfGroup(const Settings& settings, const std::string& groupText);

// The kinds that the host list is made for; others leave the hosts to the launcher's arguments.
bool TakesHostList(int mpi);

HostList BuildHostList(const Settings& settings, const std::string& groupText);

// Solvers count memory in million words; this many for so many megabytes. A word has four bytes in
// single precision and eight in double, so that the same number is twice as much memory there.
constexpr std::uint64_t MegaWords(std::uint64_t megabytes) {
  return megabytes >> 2;
}
std::uint64_t MegabytesTaken(std::uint64_t megaWords, SolverKind kind);

// The CPUs that a command line of the kind asks for, all hosts together: of a distributed run its
// ranks, else the threads. 0: it does not say.
int CpusAskedFor(SolverKind kind, const JobRunContext& context, const std::string& commandLine);

// "mpirun" for Platform MPI, else "mpiexec".
std::string MpiLauncher(const Settings& settings);

// The setting with the executable of distributed runs; null for kinds other than LS-DYNA.
std::string Settings::*MppSolver(SolverKind kind);

// The program that runs jobs of the kind: with use_mpp that of distributed runs, if it has one.
const std::string& SolverProgram(const Settings& settings, SolverKind kind);

// The path for a command line: between double quotes when it holds a blank or a tab.
std::string QuotedPath(const std::string& path);

// False for a path that cannot be written on a command line so that the child reads it back: one
// that holds a double quote, or that would end in a backslash before its closing quote. `quoted`:
// the path is put between quotes in any case.
bool FitsCommandLine(const std::string& path, bool quoted = false);

// The folder of a file, absolute; only a root ends in a separator. Empty for an empty path.
std::string FolderOf(const std::string& path);

// The path without the last "." of its file name and what follows.
std::string PathWithoutExtension(const std::string& path);

#endif
