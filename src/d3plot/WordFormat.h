// How the words of a result file are stored.
#ifndef KR_D3PLOT_WORDFORMAT_H
#define KR_D3PLOT_WORDFORMAT_H

#include <cstddef>
#include <cstdint>

struct WordFormat {
  std::size_t wordSize = 4;  // bytes: 4 or 8
  bool doublePrecision = false;
  bool swapBytes = false;     // the file's byte order is not the machine's
  bool versionKnown = false;  // the version word was in its expected range
  int blockLength = 512;      // words

  // "little" or "big".
  const char* ByteOrder() const;

  std::int64_t Integer(const unsigned char* word) const;
  double Real(const unsigned char* word) const;

 private:
  std::uint64_t Bits(const unsigned char* word) const;
};

// What tells the format: the words up to the code descriptor, at their widest.
constexpr std::size_t kFormatBytes = 144;

// False when the code descriptor is that of no known solver in any of the four readings.
bool RecogniseFormat(const unsigned char (&head)[kFormatBytes], WordFormat& format);

#endif
