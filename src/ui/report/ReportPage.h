// The report as one page for a browser or a printer.
#ifndef KR_UI_REPORT_REPORTPAGE_H
#define KR_UI_REPORT_REPORTPAGE_H

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "ui/report/QueueReport.h"
#include "ui/text/TextTable.h"

// The curves of a job or a stage that has run; null for none. Called once for each, in order.
using CurvesOf = std::function<std::shared_ptr<const RunCurves>(const ReportedJob& job)>;

// HTML in UTF-8, with its pictures inside and nothing from elsewhere; of each group its bar, a
// table, and a part for each job that has run. Any thread that has the texts for itself.
std::string ReportPage(const std::vector<ReportedGroup>& groups, const TextTable& texts,
                       const CurvesOf& curvesOf);

#endif
