// The application object: what the program owns and the order in which it comes and goes.
#ifndef KR_CORE_APPLICATION_H
#define KR_CORE_APPLICATION_H

#include <functional>
#include <future>
#include <memory>
#include <string>
#include <vector>

#include "core/HandOver.h"
#include "core/JobGroupManager.h"
#include "core/JobIntake.h"
#include "core/QueueRecord.h"
#include "core/SettingsAndPaths.h"
#include "core/SystemServices.h"
#include "solvers/JobSolver.h"
#include "solvers/SolverKinds.h"
#include "util/files/FileLock.h"

// What the process ends with when something went wrong.
namespace ExitCode {
enum : int {
  kNoDisplay = 1,
  kNotFinished = 4,  // a run without a user in which not every job has finished
  kRefused = 8,      // options that cannot be fulfilled
  kNotHandedOver = 9,
};
}

// How this copy was started.
struct StartRequest {
  bool hasWindow = false;  // the first copy takes no jobs when no window can be shown
  bool ownRun = false;     // options that only the first copy can fulfil
  bool restore = false;    // the jobs that the last session left are wanted back
  std::function<bool()> endRequested = {};  // somebody wants it to end before it has a window
  Message refusal = {};                     // why nothing is to be done at all; empty otherwise
};

// One a process. Interface thread.
class Application {
 public:
  static constexpr double kPollSeconds = 3.0;

  Application();  // sets the pointer that Get returns
  ~Application();
  static Application* Get();

  // Makes the work folder, looks for another copy of this user, hands it the jobs of the command
  // line and waits until it has them, or reads all files and makes the groups, also in the place of
  // a copy that ends meanwhile. False: end without a window, as another copy runs or no window can
  // be shown.
  bool Initialise(int argc, const char* const* argv, const StartRequest& request = {});

  // What went wrong at the start; empty when all is well.
  const std::vector<Message>& Failures() const { return failures_; }

  // The jobs of the command line wait for the next tick.
  bool JobsWait() const { return writer_ && writer_->Waits(); }
  // They are not to be run any more, since nothing takes them: a failure like those above.
  void GiveUpJobs();

  // Writes the group, host and settings files, in that order, and stops what still runs, for which
  // it waits up to 30 seconds. After the window is gone; for a second copy too. Returns the exit
  // code; the jobs of the command line that still wait are given up. Should a thread not have ended
  // even then, the destructor ends the process with that code.
  int Shutdown();

  // The same where nobody said that what runs is to be stopped: a log-out, a display that breaks.
  // Solvers run on, and the next start finds them; those that have been told to stop already are
  // waited for. Ends the process.
  [[noreturn]] void LeaveRunning();

  // The jobs that the last session left behind, all zero for none; they are offered until one of
  // these two.
  LeftBehind Left() const { return record_->Left(); }
  void RestoreLeft();
  void ForgetLeft();

  // What the queue remembers: runs before, the files that tell of them.
  const QueueRecord& Record() const { return *record_; }
  // The queue is to be there again at the next start: the language has been changed.
  bool IsToComeBack() const { return settings_->Get().language != language; }
  // Jobs run that the end of the program stops; false: it does not end after all.
  void EndStopsJobs(bool stops) { record_->EndStopsJobs(stops); }

  // One tick of the poll timer: looks at the hand-over file. False when ticking is to end.
  bool Tick();

  // Opens a text file in the viewer. "File [%s] does not exist"; "View text file [%s] failed".
  // Where the viewer of the settings does not exist, `TextFallback` shows it. The viewer starts on
  // a thread of its own, since its console may take a while: a failure there is in the log only.
  bool ViewTextFile(const std::string& path);
  // The same for a file that the user is to change, with `EditFallback`.
  bool EditTextFile(const std::string& path);
  std::function<bool(const std::string&path)> TextFallback, EditFallback;

  // Opens a result with the post-processor of the settings, or with what the desktop has for such a
  // file. Returns at once; a failure is in the log and names the setting: the program does not
  // exist, could not be run, or the desktop has none.
  void OpenResult(const std::string& path);
  // Shows a folder in what the desktop has for it. Returns at once; a failure is in the log.
  void OpenFolder(const std::string& path);

  // Enables and disables the drivers.
  void SetSolverMode(SolverMode mode);
  bool SolverEnabled(SolverKind kind) const;

  const std::string& Title() const { return title_; }
  const std::string& Version() const { return version_; }
  const std::string& ProgramFolder() const { return programFolder_; }

  // Valid after Initialise. Manager, Intake and Record only when it returned true.
  SettingsAndPaths& SettingsAndFiles() { return *settings_; }
  JobGroupManager& Manager() { return *manager_; }
  JobIntake& Intake() { return *intake_; }
  const std::vector<std::unique_ptr<JobSolver>>& Solvers() const { return solvers_; }

  int exitCode = 0;
  bool running = true;  // the poll timer is to go on
  int language = 0;     // 0 English, 1 Chinese; fixed for the process

 private:
  bool BecomeFirstCopy(std::string& otherFile);
  void HoldPlaces();
  static bool AnotherCopyRuns(bool isFirst);
  void SayTakenPlaces();
  void HandOver(int argc, const char* const* argv);
  bool SurvivesOtherCopy(int argc, const char* const* argv, const StartRequest& request);
  void AddFaultsOfWriter();
  void Fail(int code, const Message& failure);
  void TakeOver(HandOverOrder order, const std::vector<std::string>& files);
  HandOverReader::Queue QueueOfReader();
  void ReadFiles();
  void MakeGroups();
  void WriteFiles();
  std::vector<SettingsAndPaths::GroupEntry> GroupEntries() const;
  void StartOffThread(std::function<void()> start);
  void StartOrReport(std::function<bool()> start, const Message& failure);
  bool OpenTextFile(const std::string& path,
                    const std::function<bool(const std::string& path)>& fallback);
  void ReportNoViewer(const std::string& commandLine);

  const std::string version_ = "2016 R1";
  const std::string title_;
  std::string programFolder_;
  std::vector<Message> failures_;
  std::vector<std::unique_ptr<FileLock>> firstCopy_;  // held by the copy that has the window
  bool stuck_ = false;                                // a group's thread did not end in time
  std::unique_ptr<SettingsAndPaths> settings_;
  std::vector<std::unique_ptr<JobSolver>> solvers_;
  std::unique_ptr<QueueRecord> record_;
  std::unique_ptr<JobGroupManager> manager_;
  std::unique_ptr<JobIntake> intake_;
  std::unique_ptr<HandOverWriter> writer_;  // of the jobs of the command line
  std::unique_ptr<HandOverReader> reader_;
  std::vector<std::future<void>>
      starts_;  // of other programs; their end is waited for by the destructor
};

#endif
