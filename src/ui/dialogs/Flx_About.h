// What the program is.
#ifndef KR_UI_DIALOGS_FLX_ABOUT_H
#define KR_UI_DIALOGS_FLX_ABOUT_H

#include <string>

#include "ui/dialogs/Flx_Base_Dialog.h"

class Flx_About : public Flx_Base_Dialog {
 public:
  // `workFolder` is in the system's code page.
  Flx_About(Fl_Window* parent, int language, const std::string& workFolder);

  bool Initialise() override;
  int HandleWidget(Fl_Widget* widget) override;

 private:
  const std::string workFolder_;
};

#endif
