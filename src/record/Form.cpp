#include "record/Form.h"

#include <algorithm>

namespace form {

namespace {

constexpr int kDeepest = 8;  // messages in messages

// As RFC 3629 has it.
bool IsUtf8(std::string_view text) {
  const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(text[at]); };
  for (std::size_t at = 0; at < text.size();) {
    if (byte(at) < 0x80) {
      ++at;
      continue;
    }
    const std::size_t length = byte(at) >= 0xF0 ? 4 : byte(at) >= 0xE0 ? 3 : 2;
    if (byte(at) < 0xC2 || byte(at) > 0xF4 || text.size() - at < length) return false;
    for (std::size_t i = 1; i < length; ++i) {
      if ((byte(at + i) & 0xC0) != 0x80) return false;
    }
    const unsigned char second = byte(at + 1);
    if ((byte(at) == 0xE0 && second < 0xA0) || (byte(at) == 0xED && second >= 0xA0) ||
        (byte(at) == 0xF0 && second < 0x90) || (byte(at) == 0xF4 && second >= 0x90)) {
      return false;
    }
    at += length;
  }
  return true;
}

std::string FromLatin1(std::string_view bytes) {
  std::string text;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x80) {
      text += c;
    } else {
      text += static_cast<char>(0xC0 | (byte >> 6));
      text += static_cast<char>(0x80 | (byte & 0x3F));
    }
  }
  return text;
}

// False for a text that holds other characters.
bool ToLatin1(const std::string& text, std::string& bytes) {
  bytes.clear();
  for (std::size_t at = 0; at < text.size(); ++at) {
    const auto byte = static_cast<unsigned char>(text[at]);
    if (byte < 0x80) {
      bytes += text[at];
    } else if ((byte == 0xC2 || byte == 0xC3) && at + 1 < text.size()) {
      bytes +=
          static_cast<char>(((byte & 3) << 6) | (static_cast<unsigned char>(text[++at]) & 0x3F));
    } else {
      return false;
    }
  }
  return true;
}

// Takes what the parser finds. A list or object that is open does not move: only the innermost one
// gets items.
class Builder : public Json::json_sax_t {
 public:
  Value root;

  bool null() override { return Add(Value::Kind::kNone) != nullptr; }
  bool boolean(bool value) override {
    Value* const added = Add(Value::Kind::kBool);
    added->flag = value;
    return true;
  }
  bool number_integer(number_integer_t value) override {
    Add(Value::Kind::kInteger)->integer = value;
    return true;
  }
  bool number_unsigned(number_unsigned_t value) override {
    Add(Value::Kind::kUnsigned)->whole = value;
    return true;
  }
  bool number_float(number_float_t, const string_t&) override { return null(); }
  bool string(string_t& value) override {
    Add(Value::Kind::kText)->text = std::move(value);
    return true;
  }
  bool binary(binary_t&) override { return false; }
  bool start_object(std::size_t) override { return Open(Value::Kind::kObject); }
  bool key(string_t& value) override {
    key_ = std::move(value);
    return true;
  }
  bool end_object() override { return Close(); }
  bool start_array(std::size_t) override { return Open(Value::Kind::kList); }
  bool end_array() override { return Close(); }
  bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override {
    return false;
  }

 private:
  static constexpr std::size_t kDeepestNest = 64;

  Value* Add(Value::Kind kind) {
    Value* added = &root;
    if (!open_.empty()) {
      added = &open_.back()->items.emplace_back();
      if (open_.back()->IsObject()) added->key = std::move(key_);
    }
    added->kind = kind;
    return added;
  }
  bool Open(Value::Kind kind) {
    constexpr std::size_t kUsualMembers = 12;
    if (open_.size() >= kDeepestNest) return false;
    Value* const added = Add(kind);
    if (kind == Value::Kind::kObject) added->items.reserve(kUsualMembers);
    open_.push_back(added);
    return true;
  }
  bool Close() {
    open_.pop_back();
    return true;
  }

  std::vector<Value*> open_;
  std::string key_;
};

