#include "ui/dialogs/StatusCell.h"

#include <FL/fl_draw.H>

#include <string_view>
#include <vector>

#include "ui/fltk/Theme.h"
#include "util/files/LineBlocks.h"

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

void DrawStatus(const CellArea& cell, JobStatus status, const std::string& word) {
  const Look look = LookOf(status);
  fl_color(look.color);
  CellDrawing::IconAndWords(cell, look.icon, word);
}

std::string FailureWords(const JobFile& job, const TextTable& words) {
  constexpr std::size_t kMostPrinted = 6;
  std::string text = words.Say(job.RunMessage());
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
