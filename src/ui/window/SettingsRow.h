// The settings between the tools and the group tabs.
#ifndef KR_UI_WINDOW_SETTINGSROW_H
#define KR_UI_WINDOW_SETTINGSROW_H

#include <FL/Fl_Box.H>
#include <FL/Fl_Button.H>
#include <FL/Fl_Check_Button.H>
#include <FL/Fl_Choice.H>
#include <FL/Fl_Group.H>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/Application.h"
#include "core/QueueUndo.h"
#include "ui/fltk/ChoiceEntries.h"
#include "ui/fltk/Field.h"
#include "ui/fltk/ToolButton.h"
#include "ui/text/TextTable.h"

// Shows and edits the selected jobs; without one, the defaults of new jobs. A field in which they
// differ is empty, says so, and changes them when something is typed into it. The solver path and
// the automatic memory are always settings. What is edited is stored at once. Interface thread.
class SettingsRow : public Fl_Group {
 public:
  // All of them outlive the row.
  SettingsRow(int x, int y, int w, int h, Application& application, QueueUndo& undo,
              const TextTable& texts);

  // The jobs to show; a null group: none. A text that is being typed for other jobs must have been
  // committed; one that was not valid comes back with its jobs.
  void SetJobs(std::shared_ptr<JobGroup> group, std::vector<JobId> jobs);
  // Shows what is stored; a text that is being typed stays.
  void Refresh();
  // Stores what is being typed. False when something is not valid, of another job of the list too;
  // it stays as typed.
  bool Commit();
  // Leads to the first field whose text is not valid, of other jobs through OnJobsWanted.
  void GoToRejected();
  void GoToSolver();

  std::function<void()> OnSubmit;
  std::function<void()> OnMpp;                                       // the MPP button was pressed
  std::function<void(const ManyDone& done)> OnEdited;                // jobs were
  std::function<void(const std::vector<JobId>& jobs)> OnJobsWanted;  // these are to be shown
  std::function<void(const std::string& hint)> OnHint;               // empty: all is well again

  void resize(int x, int y, int w, int h) override;

 private:
  class KindChoice;
  // What the fields show.
  struct View;
  View MakeView() const;
  void MakeFields();
  void ConnectFields();
  Fl_Box* MakeLabel(const char* key);
  std::function<std::string(const std::string&)> NumberCheck(long long least, long long most,
                                                             const char* hintKey) const;
  void PlaceWidgets();
  void ShowKind(const View& view);
  void ShowView(const View& view);
  void ShowMpp();
  void ChooseKind(SolverKind kind);
  void ChooseSolver();
  void StoreSolver(const std::string& path);
  std::string SolverHint(const std::string& path) const;
  void ToggleAuto();
  void KeepRejected();
  std::vector<JobId> OtherRejected() const;
  bool HasJobs() const { return group_ && !jobs_.empty(); }
  std::optional<SolverKind> ShownKind() const;  // whose program is shown
  void EditJobs(JobField field, const FieldValue& value);
  // A number that was typed goes to the jobs or, without any, to the settings.
  template <typename Number>
  void StoreNumber(JobField field, Number Settings::*setting, Number value);
  std::string TipOf(const char* one, const char* none) const;

  Application& application_;
  QueueUndo& undo_;
  const TextTable& texts_;
  std::shared_ptr<JobGroup> group_;
  std::vector<JobId> jobs_;
  SolverKind kind_ = SolverKind::kLsDynaSingle;                           // shown without a job
  std::map<std::vector<JobId>, std::map<Field*, std::string>> rejected_;  // of others than jobs_

  Fl_Box* solverLabel_;
  KindChoice* kindChoice_;
  ChoiceEntries kinds_;
  Field* solver_;
  Fl_Button* browse_;
  Fl_Box* commandLabel_;
  Field* command_;
  PrimaryButton* submit_;
  Fl_Box* caption_;
  Fl_Box* memoryLabel_;
  Field* memory_;
  Fl_Check_Button* auto_;
  Fl_Box* cpuLabel_;
  Field* cpu_;
  Fl_Box* pauseLabel_;
  Field* pause_;
  Fl_Box* secondLabel_;
  StateButton* mpp_;
};

#endif
