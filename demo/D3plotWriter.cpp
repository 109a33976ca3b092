#include "D3plotWriter.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <limits>

#include "Text.h"

namespace {

constexpr double kEndMark = -999999.0;
constexpr std::size_t kBlockBytes = 2048;
constexpr std::size_t kControlWords = 64;
constexpr std::size_t kTitleWords = 10;
constexpr std::size_t kMemberWords = 7 * 512 * 512;
constexpr int kMostMembers = 499;

// Control words, counted from 0. Those that are not named here stay 0.
enum ControlWord : std::size_t {
  kRunTime = 10,
  kFileType = 11,
  kRelease = 13,
  kVersion = 14,
  kDimensions = 15,
  kNodes = 16,
  kCode = 17,
  kGlobals = 18,
  kDisplacements = 20,
  kSolids = 23,
  kSolidMaterials = 24,
  kSolidValues = 27,
  kBeams = 28,
  kBeamMaterials = 29,
  kBeamValues = 30,
  kShells = 31,
  kShellMaterials = 32,
  kIntegrationPoints = 36,
  kNumberingWords = 39,
  kThickShells = 40,
  kThickShellMaterials = 41,
  kShellFlags = 43,  // four words: stresses, plastic strain, forces, extra
  kMaterials = 51,
};

constexpr int kNewCode = 6;
constexpr int kUnpacked3d = 4;
constexpr int kFlagLeftOut = 999;
// Zeros in every state: six stresses and the plastic strain, six forces and moments.
constexpr std::size_t kValuesOfSolid = 7;
constexpr std::size_t kValuesOfBeam = 6;
constexpr double kLayoutVersion = 960.0;
// Minus ten thousand: a word for every element says whether it is there. Minus the points: three.
constexpr int kPointsAndDeletion = -10003;
constexpr std::size_t kNumberingHead = 16;

std::size_t Materials(const std::vector<Element>& elements) {
  std::vector<std::int64_t> parts;
  for (const Element& element : elements) {
    if (parts.empty() || parts.back() != element.part) parts.push_back(element.part);
  }
  std::sort(parts.begin(), parts.end());
  return static_cast<std::size_t>(std::unique(parts.begin(), parts.end()) - parts.begin());
}

std::int64_t Signed(std::size_t value) {
  return static_cast<std::int64_t>(value);
}

}  // namespace

void D3plotWriter::Int(std::int64_t value) {
  char bytes[8];
  if (wordBytes_ == 8) {
    std::memcpy(bytes, &value, 8);
  } else {
    using Limits = std::numeric_limits<std::int32_t>;
    const auto narrow =
        static_cast<std::int32_t>(std::clamp<std::int64_t>(value, Limits::min(), Limits::max()));
    std::memcpy(bytes, &narrow, 4);
  }
  buffer_.insert(buffer_.end(), bytes, bytes + wordBytes_);
}

void D3plotWriter::Real(double value) {
  char bytes[8];
  if (wordBytes_ == 8) {
    std::memcpy(bytes, &value, 8);
  } else {
    constexpr double kLargest = std::numeric_limits<float>::max();
    const auto narrow = static_cast<float>(std::clamp(value, -kLargest, kLargest));
    std::memcpy(bytes, &narrow, 4);
  }
  buffer_.insert(buffer_.end(), bytes, bytes + wordBytes_);
}

void D3plotWriter::Text(const std::string& text, std::size_t words) {
  std::string padded = text.substr(0, words * wordBytes_);
  padded.resize(words * wordBytes_, ' ');
  buffer_.insert(buffer_.end(), padded.begin(), padded.end());
}

void D3plotWriter::Zeros(std::size_t count) {
  buffer_.resize(buffer_.size() + count * wordBytes_, '\0');
}

void D3plotWriter::EndFile(std::size_t bytesBefore) {
  Real(kEndMark);
  const std::size_t rest = (bytesBefore + buffer_.size()) % kBlockBytes;
  if (rest > 0) Zeros((kBlockBytes - rest) / wordBytes_);
}

