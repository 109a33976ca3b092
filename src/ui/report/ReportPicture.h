// The curves of a run as pictures inside a page.
#ifndef KR_UI_REPORT_REPORTPICTURE_H
#define KR_UI_REPORT_REPORTPICTURE_H

#include <string>

#include "progress/RunCurves.h"
#include "ui/text/TextTable.h"

// SVG: energies, time step, and problem time against the clock, as many of them as the run has.
// Curves have as many points as a picture of this size shows, with all peaks. UTF-8; any thread
// that has the texts for itself.
std::string ReportPictures(const RunCurves& curves, const TextTable& texts);

// A text as it stands in such a page, also between double quotes.
std::string PageText(const std::string& text);

#endif
