#include "ui/dialogs/Flx_MppSettings.h"

#include <FL/Fl.H>
#include <FL/Fl_Button.H>
#include <FL/Fl_Scroll.H>

#include <algorithm>
#include <chrono>
#include <system_error>
#include <thread>
#include <utility>

#include "solvers/SolverKinds.h"
#include "ui/dialogs/ComnFileDialog.h"
#include "ui/dialogs/DialogTools.h"
#include "ui/dialogs/FileQuestions.h"
#include "ui/dialogs/MpiKinds.h"
#include "ui/text/Encoding.h"
#include "util/process/OwnThread.h"
#include "util/text/PlainText.h"

namespace {

constexpr std::chrono::milliseconds kAtOnce{100};  // a folder that answers does so by then
constexpr double kLookSeconds = 0.1;

const char kLayout[] =
    R"layout(ID_WINDOW,Window,"MPP Settings",1226,368,400,420,1,1,49,49,1,0,14,56,1,99,"",0,0,0,0,"MPP 设置"
ID_CHECKBOX1,Check_Button,"Use MPP",10,6,80,24,0,3,49,56,0,0,12,56,20,99,"Run LS-DYNA jobs through MPI with the MPP solvers",0,0,0,0,"使用 MPP","通过 MPI 用 MPP 求解器运行 LS-DYNA 任务"
ID_CHOICE2,Choice,"",100,6,294,24,1,14,55,15,0,0,12,56,4,99,"",0,0,14,56
ID_LABEL1,Box,"Group",10,36,50,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0,"任务组"
ID_CHOICE1,Choice,"",100,36,294,24,1,14,55,15,0,0,12,56,4,99,"",0,0,14,56
ID_LABEL2,Box,"Memory2 (MB)",10,66,64,24,0,0,49,49,0,0,12,56,20,99,"Memory2 (MB)",0,0,0,0,"内存2 (MB)"
ID_INPUT1,Input,"",100,66,294,24,3,3,7,15,0,0,12,56,4,99,"Memory of each process but the first (memory2=), in MB",0,0,14,0,"","除首个进程外每个进程的内存 (memory2=)，单位 MB"
ID_LABEL4,Box,"MPI Param",10,96,100,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0,"MPI 参数"
ID_INPUT2,Input,"",100,96,294,24,3,3,7,15,0,0,12,56,4,99,"Arguments for the MPI launcher, in front of the host list",0,0,14,0,"","MPI 启动程序的参数，位于主机列表之前"
ID_LABEL5,Box,"MPP Param",10,126,100,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0,"MPP 参数"
ID_INPUT3,Input,"",100,126,294,24,3,3,7,15,0,0,12,56,4,99,"Arguments for the MPP solver, at the end of its command line",0,0,14,0,"","MPP 求解器的参数，位于命令行末尾"
ID_LABEL6,Box,"MPP Solver(s)",10,156,100,24,0,0,49,49,0,0,12,56,20,99,"MPP solver, single precision",0,0,0,0,"MPP 求解器(单)","单精度 MPP 求解器"
ID_INPUT4,Input,"",100,156,270,24,3,3,7,15,0,0,12,56,4,99,"MPP solver, single precision",0,0,14,0,"","单精度 MPP 求解器"
ID_BUTTON5,Button,"...",370,156,24,24,2,3,49,49,0,0,12,56,0,99,"Choose the program",0,0,0,0,"...","选择程序"
ID_LABEL7,Box,"MPP Solver(d)",10,186,100,24,0,0,49,49,0,0,12,56,20,99,"MPP solver, double precision",0,0,0,0,"MPP 求解器(双)","双精度 MPP 求解器"
ID_INPUT5,Input,"",100,186,270,24,3,3,7,15,0,0,12,56,4,99,"MPP solver, double precision",0,0,14,0,"","双精度 MPP 求解器"
ID_BUTTON6,Button,"...",370,186,24,24,2,3,49,49,0,0,12,56,0,99,"Choose the program",0,0,0,0,"...","选择程序"
ID_SCROLL1,Scroll,"",10,216,384,140,3,3,7,15,0,0,12,56,0,99,"",0,0,0,0
ID_BUTTON2,Button,"Edit Host File...",10,364,185,24,2,3,49,49,0,0,12,56,0,99,"Open the host file in the text editor",0,0,0,0,"编辑主机文件...","在文本编辑器中打开主机文件"
ID_BUTTON4,Button,"Reload Host File",205,364,185,24,2,3,49,49,0,0,12,56,0,99,"Read the host file again",0,0,0,0,"重新读取主机文件","再次读取主机文件"
ID_BUTTON1,Button,"Stop Running",10,393,185,24,2,3,49,49,0,0,12,56,0,99,"Ask the group's running job to write a restart file and end",0,0,0,0,"停止计算","要求该组正在运行的任务写出重启动文件后结束"
ID_BUTTON3,Button,"Close",205,393,185,24,2,3,49,49,0,0,12,56,0,99,"",0,0,0,0,"关闭"
)layout";