bool TakeMessage(const Value& json, Message& message, int depth);

std::optional<Message::Argument> ArgumentOf(const Value& json, int depth) {
  std::string text;
  std::int64_t number = 0;
  Message inner;
  if (Take(json, text)) return text;
  if (Take(json, number)) return number;
  if (TakeMessage(json, inner, depth + 1)) return Message::Inner{inner};
  return std::nullopt;
}

bool TakeMessage(const Value& json, Message& message, int depth) {
  const Value* const id = json.Find("id");
  if (id == nullptr || !id->IsText() || depth > kDeepest) return false;
  std::vector<Message::Argument> arguments;
  bool whole = true;
  if (const Value* const with = json.Find("with")) {
    for (const Value& one : with->items) {
      std::optional<Message::Argument> argument = ArgumentOf(one, depth);
      whole = whole && argument;
      if (whole) arguments.push_back(std::move(*argument));
    }
  }
  if (whole) {
    if (auto known = Message::OfParts(id->text, std::move(arguments))) {
      message = std::move(*known);
      return true;
    }
  }
  const Value* const text = json.Find("text");
  std::string words;
  if (text == nullptr || !Take(*text, words)) return false;
  message = Message(MessageId::kForeignWords, words);
  return true;
}

}  // namespace

Json Of(const std::string& text) {
  if (IsUtf8(text)) return text;
  return Json::object({{"bytes", FromLatin1(text)}});
}

bool Take(const Value& json, std::string& text) {
  if (json.IsText()) {
    text = json.text;
    return true;
  }
  const Value* const bytes = json.Find("bytes");
  return bytes != nullptr && bytes->IsText() && ToLatin1(bytes->text, text);
}

Json Of(const Message& message) {
  Json json = {{"id", message.Name()}, {"text", Of(message.English())}};
  for (const Message::Argument& argument : message.Arguments()) {
    const auto* const inner = std::get_if<Message::Inner>(&argument);
    const auto* const text = std::get_if<std::string>(&argument);
    json["with"].push_back(inner != nullptr  ? Of(inner->front())
                           : text != nullptr ? Of(*text)
                                             : Json(std::get<std::int64_t>(argument)));
  }
  return json;
}

bool Take(const Value& json, Message& message) {
  return TakeMessage(json, message, 0);
}

bool Take(const Value& json, JobStatus& status) {
  int number = 0;
  if (!Take(json, number) || number < 0 || number > static_cast<int>(JobStatus::kAborted)) {
    return false;
  }
  status = static_cast<JobStatus>(number);
  return true;
}

bool Take(const Value& json, SolverKind& kind) {
  int number = 0;
  if (!Take(json, number) || number < 0 || number > static_cast<int>(kLastSolverKind)) return false;
  kind = static_cast<SolverKind>(number);
  return true;
}

Json Of(const Failure& failure) {
  return Json::array({static_cast<int>(failure.kind), failure.number});
}

bool Take(const Value& json, Failure& failure) {
  std::pair<int, int> both;
  if (!Take(json, both)) return false;
  const bool isKnown = both.first >= 0 && both.first <= static_cast<int>(kLastFailureKind);
  if (isKnown) failure = {static_cast<FailureKind>(both.first), both.second};
  return isKnown;
}

Json Of(const RunRecord& run) {
  Json json = Json::object();
  Write(run, json);
  return json;
}

bool Take(const Value& json, RunRecord& run) {
  if (!json.IsObject()) return false;
  Read(json, run);
  return true;
}

const Value* Value::Find(std::string_view name) const {
  if (kind != Kind::kObject) return nullptr;
  const auto found = std::find_if(items.begin(), items.end(),
                                  [name](const Value& member) { return member.key == name; });
  return found == items.end() ? nullptr : &*found;
}

Value Parsed(std::string_view text) {
  Builder builder;
  const bool isWhole = Json::sax_parse(text.begin(), text.end(), &builder);
  return isWhole ? std::move(builder.root) : Value();
}

std::string Text(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace form
