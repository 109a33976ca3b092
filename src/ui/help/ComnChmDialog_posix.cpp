#include "ui/help/ComnChmDialog.h"
#include "ui/help/HelpWindow.h"

bool ComnChmDialog::Display(const std::string& page) {
  return HelpWindow::Show(path_, page, texts_);
}

void ComnChmDialog::CloseViewer() {
  HelpWindow::Close();
}