// By key, in English and Chinese.
constexpr DialogText kTexts[] = {
    {"lab_mpp_bg_exist", "File bg_switch does not exists", "bg_switch 文件不存在"},
    {"mpi_other", "Other (see MPI Param)", "其他 (见 MPI 参数)"},
    {"solver_s_title", "Select Single MPP LS-DYNA Solver", "选择单精度 MPP LS-DYNA 求解器"},
    {"solver_d_title", "Select Double MPP LS-DYNA Solver", "选择双精度 MPP LS-DYNA 求解器"},
    {"asked", "The running job was asked to write a restart file and end.",
     "已要求正在运行的任务写出重启动文件后结束。"},
};

// Leading digits; 0 for anything else.
std::uint64_t Megabytes(const std::string& text) {
  const std::size_t begin = std::min(text.find_first_not_of(" \t"), text.size());
  std::uint64_t value = 0;
  for (std::size_t at = begin; at < text.size() && IsDigit(text[at]); ++at)
    value = std::min<std::uint64_t>(value * 10 + static_cast<unsigned>(text[at] - '0'),
                                    Settings::kMostMemory);
  return value;
}

}  // namespace

const Flx_MppSettings::TextField Flx_MppSettings::kTextFields[] = {
    {kMpiParam, &Settings::mpi_param, false},
    {kMppParam, &Settings::mpp_param, false},
    {kSingleSolver, &Settings::mpp_solver_s, true},
    {kDoubleSolver, &Settings::mpp_solver_d, true},
};

Flx_MppSettings::Flx_MppSettings(Fl_Window* parent, Application& application)
    : Flx_Base_Dialog(parent, application.language, kLayout, kTexts),
      application_(application),
      settings_(application.SettingsAndFiles()) {
  SetTexts(HostEditor::kTexts);
}

Flx_MppSettings::~Flx_MppSettings() {
  Fl::remove_timeout(LookAtAnswer, this);
}

bool Flx_MppSettings::Initialise() {
  if (!HasAll(kUseMpp, kMpi, kGroup, kMemoryLabel, kMemory, kMpiParam, kMppParam, kSingleSolver,
              kChooseSingle, kDoubleSolver, kChooseDouble, kHosts, kEditHosts, kReloadHosts, kStop,
              kClose))
    return false;
  std::vector<std::string> kinds(std::begin(kMpiKinds), std::end(kMpiKinds));
  kinds.push_back(Shown("mpi_other"));
  mpiEntries_.Show(*Find(kMpi), kinds, settings_.Get().mpi);
  Find(kMpi)->callback(
      [](Fl_Widget*, void* self) { static_cast<Flx_MppSettings*>(self)->ChooseMpi(); }, this);
  Find(kMemoryLabel)->labelsize(Find(kMemoryLabel)->labelsize() - 1);  // it would touch its field
  ShowSettings();
  ShowGroups();
  Find(kHosts)->type(Fl_Scroll::VERTICAL);
  hosts_ = std::make_unique<HostEditor>(*Find(kHosts), settings_,
                                        [this](const std::string& key) { return Shown(key); });
  hosts_->Rebuild();
  ShowCurrentGroup();
  Present(*Find(kClose), *Find(kUseMpp));
  return true;
}

void Flx_MppSettings::ShowSettings() {
  const Settings& settings = settings_.Get();
  for (const TextField& field : kTextFields)
    ShowStored(*Find(field.input), ToUi(settings.*field.setting));
  ShowStored(*Find(kMemory), std::to_string(settings.memory2));
  Find(kUseMpp)->value(settings.use_mpp);
  // Any number that is none of the known kinds means another launcher, the last entry.
  constexpr int kKnown = static_cast<int>(std::size(kMpiKinds));
  Find(kMpi)->value(settings.mpi >= 0 && settings.mpi < kKnown ? settings.mpi : kKnown);
}

