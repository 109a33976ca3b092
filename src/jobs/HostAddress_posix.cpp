#include "jobs/HostAddress.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>

namespace {

std::string FindAddress() {
  std::string found = "127.0.0.1";
  ifaddrs* list = nullptr;
  if (getifaddrs(&list) != 0) return found;
  for (const ifaddrs* entry = list; entry != nullptr; entry = entry->ifa_next) {
    if (entry->ifa_addr == nullptr || entry->ifa_addr->sa_family != AF_INET) continue;
    if ((entry->ifa_flags & IFF_LOOPBACK) != 0 || (entry->ifa_flags & IFF_UP) == 0) continue;
    const auto* address = reinterpret_cast<const sockaddr_in*>(entry->ifa_addr);
    char text[INET_ADDRSTRLEN] = "";
    if (inet_ntop(AF_INET, &address->sin_addr, text, sizeof text) == nullptr) continue;
    found = text;
    break;
  }
  freeifaddrs(list);
  return found;
}

}  // namespace

const std::string& HostAddress() {
  static const std::string address = FindAddress();
  return address;
}
