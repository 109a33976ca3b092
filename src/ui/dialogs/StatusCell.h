// What the status of a job or stage looks like in a table.
#ifndef KR_UI_DIALOGS_STATUSCELL_H
#define KR_UI_DIALOGS_STATUSCELL_H

#include <string>

#include "jobs/JobFile.h"
#include "ui/fltk/CellDrawing.h"
#include "ui/text/TextTable.h"

// Its icon, and its word in its colour. Interface thread, while a table draws.
void DrawStatus(const CellArea& cell, JobStatus status, const std::string& word);

// Why a job or stage failed, and below it what its solver said last, cut to what a tip can show. In
// UTF-8; empty when there is no reason.
std::string FailureWords(const JobFile& job, const TextTable& words);

#endif