void Flx_MppSettings::ShowGroups() {
  JobGroupManager& manager = application_.Manager();
  std::vector<std::string> names;
  for (int index = 0; index < manager.GroupCount(); ++index) {
    const auto group = manager.GroupAt(index);
    names.push_back(group ? ToUi(group->Name()) : std::string());
  }
  groupEntries_.Show(*Find(kGroup), names, manager.CurrentGroupIndex());
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
  if (widget == Find(kClose)) return 0;
  if (widget == Find(kEditHosts)) EditHostFile();
  if (widget == Find(kReloadHosts)) ReloadHostFile();
  if (widget == Find(kStop)) StopRunning();
  if (widget == Find(kChooseSingle))
    ChooseProgram(kSingleSolver, &Settings::mpp_solver_s, "solver_s_title");
  if (widget == Find(kChooseDouble))
    ChooseProgram(kDoubleSolver, &Settings::mpp_solver_d, "solver_d_title");
  if (widget == Find(kGroup)) ChooseGroup();
  if (widget == Find(kMemory)) StoreMemory();
  if (widget == Find(kUseMpp)) settings_.Set(&Settings::use_mpp, Find(kUseMpp)->value() == 1);
  for (const TextField& field : kTextFields) {
    if (widget == Find(field.input)) StoreText(field);
  }
  return -1;
}

void Flx_MppSettings::ChooseMpi() {
  settings_.Set(&Settings::mpi, Find(kMpi)->value());
  ShowCurrentGroup();
}

void Flx_MppSettings::ChooseGroup() {
  application_.Manager().SetCurrentGroup(Find(kGroup)->value());
  ShowCurrentGroup();
  if (OnGroup) OnGroup();
}

void Flx_MppSettings::StoreMemory() {
  Fl_Input* input = Find(kMemory);
  settings_.Set(&Settings::memory2, Megabytes(input->value()));
  input->clear_changed();
  ShowStored(*input, std::to_string(settings_.Get().memory2));
  ShowCurrentGroup();
}

void Flx_MppSettings::StoreText(const TextField& field) {
  Fl_Input* input = Find(field.input);
  settings_.Set(field.setting, field.path ? PathIn(*input) : FromUi(input->value()));
  input->clear_changed();
}

void Flx_MppSettings::ChooseProgram(WidgetName<Fl_Input> input, std::string Settings::*setting,
                                    const char* titleKey) {
  const std::string filter =
      ComnFileDialog::ProgramFilter(RowOfKind(SolverKind::kLsDynaSingle).programFilter);
  const std::string path =
      AskForProgram({Window(), Shown(titleKey), filter, {}}, settings_, settings_.Get().*setting);
  if (path.empty()) return;
  settings_.Set(setting, path);
  Find(input)->value(ToUi(path).c_str());
}

void Flx_MppSettings::EditHostFile() {
  settings_.WriteHostFile();
  application_.EditTextFile(settings_.hostFile);
}

void Flx_MppSettings::ReloadHostFile() {
  settings_.ReadHostFile();
  HostsChanged();
}

void Flx_MppSettings::HostsChanged() {
  hosts_->Rebuild();
  ShowCurrentGroup();
}

void Flx_MppSettings::StopRunning() {
  if (answer_.valid()) return;  // the folder of the last one does not answer
  request_ = SolverToStop(application_.Manager());
  const auto answer = std::make_shared<std::promise<SenseSwitch>>();
  answer_ = answer->get_future();
  const auto ask = [answer, request = request_] { answer->set_value(AskSolverToStop(request)); };
  const auto failed = [answer](const std::exception&) { answer->set_value(SenseSwitch::kFailed); };
  if (!StartGuarded(ask, failed)) {
    answer_ = {};
    return ReportStop(request_, SenseSwitch::kFailed, application_.Manager().Settings().Log());
  }
  answer_.wait_for(kAtOnce);
  LookAtAnswer(this);
}

void Flx_MppSettings::LookAtAnswer(void* dialog) {
  auto* const self = static_cast<Flx_MppSettings*>(dialog);
  if (self->answer_.wait_for(std::chrono::seconds(0)) != std::future_status::ready)
    return Fl::add_timeout(kLookSeconds, LookAtAnswer, dialog);
  const SenseSwitch answer = self->answer_.get();
  ReportStop(self->request_, answer, self->application_.Manager().Settings().Log());
  if (answer == SenseSwitch::kAsked && self->OnNote) self->OnNote(self->Shown("asked"));
  if (answer != SenseSwitch::kNoSwitch) return;
  self->Inform(ToUi(self->application_.Title()), self->Shown("lab_mpp_bg_exist"));
}
