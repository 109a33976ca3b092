#include "ui/monitor/SwitchPanel.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <iterator>

#include "ui/dialogs/ComnMsgBox.h"
#include "ui/dialogs/Flx_EndTime.h"
#include "ui/fltk/ChartScale.h"
#include "ui/fltk/Sizes.h"
#include "ui/fltk/Theme.h"
#include "ui/fltk/Tip.h"
#include "ui/text/FileText.h"
#include "ui/text/ShownValues.h"
#include "util/text/PlainText.h"

namespace {

struct SwitchButton {
  SolverSwitch what;
  const char* label;
  const char* tip;
};

constexpr SwitchButton kButtons[] = {
    {SolverSwitch::kTellTime, "mon_sw2", "mon_sw2_tip"},
    {SolverSwitch::kPlotState, "mon_sw4", "mon_sw4_tip"},
    {SolverSwitch::kDump, "mon_sw3", "mon_sw3_tip"},
    {SolverSwitch::kStop, "mon_sw1", "mon_sw1_tip"},
    {SolverSwitch::kEndTime, "mon_sw_end", "mon_sw_end_tip"},
};

constexpr int kColumns = 2;
constexpr int kTitleHeight = 20;
constexpr int kNoteHeight = 48;
constexpr std::chrono::seconds kLong{60};  // nobody waits longer without asking why
constexpr std::chrono::seconds kShort{3};  // the reader has looked by then

std::string WordsOf(std::string label, const std::string& endTime) {
  if (label.ends_with("...")) label.resize(label.size() - 3);
  return endTime.empty() ? label : label + " " + endTime;
}

}  // namespace

struct SwitchPanel::Result {
  std::string withdraws;  // the words of what is to go; empty: something is asked for
  std::atomic<bool> done{false};
  std::atomic<bool> good{false};
};

SwitchPanel::SwitchPanel(int x, int y, RunReader& reader, const TextTable& texts, int language)
    : Fl_Group(x, y, kWidth, kHeight), reader_(reader), texts_(texts), language_(language) {
  auto* title = new Fl_Box(x, y, kWidth, kTitleHeight);
  title->copy_label(texts.Get("mon_switches").c_str());
  title->labelfont(FL_HELVETICA_BOLD);
  title->align(FL_ALIGN_LEFT | FL_ALIGN_INSIDE);
  const int width = (kWidth - Sizes::kGap) / kColumns;
  const auto make = [&](int place, const char* label) {
    auto* button = new Fl_Button(
        x + place % kColumns * (width + Sizes::kGap),
        y + kTitleHeight + 2 + place / kColumns * (Sizes::kButtonHeight + Sizes::kGap), width,
        Sizes::kButtonHeight);
    button->copy_label(texts.Get(label).c_str());
    button->color(Theme::kSurface);
    return button;
  };
  for (std::size_t i = 0; i < std::size(kButtons); ++i) {
    Fl_Button* button = make(static_cast<int>(i), kButtons[i].label);
    button->callback(
        [](Fl_Widget* pressed, void* self) {
          auto* panel = static_cast<SwitchPanel*>(self);
          for (std::size_t place = 0; place < panel->buttons_.size(); ++place) {
            if (panel->buttons_[place] == pressed) return panel->Press(place);
          }
        },
        this);
    buttons_.push_back(button);
  }
  withdraw_ = make(static_cast<int>(std::size(kButtons)), "mon_withdraw");
  withdraw_->callback([](Fl_Widget*, void* self) { static_cast<SwitchPanel*>(self)->Withdraw(); },
                      this);
  SetTip(*withdraw_, texts.Get("mon_withdraw_tip"));
  note_ = new Fl_Box(x, y + kHeight - kNoteHeight, kWidth, kNoteHeight);
  note_->align(FL_ALIGN_LEFT | FL_ALIGN_TOP | FL_ALIGN_INSIDE | FL_ALIGN_WRAP | FL_ALIGN_CLIP);
  note_->labelcolor(Theme::kMuted);
  end();
  resizable(nullptr);
  Enable();
}

void SwitchPanel::Show(const MonitoredRun::State& run, const RunPicture* picture) {
  const bool another = folder_ != run.run.folder || name_ != run.name;
  folder_ = run.run.folder;
  name_ = run.name;
  job_ = run.job;
  canAsk_ = run.run.isRunning && run.runsDeck;
  runsDeck_ = run.runsDeck;
  if (picture) news_ = picture->news;
  if (another) asked_ = told_ = {}, result_.reset();
  const bool waited = request_.has_value();
  request_ = canAsk_ && picture ? picture->request : std::nullopt;
  if (result_ && result_->done) {
    if (!result_->withdraws.empty()) {
      told_ = texts_.Format(result_->good ? "mon_sw_withdrawn" : "mon_sw_gone", result_->withdraws);
      asked_ = {};
    } else if (!result_->good) {
      asked_ = {}, told_ = texts_.Get("mon_sw_failed");
    }
    result_.reset();
  }
  const bool hadTime = std::chrono::steady_clock::now() - askedAt_ > kShort;
  if (!asked_.empty() && !result_ && !request_ && (waited || hadTime)) {
    // What lay there at the end was taken back, unless the solver was faster.
    told_ = canAsk_ ? texts_.Format("mon_sw_taken", asked_) : std::string();
    asked_ = {};
  }
  Enable();
  Tell();
}

