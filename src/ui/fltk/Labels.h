// Texts as widgets show them: as they stand, and as much of them as there is room for. UTF-8.
#ifndef KR_UI_FLTK_LABELS_H
#define KR_UI_FLTK_LABELS_H

#include <string>

// A label in which "@" begins no symbol, and a menu's item in which "&" does not underline either.
std::string PlainLabel(const std::string& text);
std::string PlainItem(const std::string& text);

// The text, or its head or tail with "..." so that it fits into `width` pixels in the current font.
// Interface thread.
std::string FitHead(const std::string& text, int width);  // keeps the beginning
std::string FitTail(const std::string& text, int width);  // keeps the end

// The text in lines of at most `width` pixels in the current font: broken at blanks, behind the
// separators of a path, beside Chinese characters, else where it must. Of a word that takes more
// than `kWordLines`, of a paragraph with more than `kParagraphLines`, and of all when there are
// more than `mostLines`, the middle becomes "...": a path keeps its beginning and its name.
// Interface thread.
inline constexpr int kWordLines = 4;
inline constexpr int kParagraphLines = 12;
std::string InLines(const std::string& text, int width, int mostLines);

#endif
