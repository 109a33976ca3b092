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
  bool Empty() const { return lines_.empty(); }
  bool Full() const { return full_; }
  const std::vector<std::string>& Lines() const { return lines_; }

 private:
  std::vector<std::string> lines_;
  std::size_t bytes_ = 0;
  bool full_ = false;
};

std::string Translated(const AnalysisHooks& hooks, const char* english);

// Adds the lines, and a word on those that were left out.
void AppendLines(const GatheredLines& from, const AnalysisHooks& hooks,
                 std::vector<std::string>& to);

bool Holds(std::string_view text, std::string_view part);

// Without blanks and tabs at both ends.
std::string_view Trimmed(std::string_view text);

#endif
