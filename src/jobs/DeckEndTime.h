// When a deck's run ends.
#ifndef KR_JOBS_DECKENDTIME_H
#define KR_JOBS_DECKENDTIME_H

#include <optional>
#include <string>
#include <vector>

#include "jobs/JobFile.h"

// One of several analyses that a deck holds.
struct DeckCase {
  int number = 0;
  std::optional<double> endTime;
};

struct DeckEndTime {
  std::optional<double> value;  // in the deck's unit of time
  std::string text;             // as written; a name when its value is not known
  std::vector<DeckCase> cases;  // by their numbers; none for a deck without cases
};

// The end time on the first CONTROL_TERMINATION card of a scanned job's deck or, when that has
// none, of the decks that it includes, which lie beside it or beside the deck that names them.
// Parameters with plain numbers are put in. Both empty when there is no such card. A card within
// the lines of a case counts for that case, one outside for all that have none; of a deck that has
// cards only within cases `value` is the first one's. Reads big decks whole, in small pieces.
DeckEndTime FindEndTime(const JobFileDyna& job);

#endif