void SwitchPanel::Enable() {
  const bool busy = !canAsk_ || request_ || !asked_.empty() || result_;
  for (std::size_t i = 0; i < buttons_.size(); ++i) {
    busy ? buttons_[i]->deactivate() : buttons_[i]->activate();
    const char* why = runsDeck_ ? "mon_sw_off" : "mon_sw_not_keyword";
    std::string tip = texts_.Get(kButtons[i].tip);
    if (!canAsk_) tip += "\n" + texts_.Get(why);
    SetTip(*buttons_[i], tip);
  }
  request_ && !result_ ? withdraw_->activate() : withdraw_->deactivate();
}

void SwitchPanel::Tell() {
  std::string text = told_;
  if (!asked_.empty()) {
    const auto since = std::chrono::duration_cast<std::chrono::seconds>(
        std::chrono::steady_clock::now() - askedAt_);
    text = texts_.Format("mon_sw_waits", asked_);
    if (since >= kLong) {
      const auto minutes = static_cast<double>(since.count() / 60 * 60);
      text = texts_.Format("mon_sw_waits_long", asked_, ShownDuration(minutes, texts_));
    }
  } else if (request_ && !result_) {
    text = texts_.Format("mon_sw_lies", RequestWords(), ShownMoment(request_->since, texts_));
  } else if (text.empty() && !canAsk_) {
    text = texts_.Get(runsDeck_ ? "mon_sw_off" : "mon_sw_not_keyword");
  }
  if (note_->label() && text == note_->label()) return;
  note_->copy_label(text.c_str());
  redraw();
}

bool SwitchPanel::AskFirst(SolverSwitch what, double& endTime) {
  if (what == SolverSwitch::kStop) {
    ComnMsgBox box(top_window()->label(), texts_.Format("mon_ask_sw1", name_),
                   ComnMsgBox::kQuestion, ComnMsgBox::kRatherNo, top_window());
    box.SetButtonTexts(texts_.Get("ui_yes"), texts_.Get("ui_no"));
    return box.DoModal() == ComnMsgBox::kPressedYes;
  }
  if (what != SolverSwitch::kEndTime) return true;
  Flx_EndTime dialog(top_window(), language_, news_.time, news_.endTime);
  dialog.Run();
  endTime = dialog.NewEndTime().value_or(0);
  return dialog.NewEndTime().has_value();
}

void SwitchPanel::Press(std::size_t button) {
  const SwitchButton& pressed = kButtons[button];
  const std::string folder = folder_;
  const SwitchRun run = SwitchRunOf(folder, job_);
  double endTime = 0;
  if (!AskFirst(pressed.what, endTime)) return;
  // The run may have ended while the question was open.
  if (!canAsk_ || folder != folder_) {
    told_ = {};
    return Tell();
  }
  asked_ = WordsOf(texts_.Get(pressed.label),
                   pressed.what == SolverSwitch::kEndTime ? ValueText(endTime) : std::string());
  told_ = {};
  askedAt_ = std::chrono::steady_clock::now();
  result_ = std::make_shared<Result>();
  reader_.Do([result = result_, folder, run, what = pressed.what, endTime] {
    result->good = AskSolver(folder, run, what, endTime);
    result->done = true;
  });
  Enable();
  Tell();
}

std::string SwitchPanel::RequestWords() const {
  constexpr std::size_t kMost = 24;  // of a text that somebody else has written
  // Who else has written it ends its line.
  const std::string text(Trimmed(request_->text.substr(0, request_->text.find_first_of("\r\n"))));
  const std::optional<AskedSwitch> asked = SwitchIn(text);
  std::string rest;
  if (!asked) return ShownText(text.substr(0, kMost), rest);
  const auto button =
      std::find_if(std::begin(kButtons), std::end(kButtons),
                   [&](const SwitchButton& one) { return one.what == asked->what; });
  return WordsOf(texts_.Get(button->label), asked->endTime);
}

void SwitchPanel::Withdraw() {
  result_ = std::make_shared<Result>();
  result_->withdraws = asked_.empty() ? RequestWords() : asked_;
  // It may be taken, or the run may end, in the meantime.
  reader_.Do([result = result_, folder = folder_, run = SwitchRunOf(folder_, job_),
              text = request_->text] {
    result->good = WithdrawSwitch(folder, run, text);
    result->done = true;
  });
  Enable();
  Tell();
}
