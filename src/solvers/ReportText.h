// Parts that the reports share.
#ifndef KR_SOLVERS_REPORTTEXT_H
#define KR_SOLVERS_REPORTTEXT_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "solvers/OutputAnalysis.h"

// Lines taken from a file, as far as they fit into memory that a dialog may use.
class GatheredLines {
 public:
  void Add(std::string_view line);
  // A line of ours between them, as it is shown.
  void AddWords(std::string_view words);
  bool Empty() const { return lines_.empty(); }
  bool Full() const { return full_; }
  void AppendTo(std::vector<std::string>& lines, const AnalysisHooks& hooks) const;

 private:
  struct Line {
    std::string text;
    bool words;
  };
  void Keep(std::string_view line, bool words);

  std::vector<Line> lines_;
  std::size_t bytes_ = 0;
  bool full_ = false;
};

std::string Said(const AnalysisHooks& hooks, const Message& message);

// A line of a file.
std::string Decoded(const AnalysisHooks& hooks, const std::string& bytes);

// Adds the lines, and a word on those that were left out.
void AppendLines(const GatheredLines& from, const AnalysisHooks& hooks,
                 std::vector<std::string>& to);

#endif
