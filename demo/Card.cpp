#include "Card.h"

#include "Text.h"

namespace {

std::string_view TakeColumns(std::string_view& line, std::size_t width) {
  const std::string_view field = line.substr(0, width);
  line.remove_prefix(field.size());
  return Trim(field);
}

std::string_view TakeFree(std::string_view& line) {
  const std::size_t comma = line.find(',');
  const std::string_view field = line.substr(0, comma);
  line.remove_prefix(comma == std::string_view::npos ? line.size() : comma + 1);
  return Trim(field);
}

}  // namespace

Card::Card(std::string_view line, int firstWidth, std::size_t firstCount, int restWidth) {
  const bool freeForm = line.find(',') != std::string_view::npos;
  for (std::size_t i = 0; i < kMostFields && !line.empty(); ++i) {
    const auto width = static_cast<std::size_t>(i < firstCount ? firstWidth : restWidth);
    fields_[i] = freeForm ? TakeFree(line) : TakeColumns(line, width);
  }
}

void Parameters::Set(std::string_view name, std::string_view value) {
  if (const auto resolved = Resolve(value)) values_[Upper(name)] = *resolved;
}

std::optional<std::string> Parameters::Resolve(std::string_view field) const {
  const bool negative = field.substr(0, 2) == "-&";
  if (!negative && field.substr(0, 1) != "&") return std::string(field);
  const auto found = values_.find(Upper(Trim(field.substr(negative ? 2 : 1))));
  if (found == values_.end()) return std::nullopt;
  if (!negative) return found->second;
  return found->second.substr(0, 1) == "-" ? found->second.substr(1) : "-" + found->second;
}
