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

LayoutLine MakeLine(const std::vector<std::string>& fields) {
  const auto number = [&](std::size_t field) {
    return field <= fields.size() ? StrWrapperTxt::LeadingInt(fields[field - 1]) : 0;
  };
  LayoutLine line;
  line.id = fields[0].substr(0, kLongestId);
  line.typeName = "Fl_" + fields[1].substr(0, kLongestType);
  line.label = fields[kLabelField].substr(0, kLongestLabel);
  line.x = number(4);
  line.y = number(5);
  line.width = number(6);
  line.height = number(7);
  line.box = number(8);
  line.downBox = number(9);
  line.color = number(10);
  line.selectionColor = number(11);
  line.labelType = number(12);
  line.labelFont = number(13);
  line.labelColor = number(15);
  line.align = number(16);
  line.subtype = number(17);
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

std::string TranslatedLayout(const std::string& text, std::span<const LineTexts> lines) {
  std::string out;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line); out += line + '\n') {
    const std::string id = line.substr(0, line.find(','));
    const auto texts = std::find_if(lines.begin(), lines.end(),
                                    [&](const LineTexts& one) { return one.id == id; });
    if (texts == lines.end()) continue;
    std::vector<std::string> fields = RawFields(line);
    fields.resize(std::max(fields.size(), kTooltipField + 1));
    fields[kLabelField] = std::string("\"") + texts->label + '"';
    fields[kTooltipField] = std::string("\"") + texts->tooltip + '"';
    line.clear();
    for (const std::string& field : fields) line += (line.empty() ? "" : ",") + field;
  }
  return out;
}
