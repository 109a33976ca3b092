// What a deck's commands make every run do, whichever solver is played.
#ifndef STANDIN_BEHAVIOURACTS_H
#define STANDIN_BEHAVIOURACTS_H

#include "Behaviour.h"
#include "Options.h"

// Deaf to polite termination from here on; the echo and the child are the first rank's.
void ActAtStart(const Behaviour& behaviour, const Options& options, bool first);

// Dies or hangs.
void ActInTheMiddle(const Behaviour& behaviour);

// "warning 2 of 5, which the deck asked the stand-in for".
std::string NoticeText(const char* kind, int index, int count);

#endif
