// Between the bytes of text files and the UTF-8 that the toolkit shows. Any thread.
#ifndef KR_UI_TEXT_FILETEXT_H
#define KR_UI_TEXT_FILETEXT_H

#include <cstddef>
#include <string>

// Text to be read only: bytes that are not UTF-8 become replacement characters, zero bytes blanks;
// carriage returns go. The beginning of a character at the end goes into `rest`.
std::string ShownText(const std::string& bytes, std::string& rest);

// How many of the bytes become the first `length` bytes of that text.
std::size_t BytesOfShown(const std::string& bytes, std::size_t length);

// How many bytes at the beginning end a character that is cut off; at most three.
std::size_t BytesOfCutCharacter(const std::string& bytes);

// UTF-8 text for comparing without regard to case. Every character keeps its place.
std::string Folded(const std::string& text);

// A whole text file to be edited. What is not changed comes back byte for byte: the encoding
// (UTF-8, the system's code page, or bytes that are no text at all, shown by characters of private
// use), a byte order mark, the kind of line ends. Where the file mixes these, carriage returns are
// shown.
class EditableText {
 public:
  explicit EditableText(const std::string& bytes);

  // UTF-8 without zero bytes, its lines apart by line feeds.
  const std::string& Text() const { return text_; }

  // What an edited text is in the file. False when a character has no place in its encoding.
  bool ToFile(const std::string& text, std::string& bytes) const;

 private:
  enum class Encoding { kSystem, kUtf8, kBytes };

  Encoding encoding_ = Encoding::kSystem;
  bool mark_ = false;       // a byte order mark
  bool carriage_ = false;   // lines end in CRLF
  bool mixedEnds_ = false;  // some of them
  std::string text_;
};

#endif
