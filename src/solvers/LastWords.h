// What there is to say of a solver that failed beside the reason: its exit code, and what it
// printed.
#ifndef KR_SOLVERS_LASTWORDS_H
#define KR_SOLVERS_LASTWORDS_H

#include <optional>
#include <string>

#include "jobs/JobFile.h"

// Where what the job's solver prints is kept: beside the file that the job is called after.
std::string ConsoleFileOf(const JobFile& job);

// An exit code of PTWrapperProcess in words: "killed by signal 9, out of memory?",
// "0xC0000135: a DLL is missing", "exit code 3".
Message ExitWords(int exitCode);

// True for one that tells that a program or a library is not there or does not fit: nothing ran.
bool TellsOfMissingProgram(int exitCode);

// Of a run whose solver did not end normally: how it ended, where that is known and is not 0, and
// below it the last lines that it printed when it wrote no message file. Empty when there is
// neither. Lines of an earlier run do not count. During the run, on its thread.
Message LastWordsOf(const JobFile& job, std::optional<int> exitCode);

#endif
