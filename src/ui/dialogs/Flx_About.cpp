#include "ui/dialogs/Flx_About.h"

#include <FL/Fl_Box.H>
#include <FL/Fl_Button.H>
#include <FL/fl_draw.H>

#include "ui/fltk/Icons.h"
#include "ui/fltk/Labels.h"
#include "ui/fltk/Tip.h"
#include "ui/text/Encoding.h"
#include "util/files/FileDirWrapper.h"

namespace {

constexpr int kPictureSize = 96;
constexpr char kBuilt[] = "Jun 15 2017";
constexpr const char* kRunsOn =
    FileDirWrapper::kSeparator == '\\' ? "64-bit Windows" : "64-bit Linux";

const char kLayout[] =
    R"layout(ID_WINDOW,Window,"About Kestrun 2016 R1",779,213,375,328,1,1,49,49,1,0,14,56,1,99,"",0,0,0,0,"关于 Kestrun 2016 R1"
ID_LABEL1,Box,"",15,11,180,109,0,0,49,49,0,0,12,56,0,99,"",0,0,0,0
ID_LABEL2,Box,"Kestrun 2016",205,26,160,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0
ID_LABEL3,Box,"",205,50,160,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0
ID_LABEL4,Box,"64-bit Windows",205,74,160,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0
ID_LABEL5,Box,"Queues solver jobs in groups, runs them in order,",15,117,345,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0,"将求解任务分组排队，依次启动求解器，"
ID_LABEL6,Box,"watches them and tells how they ended.",15,133,345,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0,"监视运行过程并判断运行结果。"
ID_LABEL7,Box,"Solvers: LS-DYNA (SMP and MPP), INC, Vorel, utility batch.",15,152,345,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0,"求解器：LS-DYNA (SMP 和 MPP)、INC、Vorel、批处理程序。"
ID_LABEL8,Box,"The solvers and MPI are not part of this program;",15,168,345,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0,"求解器和 MPI 不属于本程序，"
ID_LABEL9,Box,"their names belong to their owners.",15,184,345,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0,"其名称归各自所有者所有。"
ID_LABEL10,Box,"This program is based in part on the work of",15,203,345,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0,"本程序部分基于 FLTK 项目的成果"
ID_LABEL11,Box,"the FLTK project (http://www.fltk.org).",15,219,345,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0,"(http://www.fltk.org)。"
ID_LABEL12,Box,"Settings, hosts, groups and log are in the folder",15,238,345,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0,"设置、主机、任务组和日志保存在以下文件夹："
ID_LABEL13,Box,"",15,254,345,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0
ID_BUTTON1,Button,"OK",260,286,80,24,2,3,49,49,0,0,12,56,0,99,"",0,0,0,0,"确定"
)layout";

}  // namespace

Flx_About::Flx_About(Fl_Window* parent, int language, const std::string& workFolder)
    : Flx_Base_Dialog(parent, language, kLayout), workFolder_(workFolder) {}

bool Flx_About::Initialise() {
  if (!HasAll(kPicture, kProgram, kBuildDate, kSystem, kWorkFolder, kOk)) return false;
  Find(kPicture)->image(ProgramPicture(kPictureSize));
  Find(kProgram)->labelfont(FL_HELVETICA_BOLD);
  ShowLabel(*Find(kBuildDate), kBuilt);
  ShowLabel(*Find(kSystem), kRunsOn);
  Fl_Box* folder = Find(kWorkFolder);
  fl_font(folder->labelfont(), folder->labelsize());
  ShowLabel(*folder, FitTail(ToUi(workFolder_), folder->w()));
  SetTip(*folder, ToUi(workFolder_));
  Present(*Find(kOk), *Find(kOk));
  return true;
}

int Flx_About::HandleWidget(Fl_Widget* widget) {
  return widget == Find(kOk) ? 0 : -1;
}
