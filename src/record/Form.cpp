#include "record/Form.h"

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

bool TakeMessage(const Json& json, Message& message, int depth);

std::optional<Message::Argument> ArgumentOf(const Json& json, int depth) {
  std::string text;
  std::int64_t number = 0;
  Message inner;
  if (Take(json, text)) return text;
  if (Take(json, number)) return number;
  if (TakeMessage(json, inner, depth + 1)) return Message::Inner{inner};
  return std::nullopt;
}

bool TakeMessage(const Json& json, Message& message, int depth) {
  if (!json.is_object() || depth > kDeepest) return false;
  const auto id = json.find("id");
  if (id == json.end() || !id->is_string()) return false;
  std::vector<Message::Argument> arguments;
  bool whole = true;
  if (const auto with = json.find("with"); with != json.end()) {
    for (const Json& one : *with) {
      std::optional<Message::Argument> argument = ArgumentOf(one, depth);
      whole = whole && argument;
      if (whole) arguments.push_back(std::move(*argument));
    }
  }
  if (whole) {
    if (auto known = Message::OfParts(id->get_ref<const std::string&>(), std::move(arguments))) {
      message = std::move(*known);
      return true;
    }
  }
  const auto text = json.find("text");
  std::string words;
  if (text == json.end() || !Take(*text, words)) return false;
  message = Message(MessageId::kForeignWords, words);
  return true;
}

}  // namespace

Json Of(const std::string& text) {
  if (IsUtf8(text)) return text;
  return Json::object({{"bytes", FromLatin1(text)}});
}

bool Take(const Json& json, std::string& text) {
  if (json.is_string()) {
    text = json.get_ref<const std::string&>();
    return true;
  }
  if (!json.is_object()) return false;
  const auto bytes = json.find("bytes");
  return bytes != json.end() && bytes->is_string() &&
         ToLatin1(bytes->get_ref<const std::string&>(), text);
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

bool Take(const Json& json, Message& message) {
  return TakeMessage(json, message, 0);
}

bool Take(const Json& json, JobStatus& status) {
  int number = 0;
  if (!Take(json, number) || number < 0 || number > static_cast<int>(JobStatus::kAborted)) {
    return false;
  }
  status = static_cast<JobStatus>(number);
  return true;
}

bool Take(const Json& json, SolverKind& kind) {
  int number = 0;
  if (!Take(json, number) || number < 0 || number > static_cast<int>(kLastSolverKind)) return false;
  kind = static_cast<SolverKind>(number);
  return true;
}

Json Of(const RunRecord& run) {
  Json json = Json::object();
  Write(run, json);
  return json;
}

bool Take(const Json& json, RunRecord& run) {
  if (!json.is_object()) return false;
  Read(json, run);
  return true;
}

Json Parsed(std::string_view text) {
  return Json::parse(text, nullptr, false);
}

std::string Text(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace form
