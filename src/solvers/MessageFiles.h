// The message files in a job's folder.
#ifndef KR_SOLVERS_MESSAGEFILES_H
#define KR_SOLVERS_MESSAGEFILES_H

#include <string>
#include <string_view>
#include <vector>

#include "jobs/JobFile.h"

// The message files that a job's run writes or has written: one for each case of its deck, in the
// order of their numbers ("CASE2.messag" before "CASE10.messag"), one for a deck without cases. Of
// the files of a distributed run that of the first rank ("mes0000") stands for all. What lay in the
// folder before and nobody has written since is none of them, nor are kept copies (".krb") and
// files that the user may have made, whatever they are called: decks, the job's own files, and what
// is made of their names.
//
// Of a job whose results have a prefix (jobs/OutputPrefix.h) those with it: "NAME.messag",
// "NAME.CASE2.messag". A deck with cases whose solver wrote none of these is taken to call them by
// the case alone. What begins with the prefix of another job of the queue is never one.
std::vector<std::string> CaseMessageFiles(const JobFile& job);

// The same with the files of all ranks, those of a case side by side and the first rank's first.
std::vector<std::string> WrittenMessageFiles(const JobFile& job);

// What stands in front of the kind of file: "CASE1." of "CASE1.messag".
std::string CaseOf(const std::string& messageFile);

// The same with what lay there before.
std::vector<std::string> AllMessageFiles(const JobFile& job);

// The same with the kept copies.
std::vector<std::string> MessageAndKeptFiles(const JobFile& job);

// Whether a file of this name may be one that the job's solver wrote: it begins with the prefix,
// and not with that of another job.
bool IsOutputName(const JobFile& job, std::string_view name, std::string_view prefix);

// After its run: the kept message files of its cases, one for each.
std::vector<std::string> KeptCaseFiles(const JobFile& job);

// The one with this name, written or not; empty when there is none.
std::string FindMessageFile(const JobFile& job, const std::string& name);

// Those of them that a run begins with removing: a file whose ending says that it is of another
// kind ("names0.csv") stays.
std::vector<std::string> RemovableMessageFiles(const JobFile& job);

// Before a run. What cannot be removed is reported.
void RemoveMessageFiles(const JobFile& job);

// After a run. What cannot be removed is reported.
void RemoveAdaptDumps(const JobFile& job);

// Before a run is judged whose end nobody saw: gives the files of this run that were kept already
// their own names again. Who judged it may have been cut off meanwhile.
void TakeBackMessageFiles(const JobFile& job);

// The name under which a message file is kept after its run: its own and ".krb".
std::string KeptName(const std::string& messageFile);

// After a run: the file is renamed to its kept name. Where it is now; the file itself when it
// cannot be renamed, which is reported.
std::string KeepMessageFile(JobFile& job, const std::string& messageFile);

// Before another stage of the job runs in the folder of one that has run: the message files that
// the stage's run has kept, or the one that it has as its own, get the name of its deck in front,
// "draw.k.messag.krb". What cannot be renamed is reported.
void NameMessageFilesAfterDeck(JobFile& stage);
void NameMessageFileAfterDeck(JobFile& stage);

#endif
