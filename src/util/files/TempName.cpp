#include "util/files/TempName.h"

#include <cstdlib>

namespace {

constexpr char kBegin[] = ".kr";
constexpr char kEnd[] = ".tmp";

}  // namespace

std::string TempName(unsigned long processId, unsigned number) {
  return kBegin + std::to_string(processId) + '-' + std::to_string(number) + kEnd;
}

std::optional<unsigned long> OwnerOfTempName(const std::string& name) {
  if (!name.starts_with(kBegin)) return std::nullopt;
  const unsigned long owner = std::strtoul(name.c_str() + sizeof kBegin - 1, nullptr, 10);
  const std::size_t dash = name.find('-');
  if (dash == std::string::npos) return std::nullopt;
  const auto number = static_cast<unsigned>(std::strtoul(name.c_str() + dash + 1, nullptr, 10));
  if (name != TempName(owner, number)) return std::nullopt;
  return owner;
}
