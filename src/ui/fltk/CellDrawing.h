// What the cells of the tables look like. Interface thread, while a table draws.
#ifndef KR_UI_FLTK_CELLDRAWING_H
#define KR_UI_FLTK_CELLDRAWING_H

#include <FL/Enumerations.H>

#include <string>

struct CellArea {
  int x, y, w, h;
};

namespace CellDrawing {

inline constexpr int kPadding = 8;
inline constexpr int kIconSize = 16;
inline const std::string kNothing = "\xE2\x80\x93";  // an en dash

void UseFont();

// Text in the current colour; what is too long loses its end, or its beginning with `keepEnd`.
void Words(const CellArea& cell, const std::string& text, bool keepEnd = false);

// A text that can be pressed.
void Link(const CellArea& cell, const std::string& text, bool enabled, bool hovered);

// An icon and behind it a text in the current colour.
void IconAndWords(const CellArea& cell, const std::string& icon, const std::string& text);

// Pixels that a text needs, padding included.
int Width(const std::string& text);

}  // namespace CellDrawing

#endif
