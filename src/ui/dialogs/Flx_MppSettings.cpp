#include "ui/dialogs/Flx_MppSettings.h"

#include <FL/Fl.H>
#include <FL/Fl_Button.H>
#include <FL/Fl_Scroll.H>

#include <algorithm>

#include "core/SenseSwitch.h"
#include "ui/dialogs/ComnFileDialog.h"
#include "ui/dialogs/MpiKinds.h"
#include "ui/text/Encoding.h"
#include "util/files/FileDirWrapper.h"
#include "util/text/PlainText.h"

namespace {

const char kEnglishLayout[] =
    R"layout(ID_WINDOW,Window,"MPP Settings",1226,368,400,420,1,1,49,49,1,0,14,56,1,99,"",0,0,0,0
ID_CHECKBOX1,Check_Button,"Use MPP",10,6,80,24,0,3,49,56,0,0,12,56,20,99,"Run LS-DYNA jobs through MPI with the MPP solvers",0,0,0,0
ID_CHOICE2,Choice,"",100,6,294,24,1,14,55,15,0,0,12,56,4,99,"",0,0,14,56
ID_LABEL1,Box,"Group",10,36,50,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0
ID_CHOICE1,Choice,"",100,36,294,24,1,14,55,15,0,0,12,56,4,99,"",0,0,14,56
ID_LABEL2,Box,"Memory2 (MB)",10,66,64,24,0,0,49,49,0,0,12,56,20,99,"Memory2 (MB)",0,0,0,0
ID_INPUT1,Input,"",100,66,294,24,3,3,7,15,0,0,12,56,4,99,"Memory of each process but the first (memory2=), in MB",0,0,14,0
ID_LABEL4,Box,"MPI Param",10,96,100,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0
ID_INPUT2,Input,"",100,96,294,24,3,3,7,15,0,0,12,56,4,99,"Arguments for the MPI launcher, in front of the host list",0,0,14,0
ID_LABEL5,Box,"MPP Param",10,126,100,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0
ID_INPUT3,Input,"",100,126,294,24,3,3,7,15,0,0,12,56,4,99,"Arguments for the MPP solver, at the end of its command line",0,0,14,0
ID_LABEL6,Box,"MPP Solver(s)",10,156,100,24,0,0,49,49,0,0,12,56,20,99,"MPP solver, single precision",0,0,0,0
ID_INPUT4,Input,"",100,156,270,24,3,3,7,15,0,0,12,56,4,99,"MPP solver, single precision",0,0,14,0
ID_BUTTON5,Button,"...",370,156,24,24,2,3,49,49,0,0,12,56,0,99,"Choose the program",0,0,0,0
ID_LABEL7,Box,"MPP Solver(d)",10,186,100,24,0,0,49,49,0,0,12,56,20,99,"MPP solver, double precision",0,0,0,0
ID_INPUT5,Input,"",100,186,270,24,3,3,7,15,0,0,12,56,4,99,"MPP solver, double precision",0,0,14,0
ID_BUTTON6,Button,"...",370,186,24,24,2,3,49,49,0,0,12,56,0,99,"Choose the program",0,0,0,0
ID_SCROLL1,Scroll,"",10,216,384,140,3,3,7,15,0,0,12,56,0,99,"",0,0,0,0
ID_BUTTON2,Button,"Edit Host File...",10,364,185,24,2,3,49,49,0,0,12,56,0,99,"Open the host file in the text editor",0,0,0,0
ID_BUTTON4,Button,"Reload Host File",205,364,185,24,2,3,49,49,0,0,12,56,0,99,"Read the host file again",0,0,0,0
ID_BUTTON1,Button,"Stop Running",10,393,185,24,2,3,49,49,0,0,12,56,0,99,"Ask the group's running job to write a restart file and end",0,0,0,0
ID_BUTTON3,Button,"Close",205,393,185,24,2,3,49,49,0,0,12,56,0,99,"",0,0,0,0
)layout";
const char kChineseLayout[] =
    R"layout(ID_WINDOW,Window,"MPP 设置",1226,368,400,420,1,1,49,49,1,0,14,56,1,99,"",0,0,0,0
