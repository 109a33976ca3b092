// The words that the toolkit itself puts into windows: its file chooser and its questions.
#ifndef KR_UI_FLTK_TOOLKITTEXTS_H
#define KR_UI_FLTK_TOOLKITTEXTS_H

#include "ui/text/TextTable.h"

// Gives the toolkit the texts of the table, which stays as it is as long as windows are open.
// A table without texts leaves the toolkit its own.
void SetToolkitTexts(const TextTable& texts);

#endif
