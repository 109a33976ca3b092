// Which files of a folder tell how its run is going.
#ifndef KR_PROGRESS_RUNFILES_H
#define KR_PROGRESS_RUNFILES_H

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "jobs/DeckEndTime.h"
#include "jobs/OutputPrefix.h"

// Paths; empty where there is none.
struct RunFiles {
  enum class Kind { kNone, kKeyword, kText };  // kText: of a solver that takes no decks
  Kind kind = Kind::kNone;
  std::string output;  // the message file, the job's text output
  std::string glstat;
  std::string status;  // "status.out"
};

// Of a folder: the message file that was written last ("messag", "mes0000" of a distributed run, a
// job's "NAME.messag", a kept "messag.krb"), without one the text output of INC or Vorel that was
// written last, and what lies beside it under the same name. Of a file: the same for its run; a
// file under another name is taken for a message file. `isOld` keeps files out that the run did not
// write; of a run with names of its own (jobs/OutputPrefix.h) only what is called so counts.
RunFiles FindRunFiles(const std::string& path,
                      const std::function<bool(const std::string& file)>& isOld = {},
                      const OutputNames& names = {});

// The same with the earlier cases of its deck, each of which has files of its own: the newest case
// last, at least one. By their names alone those are cases that differ from the newest in the
// number behind "CASE"; kAll takes whatever message file lies there, where all but the run's are
// old.
enum class CasesBy { kName, kAll };
std::vector<RunFiles> FindCaseFiles(const std::string& path, CasesBy by,
                                    const std::function<bool(const std::string& file)>& isOld = {},
                                    const OutputNames& names = {});

// The number of the case whose message file this is; 0 when its name tells none.
int CaseNumberOf(const std::string& messageFile);

// Where the solver that writes the message file looks for requests ("d3kil"): under the prefix of
// the run, and under that of the case that runs, "CASE2.d3kil". The run's first.
std::vector<std::string> SwitchFiles(const std::string& folder, const OutputNames& names,
                                     const std::string& messageFile);

// The end times that stand in a deck, with what it includes. A name as the solver was given it
// ("i=..."), seen from `folder`; a deck that is not there is looked for in the folder itself.
// Reads big decks whole.
DeckEndTime EndTimeOfDeck(const std::string& folder, const std::string& deck);

#endif
