#include <FL/Fl.H>

#include <set>
#include <string>

#include "ui/fltk/FontFallback_posix.h"
#include "ui/fltk/ThemeFonts.h"

namespace {

// Names as fontconfig knows them; for one that is not installed it finds another.
constexpr char kInterface[] = "sans";
constexpr char kChineseInterface[] = "WenQuanYi Micro Hei";
constexpr char kFixed[] = "monospace";

// The toolkit takes the face from the first character (blank, B, I, P: bold italic). It keeps the
// pointer and looks at the former name when it is given another: no name goes.
void SetFont(Fl_Font number, char face, const char* family) {
  static std::set<std::string> names;
  Fl::set_font(number, names.insert(face + std::string(family)).first->c_str());
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
