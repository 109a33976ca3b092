#include "jobs/HostAddress.h"

// winsock2.h must come before what includes windows.h.
#include <winsock2.h>

#include <iphlpapi.h>

#include <cstring>
#include <vector>

namespace {

std::string Dotted(const sockaddr_in& address) {
  unsigned char bytes[4];
  std::memcpy(bytes, &address.sin_addr, sizeof bytes);
  return std::to_string(bytes[0]) + '.' + std::to_string(bytes[1]) + '.' +
         std::to_string(bytes[2]) + '.' + std::to_string(bytes[3]);
}

std::string FindAddress() {
  const ULONG flags = GAA_FLAG_SKIP_ANYCAST | GAA_FLAG_SKIP_MULTICAST | GAA_FLAG_SKIP_DNS_SERVER |
                      GAA_FLAG_SKIP_FRIENDLY_NAME;
  // The list may grow between asking for its size and reading it.
  ULONG size = 16384;
  for (int attempt = 0; attempt < 4; ++attempt) {
    std::vector<unsigned char> buffer(size);
    auto* list = reinterpret_cast<IP_ADAPTER_ADDRESSES*>(buffer.data());
    const ULONG result = GetAdaptersAddresses(AF_INET, flags, nullptr, list, &size);
    if (result == ERROR_BUFFER_OVERFLOW) continue;
    if (result != NO_ERROR) break;
    for (const IP_ADAPTER_ADDRESSES* entry = list; entry != nullptr; entry = entry->Next) {
      if (entry->IfType == IF_TYPE_SOFTWARE_LOOPBACK || entry->OperStatus != IfOperStatusUp ||
          entry->FirstUnicastAddress == nullptr) {
        continue;
      }
      const sockaddr* address = entry->FirstUnicastAddress->Address.lpSockaddr;
      if (address != nullptr && address->sa_family == AF_INET) {
        return Dotted(*reinterpret_cast<const sockaddr_in*>(address));
      }
    }
    break;
  }
  return "127.0.0.1";
}

}  // namespace

const std::string& HostAddress() {
  static const std::string address = FindAddress();
  return address;
}
