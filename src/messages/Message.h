// What the program says to its user from below the interface: sentences as values.
//
// Whoever has something to say makes it once, as an id and its arguments, and hands it on as it is.
// The log writes its English, the window shows it in its language. The texts stand in
// messages/MessageTable.inc.
#ifndef KR_MESSAGES_MESSAGE_H
#define KR_MESSAGES_MESSAGE_H

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>
#include <vector>

enum class MessageId {
  kNone,
#define KR_MESSAGE(id, english, chinese) id,
#include "messages/MessageTable.inc"
#undef KR_MESSAGE
};

struct MessageText {
  const char* name;  // of the id
  const char* english;
  const char* chinese;  // UTF-8
};

// By id.
inline constexpr MessageText kMessageTexts[] = {
    {"kNone", "", ""},
#define KR_MESSAGE(id, english, chinese) {#id, english, chinese},
#include "messages/MessageTable.inc"
#undef KR_MESSAGE
};

class Message;

// The letters of the arguments that a text takes, one at a time: 'p', 's', 'd', 'm'; 0 at its end.
class MessageArguments {
 public:
  constexpr explicit MessageArguments(std::string_view text) : text_(text) {}
  constexpr char Next() {
    const std::size_t percent = text_.find('%');
    if (percent + 1 >= text_.size() || percent == std::string_view::npos) return 0;
    const char letter = text_[percent + 1];
    text_.remove_prefix(percent + 2);
    return letter;
  }

 private:
  std::string_view text_;
};

// An id whose text takes arguments of these types, which the compiler checks: texts for %p and %s,
// whole numbers for %d, a Message for %m.
template <typename... Arguments>
class MessageIdFor {
 public:
  consteval MessageIdFor(MessageId id) : id_(id) {
    MessageArguments letters(kMessageTexts[static_cast<std::size_t>(id)].english);
    if (!(Fits<Arguments>(letters.Next()) && ...) || letters.Next() != 0) {
      TheArgumentsAreNotThoseOfTheText();
    }
  }
  constexpr MessageId Id() const { return id_; }

 private:
  template <typename Argument>
  static consteval bool Fits(char letter) {
    if (std::is_same_v<Argument, Message>) return letter == 'm';
    if (std::is_same_v<Argument, bool>) return false;
    if (std::integral<Argument>) return letter == 'd';
    return (letter == 'p' || letter == 's') &&
           std::is_convertible_v<const Argument&, std::string_view>;
  }
  static void TheArgumentsAreNotThoseOfTheText();  // not known while compiling

  MessageId id_;
};

// An id without arguments: what a table of plain texts holds.
using PlainMessageId = MessageIdFor<>;

// Texts inside are byte strings in the system's code page, as the rooms below the interface have
// them. Any thread; one that is shared is only read.
class Message {
 public:
  // Nothing to say.
  Message() = default;

  template <typename... Arguments>
  explicit Message(MessageIdFor<std::type_identity_t<Arguments>...> id,
                   const Arguments&... arguments)
      : id_(id.Id()), arguments_{ArgumentOf(arguments)...} {}

  MessageId Id() const { return id_; }
  bool Empty() const { return id_ == MessageId::kNone; }

  // In the system's code page. Empty when there is nothing to say.
  std::string English() const;

  // In UTF-8, which `decode` makes of the texts inside.
  using Decode = std::function<std::string(const std::string& bytes)>;
  std::string Chinese(const Decode& decode) const;

  // The same with every occurrence of a secret in its texts masked. Nothing to do for an empty one.
  Message Without(const std::string& secret) const;

  bool operator==(const Message&) const = default;

  // For who stores messages. The name of the id stays the same where rows of the table come and go.
  using Inner = std::vector<Message>;  // one message, which is not known here yet
  using Argument = std::variant<std::string, std::int64_t, Inner>;
  const char* Name() const { return kMessageTexts[static_cast<std::size_t>(id_)].name; }
  const std::vector<Argument>& Arguments() const { return arguments_; }
  // Nothing when there is no such id, or when its text takes other arguments.
  static std::optional<Message> OfParts(std::string_view name, std::vector<Argument> arguments);

 private:
  static Argument ArgumentOf(std::string_view text) { return std::string(text); }
  static Argument ArgumentOf(const Message& message) { return Inner{message}; }
  template <std::integral Number>
  static Argument ArgumentOf(Number number) {
    return static_cast<std::int64_t>(number);
  }

  std::string Text(const char* MessageText::*language, const Decode& decode) const;

  MessageId id_ = MessageId::kNone;
  std::vector<Argument> arguments_;
};

// The text with every occurrence of the secret masked. Nothing to do for an empty one.
std::string WithoutSecret(std::string text, const std::string& secret);

// Who takes messages, such as the application log. Any thread.
using MessageSink = std::function<void(const Message& message)>;

#endif
