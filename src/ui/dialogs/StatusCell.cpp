#include "ui/dialogs/StatusCell.h"

#include <FL/fl_draw.H>

#include <algorithm>
#include <string_view>
#include <vector>

#include "ui/fltk/Theme.h"
#include "util/files/LineBlocks.h"

namespace {

struct Look {
  Fl_Color color;
  const char* icon;
};

constexpr int kBarHeight = 3;

Look LookOf(const StatusShown& shown) {
  if (shown.stopped) return {Theme::kQueued, "state_stopped"};
  if (shown.marked) return {Theme::kWaiting, "state_marked"};
  switch (shown.status) {
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

// As narrow as a tip is: columns of blanks are one, and what is too long is cut between characters.
std::string Narrow(std::string_view line) {
  constexpr std::size_t kMostBytes = 80;
  std::string text;
  for (const char c : line) {
    const bool isBlank = c == ' ' || c == '\t';
    if (!isBlank || (!text.empty() && text.back() != ' ')) text += isBlank ? ' ' : c;
  }
  if (text.size() <= kMostBytes) return text;
  std::size_t end = kMostBytes;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
  return text.substr(0, end) + "...";
}

}  // namespace

StatusClass ClassOf(JobStatus status, int stoppedAt) {
  switch (status) {
    case JobStatus::kRunning:
      return StatusClass::kRunning;
    case JobStatus::kFinished:
      if (stoppedAt == kStopUnknown) return StatusClass::kEndUnknown;
      return stoppedAt == kNotStopped ? StatusClass::kFinished : StatusClass::kStoppedEarly;
    case JobStatus::kAborted:
      return StatusClass::kAborted;
    default:
      return StatusClass::kQueued;
  }
}

Fl_Color StatusColor(JobStatus status) {
  StatusShown shown;
  shown.status = status;
  return LookOf(shown).color;
}

void DrawStatus(const CellArea& cell, const StatusShown& shown) {
  const Look look = LookOf(shown);
  const auto fits = [&](const std::string& words) {
    return CellDrawing::Width(words) <= cell.w - CellDrawing::kIconSize + 4;
  };
  const auto words = std::find_if(shown.words.begin(), shown.words.end() - 1, fits);
  CellArea text = cell;
  if (shown.share >= 0) text.h -= kBarHeight;
  fl_color(look.color);
  CellDrawing::IconAndWords(text, look.icon, *words);
  if (shown.share < 0) return;
  const int width = cell.w - 2 * CellDrawing::kPadding + 2;
  const int y = cell.y + cell.h - kBarHeight - 2;
  fl_rectf(cell.x + CellDrawing::kPadding - 2, y, width, kBarHeight, Theme::kPressed);
  const int done = static_cast<int>(width * std::min(shown.share, 1.0) + 0.5);
  fl_rectf(cell.x + CellDrawing::kPadding - 2, y, done, kBarHeight, look.color);
}

std::string FailureWords(const JobFile& job, const TextTable& words) {
  constexpr std::size_t kMostPrinted = 6;
  std::string text = words.Say(job.RunMessage());
  if (text.empty()) text = words.Say(FailureMessage(job.HowFailed()));
  const Message last = job.LastWords();
  const std::string more = words.Say(last);
  std::vector<std::string_view> lines;
  for (std::size_t at = 0; at < more.size();) lines.push_back(TakeLine(more, at));
  const std::size_t ours = last.Id() == MessageId::kSolverEndedPrinting ? 2 : 1;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (i >= ours && i + kMostPrinted < lines.size()) continue;
    if (!text.empty()) text += '\n';
    text += i < ours ? std::string(lines[i]) : Narrow(lines[i]);
  }
  return text;
}
