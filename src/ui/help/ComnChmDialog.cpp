#include "ui/help/ComnChmDialog.h"

#include "ui/dialogs/ComnMsgBox.h"
#include "ui/text/Encoding.h"
#include "util/files/FileDirWrapper.h"

namespace {

const TextTable& EnglishTexts() {
  static const TextTable texts = [] {
    TextTable made;
    FillTexts(0, "", made);
    return made;
  }();
  return texts;
}

}  // namespace

bool ComnChmDialog::Show(const std::string& page) {
  if (path_.empty()) return Fail("ui_help_none");
  if (!FileDirWrapper::FileExists(path_)) return Fail("ui_help_missing");
  return Display(page) || Fail("ui_help_broken");
}

bool ComnChmDialog::Fail(const char* key) {
  const TextTable& texts = texts_.Get(key).empty() ? EnglishTexts() : texts_;
  std::string text = texts.Get(key);
  if (!path_.empty()) text += "\n" + ToUi(path_);
  ComnMsgBox::Inform(parent_, texts.Get("tip_help"), text, texts.Get("ui_ok"));
  return false;
}
