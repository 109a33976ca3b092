#include "ui/monitor/MonitorWindow.h"

#include <FL/Fl.H>
#include <FL/Fl_Box.H>
#include <FL/Fl_Button.H>
#include <FL/fl_draw.H>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <utility>

#include "ui/dialogs/ComnFileDialog.h"
#include "ui/dialogs/FileQuestions.h"
#include "ui/fltk/Labels.h"
#include "ui/fltk/ModalWindow.h"
#include "ui/fltk/ProgressBar.h"
#include "ui/fltk/Sizes.h"
#include "ui/fltk/Theme.h"
#include "ui/fltk/Tip.h"
#include "ui/monitor/Picture.h"
#include "ui/text/Encoding.h"
#include "ui/text/FileText.h"
#include "ui/text/ShownValues.h"
#include "util/files/FileDirWrapper.h"

namespace {

constexpr double kLookSeconds = 0.5;
constexpr double kFirstLookSeconds = 0.05;         // until there is something to see
constexpr std::chrono::milliseconds kAtOnce{300};  // files that are read in this time show no bar
constexpr int kWidth = 1120;
constexpr int kHeight = 740;
constexpr int kMinWidth = 960;
constexpr int kMinHeight = 520;
constexpr int kFoot = SwitchPanel::kHeight;
constexpr int kTailTitle = 20;
constexpr int kBarWidth = 120;
constexpr int kBarHeight = 8;
constexpr int kSaveWidth = 112;

std::vector<MonitorWindow*>& OpenWindows() {
  static std::vector<MonitorWindow*> windows;
  return windows;
}

// As the user has left it last.
struct Size {
  int w = kWidth, h = kHeight;
} g_size;

}  // namespace

// Follows the end of its text until the user looks elsewhere.
class MonitorWindow::Tail : public Fl_Text_Display {
 public:
  using Fl_Text_Display::Fl_Text_Display;

  void ShowText(const std::string& text) {
    const bool atEnd = mTopLineNum + mNVisibleLines >= mNBufferLines;
    const int top = mTopLineNum;
    buffer()->text(text.c_str());
    scroll(atEnd ? count_lines(0, buffer()->length(), true) + 1 : top, mHorizOffset);
  }
};

// What is written on the reader's thread.
struct MonitorWindow::Saving {
  std::string path;
  std::atomic<bool> done{false};
  std::string why;  // once it is done
  bool good = false;
};

void MonitorWindow::Show(Application& application, const TextTable& texts, MonitoredRun run,
                         Fl_Window* over) {
  run.Look();
  for (MonitorWindow* window : OpenWindows()) {
    if (!window->run_.IsSameAs(run)) continue;
    window->show();
    return;
  }
  auto* window = new MonitorWindow(application, texts, std::move(run));
  CentreOver(*window, over);
  const int step = 24 * static_cast<int>((OpenWindows().size() - 1) % 8);
  window->position(window->x() + step, window->y() + step);
  FitScreen(*window, over);
  window->show();
  window->charts_->child(0)->take_focus();
}

void MonitorWindow::CloseAll() {
  while (!OpenWindows().empty()) delete OpenWindows().back();
}

MonitorWindow::MonitorWindow(Application& application, const TextTable& texts, MonitoredRun run)
    : Fl_Double_Window(g_size.w, g_size.h),
      application_(application),
      texts_(texts),
      run_(std::move(run)),
      reader_(application.SettingsAndFiles().Get(),
              [job = run_.Job()](const RunToRead& shown) {
                return RequestIn(shown.folder, SwitchRunOf(shown.folder, job));
              }),
      opened_(std::chrono::steady_clock::now()) {
  OpenWindows().push_back(this);
  xclass("KestrunMonitor");
  color(Theme::kWindow);
  MakeControls();
  pane_ = new Fl_Group(0, Sizes::kButtonRow, w(), h() - Sizes::kButtonRow - kFoot);
  pane_->box(FL_FLAT_BOX);
  pane_->color(Theme::kWindow);
  heading_ = new RunHeading(Sizes::kMargin, Sizes::kButtonRow, w() - 2 * Sizes::kMargin);
  charts_ = new MonitorCharts(Sizes::kMargin, Sizes::kButtonRow + heading_->h(),
                              w() - 2 * Sizes::kMargin, 100, texts);
  charts_->OnAlone = [this] { chart_->value(charts_->Alone() + 1); };
  pane_->end();
  pane_->resizable(nullptr);
  MakeFoot();
  end();
  resizable(nullptr);
  size_range(kMinWidth, kMinHeight);
  callback([](Fl_Widget* self, void*) { Fl::delete_widget(self); });
  LayOut();
  Look();
  Fl::add_timeout(kFirstLookSeconds, Tick, this);
}

