// What the tables are searched and sorted by. Any thread.
#ifndef KR_UI_TEXT_WORDFILTER_H
#define KR_UI_TEXT_WORDFILTER_H

#include <string>
#include <vector>

// Words between blanks; case does not matter.
class WordFilter {
 public:
  WordFilter() = default;
  explicit WordFilter(const std::string& words);

  bool IsEmpty() const { return words_.empty(); }
  // Whether a text, which is folded (see Folded), holds all of them.
  bool Matches(const std::string& folded) const;

 private:
  std::vector<std::string> words_;  // folded
};

// A text by which names sort as people count: "run2" stands before "run10".
std::string NaturalKey(const std::string& folded);

#endif
