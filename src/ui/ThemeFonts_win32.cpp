#include <FL/Fl.H>

#include "ui/ThemeFonts.h"

// The first character is the face (blank, B, I, P: bold italic).
void SetInterfaceFonts() {
  Fl::set_font(FL_HELVETICA, " Segoe UI");
  Fl::set_font(FL_HELVETICA_BOLD, "BSegoe UI");
  Fl::set_font(FL_HELVETICA_ITALIC, "ISegoe UI");
  Fl::set_font(FL_HELVETICA_BOLD_ITALIC, "PSegoe UI");
  Fl::set_font(FL_COURIER, " Consolas");
  Fl::set_font(FL_COURIER_BOLD, "BConsolas");
}
