// The decks of folders that are added whole. Reads disks that may be slow and trees that may be
// big: not for the interface thread.
#ifndef KR_CORE_DECKFOLDERS_H
#define KR_CORE_DECKFOLDERS_H

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

// Both in full paths, sorted by folder and name.
struct DecksFound {
  std::vector<std::string> decks;  // in the folders themselves
  std::vector<std::string> below;  // in the folders below them
};

struct DeckSearchHooks {
  // Folders looked at and decks found so far. Returning false ends the search. May be empty.
  std::function<bool(std::size_t folders, std::size_t decks)> looked = {};
  // Decks read for what they include, of so many. Returning false ends it. May be empty; called
  // while a deck is read, too.
  std::function<bool(std::size_t done, std::size_t total)> read = {};
};

// The files that end in ".k", ".dyn" or ".key", in any case. A folder that is reached twice,
// through a link say, is looked at once; those whose names begin with a dot are left out. False
// when a hook ended it.
bool FindDecks(const std::vector<std::string>& folders, const DeckSearchHooks& hooks,
               DecksFound& found);

// Takes those out of `found` that another one of them includes, in one step or more, and gives them
// in `included`; a mesh may lie above the decks that include it, or below. Where decks include each
// other in a circle the first stays. Reads all of them. False, with nothing changed, when a hook
// ended it.
bool LeaveOutIncluded(DecksFound& found, std::vector<std::string>& included,
                      const DeckSearchHooks& hooks);

#endif
