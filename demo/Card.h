// One data line of a keyword deck, cut into fields, and the values of fields.
#ifndef STANDIN_CARD_H
#define STANDIN_CARD_H

#include <array>
#include <map>
#include <optional>
#include <string>
#include <string_view>

// How many columns a field has. Numbers of nodes and elements are narrower than other values.
struct CardForm {
  int idWidth = 8;
  int valueWidth = 10;
  int coordinateWidth = 16;

  static CardForm Standard() { return {}; }
  static CardForm WideIds() { return {10, 10, 16}; }
  static CardForm Long() { return {20, 20, 20}; }
};

// A comma anywhere in the line makes all its fields free; else they have fixed columns.
class Card {
 public:
  static constexpr std::size_t kMostFields = 10;

  // Fields of `firstWidth` columns up to `firstCount`, then of `restWidth`. The line must outlive
  // the card.
  Card(std::string_view line, int firstWidth, std::size_t firstCount, int restWidth);

  // Trimmed; empty where the line has no such field.
  std::string_view operator[](std::size_t index) const {
    return index < kMostFields ? fields_[index] : std::string_view();
  }

 private:
  std::array<std::string_view, kMostFields> fields_{};
};

// Values of *PARAMETER, by upper-case name.
class Parameters {
 public:
  void Set(std::string_view name, std::string_view value);
  // The text itself, or the value where it is "&name" or "-&name". Nothing for an unknown name.
  std::optional<std::string> Resolve(std::string_view field) const;
  bool Empty() const { return values_.empty(); }

 private:
  std::map<std::string, std::string> values_;
};

#endif
