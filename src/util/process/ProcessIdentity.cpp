#include "util/process/ProcessIdentity.h"

#include <array>
#include <cstdio>

#include "util/process/SystemId.h"

std::string MachineId() {
  const std::string id = SystemId();
  if (id.empty()) return {};
  // FNV-1a
  std::uint64_t hash = 14695981039346656037U;
  for (const char c : "kestrun " + id) {
    hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211U;
  }
  std::array<char, 17> digits{};
  std::snprintf(digits.data(), digits.size(), "%016llx", static_cast<unsigned long long>(hash));
  return digits.data();
}

bool Runs(const ProcessIdentity& process) {
  return !process.mark.empty() && IdentityOfProcess(process.id).mark == process.mark;
}
