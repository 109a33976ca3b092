#include "ui/dialogs/Flx_ShowInfo.h"

#include <FL/Fl.H>
#include <FL/Fl_Box.H>
#include <FL/Fl_Browser.H>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <system_error>
#include <thread>
#include <utility>

#include "ui/dialogs/DialogTools.h"
#include "ui/fltk/Theme.h"
#include "ui/text/Encoding.h"
#include "ui/text/TextTable.h"
#include "util/signals/Mutex.h"

namespace {

constexpr double kLookSeconds = 0.1;
// Files that are read in this time show without a progress line before.
constexpr std::chrono::milliseconds kAtOnce{20};
constexpr Fl_Color kGreenLamp = 63;
constexpr Fl_Color kRedLamp = 88;
constexpr Fl_Color kAmberLamp = Theme::Rgb(0xE58A00);
constexpr int kLeastWidth = 320;
constexpr int kLeastHeight = 200;
constexpr int kBarWidth = 200;
constexpr int kBarHeight = 8;
constexpr int kBarGap = 14;

// Begins no formatting in a list: none of its lines holds this character. (With 0, which should
// turn formatting off, the toolkit reads behind the end of empty lines.)
constexpr char kNoFormat = '\x01';

const char kLayout[] =
    R"(ID_WINDOW,Window,"Show Job Information",748,244,600,430,1,1,49,49,1,0,14,56,1,99,"",0,0,0,0
ID_LABEL1,Box,"",10,6,25,24,6,6,49,49,0,0,12,56,0,99,"",0,0,0,0
ID_LABEL2,Box,"Successful",43,6,147,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0
ID_LIST1,Browser,"",5,30,592,365,0,0,7,15,0,0,12,56,2,99,"",0,0,14,0
ID_BUTTON1,Button,"Close",510,399,80,24,2,3,49,49,0,0,12,56,0,99,"",0,0,0,0
)";

constexpr LineTexts kChinese[] = {
    {"ID_WINDOW", "查看任务信息"},
    {"ID_LABEL2", "成功"},
    {"ID_BUTTON1", "关闭"},
};

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

struct Flx_ShowInfo::Reading {
  JobOutput output;
  TextTable texts;                 // the thread's own
  std::atomic<bool> ended{false};  // the dialog is gone
  std::atomic<int> percent{0};
  Mutex mutex;
  std::condition_variable changed;
  std::vector<std::string> lines KR_GUARDED_BY(mutex);
  bool done KR_GUARDED_BY(mutex) = false;
};

Flx_ShowInfo::Flx_ShowInfo(Fl_Window* parent, int language, JobOutput output)
    : Flx_Base_Dialog(parent, language), output_(std::move(output)) {
  SetLayouts(kLayout, kChinese);
  SetTexts(kTexts);
}

Flx_ShowInfo::~Flx_ShowInfo() {
  Fl::remove_timeout(Look, this);
  if (reading_) reading_->ended = true;
}

bool Flx_ShowInfo::Initialise() {
  if (!HasAll(kLamp, kResult, kLines, kClose)) return false;
  const bool finished = output_.status == JobStatus::kFinished;
  const bool stopped = finished && output_.stoppedAt != kNotStopped;
  const bool byUser = !finished && output_.failure.kind == FailureKind::kStopped;
  Find(kLamp)->color(byUser     ? Theme::kQueued
                     : stopped  ? kAmberLamp
                     : finished ? kGreenLamp
                                : kRedLamp);
  const char* const result = byUser ? "stopped" : finished ? "successful" : "failed";
  Find(kResult)->label(ConvertText(GetText(result)));
  Fl_Browser* list = Find(kLines);
  list->format_char(kNoFormat);
  list->textfont(FL_COURIER);  // solvers write in columns
  list->textsize(kLayoutLabelSize);
  Fl_Button* close = Find(kClose);
  close->shortcut(FL_Enter);
  KeepRow(*Window(), {Find(kLamp), Find(kResult)}, Window()->w() - 1);
  MakeBar(*close);
  KeepRow(*Window(), {bar_, close}, 0);
  Window()->resizable(list);
  Window()->size_range(kLeastWidth, kLeastHeight);
  CentreOnParent();
  close->take_focus();
  StartReading();
  return true;
}

int Flx_ShowInfo::HandleWidget(Fl_Widget* widget) {
  return widget == Find(kClose) ? 0 : -1;
}

// Beside the button, while files are read.
void Flx_ShowInfo::MakeBar(const Fl_Button& close) {
  Fl_Group::current(nullptr);
  bar_ = new Fl_Progress(close.x() - kBarWidth - kBarGap, close.y() + (close.h() - kBarHeight) / 2,
                         kBarWidth, kBarHeight);
  bar_->maximum(100);
  bar_->box(FL_FLAT_BOX);
  bar_->color(Theme::kPressed, Theme::kAccent);
  bar_->hide();
  Window()->add(bar_);
}

void Flx_ShowInfo::StartReading() {
  reading_ = std::make_shared<Reading>();
  reading_->output = output_;
  FillTexts(Language(), {}, reading_->texts);
  try {
    std::thread([reading = reading_] {
      AnalysisHooks hooks;
      hooks.say = [&](const Message& message) { return reading->texts.Say(message); };
      hooks.decode = ToUi;
      hooks.progress = [&](std::uint64_t done, std::uint64_t size) {
        if (size > 0)
          reading->percent =
              static_cast<int>(100.0 * static_cast<double>(done) / static_cast<double>(size));
        return !reading->ended;
      };
      std::vector<std::string> lines;
      try {
        lines = JobInformation(reading->output, hooks);
      } catch (const std::exception& error) {
        lines = {hooks.say(Message(MessageId::kReportFailed, error.what()))};
      }
      const MutexLock lock(reading->mutex);
      reading->lines = std::move(lines);
      reading->done = true;
      reading->changed.notify_all();
    }).detach();
  } catch (const std::system_error&) {
    Find(kLines)->add(Shown("no_thread").c_str());
    return;
  }
  {
    const auto end = std::chrono::steady_clock::now() + kAtOnce;
    MutexLock lock(reading_->mutex);
    while (!reading_->done && lock.WaitUntil(reading_->changed, end)) {
    }
  }
  if (ShowWhenRead()) return;
  ShowProgress();
  Fl::add_timeout(kLookSeconds, Look, this);
}

void Flx_ShowInfo::Look(void* self) {
  auto* dialog = static_cast<Flx_ShowInfo*>(self);
  if (dialog->ShowWhenRead()) return;
  dialog->ShowProgress();
  Fl::repeat_timeout(kLookSeconds, Look, self);
}

bool Flx_ShowInfo::ShowWhenRead() {
  const MutexLock lock(reading_->mutex);
  if (!reading_->done) return false;
  auto* list = Find(kLines);
  list->clear();
  for (const std::string& line : reading_->lines) list->add(ListLine(line).c_str());
  bar_->hide();
  Find(kClose)->label(ConvertText(GetText("close")));
  return true;
}

void Flx_ShowInfo::ShowProgress() {
  bar_->value(static_cast<float>(reading_->percent));
  if (bar_->visible()) return;
  Find(kLines)->add(Shown("reading").c_str());
  Find(kClose)->label(ConvertText(GetText("cancel")));
  bar_->show();
}