MonitorWindow::~MonitorWindow() {
  Fl::remove_timeout(Tick, this);
  std::erase(OpenWindows(), this);
  tail_->buffer(nullptr);
}

Fl_Choice* MonitorWindow::MakeChoice(int& x, const char* label, int width) {
  const std::string& text = texts_.Get(label);
  fl_font(FL_HELVETICA, Sizes::kFontSize);
  const int words = static_cast<int>(fl_width(text.c_str())) + Sizes::kGap;
  auto* choice = new Fl_Choice(x + words, Sizes::kMargin, width, Sizes::kButtonHeight);
  choice->copy_label(text.c_str());
  x += words + width + 2 * Sizes::kMargin;
  return choice;
}

Fl_Button* MonitorWindow::MakeButton(int& x, int width, const char* label, const char* tip,
                                     void (*press)(MonitorWindow&)) {
  auto* button = new Fl_Button(x, Sizes::kMargin, width, Sizes::kButtonHeight);
  button->copy_label(texts_.Get(label).c_str());
  button->color(Theme::kSurface);
  if (tip) SetTip(*button, texts_.Get(tip));
  button->callback(
      [](Fl_Widget* pressed, void* call) {
        reinterpret_cast<void (*)(MonitorWindow&)>(call)(
            *static_cast<MonitorWindow*>(pressed->top_window()));
      },
      reinterpret_cast<void*>(press));
  x += width + Sizes::kGap;
  return button;
}

void MonitorWindow::MakeControls() {
  controls_ = new Fl_Group(0, 0, w(), Sizes::kButtonRow);
  int x = Sizes::kMargin;
  over_ = MakeChoice(x, "mon_over", 130);
  overEntries_.Show(*over_, {texts_.Get("mon_over_time"), texts_.Get("mon_over_clock")}, 0);
  over_->callback(
      [](Fl_Widget*, void* self) {
        auto* window = static_cast<MonitorWindow*>(self);
        window->charts_->ShowOver(window->over_->value() == 1);
      },
      this);
  chart_ = MakeChoice(x, "mon_charts", 190);
  std::vector<std::string> charts = MonitorCharts::Titles(texts_);
  charts.insert(charts.begin(), texts_.Get("mon_charts_all"));
  chartEntries_.Show(*chart_, charts, 0);
  chart_->callback(
      [](Fl_Widget*, void* self) {
        auto* window = static_cast<MonitorWindow*>(self);
        window->charts_->ShowAlone(window->chart_->value() - 1);
      },
      this);
  MakeButton(x, kSaveWidth, "mon_save_picture", "mon_save_picture_tip",
             [](MonitorWindow& window) { window.SavePicture(); });
  MakeButton(x, kSaveWidth, "mon_save_table", "mon_save_table_tip",
             [](MonitorWindow& window) { window.SaveTable(); });
  stage_ = MakeChoice(x, "mon_stage", 170);
  stage_->callback(
      [](Fl_Widget*, void* self) {
        auto* window = static_cast<MonitorWindow*>(self);
        window->run_.ChooseStage(window->stage_->value() - 1);
        window->Look();
      },
      this);
  stage_->hide();
  case_ = MakeChoice(x, "mon_case", 120);
  case_->callback(
      [](Fl_Widget*, void* self) {
        auto* window = static_cast<MonitorWindow*>(self);
        const int chosen = window->case_->value();
        window->run_.ChooseCase(chosen > 0 ? window->cases_[static_cast<std::size_t>(chosen - 1)]
                                           : 0);
        window->Look();
      },
      this);
  SetTip(*case_, texts_.Get("mon_case_tip"));
  case_->hide();
  bar_ = new ProgressBar(0, (Sizes::kButtonRow - kBarHeight) / 2, kBarWidth, kBarHeight);
  bar_->hide();
  cancel_ = MakeButton(x, Sizes::kButtonWidth, "ui_cancel", nullptr, [](MonitorWindow& window) {
    window.reader_.IsCancelled() ? window.reader_.Continue() : window.reader_.Cancel();
  });
  cancel_->hide();
  note_ = new Fl_Box(0, Sizes::kMargin, 100, Sizes::kButtonHeight);
  note_->align(FL_ALIGN_LEFT | FL_ALIGN_INSIDE | FL_ALIGN_CLIP);
  controls_->end();
  controls_->resizable(nullptr);
}

