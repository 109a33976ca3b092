// Sizes and positions of the main window, in pixels. Plain numbers without toolkit headers, so that
// tools/screenshots.sh computes from them where to click.
#ifndef KR_UI_WINDOW_LAYOUT_H
#define KR_UI_WINDOW_LAYOUT_H

#include "ui/fltk/Sizes.h"
#include "ui/window/Actions.h"

namespace Layout {

using namespace Sizes;

inline constexpr int kWindowX = 100;
inline constexpr int kWindowY = 100;
inline constexpr int kWindowWidth = 1000;
inline constexpr int kWindowHeight = 448;
inline constexpr int kMinWidth = 720;
inline constexpr int kMinHeight = 352;

// The tool row: groups of square buttons from the left, the last group at the right edge.
inline constexpr int kToolRowHeight = 42;
inline constexpr int kToolSize = 32;
inline constexpr int kToolGroupGap = 13;  // holds the separator
inline constexpr Action kToolGroupStart[] = {Action::kAddDyna,     Action::kSubmit,
                                             Action::kDeleteJob,   Action::kAddGroup,
                                             Action::kViewSummary, Action::kConfig};
inline constexpr int kToolGroups = 6;
inline constexpr int kToolCount = static_cast<int>(Action::kAbout) + 1;

constexpr int ToolGroup(Action tool) {
  int group = 0;
  while (group + 1 < kToolGroups && kToolGroupStart[group + 1] <= tool) ++group;
  return group;
}
constexpr int ToolX(Action tool, int windowWidth) {
  const int place = static_cast<int>(tool);
  if (ToolGroup(tool) == kToolGroups - 1)
    return windowWidth - kMargin - (kToolCount - place) * kToolSize;
  return kMargin + place * kToolSize + ToolGroup(tool) * kToolGroupGap;
}
inline constexpr int kToolY = 5;

// The settings: a row for the solver, one for the command, one (two when the window is narrow) for
// the control parameters. The submit button stands at the right of the first two.
inline constexpr int kFieldHeight = 24;
inline constexpr int kFieldRow = kFieldHeight + kGap;
inline constexpr int kSettingsY = kToolRowHeight + kMargin;
inline constexpr int kLabelWidth = 64;
inline constexpr int kFieldX = kMargin + kLabelWidth + kGap;
inline constexpr int kSolverKindWidth = 132;
inline constexpr int kBrowseWidth = 28;
inline constexpr int kSubmitWidth = 124;
inline constexpr int kSubmitHeight = 2 * kFieldHeight + kGap;
inline constexpr int kInlineCaptionWidth = 940;  // from this window width on the caption is inline
inline constexpr int kCaptionWidth = 200;
inline constexpr int kCaptionRow = 20;
inline constexpr int kMemoryLabel = 56;
inline constexpr int kMemoryField = 60;
inline constexpr int kAutoWidth = 56;
inline constexpr int kCpuLabel = 132;
inline constexpr int kCpuField = 54;
inline constexpr int kPauseLabel = 130;
inline constexpr int kPauseField = 54;
inline constexpr int kSecondLabel = 26;
inline constexpr int kParameterGap = 12;

constexpr bool InlineCaption(int windowWidth) {
  return windowWidth >= kInlineCaptionWidth;
}
constexpr int SolverRowY() {
  return kSettingsY;
}
constexpr int CommandRowY() {
  return kSettingsY + kFieldRow;
}
constexpr int ParameterRowY(int windowWidth) {
  return kSettingsY + 2 * kFieldRow + (InlineCaption(windowWidth) ? 0 : kCaptionRow);
}
constexpr int MemoryX(int windowWidth) {
  return kMargin + (InlineCaption(windowWidth) ? kCaptionWidth : 0) + kMemoryLabel;
}
constexpr int AutoX(int windowWidth) {
  return MemoryX(windowWidth) + kMemoryField + kGap;
}
constexpr int CpuX(int windowWidth) {
  return AutoX(windowWidth) + kAutoWidth + kParameterGap + kCpuLabel;
}
constexpr int PauseX(int windowWidth) {
  return CpuX(windowWidth) + kCpuField + kParameterGap + kPauseLabel;
}
constexpr int SubmitX(int windowWidth) {
  return windowWidth - kMargin - kSubmitWidth;
}

// Group tabs, the job table and the status line.
inline constexpr int kTabHeight = 28;
inline constexpr int kTabMinWidth = 76;
inline constexpr int kTabMaxWidth = 200;
inline constexpr int kTabPadding = 12;
constexpr int TabsY(int windowWidth) {
  return ParameterRowY(windowWidth) + kFieldHeight + kMargin;
}
constexpr int GroupLineWidth(int windowWidth) {  // beside the tabs
  return windowWidth >= 900 ? 360 : 250;
}
inline constexpr int kFilterHeight = 32;  // of the line between the tabs and the table
constexpr int TableY(int windowWidth) {
  return TabsY(windowWidth) + kTabHeight + kFilterHeight;
}
inline constexpr int kBarHeight = 30;  // of one above the tabs that offers something
inline constexpr int kStatusHeight = 26;

}  // namespace Layout

#endif
