// The texts of the main window by key.
#ifndef KR_UI_TEXT_TEXTTABLE_H
#define KR_UI_TEXT_TEXTTABLE_H

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "messages/BothLanguages.h"
#include "messages/Message.h"

// An ordered map from key to text. Interface thread.
//
// Texts are kept in the language's encoding (code page 936 for Chinese). Get decodes them for the
// toolkit: what it returns is UTF-8, goes with ToUi(path) into one text, and is no text for Set.
class TextTable {
 public:
  // A key that is there already takes the new text, which is in the language's encoding.
  void Set(const std::string& key, const std::string& text) { texts_[key] = {text, {}}; }

  // As it was set; empty for a key that is missing.
  const std::string& Stored(const std::string& key) const;

  // In UTF-8; empty for a key that is missing.
  const std::string& Get(const std::string& key) const;

  // The text with its "%s" replaced, one after the other; those that are too many stay empty. Words
  // for one and for many are chosen as `FilledText` does.
  template <typename... Values>
  std::string Format(const std::string& key, const Values&... values) const {
    return Fill(Get(key), {std::string(values)...});
  }

  // What the rooms below the interface say, in this language, as UTF-8.
  std::string Say(const Message& message) const;
  std::string Say(const BothLanguages& text) const;

  // From now on texts are in code page 936.
  void UseCodePage936() { codePage936_ = true; }

 private:
  struct Text {
    std::string stored;
    mutable std::optional<std::string> shown;
  };
  static std::string Fill(const std::string& pattern, const std::vector<std::string>& values);

  bool codePage936_ = false;
  std::map<std::string, Text> texts_;
};

// 0 English, 1 Chinese. Any other value leaves the table as it is: a window without texts.
// `title` is the program's title; it is its own key.
void FillTexts(int language, const std::string& title, TextTable& texts);

#endif
