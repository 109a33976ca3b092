// What the program is.
#ifndef KR_UI_DIALOGS_FLX_ABOUT_H
#define KR_UI_DIALOGS_FLX_ABOUT_H

#include <string>

#include "ui/dialogs/Flx_Base_Dialog.h"

class Fl_Box;
class Fl_Button;

class Flx_About : public Flx_Base_Dialog {
 public:
  // The widgets by their ids in the layout.
  static constexpr WidgetName<Fl_Box> kPicture{"ID_LABEL1"}, kProgram{"ID_LABEL2"},
      kBuildDate{"ID_LABEL3"}, kSystem{"ID_LABEL4"}, kWorkFolder{"ID_LABEL13"};
  static constexpr WidgetName<Fl_Button> kOk{"ID_BUTTON1"};

  // `workFolder` is in the system's code page.
  Flx_About(Fl_Window* parent, int language, const std::string& workFolder);

  bool Initialise() override;
  int HandleWidget(Fl_Widget* widget) override;

 private:
  const std::string workFolder_;
};

#endif
