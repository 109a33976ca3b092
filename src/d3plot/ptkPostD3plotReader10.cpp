#include "d3plot/ptkPostD3plotReader10.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace {

constexpr std::int64_t kControlWords = 64;
constexpr std::int64_t kMostItems = std::numeric_limits<int>::max();

// Places of the control words, counted from 0.
enum Word {
  kNdim = 15,
  kNumnp = 16,
  kNel8 = 23,
  kNel2 = 28,
  kNel4 = 31,
  kNmsph = 37,
  kNarbs = 39,
  kNelt = 40,
  kIalemat = 47,
  kNadapt = 50,
  kNpefg = 54,
  kExtra = 57,
};

// Words of an element's connectivity: its nodes and its material.
constexpr std::int64_t kSolidWords = 9;
constexpr std::int64_t kTenNodeWords = 2;  // further nodes of each solid, behind all solids
constexpr std::int64_t kThickShellWords = 9;
constexpr std::int64_t kBeamWords = 6;
constexpr std::int64_t kShellWords = 5;

}  // namespace

struct ptkPostD3plotReader10::Control {
  std::int64_t dimensions = 0;
  bool materialTypes = false;  // a list of them stands before the nodes
  bool reducedBodies = false;  // rigid bodies are written short; the list may be there or not
  bool tenNodeSolids = false;
  std::int64_t nodes = 0;
  std::int64_t solids = 0;
  std::int64_t thickShells = 0;
  std::int64_t beams = 0;
  std::int64_t shells = 0;
  std::int64_t particles = 0;
  std::int64_t fluidMaterials = 0;
  std::int64_t airbagParticles = 0;
  std::int64_t numbering = 0;  // words of the users' own numbers
  std::int64_t adapted = 0;    // pairs of child and parent element
  std::int64_t extra = 0;      // control words behind the first 64

  std::int64_t Elements() const { return solids + thickShells + beams + shells; }
};

struct ptkPostD3plotReader10::Block {
  std::int64_t first;  // word
  std::int64_t count;  // elements
  std::int64_t words;  // of an element
  int nodes;           // of an element, those that must be there
};

bool ptkPostD3plotReader10::ReadGrid(ptkUnstructuredGrid& grid) {
  grid = ptkUnstructuredGrid();
  Control control;
  if (!ReadControl(control) || !CheckCounts(control)) return false;

  std::int64_t start = 0;
  bool exact = true;
  if (!FindNodes(control, start, exact)) return false;
  const std::int64_t end = start + control.dimensions * control.nodes +
                           kSolidWords * control.solids +
                           (control.tenNodeSolids ? kTenNodeWords * control.solids : 0) +
                           kThickShellWords * control.thickShells + kBeamWords * control.beams +
                           kShellWords * control.shells + control.numbering + 2 * control.adapted +
                           2 * control.particles;
  if (end > WordsInFamily()) return Fail(MessageId::kResultTooShort);
  if (end > WordsInBaseFile() && exact && !CheckContinuation(control, start)) return false;

  grid =
      ptkUnstructuredGrid(static_cast<int>(control.nodes),
                          {static_cast<int>(control.solids), static_cast<int>(control.thickShells),
                           static_cast<int>(control.beams), static_cast<int>(control.shells)});
  return true;
}

bool ptkPostD3plotReader10::ReadControl(Control& control) {
  std::vector<unsigned char> words;
  if (WordsInBaseFile() < kControlWords || !ReadWords(0, kControlWords, words)) {
    return Fail(MessageId::kResultHeadCut);
  }
  const auto value = [&](Word word) {
    return Format().Integer(words.data() + static_cast<std::size_t>(word) * Format().wordSize);
  };
  // 4 and more stand for three dimensions and say which sections the geometry has.
  const std::int64_t ndim = value(kNdim);
  if (ndim < 2 || ndim > 9) return Fail(MessageId::kResultDimensions);
  control.dimensions = ndim == 2 ? 2 : 3;
  control.materialTypes = ndim == 5 || ndim == 7;
  control.reducedBodies = ndim >= 8;

  const std::int64_t solids = value(kNel8);
  control.tenNodeSolids = solids < 0;
  control.solids = solids < -kMostItems ? kMostItems + 1 : std::abs(solids);
  control.nodes = value(kNumnp);
  control.thickShells = value(kNelt);
  control.beams = value(kNel2);
  control.shells = value(kNel4);
  control.particles = std::max<std::int64_t>(value(kNmsph), 0);
  control.fluidMaterials = std::max<std::int64_t>(value(kIalemat), 0);
  control.airbagParticles = value(kNpefg);
  control.numbering = std::max<std::int64_t>(value(kNarbs), 0);
  control.adapted = std::max<std::int64_t>(value(kNadapt), 0);
  control.extra = std::max<std::int64_t>(value(kExtra), 0);
  return true;
}

