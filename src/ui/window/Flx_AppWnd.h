// The program's main window.
#ifndef KR_UI_WINDOW_FLX_APPWND_H
#define KR_UI_WINDOW_FLX_APPWND_H

#include <FL/Fl_Double_Window.H>

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "core/Application.h"
#include "core/QueueUndo.h"
#include "ui/dialogs/ComnMsgBox.h"
#include "ui/dialogs/Flx_Base_Dialog.h"
#include "ui/fltk/FilterBar.h"
#include "ui/fltk/ToolButton.h"
#include "ui/report/ReportWriter.h"
#include "ui/text/TextTable.h"
#include "ui/window/Actions.h"
#include "ui/window/DeckSearch.h"
#include "ui/window/GroupLine.h"
#include "ui/window/GroupTabs.h"
#include "ui/window/JobTable.h"
#include "ui/window/NoticeBar.h"
#include "ui/window/QueueNotes.h"
#include "ui/window/SettingsRow.h"
#include "ui/window/StatusBar.h"

// Tools, settings, group tabs, one job table a group, and a status line. Every action first stores
// what is being typed, checks whether it makes sense, asks or tells the user, changes the queue
// through the manager, and brings the window up to date. Interface thread.
class Flx_AppWnd : public Fl_Double_Window {
 public:
  // The application and the notes outlive the window. `texts` holds the language's texts.
  Flx_AppWnd(Application& application, QueueNotes& notes, const TextTable& texts);
  ~Flx_AppWnd() override;

  // Main-window texts by key, in the language's encoding; a missing key gives an empty text.
  void SetText(const std::string& key, const std::string& text) { texts_.Set(key, text); }
  const std::string& GetText(const std::string& key) const { return texts_.Stored(key); }
  const TextTable& Texts() const { return texts_; }

  void Perform(Action action);

  // Brings settings, tabs, tables and the status line up to date.
  void Refresh();

  // Takes over what is being typed.
  void StoreTyped();

  // Saves what is edited in text windows, unless the program is ending already; the log says where.
  // Needs no display.
  void KeepTexts();

  // Begins the report that the settings ask for when it is due; true while one is written.
  bool WritesReport();
  // That report could not be written.
  std::function<void(const Message& message)> OnReportFailed;

  // Ends the program without a question: running jobs are stopped, at most 30 seconds.
  void Leave();

  void resize(int x, int y, int w, int h) override;
  int handle(int event) override;

 private:
  struct Counts {
    std::map<JobStatus, int> of;
    int total = 0;
    StatusCounts classes{};
    std::int64_t seconds = 0;  // that the last runs of them took and take
  };

  void MakeTools();
  void MakeBars();
  void MakeTable(const std::shared_ptr<JobGroup>& group);
  void ConnectParts();
  void LayOut();
  int LayOutBars();
  JobTable* Table() const;  // of the current group; null when there is none
  std::shared_ptr<JobGroup> Group() const { return application_.Manager().CurrentGroup(); }
  JobId CurrentJob() const;  // kNone: none is current

  // Flx_AppWnd_State.cpp: keeping up with the queue.
  void TakeChanges(const QueueChanges& changes);
  void ShowIntake(const QueueChanges& changes);
  void SyncTables();
  void ShowTabs();
  void ShowState();
  void ShowTools();
  void ShowLeft();
  static void LookAtLeft(void* self);
  void ShowPause();
  void TakeBackWaiting();
  void ShowFilter();
  std::string ToolTip(Action action) const;
  void ShowCurrentJob();
  void SwitchToGroup(int index);
  void StepGroup(int by);
  Counts Count(const JobGroup& group) const;
  JobTable::Surroundings SurroundingsOf(const JobGroup& group) const;
  std::optional<double> TimeLeftOf(const JobGroup& group) const;
  std::string EndOf(const JobGroup& group) const;
  std::string PauseOf(const JobGroup& group) const;
  void ShowGroupLine(const JobGroup& group, const Counts& counts);
  // Reads the current job; false, after telling the user, when there is none.
  bool ReadCurrentJob(const std::function<void(const JobFile&)>& read);
  void Say(const std::string& text, StatusBar::Tone tone = StatusBar::Tone::kPlain);

  // Flx_AppWnd_Actions.cpp
  void FocusTable();
  void Submit();
  // Tells the user when none of the queued jobs has a solver that is there.
  bool SolversAreMissing(const JobGroup& group);
  void SelectFailed();
  void AddGroup();
  void RenameGroup();
  void ViewMessage();
  void OpenStages();
  void StopRunning();
  using Groups = std::vector<std::shared_ptr<JobGroup>>;
  // The jobs of these groups that run or wait, and what to say about them in lines of text.
  struct Losses {
    std::set<JobId> jobs;
    std::set<JobId> dear;  // of them those that have run for a while
    std::string text;
  };
  Losses LossesIn(const Groups& groups, const std::vector<JobId>& only) const;
  // Asks a question to which "yes" stops the groups' active jobs, or those of them in `only`.
  // Where there are some it says what is lost, and "no" is the default.
  bool AskToLose(const std::string& question, const Groups& groups,
                 const std::vector<JobId>& only = {});
  // Why a group cannot have the name; empty when it can.
  std::string RefusalOfName(const std::string& name) const;
  void ShowHelp();
  void RestoreLeft();
  void ForgetLeft();
  std::string FateOfQueued() const;
  // The user agrees to lose changes of text windows that are not saved, or there are none.
  static bool MayDropTexts();
  void Close();
  void Exit();
  // Tells the group (null: all) to stop and waits with a small window. False when something still
  // runs after 30 seconds, or a solver that could not be ended; says so.
  bool StopAndWait(const std::shared_ptr<JobGroup>& group);
  void RunDialog(Flx_Base_Dialog& dialog);
  void Inform(const std::string& text);
  bool Ask(const std::string& text, ComnMsgBox::Type type = ComnMsgBox::kYesNo);

