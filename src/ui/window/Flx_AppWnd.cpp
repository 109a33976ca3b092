#include "ui/window/Flx_AppWnd.h"

#include <FL/Fl.H>
#include <FL/Fl_Box.H>
#include <FL/fl_draw.H>

#include <utility>

#include "ui/dialogs/HistoryWindow.h"
#include "ui/fltk/EventFilter.h"
#include "ui/fltk/ModalWindow.h"
#include "ui/fltk/Theme.h"
#include "ui/help/ComnChmDialog.h"
#include "ui/help/TextViewer.h"
#include "ui/monitor/MonitorWindow.h"
#include "ui/window/Layout.h"

namespace {

// The narrowest window has room for all tools and for the control parameters.
static_assert(Layout::ToolX(Action::kReadLog, Layout::kMinWidth) + Layout::kToolSize <
              Layout::ToolX(Action::kConfig, Layout::kMinWidth));
static_assert(Layout::PauseX(Layout::kInlineCaptionWidth) + Layout::kPauseField <
              Layout::kInlineCaptionWidth - Layout::kMargin);

// The strip under the tools, with the lines between their groups.
class ToolRow : public Fl_Group {
 public:
  ToolRow(int x, int y, int w, int h) : Fl_Group(x, y, w, h) {
    color(Theme::kSurface);
    resizable(nullptr);
  }

  void draw() override {
    if (damage() & ~FL_DAMAGE_CHILD) {
      fl_color(color());
      fl_rectf(x(), y(), w(), h());
      fl_color(Theme::kLine);
      fl_xyline(x(), y() + h() - 1, x() + w() - 1);
      for (int group = 1; group + 1 < Layout::kToolGroups; ++group) {
        const int line =
            Layout::ToolX(Layout::kToolGroupStart[group], w()) - Layout::kToolGroupGap / 2 - 1;
        fl_color(Theme::kLine);
        fl_yxline(line, y() + 9, y() + h() - 10);
      }
    }
    draw_children();
  }
};

// The classes in the order of StatusClass.
FilterBar::Labels FilterLabels(const TextTable& texts) {
  const auto label = [&](const char* icon, const char* key) {
    const std::string& words = texts.Get(key);
    return FilterBar::Label{icon, words, texts.Format("ui_chip_tip", words)};
  };
  FilterBar::Label unknown = label("state_marked", "ui_chip_unknown");
  unknown.isRare = true;
  return {.fieldTip = texts.Get("ui_filter_tip"),
          .classes = {label("state_queued", "ui_chip_queued"),
                      label("state_running", "ui_chip_running"),
                      label("state_finished", "ui_chip_finished"),
                      label("state_marked", "ui_chip_stopped"), unknown,
                      label("state_aborted", "ui_chip_aborted")},
          .follow = {"", texts.Get("ui_follow"), texts.Get("ui_follow_tip")},
          .orderTip = texts.Get("ui_sorted_tip")};
}

}  // namespace

Flx_AppWnd::Flx_AppWnd(Application& application, QueueNotes& notes, const TextTable& texts)
    : Fl_Double_Window(Layout::kWindowX, Layout::kWindowY, Layout::kWindowWidth,
                       Layout::kWindowHeight),
      application_(application),
      notes_(notes),
      texts_(texts),
      undo_(application.Manager()) {
  copy_label(texts_.Get(application_.Title()).c_str());
  xclass("Kestrun");
  color(Theme::kWindow);
  MakeTools();
  settings_ =
      new SettingsRow(0, Layout::kToolRowHeight, w(), Layout::TabsY(w()) - Layout::kToolRowHeight,
                      application_, undo_, texts_);
  tabs_ = new GroupTabs(Layout::kMargin, Layout::TabsY(w()), w() - 2 * Layout::kMargin,
                        Layout::kTabHeight);
  MakeBars();
  line_ = new GroupLine(w() - Layout::kMargin - Layout::GroupLineWidth(w()), Layout::TabsY(w()),
                        Layout::GroupLineWidth(w()), Layout::kTabHeight);
  filter_ =
      new FilterBar(Layout::kMargin, Layout::TabsY(w()) + Layout::kTabHeight,
                    w() - 2 * Layout::kMargin, Layout::kFilterHeight, texts_, FilterLabels(texts_));
  status_ = new StatusBar(0, h() - Layout::kStatusHeight, w(), Layout::kStatusHeight,
                          texts_.Get("ui_cancel"), ToolTip(Action::kQueueOptions));
  end();
  resizable(nullptr);
  FitScreen(*this, nullptr);
  // Behind it: a new size fixes a window that has no resizable part.
  size_range(Layout::kMinWidth, Layout::kMinHeight);
  ConnectParts();
  FilterEvents(this);
  ShowLeft();
  Refresh();
  if (Table()) Table()->TakeFocus();
}