bool D3plotWriter::Save(const std::string& path, std::size_t offset) {
  std::FILE* file = std::fopen(path.c_str(), offset > 0 ? "r+b" : "wb");
  if (file == nullptr) return false;
  const bool written = std::fseek(file, static_cast<long>(offset), SEEK_SET) == 0 &&
                       std::fwrite(buffer_.data(), 1, buffer_.size(), file) == buffer_.size();
  buffer_.clear();
  return std::fclose(file) == 0 && written;
}

std::string D3plotWriter::MemberName(int number) const {
  return path_ + Format("%02d", number);
}

bool D3plotWriter::Begin(const std::string& path, const Deck& deck, bool doublePrecision) {
  path_ = path;
  deck_ = &deck;
  wordBytes_ = doublePrecision ? 8 : 4;
  for (int i = 1; i <= kMostMembers && std::remove(MemberName(i).c_str()) == 0; ++i) continue;
  Control();
  Geometry();
  Numbering();
  EndFile(0);
  return Save(path_, 0);
}

void D3plotWriter::Control() {
  std::int64_t words[kControlWords] = {};
  const auto& solids = deck_->Of(ElementKind::kSolid);
  const auto& thickShells = deck_->Of(ElementKind::kThickShell);
  const auto& beams = deck_->Of(ElementKind::kBeam);
  const auto& shells = deck_->Of(ElementKind::kShell);
  words[kRunTime] = static_cast<std::int64_t>(std::time(nullptr));
  words[kFileType] = 1;
  words[kDimensions] = kUnpacked3d;
  words[kNodes] = Signed(deck_->nodes.size());
  words[kCode] = kNewCode;
  words[kGlobals] = Signed(6 + 7 * deck_->parts.size());
  words[kDisplacements] = 1;
  words[kSolids] = Signed(solids.size());
  words[kSolidMaterials] = Signed(Materials(solids));
  words[kSolidValues] = Signed(kValuesOfSolid);
  words[kBeams] = Signed(beams.size());
  words[kBeamMaterials] = Signed(Materials(beams));
  words[kBeamValues] = Signed(kValuesOfBeam);
  words[kShells] = Signed(shells.size());
  words[kShellMaterials] = Signed(Materials(shells));
  words[kIntegrationPoints] = kPointsAndDeletion;
  words[kNumberingWords] = Signed(kNumberingHead + deck_->nodes.size() + deck_->ElementCount() +
                                  3 * deck_->parts.size());
  words[kThickShells] = Signed(thickShells.size());
  words[kThickShellMaterials] = Signed(Materials(thickShells));
  for (std::size_t i = 0; i < 4; ++i) words[kShellFlags + i] = kFlagLeftOut;
  words[kMaterials] = Signed(deck_->parts.size());

  Text(deck_->title.empty() ? "stand-in solver" : deck_->title, kTitleWords);
  for (std::size_t i = kTitleWords; i < kControlWords; ++i) {
    if (i == kRelease) {
      Text("R16", 1);
    } else if (i == kVersion) {
      Real(kLayoutVersion);
    } else {
      Int(words[i]);
    }
  }
}

std::int64_t D3plotWriter::NodeIndex(std::int64_t id) const {
  const auto found =
      std::lower_bound(deck_->nodes.begin(), deck_->nodes.end(), id,
                       [](const Node& node, std::int64_t key) { return node.id < key; });
  return found != deck_->nodes.end() && found->id == id ? found - deck_->nodes.begin() + 1 : 0;
}

std::int64_t D3plotWriter::PartIndex(std::int64_t id) const {
  return std::lower_bound(deck_->parts.begin(), deck_->parts.end(), id) - deck_->parts.begin() + 1;
}

