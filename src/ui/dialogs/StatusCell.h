// What the status of a job or stage looks like in a table.
#ifndef KR_UI_DIALOGS_STATUSCELL_H
#define KR_UI_DIALOGS_STATUSCELL_H

#include <FL/Enumerations.H>

#include <cstddef>
#include <string>
#include <vector>

#include "jobs/JobFile.h"
#include "ui/fltk/CellDrawing.h"
#include "ui/text/TextTable.h"

struct StatusShown {
  JobStatus status = JobStatus::kQueued;
  std::vector<std::string> words = {""};  // UTF-8; the same ever shorter
  double share = -1;                      // of a bar, 0 to 1; below 0: none
  bool marked = false;                    // something is wrong with it
  bool stopped = false;                   // aborted by the user: nothing is wrong with it
};

// What jobs are counted by. A waiting job has not begun: it counts as queued.
enum class StatusClass { kQueued, kRunning, kFinished, kStoppedEarly, kEndUnknown, kAborted };
inline constexpr std::size_t kStatusClasses = 6;
// `stoppedAt`: a RunStop.
StatusClass ClassOf(JobStatus status, int stoppedAt);

Fl_Color StatusColor(JobStatus status);

// Its icon, the longest of its words that has room, in its colour, and below them the bar.
// Interface thread, while a table draws.
void DrawStatus(const CellArea& cell, const StatusShown& shown);

// Why a job or stage failed, and below it what its solver said last, cut to what a tip can show. In
// UTF-8; empty when there is no reason.
std::string FailureWords(const JobFile& job, const TextTable& words);

#endif