Flx_AppWnd::~Flx_AppWnd() {
  FilterEvents(nullptr);
  AllowModalWindows(true);
  Fl::remove_timeout(LookAtLeft, this);
  Fl::remove_timeout(TakeDropped, this);
  Fl::remove_timeout(LookAtReport, this);
  Fl::remove_timeout(FollowSearch, this);
  application_.Manager().SetObserver(nullptr);
  notes_.OnChanges = nullptr;
  application_.TextFallback = nullptr;
  application_.EditFallback = nullptr;
  TextViewer::OnSaved = nullptr;
  HistoryWindow::CloseAll();
  TextViewer::CloseAll();
  MonitorWindow::CloseAll();
  ComnChmDialog::CloseViewer();
}

bool Flx_AppWnd::MayDropTexts() {
  return TextViewer::MayDropAll();
}

void Flx_AppWnd::KeepTexts() {
  if (leaving_) return;
  AppLog& log = application_.SettingsAndFiles().Log();
  TextViewer::KeepAll([&log](const Message& message) { log.Note(message); });
}

void Flx_AppWnd::MakeTools() {
  auto* row = new ToolRow(0, 0, w(), Layout::kToolRowHeight);
  for (int tool = 0; tool < Layout::kToolCount; ++tool) {
    const auto action = static_cast<Action>(tool);
    const ActionInfo& info = InfoOf(action);
    auto* button = new ToolButton(Layout::ToolX(action, w()), Layout::kToolY, Layout::kToolSize,
                                  Layout::kToolSize, info.icon);
    button->callback(
        [](Fl_Widget* pressed, void* self) {
          auto* window = static_cast<Flx_AppWnd*>(self);
          for (int index = 0; index < Layout::kToolCount; ++index) {
            if (window->tools_[static_cast<std::size_t>(index)] == pressed)
              return window->Perform(static_cast<Action>(index));
          }
        },
        this);
    tools_.push_back(button);
  }
  row->end();
}

void Flx_AppWnd::MakeBars() {
  const auto make = [this] {
    auto* bar = new NoticeBar(Layout::kMargin, Layout::TabsY(w()), w() - 2 * Layout::kMargin,
                              Layout::kBarHeight);
    bar->hide();
    bars_.push_back(bar);
    return bar;
  };
  const auto add = [this](NoticeBar* bar, const std::string& key, std::function<void()> press) {
    bar->AddButton(texts_.Get(key), texts_.Get(key + "_tip"), std::move(press));
  };
  pause_ = make();
  add(pause_, "ui_go_on", [this] { Perform(Action::kSubmit); });
  apart_ = make();
  add(apart_, "ui_apart_keep", [this] { AnswerApart(true); });
  add(apart_, "ui_apart_leave", [this] { AnswerApart(false); });
  belowBar_ = make();
  add(belowBar_, "ui_below_add", [this] { AddBelow(true); });
  add(belowBar_, "ui_below_leave", [this] { AddBelow(false); });
  left_ = make();
  add(left_, "ui_left_restore", [this] { RestoreLeft(); });
  add(left_, "ui_left_forget", [this] { ForgetLeft(); });
}

void Flx_AppWnd::ConnectParts() {
  callback([](Fl_Widget*, void* self) { static_cast<Flx_AppWnd*>(self)->Perform(Action::kExit); },
           this);
  settings_->OnSubmit = [this] { Perform(Action::kSubmit); };
  settings_->OnMpp = [this] { Perform(Action::kMppSettings); };
  settings_->OnHint = [this](const std::string& hint) { Say(hint, StatusBar::Tone::kError); };
  settings_->OnJobsWanted = [this](const std::vector<JobId>& jobs) {
    if (Table()) Table()->SelectJobs(jobs);
    ShowCurrentJob();
  };
  settings_->OnEdited = [this](const ManyDone& done) { SayEdited(done); };
  tabs_->OnSelect = [this](int tab) { SwitchToGroup(tab); };
  tabs_->OnRename = [this](int) { Perform(Action::kRenameGroup); };
  tabs_->OnMenu = [this](int, int x, int y) { OpenGroupMenu(x, y); };
  filter_->OnFilter = [this](const std::string& words, const FilterBar::Places& classes) {
    if (Table()) Table()->SetFilter(words, FilterBar::ClassesAt<StatusClass>(classes));
  };
  filter_->OnOrder = [this] {
    if (Table()) Table()->ShowRunningOrder();
  };
  filter_->OnFollow = [this](bool follow) {
    for (JobTable* table : tables_) table->SetFollow(follow);
    follows_ = follow;
  };
  filter_->OnLeave = [this] { FocusTable(); };
  status_->OnCancel = [this] {
    if (!search_.IsBusy() && !application_.Intake().Busy()) {
      if (report_) report_->Cancel();
      return;
    }
    search_.Cancel();
    application_.Intake().Cancel();
  };
  status_->OnOptions = [this] { Perform(Action::kQueueOptions); };
  application_.TextFallback = [this](const std::string& path) {
    return TextViewer::Show(path, texts_);
  };
  application_.EditFallback = [this](const std::string& path) {
    return TextViewer::Edit(path, texts_);
  };
  TextViewer::OnSaved = [this](const std::string& path) {
    if (path != application_.SettingsAndFiles().hostFile) return;
    application_.SettingsAndFiles().ReadHostFile();
    if (dialog_) dialog_->HostsChanged();
  };
  notes_.OnChanges = [this](const QueueChanges& changes) { TakeChanges(changes); };
  application_.Manager().SetObserver(&notes_);
}

