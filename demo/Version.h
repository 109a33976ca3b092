// The version that the stand-in says it is, and the report that "info" leaves in "lstc.log".
#ifndef STANDIN_VERSION_H
#define STANDIN_VERSION_H

#include <string>
#include <vector>

struct Version {
  std::string release = "R16.1.0";
  std::string revision = "R16.1-0-gstandin";
  bool oldReport = false;  // the layout that solvers up to release 10 wrote
};

// release [revision [old|new]]; what is left out keeps its default.
Version ParseVersion(const std::vector<std::string>& words);

// The environment variable STANDIN_VERSION, else the first line of "standin_version.txt" in the
// current folder, else in the program's folder, else the default.
Version ConfiguredVersion();

// Writes "lstc.log" into the current folder and the same text to standard output.
bool WriteInfo(const Version& version, bool doublePrecision);

#endif
