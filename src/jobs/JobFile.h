// The jobs of the queue.
#ifndef KR_JOBS_JOBFILE_H
#define KR_JOBS_JOBFILE_H

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "jobs/JobId.h"
#include "jobs/JobStatus.h"
#include "jobs/Settings.h"
#include "messages/Message.h"
#include "util/files/FolderSnapshot.h"
#include "util/process/PTWrapper.h"
#include "util/signals/Mutex.h"

// Which program runs a job; solvers/SolverKinds.h tells them apart. The numbers are the indices of
// Settings::solver_path and stand in the record: a new kind comes last.
enum class SolverKind : int { kLsDynaSingle = 0, kLsDynaDouble, kUtilityBatch, kVorel, kInc };
inline constexpr SolverKind kLastSolverKind = SolverKind::kInc;

// A message file that is kept after its run has its own name and this.
inline constexpr std::string_view kKeptEnding = ".krb";

// A solver that takes no decks writes one text about its run beside its job file, with the job's
// name: "part_INFO.OUT" for "part.fin". Small and big letters are the same.
struct TextOutputNames {
  const char* jobExtension;
  const char* outputEnding;
};

class JobFile;

// Where a run stopped that ended normally: a percentage of the end time, or one of these.
enum RunStop : int {
  kNotStopped = -1,        // it reached its end time, or nobody knows better
  kStoppedSomewhere = -2,  // before its end time, which is not known
  kStopUnknown = -3,       // its files could not be read at the end: it may have
};
// In words; empty for kNotStopped.
Message StoppedMessage(int stoppedAt);

// How a run failed. The numbers stand in the record: a new one comes last.
enum class FailureKind : int {
  kNone = 0,       // it did not, or nobody knows
  kStopped,        // by the user; the only one that is no failure
  kSolverError,    // number: of the solver's first error; 0: it tells of one without a number
  kNoMessageFile,  // number: its exit code where that is known
  kKilled,         // number: the signal; of Windows its status, which is negative
  kDiskFull,
  kCannotStart,  // number: the code of the run
  kTimeStep,     // it collapsed
  kLicence,
  kNoNormalEnd,  // nothing tells of a normal end, or of an error
  kOldOutput,    // what there is was there before the start
  kNotEnded,     // the user stopped it, but its solver cannot be ended; number: a process of it
};
inline constexpr FailureKind kLastFailureKind = FailureKind::kNotEnded;

// Two runs with equal ones failed for the same reason.
struct Failure {
  FailureKind kind = FailureKind::kNone;
  int number = 0;

  bool operator==(const Failure&) const = default;
};
// "solver error 40509", "stopped by you"; empty for kNone.
Message FailureMessage(const Failure& failure);

// What a run has left beside its status. May say something of one that is Finished too.
struct RunResult {
  std::string messageFile;  // where it is kept; empty: none
  // 0 or the driver's code (2 not normally terminated, 3 no message file, 4 job or restart file
  // missing, 5 solver missing, 6 process not created), and the reason in words.
  int errorCode = 0;
  Message reason;
  std::string restartDump;  // to go on from (solvers/RestartDump.h); empty: none
  // What there is to say beside the reason, in lines: how the solver ended and what it printed
  // last (solvers/LastWords.h).
  Message lastWords;
  int stoppedAt = kNotStopped;  // a RunStop; of a job with stages, the first one's that stopped
  Failure failure = {};         // of a run that was aborted
  // Of the message file and the results as they were at the end of the run, where somebody has
  // counted them: later runs in the folder may write over both.
  std::optional<std::int64_t> errors = {};
  std::optional<std::int64_t> warnings = {};
  std::optional<std::int64_t> nodes = {};
  std::optional<std::int64_t> elements = {};
  // How long it took by a clock that nobody sets; nothing where nobody watched all of it.
  std::optional<std::int64_t> seconds = {};

  // The same, else by the times of its begin and its end, in seconds since 1970; nothing where
  // these do not tell either.
  std::optional<std::int64_t> Took(std::int64_t started, std::int64_t ended) const;

  bool operator==(const RunResult&) const = default;
};

// What a driver needs to know beyond the job, made for one run.
struct JobRunContext {
  Settings settings;      // a copy made when the run began
  std::string groupText;  // the group's host assignment
  PTWrapperConsole console;
  MessageSink report;  // for the application log
  MessageSink note;    // for what is no fault; may be null
  // What stands in front of the files of other jobs of the queue (OutputPrefix): none of them is
  // touched, nor taken for one of this job's.
  std::vector<std::string> otherPrefixes = {};
  // Called when the solver's process is about to be created from `start`, whose token it will have;
  // may be null.
  std::function<void(const JobFile& job, const PTWrapperProcessStart& start)> starting;
  // Called when it has been created; may be null.
  std::function<void(const JobFile& job, const PTWrapperProcessStart& start)> started;
  // The manager's code of the last run that did not end normally; may be null.
  std::atomic<int>* runErrorCode = nullptr;
};

// What a job is told and how far it has come, as plain data that can be copied.
struct JobFields {
  std::string identifier;   // host address and time of creation; digits and "_" for IPv4
  std::string jobFile;      // the input file; may be empty for a restart job
  std::string restartFile;  // empty: no restart
  std::string extraOptions;
  std::uint64_t memory = 0;  // megabytes; 0: not given
  int ncpu = 0;              // below 1: the settings' cpu_count
  int pause = 0;             // seconds before the run
  JobStatus status = JobStatus::kQueued;
  std::int64_t started = 0;  // of the last run, seconds since 1970; 0: not yet
  std::int64_t ended = 0;
  int firstStage = 0;  // index into the job's stages

