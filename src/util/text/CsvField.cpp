#include "util/text/CsvField.h"

#include <algorithm>
#include <string_view>

#include "util/text/PlainText.h"

std::string CsvField(std::string text) {
  constexpr std::string_view kFormula = "=+-@";
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c >= 0 && c < ' '; }, ' ');
  const std::size_t begin = text.find_first_not_of(' ');
  const bool isFormula = begin != std::string::npos &&
                         kFormula.find(text[begin]) != std::string_view::npos && !AnyNumber(text);
  if (isFormula) text.insert(text.begin(), '\'');
  if (text.find_first_of(",\";") == std::string::npos) return text;
  std::string quoted = "\"";
  for (const char c : text) quoted += c == '"' ? "\"\"" : std::string(1, c);
  return quoted + '"';
}

std::string CsvLine(std::initializer_list<std::string> fields) {
  std::string line;
  for (const std::string& field : fields) {
    line += (&field == fields.begin() ? "" : ",") + CsvField(field);
  }
  return line + '\n';
}
