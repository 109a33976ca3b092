#include "messages/Message.h"

#include <algorithm>
#include <unordered_map>

#include "messages/FilledText.h"

namespace {

constexpr char kMasked[] = "***";

// Each text of a row takes the same arguments in the same order, and no others.
constexpr bool IsWhole(const MessageText& row) {
  MessageArguments english(row.english);
  MessageArguments chinese(row.chinese);
  for (;;) {
    const char letter = english.Next();
    if (letter != chinese.Next()) return false;
    if (letter == 0) return true;
    if (std::string_view("psdm").find(letter) == std::string_view::npos) return false;
  }
}
static_assert(std::ranges::all_of(kMessageTexts, IsWhole));

}  // namespace

std::optional<Message> Message::OfParts(std::string_view name, std::vector<Argument> arguments) {
  static const auto& ids = *new const std::unordered_map<std::string_view, std::size_t>([] {
    std::unordered_map<std::string_view, std::size_t> all;
    for (std::size_t i = 0; i < std::size(kMessageTexts); ++i)
      all.emplace(kMessageTexts[i].name, i);
    return all;
  }());
  const auto found = ids.find(name);
  if (found == ids.end()) return std::nullopt;
  MessageArguments letters(kMessageTexts[found->second].english);
  for (const Argument& argument : arguments) {
    const char letter = letters.Next();
    const bool fits = std::holds_alternative<std::string>(argument) ? letter == 'p' || letter == 's'
                      : std::holds_alternative<std::int64_t>(argument) ? letter == 'd'
                                                                       : letter == 'm';
    if (!fits) return std::nullopt;
  }
  if (letters.Next() != 0) return std::nullopt;
  Message message;
  message.id_ = static_cast<MessageId>(found->second);
  message.arguments_ = std::move(arguments);
  return message;
}

std::string Message::English() const {
  return Text(&MessageText::english, [](const std::string& bytes) { return bytes; });
}

std::string Message::Chinese(const Decode& decode) const {
  return Text(&MessageText::chinese, decode);
}

std::string Message::Text(const char* MessageText::*language, const Decode& decode) const {
  auto argument = arguments_.begin();
  return FilledText(kMessageTexts[static_cast<std::size_t>(id_)].*language, [&](char letter) {
    const Argument& value = *argument++;
    if (letter == 'd') return std::to_string(std::get<std::int64_t>(value));
    if (letter == 'm') return std::get<Inner>(value).front().Text(language, decode);
    const std::string& text = std::get<std::string>(value);
    return letter == 'p' && text.empty() ? std::string("Null") : decode(text);
  });
}

std::string WithoutSecret(std::string text, const std::string& secret) {
  const std::size_t length = std::size(kMasked) - 1;
  if (secret.empty()) return text;
  for (std::size_t at = 0; (at = text.find(secret, at)) != std::string::npos; at += length) {
    text.replace(at, secret.size(), kMasked);
  }
  return text;
}

Message Message::Without(const std::string& secret) const {
  Message masked = *this;
  for (Argument& argument : masked.arguments_) {
    if (auto* text = std::get_if<std::string>(&argument)) *text = WithoutSecret(*text, secret);
    if (auto* inner = std::get_if<Inner>(&argument))
      inner->front() = inner->front().Without(secret);
  }
  return masked;
}
