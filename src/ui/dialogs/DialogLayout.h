// The text format that describes dialogs: one widget a line, fields between commas.
#ifndef KR_UI_DIALOGS_DIALOGLAYOUT_H
#define KR_UI_DIALOGS_DIALOGLAYOUT_H

#include <string>
#include <vector>

// One line of a layout. Numbers that a line does not have are 0.
struct LayoutLine {
  std::string id;        // at most 31 characters
  std::string typeName;  // at most 63 characters, "Fl_" put in front
  std::string label;     // at most 255 bytes
  int x = 0, y = 0, width = 0, height = 0;
  int box = 0;
  int downBox = 0;
  int color = 0;
  int selectionColor = 0;
  int labelType = 0;
  int labelFont = 0;
  int labelColor = 0;
  int align = 0;
  int subtype = 0;  // 99 keeps the widget's own
  std::string tooltip;
};

// Subtype value that keeps what the widget's constructor chose.
inline constexpr int kKeepSubtype = 99;

// Layout lines are drawn for this label size; the size that a line names is not used.
inline constexpr int kLayoutLabelSize = 12;

// Splits a line at the commas outside double quotes. A quoted field is what stands between its
// first quote and the next; there is no escape.
std::vector<std::string> SplitLayoutLine(const std::string& line);

// The lines that describe widgets, in order. Comments ("#"), empty lines and lines without id, type
// or label are left out; lines are cut at 1,023 bytes.
std::vector<LayoutLine> ParseLayout(const std::string& text);

// The same layout in Chinese, so that geometry and attributes stand once for both languages. Behind
// its 22 fields a line may have two more in quotes: its Chinese label, which a layout in English
// does not look at, and its Chinese tooltip, without which it has none. They take the place of the
// English ones, both together. A line without them stays as it is.
std::string ChineseLayout(const std::string& text);

#endif