ID_CHECKBOX1,Check_Button,"使用 MPP",10,6,80,24,0,3,49,56,0,0,12,56,20,99,"通过 MPI 用 MPP 求解器运行 LS-DYNA 任务",0,0,0,0
ID_CHOICE2,Choice,"",100,6,294,24,1,14,55,15,0,0,12,56,4,99,"",0,0,14,56
ID_LABEL1,Box,"任务组",10,36,50,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0
ID_CHOICE1,Choice,"",100,36,294,24,1,14,55,15,0,0,12,56,4,99,"",0,0,14,56
ID_LABEL2,Box,"内存2 (MB)",10,66,64,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0
ID_INPUT1,Input,"",100,66,294,24,3,3,7,15,0,0,12,56,4,99,"除首个进程外每个进程的内存 (memory2=)，单位 MB",0,0,14,0
ID_LABEL4,Box,"MPI 参数",10,96,100,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0
ID_INPUT2,Input,"",100,96,294,24,3,3,7,15,0,0,12,56,4,99,"MPI 启动程序的参数，位于主机列表之前",0,0,14,0
ID_LABEL5,Box,"MPP 参数",10,126,100,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0
ID_INPUT3,Input,"",100,126,294,24,3,3,7,15,0,0,12,56,4,99,"MPP 求解器的参数，位于命令行末尾",0,0,14,0
ID_LABEL6,Box,"MPP 求解器(单)",10,156,100,24,0,0,49,49,0,0,12,56,20,99,"单精度 MPP 求解器",0,0,0,0
ID_INPUT4,Input,"",100,156,270,24,3,3,7,15,0,0,12,56,4,99,"单精度 MPP 求解器",0,0,14,0
ID_BUTTON5,Button,"...",370,156,24,24,2,3,49,49,0,0,12,56,0,99,"选择程序",0,0,0,0
ID_LABEL7,Box,"MPP 求解器(双)",10,186,100,24,0,0,49,49,0,0,12,56,20,99,"双精度 MPP 求解器",0,0,0,0
ID_INPUT5,Input,"",100,186,270,24,3,3,7,15,0,0,12,56,4,99,"双精度 MPP 求解器",0,0,14,0
ID_BUTTON6,Button,"...",370,186,24,24,2,3,49,49,0,0,12,56,0,99,"选择程序",0,0,0,0
ID_SCROLL1,Scroll,"",10,216,384,140,3,3,7,15,0,0,12,56,0,99,"",0,0,0,0
ID_BUTTON2,Button,"编辑主机文件...",10,364,185,24,2,3,49,49,0,0,12,56,0,99,"在文本编辑器中打开主机文件",0,0,0,0
ID_BUTTON4,Button,"重新读取主机文件",205,364,185,24,2,3,49,49,0,0,12,56,0,99,"再次读取主机文件",0,0,0,0
ID_BUTTON1,Button,"停止计算",10,393,185,24,2,3,49,49,0,0,12,56,0,99,"要求该组正在运行的任务写出重启动文件后结束",0,0,0,0
ID_BUTTON3,Button,"关闭",205,393,185,24,2,3,49,49,0,0,12,56,0,99,"",0,0,0,0
)layout";

constexpr std::int32_t kMostMemory = 2147483647;  // what the settings file can hold

// Leading digits; 0 for anything else.
std::uint64_t Megabytes(const std::string& text) {
  const std::size_t begin = std::min(text.find_first_not_of(" \t"), text.size());
  std::uint64_t value = 0;
  for (std::size_t at = begin; at < text.size() && IsDigit(text[at]); ++at)
    value =
        std::min<std::uint64_t>(value * 10 + static_cast<unsigned>(text[at] - '0'), kMostMemory);
  return value;
}

}  // namespace

const Flx_MppSettings::PathOrText Flx_MppSettings::kTexts[] = {
    {"ID_INPUT2", &Settings::mpi_param, false},
    {"ID_INPUT3", &Settings::mpp_param, false},
    {"ID_INPUT4", &Settings::mpp_solver_s, true},
    {"ID_INPUT5", &Settings::mpp_solver_d, true},
};

Flx_MppSettings::Flx_MppSettings(Fl_Window* parent, Application& application)
    : Flx_Base_Dialog(parent, application.language),
      application_(application),
      settings_(application.SettingsAndFiles()) {
  SetLayouts(kEnglishLayout, kChineseLayout);
  SetAllTexts();
}