// Elements with fewer corners repeat the last one; a beam's words 4 and 5 are not used.
void D3plotWriter::Geometry() {
  struct Layout {
    ElementKind kind;
    std::size_t nodes;
    std::size_t unused;
    bool repeatsLast;
  };
  constexpr Layout kOrder[] = {{ElementKind::kSolid, 8, 0, true},
                               {ElementKind::kThickShell, 8, 0, true},
                               {ElementKind::kBeam, 3, 2, false},
                               {ElementKind::kShell, 4, 0, true}};
  const std::size_t begin = buffer_.size();
  for (const Node& node : deck_->nodes) {
    for (const double x : node.x) Real(x);
  }
  coordinates_.assign(buffer_.begin() + static_cast<std::ptrdiff_t>(begin), buffer_.end());
  for (const Layout& layout : kOrder) {
    for (const Element& element : deck_->Of(layout.kind)) {
      std::int64_t last = 0;
      for (std::size_t i = 0; i < layout.nodes; ++i) {
        std::int64_t index = NodeIndex(element.nodes[i]);
        if (index == 0 && layout.repeatsLast) index = last;
        Int(index);
        last = index;
      }
      Zeros(layout.unused);
      Int(PartIndex(element.part));
    }
  }
}

// The numbers that the deck gave to nodes, elements and parts. The pointers count from the first
// number; the first of them is negative because the table of parts is there.
void D3plotWriter::Numbering() {
  const std::size_t nodes = deck_->nodes.size();
  const std::size_t solids = deck_->Of(ElementKind::kSolid).size();
  const std::size_t beams = deck_->Of(ElementKind::kBeam).size();
  const std::size_t shells = deck_->Of(ElementKind::kShell).size();
  const std::size_t thickShells = deck_->Of(ElementKind::kThickShell).size();
  const std::size_t parts = deck_->parts.size();
  const std::int64_t first = Signed(kNumberingHead) + 1;
  const std::int64_t toSolids = first + Signed(nodes);
  const std::int64_t toBeams = toSolids + Signed(solids);
  const std::int64_t toShells = toBeams + Signed(beams);
  const std::int64_t toThickShells = toShells + Signed(shells);
  const std::int64_t toParts = toThickShells + Signed(thickShells);
  for (const std::int64_t word :
       {-first, toSolids, toBeams, toShells, toThickShells, Signed(nodes), Signed(solids),
        Signed(beams), Signed(shells), Signed(thickShells), toParts, toParts + Signed(parts),
        toParts + 2 * Signed(parts), Signed(parts), std::int64_t{0}, Signed(parts)}) {
    Int(word);
  }
  for (const Node& node : deck_->nodes) Int(node.id);
  for (const ElementKind kind :
       {ElementKind::kSolid, ElementKind::kBeam, ElementKind::kShell, ElementKind::kThickShell}) {
    for (const Element& element : deck_->Of(kind)) Int(element.id);
  }
  for (std::size_t i = 0; i < parts; ++i) Int(Signed(i + 1));
  for (const std::int64_t id : deck_->parts) Int(id);
  for (std::size_t i = 0; i < parts; ++i) Int(Signed(i + 1));
}

std::size_t D3plotWriter::StateWords() const {
  return 1 + 6 + 7 * deck_->parts.size() + 3 * deck_->nodes.size() + ElementValues() +
         deck_->ElementCount();
}

std::size_t D3plotWriter::ElementValues() const {
  return kValuesOfSolid * deck_->Of(ElementKind::kSolid).size() +
         kValuesOfBeam * deck_->Of(ElementKind::kBeam).size();
}

bool D3plotWriter::WriteState(double time) {
  const std::size_t stateBytes = StateWords() * wordBytes_;
  if (memberBytes_ > 0 && memberBytes_ + stateBytes > kMemberWords * wordBytes_) {
    if (member_ >= kMostMembers) return true;
    ++member_;
    memberBytes_ = 0;
  }
  Real(time);
  Zeros(6 + 7 * deck_->parts.size());
  buffer_.insert(buffer_.end(), coordinates_.begin(), coordinates_.end());
  Zeros(ElementValues());
  for (std::size_t i = 0; i < deck_->ElementCount(); ++i) Real(1.0);
  const std::size_t offset = memberBytes_;
  EndFile(offset);
  memberBytes_ += stateBytes;
  return Save(MemberName(member_), offset);
}
