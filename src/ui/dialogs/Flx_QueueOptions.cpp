#include "ui/dialogs/Flx_QueueOptions.h"

#include <FL/Fl_Box.H>
#include <FL/Fl_Button.H>

#include <algorithm>
#include <iterator>
#include <utility>

#include "core/SystemServices.h"
#include "ui/dialogs/ComnFileDialog.h"
#include "ui/dialogs/DialogTools.h"
#include "ui/dialogs/FileQuestions.h"
#include "ui/fltk/Theme.h"
#include "ui/text/Encoding.h"
#include "util/files/FileDirWrapper.h"
#include "util/text/PlainText.h"

namespace {

const char kLayout[] =
    R"LAYOUT(ID_WINDOW,Window,"Queue Options",300,200,640,454,1,1,49,49,1,0,14,56,1,99,"",0,0,0,0,"队列选项"
ID_LABEL1,Box,"Jobs that the last session left",12,10,242,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0,"上次会话留下的任务"
ID_CHOICE1,Choice,"",268,10,284,24,1,14,55,15,0,0,12,56,4,99,"",0,0,14,56
ID_LABEL2,Box,"Decks that share a folder",12,39,242,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0,"位于同一文件夹的关键字文件"
ID_CHOICE2,Choice,"",268,39,284,24,1,14,55,15,0,0,12,56,4,99,"",0,0,14,56
ID_LABEL3,Box,"Console of the solvers",12,68,242,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0,"求解器的控制台"
ID_CHOICE3,Choice,"",268,68,284,24,1,14,55,15,0,0,12,56,4,99,"",0,0,14,56
ID_LABEL4,Box,"Failures in a row for a pause (0: never)",12,97,242,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0,"连续失败多少次后暂停（0：从不）"
ID_INPUT1,Input,"",268,97,70,24,3,3,55,15,0,0,12,56,4,99,"",0,0,14,0
ID_LABEL5,Box,"Free space that a job needs to start (MB)",12,126,242,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0,"启动任务所需的可用空间 (MB)"
ID_INPUT2,Input,"",268,126,70,24,3,3,55,15,0,0,12,56,4,99,"",0,0,14,0
ID_LABEL6,Box,"Report after the last job",12,155,242,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0,"最后一个任务之后的报告"
ID_INPUT3,Input,"",268,155,326,24,3,3,55,15,0,0,12,56,4,99,"",0,0,14,0
ID_BUTTON1,Button,"...",600,155,28,24,2,3,49,49,0,0,12,56,0,99,"",0,0,0,0
ID_LABEL7,Box,"Post-processor",12,184,242,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0,"后处理器"
ID_INPUT4,Input,"",268,184,326,24,3,3,55,15,0,0,12,56,4,99,"",0,0,14,0
ID_BUTTON2,Button,"...",600,184,28,24,2,3,49,49,0,0,12,56,0,99,"",0,0,0,0
ID_LABEL8,Box,"Text viewer",12,213,242,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0,"文本查看程序"
ID_INPUT5,Input,"",268,213,326,24,3,3,55,15,0,0,12,56,4,99,"",0,0,14,0
ID_BUTTON3,Button,"...",600,213,28,24,2,3,49,49,0,0,12,56,0,99,"",0,0,0,0
ID_LABEL9,Box,"Terminal of the consoles (Linux)",12,242,242,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0,"控制台的终端程序 (Linux)"
ID_INPUT6,Input,"",268,242,326,24,3,3,55,15,0,0,12,56,4,99,"",0,0,14,0
ID_BUTTON4,Button,"...",600,242,28,24,2,3,49,49,0,0,12,56,0,99,"",0,0,0,0
ID_LABEL10,Box,"A running job is marked (0: never) when",12,277,616,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0,"正在运行的任务在下列情况下加标记（0：从不）"
ID_LABEL11,Box,"it writes nothing for (minutes)",24,303,228,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0,"没有输出的时间（分钟）"
ID_INPUT7,Input,"",260,303,52,24,3,3,55,15,0,0,12,56,4,99,"",0,0,14,0
ID_LABEL12,Box,"its time step falls below (% of the first)",318,303,256,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0,"时间步长低于首步的 (%)"
ID_INPUT8,Input,"",576,303,52,24,3,3,55,15,0,0,12,56,4,99,"",0,0,14,0
ID_LABEL13,Box,"its energy ratio is away from 1 by (%)",24,332,228,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0,"能量比偏离 1 超过 (%)"
ID_INPUT9,Input,"",260,332,52,24,3,3,55,15,0,0,12,56,4,99,"",0,0,14,0
ID_LABEL14,Box,"hourglass energy is above (% of internal)",318,332,256,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0,"沙漏能超过内能的 (%)"
ID_INPUT10,Input,"",576,332,52,24,3,3,55,15,0,0,12,56,4,99,"",0,0,14,0
ID_LABEL15,Box,"mass was added, above (%)",24,361,228,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0,"附加质量超过 (%)"
ID_INPUT11,Input,"",260,361,52,24,3,3,55,15,0,0,12,56,4,99,"",0,0,14,0
ID_LABEL16,Box,"it needs more of the free space than (%)",318,361,256,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0,"其余计算所需超过可用空间的 (%)"
ID_INPUT12,Input,"",576,361,52,24,3,3,55,15,0,0,12,56,4,99,"",0,0,14,0
ID_CHECKBOX1,Check_Button,"values are not a number or infinite",20,390,400,24,0,3,49,56,0,0,12,56,20,99,"",0,0,0,0,"出现非数值或无穷大"
ID_LABEL20,Box,"",12,420,520,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0
ID_BUTTON5,Button,"Close",548,420,80,24,2,3,49,49,0,0,12,56,0,99,"",0,0,0,0,"关闭"
)LAYOUT";

