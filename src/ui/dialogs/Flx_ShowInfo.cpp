#include "ui/dialogs/Flx_ShowInfo.h"

#include <FL/Fl.H>

#include <algorithm>
#include <utility>

#include "ui/dialogs/DialogTools.h"
#include "ui/fltk/ModalWindow.h"
#include "ui/fltk/ProgressBar.h"
#include "ui/fltk/Theme.h"
#include "ui/text/Encoding.h"
#include "ui/text/ShownValues.h"
#include "ui/text/TextTable.h"

namespace {

constexpr double kLookSeconds = 0.1;
// Files that are read in this time show without a progress line before.
constexpr std::chrono::milliseconds kAtOnce{20};
constexpr Fl_Color kGreenLamp = 63;
constexpr Fl_Color kRedLamp = 88;
constexpr Fl_Color kAmberLamp = Theme::Rgb(0xE58A00);
constexpr int kLeastWidth = 320;
constexpr int kLeastHeight = 200;
constexpr int kColumnWidth = 400;  // of each of several jobs, where the screen has room
constexpr int kScreenMargin = 40;
constexpr int kResultX = 43;
constexpr int kListMargin = 3;
constexpr int kBarWidth = 200;
constexpr int kBarHeight = 8;
constexpr int kBarGap = 14;

// Begins no formatting in a list: none of its lines holds this character. (With 0, which should
// turn formatting off, the toolkit reads behind the end of empty lines.)
constexpr char kNoFormat = '\x01';

const char kLayout[] =
    R"(ID_WINDOW,Window,"Show Job Information",748,244,600,430,1,1,49,49,1,0,14,56,1,99,"",0,0,0,0,"查看任务信息"
ID_LABEL1,Box,"",10,6,25,24,6,6,49,49,0,0,12,56,0,99,"",0,0,0,0
ID_LABEL2,Box,"Successful",43,6,147,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0,"成功"
ID_LIST1,Browser,"",5,30,592,365,0,0,7,15,0,0,12,56,2,99,"",0,0,14,0
ID_BUTTON1,Button,"Close",510,399,80,24,2,3,49,49,0,0,12,56,0,99,"",0,0,0,0,"关闭"
)";

// By key, in English and Chinese.
constexpr DialogText kTexts[] = {
    {"successful", "Successful", "成功"},
    {"failed", "Failed", "失败"},
    {"stopped", "Stopped by you", "由您停止"},
    {"reading", "Reading the files of the run...", "正在读取运行结果文件..."},
    {"close", "Close", "关闭"},
    {"cancel", "Cancel", "取消"},
    {"no_thread", "The files of the run cannot be read now. Please try again.",
     "现在无法读取运行结果文件，请稍后再试。"},
};

// A line of a report, without characters that would control the list.
std::string ListLine(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c >= 0 && c < ' ' && c != '\t'; }, ' ');
  return text;
}

}  // namespace

Flx_ShowInfo::Flx_ShowInfo(Fl_Window* parent, int language, JobOutput output)
    : Flx_ShowInfo(parent, language, std::vector{std::move(output)}) {}

Flx_ShowInfo::Flx_ShowInfo(Fl_Window* parent, int language, std::vector<JobOutput> outputs)
    : Flx_Base_Dialog(parent, language, kLayout, kTexts), outputs_(std::move(outputs)) {}

Flx_ShowInfo::~Flx_ShowInfo() {
  Fl::remove_timeout(Look, this);
}

bool Flx_ShowInfo::Initialise() {
  if (!HasAll(kLamp, kResult, kLines, kClose)) return false;
  MakeColumns();
  for (std::size_t i = 0; i < columns_.size(); ++i) ShowResult(columns_[i], outputs_[i]);
  Fl_Button* close = Find(kClose);
  MakeBar(*close);
  KeepRow(*Window(), {bar_, close}, 0);
  Window()->size_range(kLeastWidth, kLeastHeight);
  Present(*close, *close);
  StartReading();
  return true;
}

// The layout has the first; a wider window has the others beside it. All share what the window is
// wider.
void Flx_ShowInfo::MakeColumns() {
  Fl_Window& window = *Window();
  Fl_Box* const lamp = Find(kLamp);
  Fl_Box* const result = Find(kResult);
  Fl_Browser* const lines = Find(kLines);
  columns_ = {{lamp, result, lines}};
  const int count = static_cast<int>(outputs_.size());
  if (count == 1) {
    KeepRow(window, {lamp, result}, window.w() - 1);
    window.resizable(lines);
  } else {
    Fl_Group::current(nullptr);
    const int room = ScreenOf(&window).w - kScreenMargin;
    const int width = std::min(count * kColumnWidth, std::max(room, window.w()));
    const int footer = window.h() - lines->y() - lines->h();
    Fl_Button* const close = Find(kClose);
    close->position(close->x() + width - window.w(), close->y());
    window.size(width, window.h());
    auto* const all = new Fl_Group(0, 0, width, window.h() - footer);
    all->end();
    for (int i = 0; i < count; ++i) {
      const int left = i * width / count;
      const int right = (i + 1) * width / count;
      auto* const column = new Fl_Group(left, 0, right - left, all->h());
      column->end();
      if (i > 0) {
        columns_.push_back({new Fl_Box(lamp->x(), lamp->y(), lamp->w(), lamp->h()),
                            new Fl_Box(result->x(), result->y(), result->w(), result->h()),
                            new Fl_Browser(lines->x(), lines->y(), lines->w(), lines->h())});
      }
      const Column& its = columns_.back();
      its.lamp->box(lamp->box());
      its.result->align(result->align());
      its.result->labelsize(result->labelsize());
      its.result->labelcolor(result->labelcolor());
      its.lines->box(lines->box());
      its.lamp->position(left + lamp->x(), lamp->y());
      const int resultX = left + kResultX;
      its.result->resize(resultX, result->y(), right - resultX, result->h());
      its.lines->resize(left + kListMargin, lines->y(), right - left - 2 * kListMargin, lines->h());
      for (Fl_Widget* const widget :
           {static_cast<Fl_Widget*>(its.lamp), static_cast<Fl_Widget*>(its.result),
            static_cast<Fl_Widget*>(its.lines)})
        column->add(widget);
      column->resizable(its.lines);
      all->add(column);
    }
    window.add(all);
    window.resizable(all);
  }
}

