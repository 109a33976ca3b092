#include "ui/dialogs/HistoryWindow.h"

#include <FL/Fl.H>

#include <system_error>
#include <thread>
#include <utility>

#include "jobs/OutputPrefix.h"
#include "record/History.h"
#include "solvers/RestartDump.h"
#include "solvers/SolverKinds.h"
#include "ui/dialogs/ComnFileDialog.h"
#include "ui/dialogs/ComnMsgBox.h"
#include "ui/dialogs/Flx_ShowInfo.h"
#include "ui/fltk/ModalWindow.h"
#include "ui/fltk/PopupMenu.h"
#include "ui/fltk/Sizes.h"
#include "ui/fltk/Theme.h"
#include "ui/text/Encoding.h"
#include "util/files/FileDirWrapper.h"
#include "util/process/OwnThread.h"
#include "util/signals/Mutex.h"

namespace {

constexpr double kLookSeconds = 0.1;
constexpr std::chrono::seconds kBetweenReadings{1};
constexpr int kWidth = 1180;
constexpr int kHeight = 520;
constexpr int kMinWidth = 720;
constexpr int kMinHeight = 240;
constexpr int kButtonWidth = 96;

HistoryWindow* theWindow = nullptr;

}  // namespace

struct HistoryWindow::Reading {
  RecordFiles files;
  TextTable texts;  // the thread's own
  Mutex mutex;
  HistoryTable::Rows rows KR_GUARDED_BY(mutex);  // null until it is done
  bool failed KR_GUARDED_BY(mutex) = false;
};

struct HistoryWindow::Export {
  std::string path;
  HistoryTable::Rows rows;
  std::vector<std::size_t> places;
  Mutex mutex;
  bool done KR_GUARDED_BY(mutex) = false;
  bool written KR_GUARDED_BY(mutex) = false;
  std::string why KR_GUARDED_BY(mutex);
};

// In the order of their buttons.
const std::vector<HistoryWindow::Command>& HistoryWindow::Commands() {
  using Self = HistoryWindow;
  static const std::vector<Command> commands = {
      {"ui_past_summary", &Self::HasEnded, &Self::ShowSummary, true},
      {"ui_past_message", &Self::HasMessage, &Self::ShowMessage, true},
      {"ui_past_folder", &Self::HasFolder, &Self::OpenFolder, true},
      {"ui_past_again", &Self::HasFile, &Self::RunAgain, true},
      {"ui_past_export", &Self::HasRows, &Self::ExportRows, false},
      {"ui_text_close", nullptr, &Self::Close, false},
  };
  return commands;
}

void HistoryWindow::Show(Application& application, const TextTable& texts,
                         const std::string& words) {
  if (theWindow == nullptr) {
    Fl_Window* const other = Fl::first_window();
    theWindow = new HistoryWindow(application, texts);
    CentreOver(*theWindow, other);
    FitScreen(*theWindow, other);
  }
  theWindow->show();
  theWindow->FilterFor(words);
}

void HistoryWindow::CloseAll() {
  delete theWindow;
}

HistoryWindow::HistoryWindow(Application& application, const TextTable& texts)
    : Fl_Double_Window(kWidth, kHeight), application_(application), texts_(texts) {
  copy_label(texts_.Get("ui_past_title").c_str());
  xclass("KestrunHistory");
  color(Theme::kWindow);
  MakeFilter();
  table_ = new HistoryTable(Sizes::kMargin, Sizes::kButtonRow, kWidth - 2 * Sizes::kMargin,
                            kHeight - 2 * Sizes::kButtonRow, texts_);
  MakeFooter();
  end();
  resizable(table_);
  size_range(kMinWidth, kMinHeight);
  table_->OnSelect = [this] { ShowButtons(); };
  table_->OnDoubleClick = [this](int, int) { ShowSummary(); };
  table_->OnMenu = [this](int x, int y) { OpenMenu(x, y); };
  callback([](Fl_Widget* self, void*) { static_cast<HistoryWindow*>(self)->Close(); });
  StartReading();
  SetFilter({}, {});
  Fl::add_timeout(kLookSeconds, Tick, this);
}

HistoryWindow::~HistoryWindow() {
  Fl::remove_timeout(Tick, this);
  if (theWindow == this) theWindow = nullptr;
}

