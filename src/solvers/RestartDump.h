// Restart dumps: files from which an LS-DYNA run can be gone on with. They are called "d3dump01",
// "d3dump02" and so on, or "runrsf" and "runrsf01" for those that are written over; with jobid=NAME
// "NAME." stands in front. An MPP run writes a file a rank, "d3dump01.0000" and on; the solver is
// told the name without the rank, and wants all of them.
#ifndef KR_SOLVERS_RESTARTDUMP_H
#define KR_SOLVERS_RESTARTDUMP_H

#include <cstdint>
#include <string>

#include "jobs/JobFile.h"

// Whether the solver would find something there: the file, or that of the first rank.
bool RestartFileExists(const std::string& path);

// The path as the solver is told it. What is not a rank's file of a dump stays as it is.
std::string WithoutRank(const std::string& path);

// "NAME" of the dump "NAME.d3dump01", for the jobid= of a run that goes on from it: what it writes
// belongs beside what the first run wrote. Empty when there is none that can be given to a solver,
// or it is one that the solver itself has made up for a case.
std::string NameOfDump(const std::string& path);

// FileDirWrapper::WriteTime of the newest dump that lies in the job's folder under its prefix
// (jobs/OutputPrefix.h); 0: there is none. Lists the folder.
std::int64_t NewestDumpTime(const JobFile& job);

// The newest dump that the run has written and that seems whole, for a run that was Aborted, or was
// stopped by a sense switch; empty when there is none, or for a deck with cases, of which a dump
// would go on with one only. Lists the folder: on the run's thread, when nothing writes there any
// more.
//
// Whole is a dump whose files are not empty and together not smaller than those of the dump before
// it, and of an MPP run those of all ranks: what was cut off while it was written is shorter, and
// the one before it is taken.
std::string DumpToGoOnFrom(const JobFile& job, JobStatus verdict);

#endif