void Flx_AppWnd::MakeTable(const std::shared_ptr<JobGroup>& group) {
  begin();
  auto* table =
      new JobTable(Layout::kMargin, Layout::TableY(w()), 100, 100, group, texts_,
                   [this](JobId job) { return application_.Manager().Watch().StateOf(job); });
  end();
  table->hide();
  table->OnSelect = [this] { ShowCurrentJob(); };
  table->OnMenu = [this](int x, int y) { OpenJobMenu(x, y); };
  table->PastRunOf = [this](const JobFile& job) { return application_.Record().LastRunOf(job); };
  table->OnCell = [this](int row, int column) { CellPressed(row, column); };
  table->OnDoubleClick = [this](int, int column) {
    if (column == JobTable::kStatus) Perform(Action::kMonitor);
  };
  table->SurroundingsNow = [this, group] { return SurroundingsOf(*group); };
  table->OnHeadMenu = [table](int column, int x, int y) { table->OpenColumnMenu(column, x, y); };
  table->OnColumns = [this, table] {
    application_.SettingsAndFiles().Set(&Settings::table_columns, table->ColumnsText());
  };
  table->OnEnter = [this] { Perform(Action::kViewSummary); };
  table->OnView = [this] { ShowFilter(); };
  table->SetFollow(follows_);
  if (tables_.empty()) {
    table->SetColumns(application_.SettingsAndFiles().Get().table_columns);
  } else {
    table->CopyColumns(*tables_.front());
  }
  tables_.push_back(table);
}

JobTable* Flx_AppWnd::Table() const {
  const auto index = static_cast<std::size_t>(application_.Manager().CurrentGroupIndex());
  return index < tables_.size() ? tables_[index] : nullptr;
}

JobId Flx_AppWnd::CurrentJob() const {
  return Table() ? Table()->CurrentJob() : JobId::kNone;
}

// Those that leave room for some rows, and at least the first; the last one of them tells how many
// come when it is answered. Gives their height.
int Flx_AppWnd::LayOutBars() {
  using namespace Layout;
  constexpr int kFewestRows = 4;
  constexpr int kRows = kHeaderHeight + kFewestRows * kRowHeight;
  constexpr int kBar = kBarHeight + kMargin;
  int room = std::max(1, (h() - kStatusHeight - kMargin - TableY(w()) - kRows) / kBar);
  auto waiting = std::ranges::count_if(bars_, &NoticeBar::Asks);
  int offered = 0;
  NoticeBar* last = nullptr;
  for (NoticeBar* bar : bars_) {
    const bool shown = bar->Asks() && room > 0;
    shown ? bar->show() : bar->hide();
    if (!shown) continue;
    bar->resize(kMargin, TabsY(w()) + offered, w() - 2 * kMargin, kBarHeight);
    bar->SetMore({});
    last = bar;
    offered += kBar;
    --room;
    --waiting;
  }
  if (last != nullptr && waiting > 0)
    last->SetMore(texts_.Format("ui_more_bars", std::to_string(waiting)));
  return offered;
}

void Flx_AppWnd::LayOut() {
  using namespace Layout;
  tools_.front()->parent()->resize(0, 0, w(), kToolRowHeight);
  for (int tool = 0; tool < kToolCount; ++tool)
    tools_[static_cast<std::size_t>(tool)]->position(ToolX(static_cast<Action>(tool), w()), kToolY);
  settings_->resize(0, kToolRowHeight, w(), TabsY(w()) - kToolRowHeight);
  const int lineWidth = GroupLineWidth(w());
  const int offered = LayOutBars();
  tabs_->resize(kMargin, TabsY(w()) + offered, w() - 2 * kMargin - lineWidth, kTabHeight);
  line_->resize(w() - kMargin - lineWidth, tabs_->y(), lineWidth, kTabHeight);
  status_->resize(0, h() - kStatusHeight, w(), kStatusHeight);
  filter_->resize(kMargin, TabsY(w()) + kTabHeight + offered, w() - 2 * kMargin, kFilterHeight);
  const int y = TableY(w()) + offered;
  if (JobTable* table = Table())
    table->resize(kMargin, y - 1, w() - 2 * kMargin, h() - kStatusHeight - kMargin - y + 1);
}

void Flx_AppWnd::resize(int x, int y, int newWidth, int newHeight) {
  const bool same = newWidth == w() && newHeight == h();
  Fl_Double_Window::resize(x, y, newWidth, newHeight);
  if (!same && status_) {
    LayOut();
    redraw();
  }
}