  bool operator==(const JobFields&) const = default;
};

// The same of a job that is an LS-DYNA deck.
struct DynaFields {
  SolverKind solverType = SolverKind::kLsDynaSingle;
  bool useSFile = false;  // " s=" with the settings' force
  bool caseRun = false;   // the deck has cases
  bool dump = true;       // false: run with d=nodump whatever the settings say
  bool keepDeck = false;  // constraints act in all stages: the deck is not rewritten
  // The solver's jobid=, to keep the results apart from those of other decks in the folder
  // (jobs/OutputPrefix.h); empty: none.
  std::string outputName;

  // From the deck.
  std::uint64_t deckMemory = 0;  // megabytes on the KEYWORD card; 0: none
  bool hasRecommendedSolver = false;
  bool hasFirstStage = false;  // the deck says at which stage to begin
  std::string simulationType;
  std::string calculationMethod;
  std::string deckIdentifier;
  int deckIdentifierFlag = 0;  // 1: deckIdentifier was given
  std::vector<std::string> includes;

  bool operator==(const DynaFields&) const = default;
};

// One job. Its group owns it; a running group thread shares it, so that a job that is removed while
// it runs stays alive until its run has returned.
//
// Plain fields are read and written while the list that has the job is locked. A driver reads them
// without that while the status is Running: the list refuses to change the fields of such a job.
class JobFile : public JobFields {
 public:
  // Asks the system for the computer's address the first time: not while a list is locked.
  explicit JobFile(const Settings& settings);
  virtual ~JobFile();
  JobFile(const JobFile&) = delete;
  JobFile& operator=(const JobFile&) = delete;

  virtual SolverKind GetSolverType() const = 0;

  // The arguments behind the solver's name. Needs `run`. False when there is no such command line.
  virtual bool BuildArguments(std::string& arguments) const = 0;

  JobId id;  // does not change once the job is in a list

  std::atomic<bool> abort{false};  // set by Stop, polled by the driver once a second
  std::vector<std::shared_ptr<JobFile>> stages;

  PTWrapperProcess process;

  // For the length of a run, on its thread.
  const JobRunContext* run = nullptr;
  // The files that tell how a run ended, as they lay in the folder when the solver started: only
  // what it wrote counts.
  FolderSnapshot folderBefore;
  // FileDirWrapper::WriteTime of the newest restart dump that lay there then; 0: there was none.
  std::int64_t dumpsBefore = 0;

  // The job file, or the restart file when there is no job file: what the job is called after.
  const std::string& MainFile() const { return jobFile.empty() ? restartFile : jobFile; }

  // The folder that the job runs in: the job file's, or the restart file's when there is no job
  // file. A root keeps its separator.
  std::string Folder() const;

  // Of the last run. Written by the driver while the job runs, read by the interface: any thread.
  RunResult Result() const;
  void SetResult(const RunResult& result);

  // The same one by one.
  std::string MessageFile() const;
  void SetMessageFile(const std::string& path);
  int RunErrorCode() const;
  Message RunMessage() const;
  // Takes the last words back, and how it failed.
  void SetRunError(int code, const Message& message);
  std::string RestartDump() const;
  void SetRestartDump(const std::string& path);
  Message LastWords() const;
  void SetLastWords(const Message& words);
  int StoppedAt() const;
  void SetStoppedAt(int percent);
  Failure HowFailed() const;
  void SetHowFailed(const Failure& failure);

  // Its status and since when, in seconds since 1970; 0: now.
  void Enter(JobStatus newStatus, std::int64_t since);
  // How long its run takes, or took, by a clock that nobody sets where it is known by that. In
  // seconds; -1: it has not begun, or ended at no known time.
  std::int64_t RunSeconds() const;

  // Back to how a new job is, for another run: status Queued, no abort, no message file, no error.
  // Stages before the first one to run keep how they ended.
  void ResetForRun();

  // Sets its abort flag and those of its stages.
  void Abort();

 private:
  std::optional<std::chrono::steady_clock::time_point> begun_;  // of the run that goes on
  mutable Mutex mutex_;
  RunResult result_ KR_GUARDED_BY(mutex_);
};

// An LS-DYNA keyword deck, for LS-DYNA or the utility batch program.
class JobFileDyna : public JobFile, public DynaFields {
 public:
  explicit JobFileDyna(const Settings& settings);

  SolverKind GetSolverType() const override { return solverType; }
  bool BuildArguments(std::string& arguments) const override;
};

// A Vorel one-step job (".dat").
class JobFileVorel : public JobFile {
 public:
  using JobFile::JobFile;
  static constexpr TextOutputNames kNames = {"dat", ".OUT"};
  SolverKind GetSolverType() const override { return SolverKind::kVorel; }
  bool BuildArguments(std::string& arguments) const override;
};

// An INC job (".fin").
class JobFileInc : public JobFile {
 public:
  using JobFile::JobFile;
  static constexpr TextOutputNames kNames = {"fin", "_INFO.OUT"};
  SolverKind GetSolverType() const override { return SolverKind::kInc; }
  bool BuildArguments(std::string& arguments) const override;
};

// Of all kinds that have one; the longer endings first.
inline constexpr TextOutputNames kTextOutputs[] = {JobFileInc::kNames, JobFileVorel::kNames};

#endif
