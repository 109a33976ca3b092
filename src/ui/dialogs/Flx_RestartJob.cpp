#include "ui/dialogs/Flx_RestartJob.h"

#include <FL/Fl_Button.H>
#include <FL/Fl_Check_Button.H>
#include <FL/Fl_Input.H>

#include "ui/dialogs/ComnFileDialog.h"
#include "ui/dialogs/DialogTools.h"
#include "ui/fltk/Theme.h"
#include "ui/text/Encoding.h"
#include "util/files/FileDirWrapper.h"

namespace {

const char kEnglishLayout[] =
    R"layout(ID_WINDOW,Window,"Select Restart Job",718,282,468,100,1,1,49,49,1,0,14,56,1,99,"",0,0,0,0
ID_LABEL1,Box,"Restart File (R=)",5,6,100,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0
ID_INPUT1,Input,"",116,6,314,24,3,3,7,15,0,0,12,56,4,99,"",0,0,14,0
ID_CHECKBOX1,Check_Button,"Input File (I=)",6,34,115,24,0,3,49,56,0,0,12,56,20,99,"",0,0,0,0
ID_INPUT2,Input,"",116,34,314,24,3,3,7,15,0,0,12,56,4,99,"",0,0,14,0
ID_BUTTON1,Button,"...",430,7,30,24,2,3,49,49,0,0,12,56,0,99,"",0,0,0,0
ID_BUTTON2,Button,"...",430,33,30,24,2,3,49,49,0,0,12,56,0,99,"",0,0,0,0
ID_BUTTON3,Button,"OK",270,68,80,24,2,3,49,49,0,0,12,56,0,99,"",0,0,0,0
ID_BUTTON4,Button,"Cancel",363,68,80,24,2,3,49,49,0,0,12,56,0,99,"",0,0,0,0
)layout";
const char kChineseLayout[] =
    R"layout(ID_WINDOW,Window,"选择重启动任务",718,282,468,100,1,1,49,49,1,0,14,56,1,99,"",0,0,0,0
ID_LABEL1,Box,"重启动文件 (R=)",5,6,100,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0
ID_INPUT1,Input,"",116,6,314,24,3,3,7,15,0,0,12,56,4,99,"",0,0,14,0
ID_CHECKBOX1,Check_Button,"输入文件 (I=)",6,34,115,24,0,3,49,56,0,0,12,56,20,99,"",0,0,0,0
ID_INPUT2,Input,"",116,34,314,24,3,3,7,15,0,0,12,56,4,99,"",0,0,14,0
ID_BUTTON1,Button,"...",430,7,30,24,2,3,49,49,0,0,12,56,0,99,"",0,0,0,0
ID_BUTTON2,Button,"...",430,33,30,24,2,3,49,49,0,0,12,56,0,99,"",0,0,0,0
ID_BUTTON3,Button,"确定",270,68,80,24,2,3,49,49,0,0,12,56,0,99,"",0,0,0,0
ID_BUTTON4,Button,"取消",363,68,80,24,2,3,49,49,0,0,12,56,0,99,"",0,0,0,0
)layout";

}  // namespace

Flx_RestartJob::Flx_RestartJob(Fl_Window* parent, Application& application)
    : Flx_Base_Dialog(parent, application.language), application_(application) {
  SetLayouts(kEnglishLayout, kChineseLayout);
  SetTexts("r_file_title", "Select Restart File", "选择重启动文件");
  SetTexts("k_file_title", "Select Input File", "选择输入文件");
  SetTexts("r_filter", "D3dump |*d3dump*|All Files (*.*)|*.*|",
           "D3dump |*d3dump*|所有文件 (*.*)|*.*|");
  SetTexts("k_filter", "Dyna File (*.dyn;*.k)|*.dyn;*.k|All Files (*.*)|*|",
           "Dyna 文件 (*.dyn;*.k)|*.dyn;*.k|所有文件 (*.*)|*|");
  SetTexts("no_restart", "Please choose a restart file.", "请选择重启动文件。");
  SetTexts("no_input", "Please choose an input file, or untick \"Input File (I=)\".",
           "请选择输入文件，或取消勾选“输入文件 (I=)”。");
  SetTexts("missing", "There is no such file now. The job needs it when it starts.",
           "该文件目前不存在，任务启动时必须存在。");
  SetTexts("ok", "OK", "确定");
}

