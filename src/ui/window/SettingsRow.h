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
#include <string>

#include "core/Application.h"
#include "ui/fltk/ChoiceEntries.h"
#include "ui/fltk/Field.h"
#include "ui/fltk/ToolButton.h"
#include "ui/text/TextTable.h"

// Shows and edits the current job; without one, the defaults of new jobs. The solver path and the
// automatic memory are always settings. What is edited is stored at once. Interface thread.
class SettingsRow : public Fl_Group {
 public:
  // The application and the texts outlive the row.
  SettingsRow(int x, int y, int w, int h, Application& application, const TextTable& texts);

  // The job to show; a null list or kNone: none. A text that is being typed for another job must
  // have been committed; one that was not valid comes back with its job.
  void SetJob(std::shared_ptr<JobList> list, JobId job);
  // Shows what is stored; a text that is being typed stays.
  void Refresh();
  // Stores what is being typed. False when something is not valid, of another job of the list too;
  // it stays as typed.
  bool Commit();
  // Leads to the first field whose text is not valid, of another job through OnJobWanted.
  void GoToRejected();
  void GoToSolver();

  std::function<void()> OnSubmit;
  std::function<void()> OnMpp;  // the MPP button was pressed
  std::function<void()> OnJobEdited;
  std::function<void(JobId job)> OnJobWanted;           // this one is to be shown
  std::function<void(const std::string& hint)> OnHint;  // empty: all is well again

  void resize(int x, int y, int w, int h) override;

 private:
  // What the fields show.
  struct View;
  View MakeView() const;
  void MakeFields();
  void ConnectFields();
  Fl_Box* MakeLabel(const char* key);
  std::function<std::string(const std::string&)> NumberCheck(long long least, long long most,
                                                             const char* hintKey) const;
  void PlaceWidgets();
  void ShowView(const View& view);
  void ShowMpp();
  void ChooseKind(SolverKind kind);
  void ChooseSolver();
  void StoreSolver(const std::string& path);
  std::string SolverHint(const std::string& path) const;
  void ToggleAuto();
  void KeepRejected();
  JobId OtherRejected();
  bool HasJob() const;
  SolverKind ShownKind() const;  // whose program is shown
  // Runs a change of the current job and tells when the list refuses it.
  void EditJob(const std::function<bool(JobList& list, JobId job)>& edit);

  Application& application_;
  const TextTable& texts_;
  std::shared_ptr<JobList> list_;
  JobId job_ = JobId::kNone;
  SolverKind kind_ = SolverKind::kLsDynaSingle;              // shown without a job
  std::map<JobId, std::map<Field*, std::string>> rejected_;  // of jobs that are not shown

  Fl_Box* solverLabel_;
  Fl_Choice* kindChoice_;
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
