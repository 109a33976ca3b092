#include "ui/dialogs/DialogLayout.h"

#include <algorithm>
#include <sstream>

#include "util/text/StrWrapper.h"

namespace {

constexpr std::size_t kLongestLine = 1023;
constexpr std::size_t kLongestId = 31;
constexpr std::size_t kLongestType = 63;
constexpr std::size_t kLongestLabel = 255;
constexpr std::size_t kTextFields = 3;
constexpr std::size_t kLabelField = 2;
constexpr std::size_t kTooltipField = 17;
constexpr std::size_t kFieldsOfAWidget = 22;  // the Chinese ones stand behind them

// The fields of a line with their quotes.
std::vector<std::string> RawFields(const std::string& line) {
  std::vector<std::string> fields(1);
  bool quoted = false;
  for (const char c : line) {
    if (c == '"') quoted = !quoted;
    if (c == ',' && !quoted)
      fields.emplace_back();
    else
      fields.back() += c;
  }
  return fields;
}

std::string FieldValue(const std::string& raw) {
  const std::size_t open = raw.find('"');
  if (open == std::string::npos) return raw;
  return raw.substr(open + 1, raw.find('"', open + 1) - open - 1);
}

// The fields that are numbers, by their places in a line; the first field is 0.
constexpr struct {
  std::size_t field;
  int LayoutLine::*number;
} kNumbers[] = {
    {3, &LayoutLine::x},           {4, &LayoutLine::y},
    {5, &LayoutLine::width},       {6, &LayoutLine::height},
    {7, &LayoutLine::box},         {8, &LayoutLine::downBox},
    {9, &LayoutLine::color},       {10, &LayoutLine::selectionColor},
    {11, &LayoutLine::labelType},  {12, &LayoutLine::labelFont},
    {14, &LayoutLine::labelColor}, {15, &LayoutLine::align},
    {16, &LayoutLine::subtype},
};

LayoutLine MakeLine(const std::vector<std::string>& fields) {
  LayoutLine line;
  line.id = fields[0].substr(0, kLongestId);
  line.typeName = "Fl_" + fields[1].substr(0, kLongestType);
  line.label = fields[kLabelField].substr(0, kLongestLabel);
  for (const auto& [field, number] : kNumbers) {
    if (field < fields.size()) line.*number = StrWrapperTxt::LeadingInt(fields[field]);
  }
  if (fields.size() > kTooltipField) line.tooltip = fields[kTooltipField];
  return line;
}

}  // namespace

std::vector<std::string> SplitLayoutLine(const std::string& line) {
  std::vector<std::string> fields = RawFields(line);
  for (std::string& field : fields) field = FieldValue(field);
  return fields;
}

std::vector<LayoutLine> ParseLayout(const std::string& text) {
  std::vector<LayoutLine> lines;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find('\n', at), text.size());
    const std::string line = text.substr(at, std::min(end - at, kLongestLine));
    at = end + 1;
    if (line.empty() || line[0] == '#') continue;
    const std::vector<std::string> fields = SplitLayoutLine(line);
    if (fields.size() < kTextFields || fields[0].empty() || fields[1].empty()) continue;
    lines.push_back(MakeLine(fields));
  }
  return lines;
}

std::string ChineseLayout(const std::string& text) {
  std::string out;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line); out += line + '\n') {
    std::vector<std::string> fields = RawFields(line);
    if (fields.size() <= kFieldsOfAWidget) continue;
    fields.resize(kFieldsOfAWidget + 2, "\"\"");
    fields[kLabelField] = fields[kFieldsOfAWidget];
    fields[kTooltipField] = fields[kFieldsOfAWidget + 1];
    fields.resize(kFieldsOfAWidget);
    line.clear();
    for (const std::string& field : fields) line += (line.empty() ? "" : ",") + field;
  }
  return out;
}
