#include "ui/fltk/CellDrawing.h"

#include <FL/fl_draw.H>

#include <cmath>

#include "ui/fltk/Icons.h"
#include "ui/fltk/Labels.h"
#include "ui/fltk/Sizes.h"
#include "ui/fltk/Theme.h"

namespace CellDrawing {

void UseFont() {
  fl_font(FL_HELVETICA, Sizes::kFontSize);
}

void Words(const CellArea& cell, const std::string& text, bool keepEnd) {
  const int room = cell.w - 2 * kPadding + 4;
  const std::string fitted = keepEnd ? FitTail(text, room) : FitHead(text, room);
  const int baseline = cell.y + (cell.h + fl_height()) / 2 - fl_descent();
  fl_draw(fitted.data(), static_cast<int>(fitted.size()), cell.x + kPadding, baseline);
}

void Link(const CellArea& cell, const std::string& text, bool enabled, bool hovered) {
  if (enabled && hovered)
    Theme::DrawRounded(cell.x + 2, cell.y + 2, cell.w - 5, cell.h - 4, Theme::kSurface,
                       Theme::kAccent);
  fl_color(enabled ? Theme::kAccent : Theme::kDisabledText);
  Words(cell, text);
}

void IconAndWords(const CellArea& cell, const std::string& icon, const std::string& text) {
  if (Fl_RGB_Image* image = Icon(icon))
    image->draw(cell.x + kPadding - 2, cell.y + (cell.h - kIconSize) / 2);
  Words({cell.x + kIconSize, cell.y, cell.w - kIconSize, cell.h}, text);
}

int Width(const std::string& text) {
  UseFont();
  return static_cast<int>(std::ceil(fl_width(text.c_str()))) + 2 * kPadding;
}

}  // namespace CellDrawing
