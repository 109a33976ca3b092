#include "ui/dialogs/Flx_RestartJob.h"

#include <FL/Fl_Button.H>
#include <FL/Fl_Check_Button.H>
#include <FL/Fl_Input.H>

#include "solvers/RestartDump.h"
#include "solvers/SolverKinds.h"
#include "ui/dialogs/DialogTools.h"
#include "ui/dialogs/FileQuestions.h"
#include "ui/fltk/Theme.h"
#include "ui/fltk/Tip.h"
#include "ui/text/Encoding.h"

namespace {

const char kLayout[] =
    R"layout(ID_WINDOW,Window,"Select Restart Job",718,282,468,100,1,1,49,49,1,0,14,56,1,99,"",0,0,0,0,"选择重启动任务"
ID_LABEL1,Box,"Restart File (R=)",5,6,100,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0,"重启动文件 (R=)"
ID_INPUT1,Input,"",116,6,314,24,3,3,7,15,0,0,12,56,4,99,"",0,0,14,0
ID_CHECKBOX1,Check_Button,"Input File (I=)",6,34,115,24,0,3,49,56,0,0,12,56,20,99,"",0,0,0,0,"输入文件 (I=)"
ID_INPUT2,Input,"",116,34,314,24,3,3,7,15,0,0,12,56,4,99,"",0,0,14,0
ID_BUTTON1,Button,"...",430,7,30,24,2,3,49,49,0,0,12,56,0,99,"",0,0,0,0
ID_BUTTON2,Button,"...",430,33,30,24,2,3,49,49,0,0,12,56,0,99,"",0,0,0,0
ID_BUTTON3,Button,"OK",270,68,80,24,2,3,49,49,0,0,12,56,0,99,"",0,0,0,0,"确定"
ID_BUTTON4,Button,"Cancel",363,68,80,24,2,3,49,49,0,0,12,56,0,99,"",0,0,0,0,"取消"
)layout";

constexpr char kRestartFilter[] = "D3dump |*d3dump*|All Files (*.*)|*.*|";

// By key, in English and Chinese.
constexpr DialogText kTexts[] = {
    {"r_file_title", "Select Restart File", "选择重启动文件"},
    {"k_file_title", "Select Input File", "选择输入文件"},
    {"no_restart", "Please choose a restart file.", "请选择重启动文件。"},
    {"no_input", "Please choose an input file, or untick \"Input File (I=)\".",
     "请选择输入文件，或取消勾选“输入文件 (I=)”。"},
    {"missing", "There is no such file now. The job needs it when it starts.",
     "该文件目前不存在，任务启动时必须存在。"},
};

}  // namespace

Flx_RestartJob::Flx_RestartJob(Fl_Window* parent, Application& application)
    : Flx_Base_Dialog(parent, application.language, kLayout, kTexts), application_(application) {}

bool Flx_RestartJob::Initialise() {
  if (!HasAll(kRestart, kChooseRestart, kUseInput, kInput, kChooseInput, kOk, kCancel))
    return false;
  Find(kRestart)->when(FL_WHEN_CHANGED);
  Find(kInput)->when(FL_WHEN_CHANGED);
  SetTabOrder(*Window(), {Find(kRestart), Find(kChooseRestart), Find(kUseInput), Find(kInput),
                          Find(kChooseInput), Find(kOk), Find(kCancel)});
  ShowInputUse();
  Present(*Find(kOk), *Find(kRestart));
  return true;
}

int Flx_RestartJob::HandleWidget(Fl_Widget* widget) {
  if (widget == Find(kCancel)) endCode_ = 1;
  if (widget == Find(kOk) && TakeFiles()) endCode_ = 1;
  if (widget == Find(kChooseRestart)) Choose(kRestart, "r_file_title", kRestartFilter);
  if (widget == Find(kChooseInput))
    Choose(kInput, "k_file_title", RowOfKind(SolverKind::kLsDynaSingle).jobFilter);
  if (widget == Find(kUseInput)) {
    ShowInputUse();
    if (Find(kInput)->active()) Find(kInput)->take_focus();
  }
  for (Fl_Input* input : {Find(kRestart), Find(kInput)}) {
    if (widget == input) MarkMissing(*input);
  }
  return endCode_ > 0 ? 0 : -1;
}

void Flx_RestartJob::ShowInputUse() {
  Find(kUseInput)->value() ? Find(kInput)->activate() : Find(kInput)->deactivate();
}

void Flx_RestartJob::MarkMissing(Fl_Input& input) {
  const std::string path = PathIn(input);
  const bool missing = !path.empty() && !RestartFileExists(path);
  input.textcolor(missing ? Theme::kError : Theme::kText);
  SetTip(input, missing ? Shown("missing") : std::string());
  input.redraw();
}

void Flx_RestartJob::Choose(WidgetName<Fl_Input> input, const char* titleKey,
                            const std::string& filter) {
  SettingsAndPaths& settings = application_.SettingsAndFiles();
  const std::string path =
      AskForFile({Window(), Shown(titleKey), filter, settings.Get().last_path});
  if (path.empty()) return;
  KeepFolderOf(path, settings, &Settings::last_path);
  Find(input)->value(ToUi(path).c_str());
  if (Find(input) == Find(kInput)) Find(kUseInput)->value(1);
  ShowInputUse();
  MarkMissing(*Find(input));
}

bool Flx_RestartJob::TakeFiles() {
  const std::string restartFile = PathIn(*Find(kRestart));
  const bool useInput = Find(kUseInput)->value() == 1;
  const std::string inputFile = PathIn(*Find(kInput));
  if (restartFile.empty()) return AskFor(kRestart, "no_restart"), false;
  if (useInput && inputFile.empty()) return AskFor(kInput, "no_input"), false;
  restartFile_ = restartFile;
  if (useInput) inputFile_ = inputFile;
  return true;
}

void Flx_RestartJob::AskFor(WidgetName<Fl_Input> input, const char* key) {
  Inform(ToUi(application_.Title()), Shown(key));
  Find(input)->take_focus();
}