  // Flx_AppWnd_Many.cpp: all of it for the jobs that are selected.
  std::vector<JobId> SelectedJobs() const;
  // False, after telling the user, when none is.
  bool ReadSelected(const std::function<void(const JobFile&)>& read);
  std::string CountWords(const char* one, const char* several, std::size_t count) const;
  std::string Sentences(const std::string& first, const std::string& second) const;
  std::string LeftOutWords(const ManyDone& done, const char* unfitKey) const;
  void Resubmit();
  void SayResubmitted(const ManyDone& done);
  void RerunFailed();
  void DeleteJobs();
  void DeleteAll();
  void DeleteGroup();
  void SayDeleted(int count);
  void MoveJobs(JobList::Move move);
  bool QueuedBelowOthers(const std::vector<JobId>& jobs) const;
  // "I Force" of those that have it.
  struct ForceState {
    bool any = false;
    bool differs = false;
    bool on = false;
  };
  ForceState ForceOfSelected() const;
  void ToggleForce();
  void SayEdited(const ManyDone& done);
  void CopyPaths();
  void OpenFolders();
  void ShowCommand();
  void ViewSummary();
  void Undo();

  // Flx_AppWnd_Adding.cpp
  void AddJobs(SolverKind kind);
  void AddFolder();
  // Begins where files were chosen last; empty when the user chose none.
  std::optional<std::string> AskForFolder(const char* titleKey);
  static void TakeDropped(void* self);
  // Files become jobs of this kind, by their endings when there is none; folders are searched.
  void AddFiles(const std::vector<std::string>& paths, std::optional<SolverKind> kind = {});
  void AddDecks(const std::vector<std::string>& files, std::optional<SolverKind> kind);
  void InformOfFiles(const char* key, const std::vector<std::string>& paths);
  void SearchNext();
  static void FollowSearch(void* self);
  void TakeSearch();
  void OfferBelow(const DecksFound& found);
  void AddBelow(bool add);
  void AskApart();
  void ForgetAsked();
  void AnswerApart(bool apart);
  // Of those that can be: whether all keep their results apart. None when there are no such.
  std::optional<bool> SelectedAreApart() const;
  void SwitchApart();
  void SayApart(int jobs);
  void ShowBar(NoticeBar& bar, const std::string& text);  // hidden with an empty text

  // Flx_AppWnd_Dialogs.cpp
  void AddRestart();
  void GoOn();
  void RunPost();
  void ShowRunsOfJob();
  void OpenMonitor();
  void OpenRunFolder();
  void OpenMppSettings();
  void OpenQueueOptions();
  void Configure();
  void ShowAbout();

  // Flx_AppWnd_Report.cpp
  void SaveReport();
  void WriteReport(const std::string& path, std::vector<ReportedGroup> groups);
  void ReportWhenDone();
  static void LookAtReport(void* self);

  // Flx_AppWnd_Keys.cpp
  void OpenJobMenu(int x, int y);
  void OpenGroupMenu(int x, int y);
  void PopUp(const std::vector<Action>& actions, int x, int y);  // kExit separates
  bool SolverEnabledFor(Action action) const;                    // true for actions of no solver
  bool CanPerform(Action action) const;
  std::string MenuText(Action action) const;
  std::string DumpOfCurrentJob() const;  // the file's name in UTF-8; empty: it has left none
  void CellPressed(int row, int column);

  Application& application_;
  QueueNotes& notes_;
  TextTable texts_;
  QueueUndo undo_;
  std::vector<ToolButton*> tools_;
  SettingsRow* settings_ = nullptr;
  GroupTabs* tabs_ = nullptr;
  std::vector<NoticeBar*> bars_;   // from the top, the most urgent one first
  NoticeBar* left_ = nullptr;      // the jobs of the last session
  NoticeBar* pause_ = nullptr;     // to go on with a group
  NoticeBar* belowBar_ = nullptr;  // decks in the folders below one that was added
  NoticeBar* apart_ = nullptr;     // jobs that share a folder
  DeckSearch search_;
  std::vector<std::string> folders_;      // to be searched next
  std::vector<std::string> below_;        // what that bar offers
  std::set<JobId> askApart_;              // what was added in the window since somebody answered
  GroupLine* line_ = nullptr;
  FilterBar* filter_ = nullptr;
  std::vector<JobTable*> tables_;  // in the order of the groups
  StatusBar* status_ = nullptr;
  Flx_Base_Dialog* dialog_ = nullptr;  // the one that runs
  std::string dropped_;                // a text that was dropped and is not looked at yet
  bool follows_ = false;               // the running job is kept in sight
  bool leaving_ = false;
  std::unique_ptr<ReportWriter> report_;  // the one that is being written
  std::map<int, int> reported_;  // how many endings of a group the last report knew
  // Lines of the log that come before this moment were explained in better words already.
  std::chrono::steady_clock::time_point explainedUntil_;
  Message logged_;  // the last of them that the status line has shown
};

#endif
