#include <unistd.h>

#include <array>
#include <fstream>

#include "util/process/ProcessIdentity.h"
#include "util/process/ProcessTable_posix.h"
#include "util/process/SystemId.h"

namespace {

std::string BootName() {
  std::string name;
  std::ifstream("/proc/sys/kernel/random/boot_id") >> name;
  return name;
}

}  // namespace

ProcessIdentity IdentityOfProcess(std::int32_t id) {
  static const std::string boot = BootName();
  const std::optional<ProcessEntry> entry = id > 0 ? ReadProcess(id) : std::nullopt;
  if (!entry || !entry->IsAlive()) return {id, {}};
  return {id, boot + ":" + std::to_string(entry->key.start)};
}

std::string SystemId() {
  std::string id;
  for (const char* path : {"/etc/machine-id", "/var/lib/dbus/machine-id"}) {
    if (std::ifstream(path) >> id && id != "uninitialized") return id;
  }
  return {};
}

std::string MachineName() {
  std::array<char, 256> name{};
  return gethostname(name.data(), name.size() - 1) == 0 ? name.data() : std::string();
}
