// Advice for known message numbers of LS-DYNA.
#ifndef KR_SOLVERS_HINTS_H
#define KR_SOLVERS_HINTS_H

#include "messages/Message.h"

// The advice for a warning or an error. False, with `hint` untouched, for a number that has none.
bool LookUpHint(int number, Message& hint);

#endif