void Flx_MppSettings::SetAllTexts() {
  SetTexts("lab_mpp_bg_exist", "File bg_switch does not exists", "bg_switch 文件不存在");
  SetTexts("ok", "OK", "确定");
  SetTexts("mpi_other", "Other (see MPI Param)", "其他 (见 MPI 参数)");
  SetTexts("solver_s_title", "Select Single MPP LS-DYNA Solver", "选择单精度 MPP LS-DYNA 求解器");
  SetTexts("solver_d_title", "Select Double MPP LS-DYNA Solver", "选择双精度 MPP LS-DYNA 求解器");
  SetTexts("solver_filter", "LS-DYNA Solver (*.exe)|*.exe|", "LS-DYNA 求解器 (*.exe)|*.exe|");
  SetTexts("all_filter", "All Files (*.*)|*|", "所有文件 (*.*)|*|");
  SetTexts("asked", "The running job was asked to write a restart file and end.",
           "已要求正在运行的任务写出重启动文件后结束。");
  SetTexts("host_name", "Host", "主机");
  SetTexts("host_cpus", "CPUs", "CPU 数");
  SetTexts("host_uses", "Group uses", "该组使用");
  SetTexts("host_unused", "not used", "不使用");
  SetTexts("host_add", "Add Host", "添加主机");
  SetTexts("host_remove", "Remove this host", "删除该主机");
  SetTexts("host_bad_name", "A host's name is one word that does not begin with #.",
           "主机名中不能有空格，且不能以 # 开头。");
  SetTexts("host_bad_cpus", "The number of CPUs is a whole number, 0 to 100000.",
           "CPU 数为 0 到 100000 之间的整数。");
  SetTexts("host_newer",
           "The host file has been changed by another program and was read again. Please repeat "
           "your change.",
           "主机文件已被其他程序修改，现已重新读取。请重新修改。");
  SetTexts("host_failed", "The host file could not be written; nothing was changed.",
           "无法写入主机文件，未作任何修改。");
  SetTexts("hosts_own", "The group uses the CPUs of the table.", "该组使用表中的 CPU 数。");
  SetTexts("hosts_group", "The group has its own numbers of CPUs: ", "该组有自己的 CPU 数：");
  SetTexts("hosts_misfit",
           "The group's own numbers of CPUs do not fit these hosts and are not used: ",
           "该组自己的 CPU 数与主机数不符，未采用：");
  SetTexts("hosts_none", "The launcher gets no host list; MPI Param says where the solver runs.",
           "不向启动程序传递主机列表，由 MPI 参数指定运行位置。");
  SetTexts("hosts_more", "Hosts that are in the file only: ", "仅在文件中列出的主机数：");
}

bool Flx_MppSettings::FindWidgets() {
  useMpp_ = Find<Fl_Check_Button>("ID_CHECKBOX1");
  groups_ = Find<Fl_Choice>("ID_CHOICE1");
  mpi_ = Find<Fl_Choice>("ID_CHOICE2");
  memory_ = Find<Fl_Input>("ID_INPUT1");
  for (const char* id :
       {"ID_BUTTON1", "ID_BUTTON2", "ID_BUTTON3", "ID_BUTTON4", "ID_BUTTON5", "ID_BUTTON6"}) {
    if (!Find<Fl_Button>(id)) return false;
  }
  for (const PathOrText& text : kTexts) {
    if (!Find<Fl_Input>(text.id)) return false;
  }
  return useMpp_ && groups_ && mpi_ && memory_ && Find<Fl_Scroll>("ID_SCROLL1");
}

bool Flx_MppSettings::Initialise() {
  if (!FindWidgets()) return false;
  std::vector<std::string> kinds(std::begin(kMpiKinds), std::end(kMpiKinds));
  kinds.push_back(Shown("mpi_other"));
  mpiEntries_.Show(*mpi_, kinds, settings_.Get().mpi);
  mpi_->callback([](Fl_Widget*, void* self) { static_cast<Flx_MppSettings*>(self)->ChooseMpi(); },
                 this);
  ShowSettings();
  ShowGroups();
  auto* area = Find<Fl_Scroll>("ID_SCROLL1");
  area->type(Fl_Scroll::VERTICAL);
  hosts_ = std::make_unique<HostEditor>(*area, settings_,
                                        [this](const std::string& key) { return Shown(key); });
  hosts_->Rebuild();
  ShowCurrentGroup();
  auto* close = Find<Fl_Button>("ID_BUTTON3");
  close->shortcut(FL_Enter);
  CentreOnParent();
  useMpp_->take_focus();
  return true;
}

