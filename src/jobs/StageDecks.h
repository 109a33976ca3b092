// The stages that a deck asks for.
#ifndef KR_JOBS_STAGEDECKS_H
#define KR_JOBS_STAGEDECKS_H

#include <string>
#include <vector>

#include "jobs/JobFile.h"

// The decks that run one after another instead of a scanned job's own: those that it includes
// outside of cases (".dyn", ".k", ".key"), in order, when its comments say at which stage to begin.
// Seen from the deck's folder. Empty for any other job, and when one of the decks does not exist:
// each missing one is reported.
std::vector<std::string> StageDecks(const JobFileDyna& job, const MessageSink& report);

// A file that a deck names, seen from the deck's folder.
std::string IncludedPath(const std::string& deck, const std::string& name);

#endif