// The verdicts in the order of HistoryVerdict.
void HistoryWindow::MakeFilter() {
  const auto label = [this](const char* icon, const std::string& words) {
    return FilterBar::Label{icon, words, texts_.Format("ui_past_chip_tip", words)};
  };
  const auto of = [&](const char* icon, JobStatus status) {
    return label(icon, texts_.Say(JobStatusWord(status)));
  };
  filter_ = new FilterBar(
      Sizes::kMargin, 0, kWidth - 2 * Sizes::kMargin, Sizes::kButtonRow, texts_,
      {.fieldTip = texts_.Get("ui_past_filter_tip"),
       .classes = {
           of("state_finished", JobStatus::kFinished), of("state_aborted", JobStatus::kAborted),
           of("state_running", JobStatus::kRunning), label("", texts_.Get("ui_past_unknown"))}});
  filter_->OnFilter = [this](const std::string& words, const FilterBar::Places& verdicts) {
    SetFilter(words, verdicts);
  };
  filter_->OnLeave = [this] { table_->TakeFocus(); };
}

void HistoryWindow::MakeFooter() {
  auto* footer = new Fl_Group(0, kHeight - Sizes::kButtonRow, kWidth, Sizes::kButtonRow);
  const int y = kHeight - Sizes::kButtonRow + Sizes::kMargin;
  int x = Sizes::kMargin;
  for (const Command& command : Commands()) {
    const bool last = &command == &Commands().back();
    if (last) {
      said_ =
          new Fl_Box(x, y, kWidth - kButtonWidth - 2 * Sizes::kMargin - x, Sizes::kButtonHeight);
      said_->align(FL_ALIGN_LEFT | FL_ALIGN_INSIDE | FL_ALIGN_CLIP);
      said_->labelcolor(Theme::kMuted);
      x = kWidth - kButtonWidth - Sizes::kMargin;
    }
    auto* button = new Fl_Button(x, y, kButtonWidth, Sizes::kButtonHeight);
    button->copy_label(texts_.Get(command.key).c_str());
    button->color(Theme::kSurface);
    button->callback(
        [](Fl_Widget* pressed, void* self) {
          auto* window = static_cast<HistoryWindow*>(self);
          for (std::size_t at = 0; at < Commands().size(); ++at) {
            if (window->buttons_[at] == pressed) return (window->*Commands()[at].act)();
          }
        },
        this);
    buttons_.push_back(button);
    x += kButtonWidth + Sizes::kGap;
  }
  footer->end();
  footer->resizable(said_);
}

void HistoryWindow::FilterFor(const std::string& words) {
  SetFilter(words, {});
  table_->TakeFocus();
}

void HistoryWindow::SetFilter(const std::string& words, const FilterBar::Places& verdicts) {
  filtered_.words = words;
  filtered_.classes = verdicts;
  table_->SetFilter(words, FilterBar::ClassesAt<HistoryVerdict>(verdicts));
  ShowCount();
  ShowButtons();
}

void HistoryWindow::ShowCount() {
  const std::size_t all = table_->AllRows()->size();
  const std::size_t shown = table_->Places().size();
  table_->SetNothing(texts_.Get(!hasRead_  ? "ui_past_reading"
                                : all == 0 ? "ui_past_none"
                                           : "ui_past_no_match"));
  filtered_.counts.assign(kHistoryVerdicts, 0);
  for (const HistoryRow& row : *table_->AllRows())
    ++filtered_.counts[static_cast<std::size_t>(row.verdict)];
  filtered_.said.clear();
  if (shown < all) {
    filtered_.said = texts_.Format("ui_past_some", std::to_string(shown), std::to_string(all));
  } else if (all > 0) {
    filtered_.said = texts_.Format("ui_past_all", std::to_string(all));
  }
  filter_->Show(filtered_);
}

bool HistoryWindow::Can(const Command& command) const {
  return command.can == nullptr || (this->*command.can)();
}

void HistoryWindow::ShowButtons() {
  for (std::size_t at = 0; at < buttons_.size(); ++at) {
    const bool can = Can(Commands()[at]);
    if (can == (buttons_[at]->active() != 0)) continue;
    can ? buttons_[at]->activate() : buttons_[at]->deactivate();
  }
}