bool Flx_RestartJob::Initialise() {
  auto* restart = Find<Fl_Input>("ID_INPUT1");
  auto* input = Find<Fl_Input>("ID_INPUT2");
  auto* useInput = Find<Fl_Check_Button>("ID_CHECKBOX1");
  auto* browseRestart = Find<Fl_Button>("ID_BUTTON1");
  auto* browseInput = Find<Fl_Button>("ID_BUTTON2");
  auto* ok = Find<Fl_Button>("ID_BUTTON3");
  auto* cancel = Find<Fl_Button>("ID_BUTTON4");
  if (!restart || !input || !useInput || !browseRestart || !browseInput || !ok || !cancel)
    return false;
  restart->when(FL_WHEN_CHANGED);
  input->when(FL_WHEN_CHANGED);
  SetTabOrder(*Window(), {restart, browseRestart, useInput, input, browseInput, ok, cancel});
  ok->shortcut(FL_Enter);
  ShowInputUse();
  CentreOnParent();
  restart->take_focus();
  return true;
}

int Flx_RestartJob::HandleWidget(Fl_Widget* widget) {
  if (widget == FindWidget("ID_BUTTON4")) endCode_ = 1;
  if (widget == FindWidget("ID_BUTTON3") && TakeFiles()) endCode_ = 1;
  if (widget == FindWidget("ID_BUTTON1")) Choose("ID_INPUT1", "r_file_title", Shown("r_filter"));
  if (widget == FindWidget("ID_BUTTON2")) Choose("ID_INPUT2", "k_file_title", Shown("k_filter"));
  if (widget == FindWidget("ID_CHECKBOX1")) {
    ShowInputUse();
    if (Find<Fl_Input>("ID_INPUT2")->active()) Find<Fl_Input>("ID_INPUT2")->take_focus();
  }
  for (const char* id : {"ID_INPUT1", "ID_INPUT2"}) {
    if (widget == FindWidget(id)) MarkMissing(id);
  }
  return endCode_ > 0 ? 0 : -1;
}

void Flx_RestartJob::ShowInputUse() {
  auto* input = Find<Fl_Input>("ID_INPUT2");
  Find<Fl_Check_Button>("ID_CHECKBOX1")->value() ? input->activate() : input->deactivate();
}

void Flx_RestartJob::MarkMissing(const char* inputId) {
  auto* input = Find<Fl_Input>(inputId);
  const std::string path = PathIn(*input);
  const bool missing = !path.empty() && !FileDirWrapper::FileExists(path);
  input->textcolor(missing ? Theme::kError : Theme::kText);
  ShowTip(*input, missing ? Shown("missing") : std::string());
  input->redraw();
}

void Flx_RestartJob::Choose(const char* inputId, const char* titleKey, const std::string& filter) {
  SettingsAndPaths& settings = application_.SettingsAndFiles();
  ComnFileDialog dialog;
  dialog.SetParentWindow(Window());
  dialog.SetOpen(true);
  dialog.SetCaption(Shown(titleKey));
  dialog.SetFilter(filter);
  dialog.SetInitDir(settings.Get().last_path);
  if (!dialog.DoModal()) return;
  std::string folder;
  if (FileDirWrapper::DirOf(dialog.GetPathName(), folder))
    settings.Set(&Settings::last_path, folder);
  Find<Fl_Input>(inputId)->value(ToUi(dialog.GetPathName()).c_str());
  if (FindWidget(inputId) == FindWidget("ID_INPUT2"))
    Find<Fl_Check_Button>("ID_CHECKBOX1")->value(1);
  ShowInputUse();
  MarkMissing(inputId);
}

bool Flx_RestartJob::TakeFiles() {
  const std::string restartFile = PathIn(*Find<Fl_Input>("ID_INPUT1"));
  const bool useInput = Find<Fl_Check_Button>("ID_CHECKBOX1")->value() == 1;
  const std::string inputFile = PathIn(*Find<Fl_Input>("ID_INPUT2"));
  if (restartFile.empty()) return AskFor("ID_INPUT1", "no_restart"), false;
  if (useInput && inputFile.empty()) return AskFor("ID_INPUT2", "no_input"), false;
  restartFile_ = restartFile;
  if (useInput) inputFile_ = inputFile;
  return true;
}

void Flx_RestartJob::AskFor(const char* inputId, const char* key) {
  InformOver(Window(), ToUi(application_.Title()), Shown(key), Shown("ok"));
  FindWidget(inputId)->take_focus();
}
