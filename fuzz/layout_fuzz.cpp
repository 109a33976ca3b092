// The layout texts of dialogs.
#include <cstdint>
#include <cstdlib>

#include "ui/dialogs/DialogLayout.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  for (const LayoutLine& line : ParseLayout(text)) {
    if (line.id.empty() || line.id.size() > 31 || line.label.size() > 255) std::abort();
  }
  return 0;
}
