#include "ui/dialogs/Flx_ShowCommand.h"

#include <FL/Fl.H>

#include "solvers/SolverKinds.h"
#include "ui/dialogs/DialogTools.h"
#include "ui/text/Encoding.h"
#include "ui/text/TextTable.h"

namespace {

constexpr double kLookSeconds = 0.1;
constexpr std::chrono::milliseconds kAtOnce{20};  // shows without a line before
constexpr int kLeastWidth = 320;
constexpr int kLeastHeight = 160;

const char kLayout[] =
    R"(ID_WINDOW,Window,"Command Line",748,244,680,330,1,1,49,49,1,0,14,56,1,99,"",0,0,0,0,"命令行"
ID_TEXT1,Text_Display,"",5,6,670,284,3,3,7,15,0,0,12,56,2,99,"",0,0,14,0
ID_BUTTON1,Button,"Copy",500,298,80,24,2,3,49,49,0,0,12,56,0,99,"",0,0,0,0,"复制"
ID_BUTTON2,Button,"Close",590,298,80,24,2,3,49,49,0,0,12,56,0,99,"",0,0,0,0,"关闭"
)";

// By key, in English and Chinese.
constexpr DialogText kTexts[] = {
    {"reading", "Looking at the files of the job...", "正在检查任务的文件..."},
    {"no_thread", "This cannot be shown now. Please try again.", "现在无法显示，请稍后再试。"},
    {"stage", "%s (stage %s of %s)", "%s（工步 %s，共 %s 个）"},
    {"skipped", "%s (stage %s of %s, left out: the job begins later)",
     "%s（工步 %s，共 %s 个，不运行：任务从后面的工步开始）"},
    {"command", "Command: ", "命令："},
    {"none", "none: these settings give no command line", "无：当前设置无法组成命令行"},
    {"folder", "Folder: ", "文件夹："},
    {"variable", "Variable: ", "环境变量："},
    {"memory", "Memory: ", "内存："},
    {"single", "%s, %s MB in single precision", "%s，单精度下为 %s MB"},
    {"double", "%s, %s MB in double precision", "%s，双精度下为 %s MB"},
    {"trouble", "As things are, it cannot start: ", "目前无法启动："},
};

}  // namespace

Flx_ShowCommand::Flx_ShowCommand(Fl_Window* parent, int language,
                                 std::vector<CommandRequest> requests)
    : Flx_Base_Dialog(parent, language, kLayout, kTexts), requests_(std::move(requests)) {}

Flx_ShowCommand::~Flx_ShowCommand() {
  Fl::remove_timeout(Look, this);
  if (Fl_Text_Display* const text = Find(kText)) text->buffer(nullptr);
}

bool Flx_ShowCommand::Initialise() {
  if (!HasAll(kCopy, kClose) || !Find(kText)) return false;
  Fl_Text_Display* const text = Find(kText);
  text->buffer(&buffer_);
  text->textfont(FL_COURIER);
  text->textsize(kLayoutLabelSize);
  text->wrap_mode(Fl_Text_Display::WRAP_AT_BOUNDS, 0);
  KeepRow(*Window(), {Find(kCopy), Find(kClose)}, 0);
  Window()->resizable(text);
  Window()->size_range(kLeastWidth, kLeastHeight);
  Present(*Find(kClose), *Find(kCopy));
  const auto work = [requests = requests_](auto& control) {
    Commands all;
    for (const CommandRequest& request : requests) {
      if (control.IsUnwanted()) break;
      for (JobCommand& command : CommandsOf(request)) all.push_back(std::move(command));
    }
    return all;
  };
  if (!work_.Start(work, [](const std::exception&) { return Commands(); })) {
    buffer_.text(Shown("no_thread").c_str());
  } else if (!ShowWhenRead(kAtOnce)) {
    buffer_.text(Shown("reading").c_str());
    Find(kCopy)->deactivate();
    Fl::add_timeout(kLookSeconds, Look, this);
  }
  return true;
}

int Flx_ShowCommand::HandleWidget(Fl_Widget* widget) {
  if (widget == Find(kCopy)) {
    char* const all = buffer_.text();
    Fl::copy(all, buffer_.length(), 1);
    free(all);
  }
  return widget == Find(kClose) ? 0 : -1;
}

void Flx_ShowCommand::Look(void* self) {
  if (!static_cast<Flx_ShowCommand*>(self)->ShowWhenRead())
    Fl::repeat_timeout(kLookSeconds, Look, self);
}

bool Flx_ShowCommand::ShowWhenRead(std::chrono::milliseconds patience) {
  const std::optional<Commands> commands = work_.Take(patience);
  if (!commands) return false;
  std::string text = commands->empty() ? Shown("no_thread") : std::string();
  for (const JobCommand& command : *commands) text += (text.empty() ? "" : "\n") + TextOf(command);
  buffer_.text(text.c_str());
  Find(kCopy)->activate();
  return true;
}

std::string Flx_ShowCommand::TextOf(const JobCommand& command) const {
  std::string text = ToUi(command.name);
  if (command.stage >= 0) {
    text = Filled(command.isSkipped ? "skipped" : "stage",
                  {text, std::to_string(command.stage + 1), std::to_string(command.stages)});
  }
  text += '\n';
  text += Line("command", command.commandLine.empty() ? Shown("none") : ToUi(command.commandLine));
  text += Line("folder", ToUi(command.folder));
  for (const auto& [name, value] : command.variables)
    text += Line("variable", ToUi(name + '=' + value));
  const bool isDouble = command.kind == SolverKind::kLsDynaDouble;
  for (const JobCommand::Memory& memory : command.memory) {
    text += Line("memory", Filled(isDouble ? "double" : "single",
                                  {memory.argument, std::to_string(memory.megabytes)}));
  }
  if (!command.trouble.Empty())
    text += Line("trouble",
                 Language() == 1 ? command.trouble.Chinese(ToUi) : ToUi(command.trouble.English()));
  return text;
}

std::string Flx_ShowCommand::Line(const char* key, const std::string& text) const {
  return Shown(key) + text + '\n';
}

std::string Flx_ShowCommand::Filled(const char* key, const std::vector<std::string>& values) const {
  std::string text = Shown(key);
  std::size_t at = 0;
  for (const std::string& value : values) {
    at = text.find("%s", at);
    if (at == std::string::npos) break;
    text.replace(at, 2, value);
    at += value.size();
  }
  return text;
}