// Keeps the sums that follow within 64 bits and the results within an int.
bool ptkPostD3plotReader10::CheckCounts(const Control& control) {
  for (const std::int64_t count :
       {control.nodes, control.solids, control.thickShells, control.beams, control.shells,
        control.particles, control.fluidMaterials, control.numbering, control.adapted,
        control.extra}) {
    if (count < 0 || count > kMostItems) return Fail(MessageId::kResultNumber);
  }
  return control.Elements() <= kMostItems || Fail(MessageId::kResultNumber);
}

// The word at which the coordinates begin. `exact` is false when a section before them has a length
// that is not known here; `start` is then too low.
bool ptkPostD3plotReader10::FindNodes(const Control& control, std::int64_t& start, bool& exact) {
  start = kControlWords + control.extra;
  exact = !control.reducedBodies;
  if (control.materialTypes) {
    std::int64_t count = 0;
    if (!ReadInteger(start + 1, count)) return Fail(MessageId::kResultHeadCut);
    if (count < 0 || count > kMostItems) return Fail(MessageId::kResultNumber);
    start += 2 + count;
  }
  start += control.fluidMaterials;
  if (control.particles > 0) {
    constexpr std::int64_t kMostFlags = 100;
    std::int64_t flags = 0;
    if (!ReadInteger(start, flags)) return Fail(MessageId::kResultHeadCut);
    exact = exact && flags > 0 && flags < kMostFlags;
    if (exact) start += flags;
  }
  if (control.airbagParticles > 0) exact = false;
  return true;
}

// The base file ends within the geometry. Either the next file continues it, or the base file was
// cut short and states follow: then node numbers would be read from the middle of results.
bool ptkPostD3plotReader10::CheckContinuation(const Control& control, std::int64_t nodes) {
  if (Families()[0].members[0].size % Format().wordSize != 0) {
    return Fail(MessageId::kResultModelCut);
  }
  const std::int64_t solids = nodes + control.dimensions * control.nodes;
  const std::int64_t thickShells =
      solids + (kSolidWords + (control.tenNodeSolids ? kTenNodeWords : 0)) * control.solids;
  const std::int64_t beams = thickShells + kThickShellWords * control.thickShells;
  const std::int64_t shells = beams + kBeamWords * control.beams;
  return CheckBlock({solids, control.solids, kSolidWords, 8}, control.nodes) &&
         CheckBlock({thickShells, control.thickShells, kThickShellWords, 8}, control.nodes) &&
         CheckBlock({beams, control.beams, kBeamWords, 2}, control.nodes) &&
         CheckBlock({shells, control.shells, kShellWords, 4}, control.nodes);
}

// Looks at some elements of the block, the last one among them.
bool ptkPostD3plotReader10::CheckBlock(const Block& block, std::int64_t nodeCount) {
  constexpr std::int64_t kSamples = 16;
  const std::int64_t samples = std::min(block.count, kSamples);
  std::vector<unsigned char> words;
  for (std::int64_t i = 1; i <= samples; ++i) {
    const std::int64_t element = block.count * i / samples - 1;
    if (!ReadWords(block.first + element * block.words, static_cast<std::size_t>(block.words),
                   words)) {
      return Fail(MessageId::kResultModelCut);
    }
    const auto value = [&](std::int64_t word) {
      return Format().Integer(words.data() + static_cast<std::size_t>(word) * Format().wordSize);
    };
    const bool springToGround =
        block.words == kBeamWords && value(1) == 0 && value(kBeamWords - 1) > 0;
    for (int node = 0; node < (springToGround ? 1 : block.nodes); ++node) {
      if (value(node) < 1 || value(node) > nodeCount) return Fail(MessageId::kResultModelCut);
    }
  }
  return true;
}
