// The bytes of a small result file, in any word size and byte order.
#ifndef KR_TESTS_D3PLOT_D3PLOTIMAGE_H
#define KR_TESTS_D3PLOT_D3PLOTIMAGE_H

#include <algorithm>
#include <bit>
#include <cstdint>
#include <string>

struct D3plotModel {
  std::int64_t ndim = 4;
  std::int64_t nodes = 12;
  std::int64_t solids = 0;  // negative: ten-node ones
  std::int64_t thickShells = 0;
  std::int64_t beams = 0;
  std::int64_t shells = 0;
  std::int64_t numbering = 0;
  std::int64_t extra = 0;
};

class D3plotImage {
 public:
  D3plotImage(std::size_t wordSize, bool bigEndian, const D3plotModel& model = {})
      : wordSize_(wordSize), bigEndian_(bigEndian) {
    bytes_.assign(64 * wordSize, '\0');
    SetVersion(960);
    Set(15, model.ndim);
    Set(16, model.nodes);
    Set(17, 6);
    Set(23, model.solids);
    Set(28, model.beams);
    Set(31, model.shells);
    Set(39, model.numbering);
    Set(40, model.thickShells);
    Set(57, model.extra);
    Geometry(model);
  }

  // Replaces a word of the control block.
  D3plotImage& Set(std::size_t word, std::int64_t value) {
    Put(word, static_cast<std::uint64_t>(value));
    return *this;
  }
  D3plotImage& SetVersion(double version) {
    Put(14, wordSize_ == 8 ? std::bit_cast<std::uint64_t>(version)
                           : std::bit_cast<std::uint32_t>(static_cast<float>(version)));
    return *this;
  }
  D3plotImage& Append(std::int64_t value, std::int64_t times = 1) {
    for (; times > 0; --times) {
      bytes_.append(wordSize_, '\0');
      Put(Words() - 1, static_cast<std::uint64_t>(value));
    }
    return *this;
  }

  std::size_t Words() const { return bytes_.size() / wordSize_; }
  const std::string& Bytes() const { return bytes_; }
  // The first or the other words, to lie in different files.
  std::string Head(std::size_t words) const { return bytes_.substr(0, words * wordSize_); }
  std::string Tail(std::size_t words) const { return bytes_.substr(words * wordSize_); }

 private:
  void Put(std::size_t word, std::uint64_t bits) {
    std::string text;
    for (std::size_t i = 0; i < wordSize_; ++i) text += static_cast<char>(bits >> (8 * i));
    if (bigEndian_) std::reverse(text.begin(), text.end());
    bytes_.replace(word * wordSize_, wordSize_, text);
  }

  void Geometry(const D3plotModel& model) {
    Append(0, model.extra);
    if (model.ndim == 5) Append(0).Append(2).Append(20, 2);
    Append(0, (model.ndim == 2 ? 2 : 3) * model.nodes);
    const std::int64_t solids = model.solids < 0 ? -model.solids : model.solids;
    Append(1, 9 * solids);
    if (model.solids < 0) Append(1, 2 * solids);
    Append(1, 9 * model.thickShells + 6 * model.beams + 5 * model.shells + model.numbering);
  }

  std::size_t wordSize_;
  bool bigEndian_;
  std::string bytes_;
};

#endif