void HistoryWindow::Say(const std::string& text) {
  said_->copy_label(text.c_str());
}

void HistoryWindow::Inform(const std::string& text) {
  ComnMsgBox::Inform(this, label(), text, texts_.Get("ui_ok"));
}

void HistoryWindow::OpenMenu(int x, int y) {
  if (table_->CurrentRun() == nullptr) return;
  std::vector<PopupEntry> entries;
  std::vector<const Command*> meanings;
  for (const Command& command : Commands()) {
    if (!command.inMenu) continue;
    entries.push_back({texts_.Get(command.key), Can(command)});
    meanings.push_back(&command);
  }
  const int picked = PickFromMenu(entries, x, y);
  if (picked >= 0) (this->*meanings[static_cast<std::size_t>(picked)]->act)();
}

int HistoryWindow::handle(int event) {
  if ((event == FL_KEYBOARD || event == FL_SHORTCUT) && TakeKey()) return 1;
  return Fl_Double_Window::handle(event);
}

bool HistoryWindow::TakeKey() {
  const int key = Fl::event_key();
  if (key == FL_Escape) return Close(), true;
  if (key == FL_F + 5 && !reading_) return StartReading(), true;
  if (key == FL_Enter || key == FL_KP_Enter) return ShowSummary(), true;
  if (Fl::event_ctrl() != 0 && key == 'f') return filter_->TakeFocus(), true;
  return false;
}

void HistoryWindow::Tick(void* self) {
  auto* window = static_cast<HistoryWindow*>(self);
  window->TakeRead();
  window->TakeExported();
  const bool isOld = window->version_ != window->application_.Record().HistoryVersion();
  if (isOld && !window->reading_ && Clock::now() >= window->next_) window->StartReading();
  Fl::repeat_timeout(kLookSeconds, Tick, self);
}

// What comes while the file is read is read again.
void HistoryWindow::StartReading() {
  reading_ = std::make_shared<Reading>();
  reading_->files = application_.Record().Files();
  FillTexts(application_.language, {}, reading_->texts);
  version_ = application_.Record().HistoryVersion();
  const auto read = [reading = reading_] {
    auto rows = std::make_shared<const std::vector<HistoryRow>>(
        HistoryRowsOf(ReadHistory(reading->files.history, reading->files.machine), reading->texts));
    const MutexLock lock(reading->mutex);
    reading->rows = std::move(rows);
  };
  const auto failed = [reading = reading_](const std::exception&) {
    const MutexLock lock(reading->mutex);
    reading->failed = true;
  };
  if (!StartGuarded(read, failed)) failed(std::exception());
}

void HistoryWindow::TakeRead() {
  if (!reading_) return;
  HistoryTable::Rows rows;
  bool failed = false;
  {
    const MutexLock lock(reading_->mutex);
    rows = std::move(reading_->rows);
    failed = reading_->failed;
  }
  if (failed) {
    reading_.reset();
    next_ = Clock::now() + kBetweenReadings;
    return Say(texts_.Get("ui_past_not_read"));
  }
  if (!rows) return;
  reading_.reset();
  hasRead_ = true;
  next_ = Clock::now() + kBetweenReadings;
  table_->SetRows(std::move(rows));
  ShowCount();
  ShowButtons();
}

bool HistoryWindow::HasEnded() const {
  const HistoryRow* const row = table_->CurrentRun();
  return row != nullptr && ::HasEnded(row->run.verdict);
}

bool HistoryWindow::HasMessage() const {
  const HistoryRow* const row = table_->CurrentRun();
  return row != nullptr && !row->run.messageFile.empty();
}

bool HistoryWindow::HasFolder() const {
  const HistoryRow* const row = table_->CurrentRun();
  return row != nullptr && !row->run.folder.empty();
}

bool HistoryWindow::HasFile() const {
  const HistoryRow* const row = table_->CurrentRun();
  return row != nullptr && !(row->run.jobFile.empty() && row->run.restartFile.empty());
}

