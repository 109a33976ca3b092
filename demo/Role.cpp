#include "Role.h"

#include <cctype>
#include <optional>

#include "SideFiles.h"
#include "System.h"
#include "Text.h"

namespace {

std::string LettersOf(const std::string& name) {
  std::string letters;
  for (const char c : Upper(name)) {
    if (std::isalpha(static_cast<unsigned char>(c))) letters += c;
  }
  return letters;
}

std::optional<Role> RoleOfName(const std::string& programName) {
  const std::string letters = LettersOf(programName);
  if (letters.starts_with("KVIN")) return Role::kInc;
  if (letters.starts_with("VOREL")) return Role::kVorel;
  if (letters.starts_with("UTILITYBATCH")) return Role::kUtilityBatch;
  return std::nullopt;
}

}  // namespace

Role FindRole(const std::string& programName, const std::vector<std::string>& words) {
  if (const auto role = RoleOfName(programName)) return *role;
  if (words.size() == 3 && IsFolder(words[1])) return Role::kInc;
  if (words.empty()) return Role::kKeyword;
  if (IsFile(words[0])) return Role::kUtilityBatch;
  return IsFile(words[0] + ".dat") ? Role::kVorel : Role::kKeyword;
}
