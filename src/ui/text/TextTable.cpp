#include "ui/text/TextTable.h"

#include "messages/FilledText.h"
#include "ui/text/Encoding.h"
#include "ui/text/InterfaceTexts.h"

namespace {

const std::string kNone;

void SetChinese(const char* key, const char* chinese, bool asItStands, TextTable& texts) {
  const std::string text = ToCodePage936(chinese);
  texts.Set(key, asItStands ? text : ConvertedText936(text));
}

}  // namespace

const std::string& TextTable::Stored(const std::string& key) const {
  const auto found = texts_.find(key);
  return found == texts_.end() ? kNone : found->second.stored;
}

const std::string& TextTable::Get(const std::string& key) const {
  const auto found = texts_.find(key);
  if (found == texts_.end()) return kNone;
  const Text& text = found->second;
  if (!text.shown) text.shown = codePage936_ ? FromCodePage936(text.stored) : text.stored;
  return *text.shown;
}

std::string TextTable::Say(const Message& message) const {
  return codePage936_ ? message.Chinese(ToUi) : ToUi(message.English());
}

std::string TextTable::Say(const BothLanguages& text) const {
  return codePage936_ ? text.chinese : text.english;
}

std::string TextTable::Fill(const std::string& pattern, const std::vector<std::string>& values) {
  auto value = values.begin();
  return FilledText(pattern,
                    [&](char) { return value != values.end() ? *value++ : std::string(); });
}

void FillTexts(int language, const std::string& title, TextTable& texts) {
  if (language != 0 && language != 1) return;
  const bool chinese = language == 1;
  if (chinese) texts.UseCodePage936();
  texts.Set(title, title);
  for (const auto rows : {MainTexts(), MoreTexts(), MonitorTexts()}) {
    for (const TextRow& row : rows) {
      if (chinese)
        SetChinese(row.key, row.chinese, row.asItStands, texts);
      else
        texts.Set(row.key, row.english);
    }
  }
}