// By key, in English and Chinese.
constexpr DialogText kTexts[] = {
    {"jobs_0", "are dropped", "放弃"},
    {"jobs_1", "are offered", "提供恢复"},
    {"jobs_2", "are restored at once", "立即恢复"},
    {"apart_0", "overwrite each other's results", "相互覆盖计算结果"},
    {"apart_1", "the window asks", "由主窗口询问"},
    {"apart_2", "keep their results apart", "分开保存结果"},
    {"console_0", "a window", "窗口"},
    {"console_1", "a minimised window", "最小化的窗口"},
    {"console_2", "none; what is printed is kept", "无窗口，保留输出"},
    {"at_once", "What is changed holds at once.", "修改立即生效。"},
    {"number", "This is a whole number, %s to %s.", "应为 %s 到 %s 之间的整数。"},
    {"no_program", "There is no such program.", "此程序不存在。"},
    {"no_ending", "A report ends in .html, .csv, .txt or .tsv.",
     "报告的扩展名应为 .html、.csv、.txt 或 .tsv。"},
    {"no_folder", "Give a whole path, in a folder that exists.",
     "请给出完整路径，其文件夹必须存在。"},
    {"choose_report", "Report after the last job", "最后一个任务之后的报告"},
    {"choose_program", "Choose the program", "选择程序"},
};

constexpr char kPrograms[] = "Programs (*.exe)|*.exe|";
constexpr char kReports[] = "HTML, CSV, TXT, TSV|*.html;*.csv;*.txt;*.tsv|";

struct ChoiceField {
  WidgetName<Fl_Choice> choice;
  int Settings::*setting;
  const char* entries;  // the keys of its entries begin with it
};
using Options = Flx_QueueOptions;
constexpr ChoiceField kChoices[] = {
    {Options::kJobs, &Settings::keep_jobs, "jobs_"},
    {Options::kApart, &Settings::separate_results, "apart_"},
    {Options::kConsole, &Settings::console, "console_"},
};

struct NumberField {
  WidgetName<Fl_Input> input;
  int Settings::*setting;
  int most;
};
constexpr NumberField kNumbers[] = {
    {Options::kFailures, &Settings::stop_after_failures, 1000000},
    {Options::kFree, &Settings::min_free_mb, 1000000000},
    {Options::kSilence, &Settings::health_silence_minutes, 1000000},
    {Options::kStep, &Settings::health_step_percent, 100},
    {Options::kEnergy, &Settings::health_energy_percent, 1000000},
    {Options::kHourglass, &Settings::health_hourglass_percent, 1000000},
    {Options::kMass, &Settings::health_mass_percent, 1000000},
    {Options::kDisk, &Settings::health_disk_percent, 1000000},
};

struct PathField {
  WidgetName<Fl_Input> input;
  WidgetName<Fl_Button> button;
  std::string Settings::*setting;
  bool isProgram;
};
constexpr PathField kPaths[] = {
    {Options::kReport, Options::kChooseReport, &Settings::report_file, false},
    {Options::kPost, Options::kChoosePost, &Settings::post_processor, true},
    {Options::kViewer, Options::kChooseViewer, &Settings::viewer, true},
    {Options::kTerminal, Options::kChooseTerminal, &Settings::xterm_path, true},
};

bool HasReportEnding(const std::string& path) {
  constexpr const char* kEndings[] = {".html", ".htm", ".csv", ".txt", ".tsv"};
  return std::any_of(std::begin(kEndings), std::end(kEndings),
                     [&](const char* ending) { return EndsInAnyCase(path, ending); });
}

}  // namespace

Flx_QueueOptions::Flx_QueueOptions(Fl_Window* parent, Application& application)
    : Flx_Base_Dialog(parent, application.language, kLayout, kTexts),
      settings_(application.SettingsAndFiles()) {}

bool Flx_QueueOptions::Initialise() {
  for (const ChoiceField& field : kChoices) {
    if (!Find(field.choice)) return false;
    Find(field.choice)->when(FL_WHEN_RELEASE_ALWAYS);
  }
  const bool isWhole =
      std::all_of(std::begin(kNumbers), std::end(kNumbers),
                  [this](const NumberField& field) { return Find(field.input) != nullptr; }) &&
      std::all_of(std::begin(kPaths), std::end(kPaths),
                  [this](const PathField& field) { return HasAll(field.input, field.button); });
  if (!isWhole || !HasAll(kFinite, kHint, kClose)) return false;
  ShowSettings();
  Say(Shown("at_once"), false);
  Present(*Find(kClose), *Find(kClose));
  return true;
}