void Flx_ShowInfo::ShowResult(const Column& column, const JobOutput& output) {
  const bool finished = output.status == JobStatus::kFinished;
  const bool stopped = finished && output.stoppedAt != kNotStopped;
  const bool byUser = !finished && output.failure.kind == FailureKind::kStopped;
  column.lamp->color(byUser     ? Theme::kQueued
                     : stopped  ? kAmberLamp
                     : finished ? kGreenLamp
                                : kRedLamp);
  const std::string result = Shown(byUser ? "stopped" : finished ? "successful" : "failed");
  const bool several = columns_.size() > 1;
  const std::string& path = output.jobFile.empty() ? output.folder : output.jobFile;
  ShowLabel(*column.result, several ? ShownName(path) + ": " + result : result);
  if (several) column.result->copy_tooltip(ToUi(path).c_str());
  column.lines->format_char(kNoFormat);
  column.lines->textfont(FL_COURIER);  // solvers write in columns
  column.lines->textsize(kLayoutLabelSize);
}

int Flx_ShowInfo::HandleWidget(Fl_Widget* widget) {
  return widget == Find(kClose) ? 0 : -1;
}

// Beside the button, while files are read.
void Flx_ShowInfo::MakeBar(const Fl_Button& close) {
  Fl_Group::current(nullptr);
  bar_ = new ProgressBar(close.x() - kBarWidth - kBarGap, close.y() + (close.h() - kBarHeight) / 2,
                         kBarWidth, kBarHeight);
  bar_->hide();
  Window()->add(bar_);
}

void Flx_ShowInfo::StartReading() {
  auto texts = std::make_shared<TextTable>();  // the thread's own
  FillTexts(Language(), {}, *texts);
  const auto work = [outputs = outputs_, texts](auto& control) {
    std::vector<Lines> all;
    AnalysisHooks hooks;
    hooks.say = [&](const Message& message) { return texts->Say(message); };
    hooks.decode = ToUi;
    hooks.progress = [&](std::uint64_t done, std::uint64_t size) {
      const double part = size > 0 ? static_cast<double>(done) / static_cast<double>(size) : 0;
      control.SetPercent(static_cast<int>(100.0 * (static_cast<double>(all.size()) + part) /
                                          static_cast<double>(outputs.size())));
      return !control.IsUnwanted();
    };
    for (const JobOutput& output : outputs) {
      if (!control.IsUnwanted()) all.push_back(JobInformation(output, hooks));
    }
    return all;
  };
  const auto failed = [texts](const std::exception& error) {
    return std::vector<Lines>{{texts->Say(Message(MessageId::kReportFailed, error.what()))}};
  };
  if (!reading_.Start(work, failed)) {
    for (const Column& column : columns_) column.lines->add(Shown("no_thread").c_str());
    return;
  }
  if (ShowWhenRead(kAtOnce)) return;
  ShowProgress();
  Fl::add_timeout(kLookSeconds, Look, this);
}

void Flx_ShowInfo::Look(void* self) {
  auto* dialog = static_cast<Flx_ShowInfo*>(self);
  if (dialog->ShowWhenRead()) return;
  dialog->ShowProgress();
  Fl::repeat_timeout(kLookSeconds, Look, self);
}

bool Flx_ShowInfo::ShowWhenRead(std::chrono::milliseconds patience) {
  const std::optional<std::vector<Lines>> read = reading_.Take(patience);
  if (!read) return false;
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    Fl_Browser& list = *columns_[i].lines;
    list.clear();
    if (i >= read->size()) continue;
    for (const std::string& line : (*read)[i]) list.add(ListLine(line).c_str());
  }
  bar_->hide();
  Find(kClose)->label(ConvertText(GetText("close")));
  return true;
}

void Flx_ShowInfo::ShowProgress() {
  bar_->value(static_cast<float>(reading_.Percent()));
  if (bar_->visible()) return;
  for (const Column& column : columns_) column.lines->add(Shown("reading").c_str());
  Find(kClose)->label(ConvertText(GetText("cancel")));
  bar_->show();
}
