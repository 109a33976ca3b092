#include "d3plot/WordFormat.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace {

constexpr std::size_t kVersionWord = 14;
constexpr std::size_t kCodeWord = 17;

WordFormat Make(std::size_t wordSize, bool swapBytes) {
  WordFormat format;
  format.wordSize = wordSize;
  format.doublePrecision = wordSize == 8;
  format.swapBytes = swapBytes;
  format.blockLength = wordSize == 8 ? 256 : 512;
  return format;
}

bool HasKnownCode(const unsigned char* head, const WordFormat& format) {
  const std::int64_t code = format.Integer(head + kCodeWord * format.wordSize);
  return code == 2 || code == 6;
}

bool HasKnownVersion(const unsigned char* head, const WordFormat& format) {
  const double version = format.Real(head + kVersionWord * format.wordSize);
  return version > 910 && version < 1000;
}

}  // namespace

const char* WordFormat::ByteOrder() const {
  const bool machineIsLittle = std::endian::native == std::endian::little;
  return machineIsLittle != swapBytes ? "little" : "big";
}

std::uint64_t WordFormat::Bits(const unsigned char* word) const {
  unsigned char bytes[8];
  std::memcpy(bytes, word, wordSize);
  if (swapBytes) std::reverse(bytes, bytes + wordSize);
  if (wordSize == 8) {
    std::uint64_t bits;
    std::memcpy(&bits, bytes, sizeof bits);
    return bits;
  }
  std::uint32_t bits;
  std::memcpy(&bits, bytes, sizeof bits);
  return bits;
}

std::int64_t WordFormat::Integer(const unsigned char* word) const {
  const std::uint64_t bits = Bits(word);
  if (wordSize == 8) return static_cast<std::int64_t>(bits);
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(bits));
}

double WordFormat::Real(const unsigned char* word) const {
  const std::uint64_t bits = Bits(word);
  if (wordSize == 8) return std::bit_cast<double>(bits);
  return static_cast<double>(std::bit_cast<float>(static_cast<std::uint32_t>(bits)));
}

bool RecogniseFormat(const unsigned char (&head)[kFormatBytes], WordFormat& format) {
  for (const bool swapBytes : {false, true}) {
    format = Make(4, swapBytes);
    if (HasKnownCode(head, format)) {
      format.versionKnown = HasKnownVersion(head, format);
      return true;
    }
  }
  const bool straight = HasKnownCode(head, Make(8, false));
  if (!straight && !HasKnownCode(head, Make(8, true))) return false;
  // With 8-byte words the version decides. A file of a version outside the range keeps the order in
  // which its code was read: the other one would turn all its numbers round.
  for (const bool swapBytes : {false, true}) {
    format = Make(8, swapBytes);
    format.versionKnown = HasKnownVersion(head, format);
    if (format.versionKnown) return true;
  }
  format = Make(8, !straight);
  return true;
}
