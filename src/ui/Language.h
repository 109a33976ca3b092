// The texts of the main window by key.
#ifndef KR_UI_LANGUAGE_H
#define KR_UI_LANGUAGE_H

#include <map>
#include <string>

// An ordered map from key to text. Interface thread.
class TextTable {
 public:
  // A key that is there already takes the new text.
  void Set(const std::string& key, const std::string& text) { texts_[key] = text; }

  // Empty for a key that is missing.
  const std::string& Get(const std::string& key) const;

  // The text with its "%s" replaced, one after the other; those that are too many stay empty.
  template <typename... Values>
  std::string Format(const std::string& key, const Values&... values) const {
    return Fill(Get(key), {std::string(values)...});
  }

 private:
  static std::string Fill(const std::string& pattern, std::initializer_list<std::string> values);
  std::map<std::string, std::string> texts_;
};

// 0 English, 1 Chinese. Any other value leaves the table as it is: a window without texts.
// `title` is the program's title; it is its own key.
void FillTexts(int language, const std::string& title, TextTable& texts);

#endif
