#include "ui/dialogs/Flx_Configuration.h"

#include <FL/Fl_Button.H>
#include <FL/Fl_Check_Button.H>
#include <FL/Fl_Choice.H>
#include <FL/Fl_Input.H>

#include "ui/dialogs/ComnFileDialog.h"
#include "ui/dialogs/DialogTools.h"
#include "ui/dialogs/FileQuestions.h"
#include "ui/text/Encoding.h"
#include "util/files/FileDirWrapper.h"

namespace {

const char kLayout[] =
    R"(ID_WINDOW,Window,"Configuration",978,435,650,130,1,1,49,49,1,0,14,56,1,99,"",0,0,0,0,"配置"
ID_LABEL1,Box,"Text Editor",5,36,70,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0,"文本编辑器"
ID_CHOICE1,Choice,"",89,9,150,24,1,14,55,15,0,0,12,56,4,99,"",0,0,14,56
ID_LABEL2,Box,"Language",5,10,76,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0,"语言"
ID_INPUT1,Input,"",89,35,530,24,3,3,55,15,0,0,12,56,4,99,"",0,0,14,0
ID_BUTTON1,Button,"...",620,34,28,24,2,3,49,49,0,0,12,56,0,99,"",0,0,0,0
ID_BUTTON2,Button,"Close",560,100,80,24,2,3,49,49,0,0,12,56,0,99,"",0,0,0,0,"关闭"
ID_CHECKBOX1,Check_Button,"Output d3dump",8,66,127,24,0,3,49,56,0,0,12,56,20,99,"",0,0,0,0,"输出 d3dump"
ID_CHECKBOX2,Check_Button,"Delete adaptdmp",8,93,152,24,0,3,49,56,0,0,12,56,20,99,"",0,0,0,0,"删除 adaptdmp"
)";

constexpr char kEditorFilter[] = "Text Editor (*.exe)|*.exe|";

// By key, in English and Chinese.
constexpr DialogText kTexts[] = {
    {"text_editor_title", "Select Text Editor", "选择文本编辑器"},
    {"msg_language_applied", "Language will be applied after restart",
     "语言设置将在重新启动程序后生效"},
};

}  // namespace

Flx_Configuration::Flx_Configuration(Fl_Window* parent, Application& application)
    : Flx_Base_Dialog(parent, application.language, kLayout, kTexts),
      application_(application),
      settings_(application.SettingsAndFiles()) {}

bool Flx_Configuration::Initialise() {
  if (!HasAll(kLanguage, kEditor, kChooseEditor, kOutputDump, kDeleteAdaptive, kClose))
    return false;
  // The same in both, so that everyone finds the way back.
  languages_.Show(*Find(kLanguage), {"English", "Chinese"}, settings_.Get().language);
  Find(kLanguage)->when(FL_WHEN_RELEASE_ALWAYS);
  ShowSettings();
  SetTabOrder(*Window(), {Find(kLanguage), Find(kEditor), Find(kChooseEditor), Find(kOutputDump),
                          Find(kDeleteAdaptive), Find(kClose)});
  Present(*Find(kClose), *Find(kClose));
  return true;
}

void Flx_Configuration::ShowSettings() {
  const Settings& settings = settings_.Get();
  Find(kOutputDump)->value(settings.output_dump);
  Find(kDeleteAdaptive)->value(settings.no_adapdump);
  ShowStored(*Find(kEditor), ToUi(settings.viewer));
}

int Flx_Configuration::HandleWidget(Fl_Widget* widget) {
  if (widget == Find(kClose)) endCode_ = 1;
  if (widget == Find(kLanguage)) ChooseLanguage();
  if (widget == Find(kChooseEditor)) ChooseEditor();
  if (widget == Find(kEditor)) {
    settings_.Set(&Settings::viewer, PathIn(*Find(kEditor)));
    Find(kEditor)->clear_changed();
  }
  if (widget == Find(kOutputDump)) {
    const bool on = Find(kOutputDump)->value() == 1;
    if (settings_.Set(&Settings::output_dump, on) && OnSwitched) OnSwitched();
  }
  if (widget == Find(kDeleteAdaptive))
    settings_.Set(&Settings::no_adapdump, Find(kDeleteAdaptive)->value() == 1);
  return endCode_ > 0 ? 0 : -1;
}

void Flx_Configuration::ChooseLanguage() {
  settings_.Set(&Settings::language, Find(kLanguage)->value());
  Inform(ToUi(application_.Title()), Shown("msg_language_applied"));
}

void Flx_Configuration::ChooseEditor() {
  std::string folder;
  FileDirWrapper::DirOf(settings_.Get().viewer, folder);
  const std::string path = AskForFile(
      {Window(), Shown("text_editor_title"), ComnFileDialog::ProgramFilter(kEditorFilter), folder});
  if (path.empty()) return;
  settings_.Set(&Settings::viewer, path);
  Find(kEditor)->value(ToUi(path).c_str());
}
