#include <FL/Fl.H>

#include <string>

#include "ui/fltk/FontFallback_posix.h"
#include "ui/fltk/ThemeFonts.h"

namespace {

// Names as fontconfig knows them; for one that is not installed it finds another.
constexpr char kInterface[] = "sans";
constexpr char kChineseInterface[] = "WenQuanYi Micro Hei";
constexpr char kFixed[] = "monospace";

// The toolkit takes the face from the first character (blank, B, I, P: bold italic) and keeps the
// pointer.
void SetFont(Fl_Font number, char face, const char* family) {
  static std::string names[FL_FREE_FONT];
  names[number] = face + std::string(family);
  Fl::set_font(number, names[number].c_str());
}

}  // namespace

void SetInterfaceFonts(int language) {
  const char* family = language == 1 ? kChineseInterface : kInterface;
  SetFont(FL_HELVETICA, ' ', family);
  SetFont(FL_HELVETICA_BOLD, 'B', family);
  SetFont(FL_HELVETICA_ITALIC, 'I', family);
  SetFont(FL_HELVETICA_BOLD_ITALIC, 'P', family);
  SetFont(FL_COURIER, ' ', kFixed);
  SetFont(FL_COURIER_BOLD, 'B', kFixed);
  InstallFontFallback();
}
