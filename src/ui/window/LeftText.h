// The jobs of the last session in words.
#ifndef KR_UI_WINDOW_LEFTTEXT_H
#define KR_UI_WINDOW_LEFTTEXT_H

#include <string>

#include "core/QueueRecord.h"
#include "ui/text/TextTable.h"

// In UTF-8 and the language of the texts: how many, of when, and how far they had come.
// Interface thread, which has the texts.
std::string LeftText(const LeftBehind& left, const TextTable& texts);

#endif
