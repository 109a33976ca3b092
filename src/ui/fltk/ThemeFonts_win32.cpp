#include <FL/Fl.H>

#include "ui/fltk/ThemeFonts.h"

// The first character is the face (blank, B, I, P: bold italic). The system itself takes characters
// that a font lacks from others, and another font for one that is not installed.
void SetInterfaceFonts(int language) {
  const bool chinese = language == 1;
  Fl::set_font(FL_HELVETICA, chinese ? " Microsoft YaHei UI" : " Segoe UI");
  Fl::set_font(FL_HELVETICA_BOLD, chinese ? "BMicrosoft YaHei UI" : "BSegoe UI");
  Fl::set_font(FL_HELVETICA_ITALIC, chinese ? "IMicrosoft YaHei UI" : "ISegoe UI");
  Fl::set_font(FL_HELVETICA_BOLD_ITALIC, chinese ? "PMicrosoft YaHei UI" : "PSegoe UI");
  Fl::set_font(FL_COURIER, " Consolas");
  Fl::set_font(FL_COURIER_BOLD, "BConsolas");
}
