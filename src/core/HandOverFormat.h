// The text of the hand-over file: what its lines ask for, and how arguments become lines.
#ifndef KR_CORE_HANDOVERFORMAT_H
#define KR_CORE_HANDOVERFORMAT_H

#include <optional>
#include <string>
#include <vector>

#include "jobs/JobRequest.h"
#include "jobs/Settings.h"
#include "messages/Message.h"
#include "solvers/SolverKinds.h"

// Of one file; more is left out, and said.
inline constexpr std::size_t kMostHandOverJobs = 50000;

struct HandOverOrder {
  // One for each path: paths of one record share its values.
  std::vector<JobRequest> jobs;
  Settings settings;                     // as the lines leave them
  std::optional<std::string> groupText;  // for the current group
  std::optional<SolverMode> solverMode;
  std::vector<Message> remarks;  // for the log: what was left out, and why
};

// `settings` are those in force before the file. Paths stay as they are written. A record that is
// not valid, see HandOverFile.h, is passed over with all its lines.
HandOverOrder ReadHandOverText(const std::string& text, const Settings& settings);

// The lines for arguments of a command line, the program's name not among them. Paths, those behind
// "i=" and "r=" too, are made absolute: the reader has another current folder. Words of the format
// ("#vorel", "memory=200") stay, unless there is a file of that name. An argument that cannot be a
// line is left out and named in `remarks`.
std::string MakeHandOverText(const std::vector<std::string>& arguments,
                             std::vector<Message>& remarks);

// Where the records of such a text begin.
std::vector<std::size_t> RecordsOf(const std::string& text);

#endif