void MonitorWindow::MakeFoot() {
  tailTitle_ = new Fl_Box(Sizes::kMargin, 0, 100, kTailTitle);
  tailTitle_->align(FL_ALIGN_LEFT | FL_ALIGN_INSIDE | FL_ALIGN_CLIP);
  tailTitle_->labelfont(FL_HELVETICA_BOLD);
  tail_ = new Tail(Sizes::kMargin, 0, 100, kFoot - kTailTitle - Sizes::kMargin);
  tail_->buffer(lines_);
  tail_->textfont(FL_COURIER);
  tail_->textsize(Sizes::kSmallFontSize);
  tail_->textcolor(Theme::kText);
  switches_ = new SwitchPanel(0, 0, reader_, texts_, application_.language);
}

void MonitorWindow::LayOut() {
  using namespace Sizes;
  const int foot = h() - kFoot;
  controls_->resize(0, 0, w(), Sizes::kButtonRow);
  // What tells of the moment stands at the right end.
  const Fl_Widget* last = controls_->child(3);
  for (Fl_Choice* choice : {stage_, case_}) {
    if (!choice->visible()) continue;
    fl_font(FL_HELVETICA, kFontSize);
    const int words = static_cast<int>(fl_width(choice->label())) + kGap;
    choice->position(last->x() + last->w() + 2 * kMargin + words, kMargin);
    last = choice;
  }
  const int left = last->x() + last->w() + 2 * kMargin;
  cancel_->position(w() - kMargin - cancel_->w(), kMargin);
  bar_->position(cancel_->x() - kMargin - kBarWidth, bar_->y());
  int right = w() - kMargin;
  if (cancel_->visible()) right = (bar_->visible() ? bar_->x() : cancel_->x()) - kMargin;
  note_->resize(left, kMargin, std::max(right - left, 1), kButtonHeight);
  pane_->resize(0, Sizes::kButtonRow, w(), foot - Sizes::kButtonRow - kGap);
  heading_->resize(kMargin, Sizes::kButtonRow, w() - 2 * kMargin, heading_->h());
  const int top = Sizes::kButtonRow + heading_->h();
  charts_->resize(kMargin, top, w() - 2 * kMargin, std::max(foot - top - kGap, 1));
  switches_->position(w() - kMargin - SwitchPanel::kWidth, foot);
  const int lines = switches_->x() - 3 * kMargin;
  tailTitle_->resize(kMargin, foot, lines, kTailTitle);
  tail_->resize(kMargin, foot + kTailTitle + 2, lines, kFoot - kTailTitle - 2 - kMargin);
}

void MonitorWindow::resize(int x, int y, int newWidth, int newHeight) {
  const bool same = newWidth == w() && newHeight == h();
  Fl_Double_Window::resize(x, y, newWidth, newHeight);
  if (same || !switches_) return;
  g_size = {newWidth, newHeight};
  LayOut();
  redraw();
}

