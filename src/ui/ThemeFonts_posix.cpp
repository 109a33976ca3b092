#include <FL/Fl.H>

#include "ui/ThemeFonts.h"

// Names as fontconfig knows them; the first character is the face (blank, B, I, P: bold italic).
void SetInterfaceFonts() {
  Fl::set_font(FL_HELVETICA, " sans");
  Fl::set_font(FL_HELVETICA_BOLD, "Bsans");
  Fl::set_font(FL_HELVETICA_ITALIC, "Isans");
  Fl::set_font(FL_HELVETICA_BOLD_ITALIC, "Psans");
  Fl::set_font(FL_COURIER, " monospace");
  Fl::set_font(FL_COURIER_BOLD, "Bmonospace");
}