void HistoryWindow::ShowSummary() {
  if (!HasEnded()) return;
  const RunRecord& run = table_->CurrentRun()->run;
  const JobOutput output = {.solverType = run.solver,
                            .status = run.verdict,
                            .jobFile = run.jobFile,
                            .folder = run.folder,
                            .messageFile = run.messageFile,
                            .reason = run.reason,
                            .lastWords = run.lastWords,
                            .stoppedAt = run.stoppedAt,
                            .failure = run.failure,
                            .names = {OutputPrefix(run.solver, run.outputName, run.extraOptions),
                                      AsksForCases(run.commandLine)},
                            .nodes = run.nodes,
                            .elements = run.elements,
                            .started = run.started,
                            .ended = run.ended};
  Flx_ShowInfo dialog(this, application_.language, output);
  dialog.Run();
}

void HistoryWindow::ShowMessage() {
  const std::string path = table_->CurrentRun()->run.messageFile;
  if (!FileDirWrapper::FileExists(path))
    return Inform(texts_.Get("msg_not_exist") + "\n" + ToUi(path));
  application_.ViewTextFile(path);
}

void HistoryWindow::OpenFolder() {
  const std::string path = table_->CurrentRun()->run.folder;
  if (!FileDirWrapper::IsFolder(path))
    return Inform(texts_.Get("msg_not_exist") + "\n" + ToUi(path));
  application_.OpenFolder(path);
}

void HistoryWindow::RunAgain() {
  const RunRecord& run = table_->CurrentRun()->run;
  const auto group = application_.Manager().CurrentGroup();
  if (!group) return;
  if (!application_.SolverEnabled(run.solver))
    return Inform(texts_.Get("ui_disabled_files") + "\n" + ToUi(run.jobFile));
  const auto gone = [&](const std::string& path) {
    Inform(texts_.Get("ui_past_gone") + "\n" + ToUi(path));
  };
  if (!run.jobFile.empty() && !FileDirWrapper::FileExists(run.jobFile)) return gone(run.jobFile);
  if (!run.restartFile.empty() && !RestartFileExists(run.restartFile)) return gone(run.restartFile);
  JobRequest request = RequestToRunAgain(run);
  request.groupId = group->Id();
  application_.Intake().Add(request);
  Say(texts_.Format("ui_past_added", table_->CurrentRun()->Cell(HistoryColumn::kJob),
                    ToUi(group->Name())));
}

void HistoryWindow::ExportRows() {
  if (export_) return;
  ComnFileDialog dialog;
  dialog.SetParentWindow(this);
  dialog.SetOpen(false);
  dialog.SetCaption(texts_.Get("ui_past_export_title"));
  dialog.SetFilter("CSV (*.csv)|*.csv|");
  dialog.SetDefExt("csv");
  dialog.SetDefFile("history.csv");
  if (!dialog.DoModal() || export_) return;
  const auto job = std::make_shared<Export>();
  job->path = dialog.GetPathName();
  job->rows = table_->AllRows();
  job->places = table_->Places();
  Say(texts_.Format("ui_past_exports", ToUi(job->path)));
  const auto end = [job](bool written, const std::string& why) {
    const MutexLock lock(job->mutex);
    job->done = true;
    job->written = written;
    job->why = why;
  };
  const auto work = [job, end] {
    std::vector<RunRecord> runs;
    for (const std::size_t place : job->places) runs.push_back((*job->rows)[place].run);
    std::string why;
    const std::string csv = HistoryCsv(runs, NameOfKind);
    const bool written = FileDirWrapper::WriteFileWhole(job->path, csv, &why);
    end(written, why);
  };
  const auto failed = [end](const std::exception& error) { end(false, error.what()); };
  export_ = job;
  if (!StartGuarded(work, failed))
    failed(std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again)));
}

void HistoryWindow::TakeExported() {
  if (!export_) return;
  std::string why;
  {
    const MutexLock lock(export_->mutex);
    if (!export_->done) return;
    if (!export_->written) why = export_->why.empty() ? "-" : export_->why;
  }
  const auto job = std::exchange(export_, nullptr);
  if (why.empty())
    return Say(
        texts_.Format("ui_past_exported", std::to_string(job->places.size()), ToUi(job->path)));
  Say({});
  Inform(texts_.Format("ui_past_not_exported", ToUi(job->path), ToUi(why)));
}

void HistoryWindow::Close() {
  hide();
  Fl::delete_widget(this);
  if (theWindow == this) theWindow = nullptr;
}