void MonitorWindow::Tick(void* self) {
  auto* window = static_cast<MonitorWindow*>(self);
  window->Look();
  const bool hasSeen = window->picture_ != nullptr;
  Fl::repeat_timeout(hasSeen ? kLookSeconds : kFirstLookSeconds, Tick, self);
}

void MonitorWindow::Look() {
  state_ = run_.Look();
  reader_.SetLimits(application_.SettingsAndFiles().Get());
  reader_.Read(state_.run);
  const std::shared_ptr<const RunPicture> picture = reader_.Picture();
  const bool isNew = picture != picture_;
  picture_ = picture;
  ShowTitle();
  ShowStages();
  ShowCases();
  const bool taller = heading_->Show(HeadingOf(state_, run_.IsJob(), picture_.get(), texts_));
  if (taller) {
    LayOut();
    redraw();
  }
  charts_->Show(picture_, state_.runsDeck, WhyEmpty());
  if (isNew) ShowTail();
  switches_->Show(state_, picture_.get());
  ShowReading();
  ShowSaved();
}

void MonitorWindow::ShowTitle() {
  std::string title = texts_.Format("mon_title", state_.name);
  if (state_.stage >= 0) {
    title = texts_.Format("mon_title_stage", state_.name,
                          state_.stages[static_cast<std::size_t>(state_.stage)]);
  }
  if (!label() || title != label()) copy_label(title.c_str());
}

void MonitorWindow::ShowStages() {
  if (state_.stages == stages_) return;
  stages_ = state_.stages;
  std::vector<std::string> entries = {texts_.Get("mon_stage_newest")};
  for (std::size_t at = 0; at < stages_.size(); ++at)
    entries.push_back(std::to_string(at + 1) + "  " + stages_[at]);
  stageEntries_.Show(*stage_, entries, 0);
  run_.ChooseStage(-1);
  stages_.empty() ? stage_->hide() : stage_->show();
  LayOut();
  redraw();
}

void MonitorWindow::ShowCases() {
  const std::vector<int> found = picture_ ? picture_->cases : std::vector<int>();
  if (found == cases_ || (!picture_ && state_.run.caseShown > 0)) return;
  cases_ = found;
  std::vector<std::string> entries = {texts_.Get("mon_case_newest")};
  for (const int number : cases_)
    entries.push_back(texts_.Format("run_case", std::to_string(number)));
  const auto chosen = std::find(cases_.begin(), cases_.end(), state_.run.caseShown);
  const bool keeps = chosen != cases_.end();
  caseEntries_.Show(*case_, entries, keeps ? static_cast<int>(chosen - cases_.begin()) + 1 : 0);
  if (!keeps) run_.ChooseCase(0);
  cases_.empty() ? case_->hide() : case_->show();
  LayOut();
  redraw();
}

std::string MonitorWindow::WhyEmpty() const {
  if (reader_.IsCancelled() && (!picture_ || !picture_->isWhole))
    return texts_.Get("mon_cancelled");
  if (!picture_) return texts_.Get("mon_reading");
  if (run_.IsJob() && state_.run.path.empty()) return texts_.Get("mon_none_queued");
  if (!run_.IsJob() && picture_->files.kind == RunFiles::Kind::kNone)
    return texts_.Get("mon_none_folder");
  const bool hasEnded = run_.IsJob() ? HasEnded(state_.status) : !picture_->isRunning;
  return texts_.Get(hasEnded ? "mon_none_ended" : "mon_none_yet");
}

void MonitorWindow::ShowTail() {
  std::string text;
  std::string title = texts_.Get("mon_lines_none");
  if (picture_ && !picture_->files.output.empty()) {
    title = PlainLabel(texts_.Format("mon_lines", ShownName(picture_->files.output)));
    for (const std::string& line : picture_->tail) {
      std::string rest;
      text += (text.empty() ? "" : "\n") + ShownText(line, rest);
    }
  }
  if (!tailTitle_->label() || title != tailTitle_->label()) tailTitle_->copy_label(title.c_str());
  char* const before = lines_.text();
  if (text != before) tail_->ShowText(text);
  std::free(before);
}

