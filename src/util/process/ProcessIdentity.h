// Names a process so that it is found again later, also by another program of this machine.
#ifndef KR_UTIL_PROCESS_PROCESSIDENTITY_H
#define KR_UTIL_PROCESS_PROCESSIDENTITY_H

#include <cstdint>
#include <string>

// A process id is used again; the mark is not: it tells the start of the machine, where the system
// has a name for that, and the process's own start. One word, for files.
struct ProcessIdentity {
  std::int32_t id = 0;
  std::string mark;  // empty: no such process

  bool operator==(const ProcessIdentity&) const = default;
};

// Any thread. Of a process that has ended, also one that nobody has collected yet, no mark.
ProcessIdentity IdentityOfProcess(std::int32_t id);

// Whether it runs still.
bool Runs(const ProcessIdentity& process);

// The name of this machine, one word; the ids above mean nothing on another.
std::string MachineName();

// What stays when the machine is renamed: hexadecimal digits made of the system's own id, which
// they do not tell; empty where it has none. Machines that are copies of one another may share it.
std::string MachineId();

#endif