void Flx_MppSettings::ShowSettings() {
  const Settings& settings = settings_.Get();
  for (const PathOrText& text : kTexts)
    ShowStored(*Find<Fl_Input>(text.id), ToUi(settings.*text.field));
  ShowStored(*memory_, std::to_string(settings.memory2));
  useMpp_->value(settings.use_mpp);
  // Any number that is none of the known kinds means another launcher, the last entry.
  constexpr int kKnown = static_cast<int>(std::size(kMpiKinds));
  mpi_->value(settings.mpi >= 0 && settings.mpi < kKnown ? settings.mpi : kKnown);
}

void Flx_MppSettings::ShowGroups() {
  JobGroupManager& manager = application_.Manager();
  std::vector<std::string> names;
  for (int index = 0; index < manager.GroupCount(); ++index) {
    const auto group = manager.GroupAt(index);
    names.push_back(group ? ToUi(group->Name()) : std::string());
  }
  groupEntries_.Show(*groups_, names, manager.CurrentGroupIndex());
}

void Flx_MppSettings::ShowCurrentGroup() {
  const auto group = application_.Manager().CurrentGroup();
  hosts_->ShowGroup(group ? group->Text() : std::string());
}

void Flx_MppSettings::QueueChanged() {
  ShowSettings();
  ShowCurrentGroup();
}

int Flx_MppSettings::HandleWidget(Fl_Widget* widget) {
  if (widget == FindWidget("ID_BUTTON3")) return 0;
  if (widget == FindWidget("ID_BUTTON2")) EditHostFile();
  if (widget == FindWidget("ID_BUTTON4")) ReloadHostFile();
  if (widget == FindWidget("ID_BUTTON1")) StopRunning();
  if (widget == FindWidget("ID_BUTTON5")) ChooseProgram(kTexts[2], "solver_s_title");
  if (widget == FindWidget("ID_BUTTON6")) ChooseProgram(kTexts[3], "solver_d_title");
  if (widget == groups_) ChooseGroup();
  if (widget == memory_) StoreMemory();
  if (widget == useMpp_) settings_.Set(&Settings::use_mpp, useMpp_->value() == 1);
  for (const PathOrText& text : kTexts) {
    if (widget == FindWidget(text.id)) StoreText(text);
  }
  return -1;
}

void Flx_MppSettings::ChooseMpi() {
  settings_.Set(&Settings::mpi, mpi_->value());
  ShowCurrentGroup();
}

void Flx_MppSettings::ChooseGroup() {
  application_.Manager().SetCurrentGroup(groups_->value());
  ShowCurrentGroup();
  if (OnGroup) OnGroup();
}

void Flx_MppSettings::StoreMemory() {
  settings_.Set(&Settings::memory2, Megabytes(memory_->value()));
  memory_->clear_changed();
  ShowStored(*memory_, std::to_string(settings_.Get().memory2));
  ShowCurrentGroup();
}

void Flx_MppSettings::StoreText(const PathOrText& text) {
  auto* input = Find<Fl_Input>(text.id);
  settings_.Set(text.field, text.path ? PathIn(*input) : FromUi(input->value()));
  input->clear_changed();
}

void Flx_MppSettings::ChooseProgram(const PathOrText& text, const char* titleKey) {
  ComnFileDialog dialog;
  dialog.SetParentWindow(Window());
  dialog.SetOpen(true);
  dialog.SetCaption(Shown(titleKey));
  dialog.SetFilter(ComnFileDialog::ProgramFilter(Shown("solver_filter"), Shown("all_filter")));
  std::string folder = settings_.Get().last_solver_path;
  if (folder.empty()) FileDirWrapper::DirOf(settings_.Get().*text.field, folder);
  dialog.SetInitDir(folder);
  if (!dialog.DoModal()) return;
  const std::string path = dialog.GetPathName();
  if (FileDirWrapper::DirOf(path, folder)) settings_.Set(&Settings::last_solver_path, folder);
  settings_.Set(text.field, path);
  Find<Fl_Input>(text.id)->value(ToUi(path).c_str());
}

void Flx_MppSettings::EditHostFile() {
  settings_.WriteHostFile();
  application_.ViewTextFile(settings_.hostFile);
}

void Flx_MppSettings::ReloadHostFile() {
  settings_.ReadHostFile();
  hosts_->Rebuild();
  ShowCurrentGroup();
}

void Flx_MppSettings::StopRunning() {
  const SenseSwitch result = AskSolverToStop(application_.Manager());
  if (result == SenseSwitch::kAsked && OnNote) OnNote(Shown("asked"));
  if (result != SenseSwitch::kNoSwitch) return;
  InformOver(Window(), ToUi(application_.Title()), Shown("lab_mpp_bg_exist"), Shown("ok"));
}
