// The same bytes as a message file, a "status.out", a "glstat" and a text output, which grow, are
// looked at in between, and are replaced by their own end.
#include <cmath>
#include <cstdlib>

#include "MemoryFile.h"
#include "progress/RunProgress.h"

namespace {

template <typename Reader>
void Follow(MemoryFile& file, const std::uint8_t* data, std::size_t size, std::size_t cut,
            const Reader& check) {
  using Taker = std::remove_cvref_t<decltype(check())>;
  Taker taker;
  GrowingFile growing(file.Path());
  file.Fill(data, cut);
  growing.Look(taker);
  file.Fill(data, size);
  growing.Look(taker);
  // What was read in two pieces is what is there.
  Taker whole;
  GrowingFile again(file.Path());
  again.Look(whole);
  check.Same(taker, whole);
  file.Fill(data + cut, size - cut);
  growing.Look(taker);
  growing.TakeOpenLine(taker);
  check.Sane(taker);
}

struct Messages {
  MessageProgress operator()() const { return {}; }
  void Same(const MessageProgress& a, const MessageProgress& b) const {
    if (a.Points().size() != b.Points().size() || a.End() != b.End()) std::abort();
  }
  void Sane(const MessageProgress& run) const {
    if (run.Points().size() > MessageProgress::kMostPoints) std::abort();
    for (const ProgressPoint& point : run.Points()) {
      if (!std::isfinite(point.time) || point.cycle < 0) std::abort();
    }
    if (run.Last() == nullptr) return;
    const auto left = run.Left().At(static_cast<double>(run.Last()->clock), 1.0);
    if (left && !(left->seconds >= 0 && left->spread >= 1)) std::abort();
  }
};

struct States {
  GlobalStates operator()() const { return GlobalStates(64); }
  void Same(const GlobalStates& a, const GlobalStates& b) const {
    if (a.Rows() != b.Rows() || a.Columns().size() != b.Columns().size()) std::abort();
    for (std::size_t i = 0; i < a.Columns().size(); ++i) {
      if (a.Columns()[i].name != b.Columns()[i].name) std::abort();
      if (a.Columns()[i].values.size() != b.Columns()[i].values.size()) std::abort();
    }
  }
  void Sane(const GlobalStates& states) const {
    for (const GlobalStates::Column& column : states.Columns()) {
      if (column.values.size() > states.Rows() || column.name.empty()) std::abort();
    }
    for (std::size_t row = 0; row < states.Rows(); ++row) {
      if (states.Cycle(row) < 0 || states.ControlledBy(row).size() > GlobalStates::kLongestName) {
        std::abort();
      }
    }
  }
};

struct Status {
  StatusProgress operator()() const { return {}; }
  void Same(const StatusProgress& a, const StatusProgress& b) const {
    if (a.Estimate().endTime != b.Estimate().endTime) std::abort();
  }
  void Sane(const StatusProgress& status) const {
    if (!std::isfinite(status.Estimate().clockLeft.value_or(0))) std::abort();
  }
};

struct Texts {
  TextOutput operator()() const { return {}; }
  void Same(const TextOutput& a, const TextOutput& b) const {
    if (a.End() != b.End() || a.Started() != b.Started()) std::abort();
  }
  void Sane(const TextOutput&) const {}
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static MemoryFile file;
  const std::size_t cut = size == 0 ? 0 : data[0] * size / 255;
  Follow(file, data, size, cut, Messages());
  Follow(file, data, size, cut, States());
  Follow(file, data, size, cut, Status());
  Follow(file, data, size, cut, Texts());
  return 0;
}