void MonitorWindow::ShowReading() {
  const bool cancelled = reader_.IsCancelled();
  const bool hasAll = picture_ && picture_->isWhole;
  const bool isLong = picture_ || std::chrono::steady_clock::now() - opened_ > kAtOnce;
  const bool reads = !cancelled && !hasAll && isLong;
  if (reads) bar_->value(static_cast<float>(reader_.Percent()));
  const bool shows = reads || cancelled;
  if (shows == (cancel_->visible() != 0) && reads == (bar_->visible() != 0)) return;
  reads ? bar_->show() : bar_->hide();
  shows ? cancel_->show() : cancel_->hide();
  cancel_->copy_label(texts_.Get(cancelled ? "mon_read_on" : "ui_cancel").c_str());
  Note(cancelled ? texts_.Get("mon_cancelled") : std::string(), Theme::kWaiting);
  LayOut();
  redraw();
}

void MonitorWindow::Note(const std::string& text, Fl_Color color) {
  if (note_->label() && text == note_->label()) return;
  note_->labelcolor(color);
  note_->copy_label(PlainLabel(text).c_str());
  SetTip(*note_, text);
  controls_->redraw();
}

std::string MonitorWindow::AskWhere(const char* caption, const std::string& ending) {
  std::string name;
  FileDirWrapper::FileNameOf(FromUi(state_.name), name, false);
  ComnFileDialog dialog;
  dialog.SetParentWindow(this);
  dialog.SetOpen(false);
  dialog.SetCaption(texts_.Get(caption));
  dialog.SetFilter((ending == "png" ? "Pictures (*.png)|*.png|" : "Tables (*.csv)|*.csv|") +
                   std::string(ComnFileDialog::kAllFiles));
  dialog.SetInitDir(state_.run.folder.empty() ? application_.SettingsAndFiles().Get().last_path
                                              : state_.run.folder);
  dialog.SetDefExt(ending);
  dialog.SetDefFile((name.empty() ? "run" : name) + "." + ending);
  return dialog.DoModal() ? dialog.GetPathName() : std::string();
}

void MonitorWindow::SavePicture() {
  auto picture = std::make_shared<Picture>(PictureOf(*pane_));
  const std::string path = AskWhere("mon_save_picture", "png");
  if (!path.empty()) Save(path, [picture] { return AsPng(*picture); });
}

void MonitorWindow::SaveTable() {
  if (!picture_) return;
  const std::shared_ptr<const RunCurves> curves = picture_->curves;
  const std::string path = AskWhere("mon_save_table", "csv");
  if (!path.empty()) Save(path, [curves] { return CurvesAsCsv(*curves); });
}

void MonitorWindow::Save(const std::string& path, std::function<std::string()> bytes) {
  auto saving = std::make_shared<Saving>();
  saving->path = path;
  saving_ = saving;
  reader_.Do([saving, bytes = std::move(bytes)] {
    saving->good = FileDirWrapper::WriteFileWhole(saving->path, bytes(), &saving->why);
    saving->done = true;
  });
}

void MonitorWindow::ShowSaved() {
  if (!saving_ || !saving_->done) return;
  std::string text =
      texts_.Format(saving_->good ? "mon_saved" : "mon_not_saved", ToUi(saving_->path));
  if (!saving_->good && !saving_->why.empty()) text += " (" + ToUi(saving_->why) + ")";
  Note(text, saving_->good ? Theme::kMuted : Theme::kError);
  saving_.reset();
}

bool MonitorWindow::TakeKey() {
  const int key = Fl::event_key();
  if (Fl::event_ctrl() && key == 's') return SavePicture(), true;
  if (Fl::event_ctrl() && key == 't') return SaveTable(), true;
  if (key != FL_Escape) return false;
  Fl::delete_widget(this);
  return true;
}

int MonitorWindow::handle(int event) {
  // The widget with the focus first: a chart has its own way back.
  if (Fl_Double_Window::handle(event)) return 1;
  return event == FL_SHORTCUT && TakeKey() ? 1 : 0;
}
