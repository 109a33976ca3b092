// The message files in a job's folder.
#ifndef KR_SOLVERS_MESSAGEFILES_H
#define KR_SOLVERS_MESSAGEFILES_H

#include <string>

#include "jobs/JobFile.h"

// The first message file by name ("mes0000" before "mes0001" before "messag"); empty when there is
// none. Kept copies (".krb") and files that the user may have made are not message files, whatever
// they are called: decks, the job's own files, and what is made of their names.
std::string FindMessageFile(const JobFile& job);
// The one with this name.
std::string FindMessageFile(const JobFile& job, const std::string& name);

// Before a run. What cannot be removed is reported.
void RemoveMessageFiles(const JobFile& job);

// After a run. What cannot be removed is reported.
void RemoveAdaptDumps(const JobFile& job);

// How the run ended by its message file, Finished or Aborted; renames the file to its name and
// ".krb", which becomes the job's message file. Leaves code 2 and the reason with the job. An empty
// path: code 3.
JobStatus JudgeRun(JobFile& job, const std::string& messageFile);

// What a message file says about the end of its run.
struct MessageVerdict {
  bool normal = false;
  Message reason;  // of a run that did not end normally
};
MessageVerdict ReadVerdict(const std::string& messageFile);

#endif
