// What the status of a job or stage looks like in a table.
#ifndef KR_UI_DIALOGS_STATUSCELL_H
#define KR_UI_DIALOGS_STATUSCELL_H

#include <string>

#include "jobs/JobStatus.h"
#include "ui/fltk/CellDrawing.h"

// Its icon, and its word in its colour. Interface thread, while a table draws.
void DrawStatus(const CellArea& cell, JobStatus status, const std::string& word);

#endif
