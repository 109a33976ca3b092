// Makes a deck fit for the result of the forming stage before it.
#ifndef KR_SOLVERS_DECKPREPARATION_H
#define KR_SOLVERS_DECKPREPARATION_H

#include <atomic>
#include <string>

#include "messages/Message.h"

// A deck includes such a result where a comment that begins with "result from previous case" stands
// between the INCLUDE card and the file's name. The result defines its nodes again, with the formed
// coordinates, and brings the constraints of its own stage. So up to the deck's END card
// - a NODE line whose number the result defines too becomes a comment, since the solver refuses a
//   node that is defined twice;
// - any other NODE line ends behind its coordinates (column 56 in the standard format);
// - a BOUNDARY_SPC_NODE line for a node of the result becomes a comment;
// - all other lines stay as they are, byte for byte, encrypted ones too.
//
// The old deck is kept as "DECK.bak". A deck that includes no result, or that needs no change, is
// not touched, nor is one whose result cannot be read. Fixed, ten-digit, long and comma-separated
// cards are understood. Decks and results of any size are read in small pieces.
//
// At any moment there is a deck under its name, the old one or the whole new one. False when
// something failed (reported) or `stop` was set: the deck is as it was.
bool PrepareDeck(const std::string& deckPath, const MessageSink& report,
                 const std::atomic<bool>& stop);

#endif
