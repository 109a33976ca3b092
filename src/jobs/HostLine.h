// A line of the host file: a name, blanks, the number of CPUs.
#ifndef KR_JOBS_HOSTLINE_H
#define KR_JOBS_HOSTLINE_H

#include <string>

struct HostLine {
  std::string name;  // no blanks
  int cpus = 0;
  std::string rest;  // what else stands on the line
};

// False for a line without a name.
bool ParseHostLine(const std::string& line, HostLine& host);

// The name padded to 20 characters, then the CPUs and the rest.
std::string FormatHostLine(const HostLine& host);

// Whether a name can stand in the host file: not empty, one word, no "#" in front.
bool ValidHostName(const std::string& name);

#endif