void Flx_QueueOptions::ShowSettings() {
  const Settings& settings = settings_.Get();
  for (std::size_t i = 0; i < std::size(kChoices); ++i) {
    const ChoiceField& field = kChoices[i];
    std::vector<std::string> entries;
    for (const char digit : {'0', '1', '2'})
      entries.push_back(Shown(std::string(field.entries) + digit));
    choices_[i].Show(*Find(field.choice), entries, std::clamp(settings.*field.setting, 0, 2));
  }
  for (const NumberField& field : kNumbers)
    ShowStored(*Find(field.input), std::to_string(settings.*field.setting));
  for (const PathField& field : kPaths)
    ShowStored(*Find(field.input), ToUi(settings.*field.setting));
  Find(kFinite)->value(settings.health_not_finite != 0);
}

void Flx_QueueOptions::Say(const std::string& text, bool isWrong) {
  ShowLabel(*Find(kHint), text);
  Find(kHint)->labelcolor(isWrong ? Theme::kError : Theme::kMuted);
  Find(kHint)->redraw();
}

int Flx_QueueOptions::HandleWidget(Fl_Widget* widget) {
  if (widget == Find(kClose)) {
    if (wrong_.empty()) return 0;
    wrong_.back().first->take_focus();
    return -1;
  }
  for (const ChoiceField& field : kChoices) {
    if (widget == Find(field.choice)) settings_.Set(field.setting, Find(field.choice)->value());
  }
  if (widget == Find(kFinite))
    settings_.Set(&Settings::health_not_finite, static_cast<int>(Find(kFinite)->value()));
  for (const NumberField& field : kNumbers) {
    if (widget != Find(field.input)) continue;
    const auto number = WholeNumber(Find(field.input)->value(), 0, field.most);
    if (number) settings_.Set(field.setting, static_cast<int>(*number));
    Judge(*Find(field.input), number ? std::string() : FillNumber("0", std::to_string(field.most)));
  }
  for (const PathField& field : kPaths) {
    if (widget == Find(field.input)) TakePath(*Find(field.input), field.setting, field.isProgram);
    if (widget == Find(field.button))
      ChoosePath(*Find(field.input), field.setting, field.isProgram);
  }
  return -1;
}

std::string Flx_QueueOptions::FillNumber(const std::string& least, const std::string& most) const {
  std::string text = Shown("number");
  for (const std::string& value : {least, most}) {
    const std::size_t at = text.find("%s");
    if (at != std::string::npos) text.replace(at, 2, value);
  }
  return text;
}

// What is wrong with what was typed; empty: it is stored. What is wrong stays in its field.
void Flx_QueueOptions::Judge(Fl_Input& input, const std::string& why) {
  std::erase_if(wrong_, [&](const auto& one) { return one.first == &input; });
  if (why.empty()) {
    input.clear_changed();
  } else {
    wrong_.emplace_back(&input, why);
  }
  input.textcolor(why.empty() ? Theme::kText : Theme::kError);
  wrong_.empty() ? Say(Shown("at_once"), false) : Say(wrong_.back().second, true);
  input.redraw();
}

std::string Flx_QueueOptions::RefusalOf(const std::string& path, bool isProgram) const {
  if (path.empty()) return {};
  if (isProgram) {
    const bool isThere = FileDirWrapper::FileExists(path) || ProgramExists(path);
    return isThere ? std::string() : Shown("no_program");
  }
  std::string folder;
  FileDirWrapper::DirOf(path, folder);
  if (!HasReportEnding(path)) return Shown("no_ending");
  const bool isWhole =
      FileDirWrapper::AbsolutePath(path) == path && FileDirWrapper::IsFolder(folder);
  return isWhole ? std::string() : Shown("no_folder");
}

void Flx_QueueOptions::TakePath(Fl_Input& input, std::string Settings::*setting, bool isProgram) {
  const std::string path = PathIn(input);
  // One that stands there already may be wrong here: the file may serve another computer too.
  const std::string why =
      path == settings_.Get().*setting ? std::string() : RefusalOf(path, isProgram);
  if (why.empty()) settings_.Set(setting, path);
  Judge(input, why);
}

void Flx_QueueOptions::ChoosePath(Fl_Input& input, std::string Settings::*setting, bool isProgram) {
  std::string folder;
  FileDirWrapper::DirOf(settings_.Get().*setting, folder);
  std::string path;
  if (isProgram) {
    path = AskForFile(
        {Window(), Shown("choose_program"), ComnFileDialog::ProgramFilter(kPrograms), folder});
  } else {
    ComnFileDialog dialog;
    dialog.SetParentWindow(Window());
    dialog.SetOpen(false);
    dialog.SetCaption(Shown("choose_report"));
    dialog.SetFilter(kReports);
    dialog.SetDefExt("html");
    dialog.SetDefFile("report.html");
    dialog.SetInitDir(folder);
    if (dialog.DoModal()) path = dialog.GetPathName();
  }
  if (path.empty()) return;
  input.value(ToUi(path).c_str());
  TakePath(input, setting, isProgram);
}
