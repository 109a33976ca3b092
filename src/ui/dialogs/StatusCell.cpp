#include "ui/dialogs/StatusCell.h"

#include <FL/fl_draw.H>

#include "ui/fltk/Theme.h"

namespace {

struct Look {
  Fl_Color color;
  const char* icon;
};

Look LookOf(JobStatus status) {
  switch (status) {
    case JobStatus::kWaiting:
      return {Theme::kWaiting, "state_waiting"};
    case JobStatus::kRunning:
      return {Theme::kRunning, "state_running"};
    case JobStatus::kFinished:
      return {Theme::kFinished, "state_finished"};
    case JobStatus::kAborted:
      return {Theme::kAborted, "state_aborted"};
    default:
      return {Theme::kQueued, "state_queued"};
  }
}

}  // namespace

void DrawStatus(const CellArea& cell, JobStatus status, const std::string& word) {
  const Look look = LookOf(status);
  fl_color(look.color);
  CellDrawing::IconAndWords(cell, look.icon, word);
}
