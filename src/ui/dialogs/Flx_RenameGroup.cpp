#include "ui/dialogs/Flx_RenameGroup.h"

#include <FL/Fl_Button.H>
#include <FL/Fl_Input.H>

#include "ui/text/Encoding.h"

namespace {

const char kLayout[] =
    R"(ID_WINDOW,Window,"Rename Group",901,479,268,80,1,1,49,49,1,0,14,56,1,99,"",0,0,0,0,"重命名任务组"
ID_LABEL1,Box,"Group Name",5,6,80,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0,"任务组名称"
ID_INPUT1,Input,"",95,6,160,24,3,3,7,15,0,0,12,56,4,99,"",0,0,14,0
ID_BUTTON1,Button,"OK",98,42,80,24,2,3,49,49,0,0,12,56,0,99,"",0,0,0,0,"确定"
ID_BUTTON2,Button,"Cancel",186,42,80,24,2,3,49,49,0,0,12,56,0,99,"",0,0,0,0,"取消"
)";

}  // namespace

Flx_RenameGroup::Flx_RenameGroup(Fl_Window* parent, int language, const std::string& name)
    : Flx_Base_Dialog(parent, language, kLayout), name_(name) {}

bool Flx_RenameGroup::Initialise() {
  if (!HasAll(kName, kOk, kCancel)) return false;
  Find(kName)->value(ToUi(name_).c_str());
  Present(*Find(kOk), *Find(kName));
  return true;
}

int Flx_RenameGroup::HandleWidget(Fl_Widget* widget) {
  if (widget == Find(kCancel)) return 0;
  if (widget != Find(kOk)) return -1;
  Fl_Input* input = Find(kName);
  const std::string name = FromUi(input->value());
  const bool isAccepted = !Accepts || Accepts(name);  // says why not, of an empty one too
  if (!isAccepted || name.empty()) {
    input->take_focus();
    return -1;
  }
  newName_ = name;
  return 0;
}
