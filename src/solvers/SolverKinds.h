// The solver kinds: a row for each, with all that tells them apart. Who wants to know something of
// a kind reads its row.
#ifndef KR_SOLVERS_SOLVERKINDS_H
#define KR_SOLVERS_SOLVERKINDS_H

#include <array>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "jobs/JobFile.h"
#include "messages/BothLanguages.h"

class JobSolver;
struct AnalysisHooks;
struct AnalysisReport;
struct JobOutput;
struct PostSource;

struct SolverKindRow {
  SolverKind kind;
  const char* name;         // as lists show it
  const char* settingsKey;  // of its program's path, in the section SOLVER of the settings file

  // The choosers of its program and of its job files. Filters are as ComnFileDialog takes
  // them, the same in both languages.
  const char* program;  // the usual name of the program's file
  BothLanguages programTitle;
  const char* programFilter;
  BothLanguages jobTitle;
  const char* jobFilter;

  // The line of a hand-over file that asks for it: "key", or "key=value" when the value is not 0.
  // Null: there is none.
  const char* handOverKey = nullptr;
  int handOverValue = 0;

  // A file with one of these endings, in any case, becomes a job of this kind when nobody says
  // otherwise. Null: no further one.
  std::array<const char*, 3> jobEndings = {};

  // Its jobs are LS-DYNA decks (JobFileDyna), so that they can be given to another such kind.
  bool runsDecks = false;

  // Whether these modes leave it enabled.
  bool inDynaMode = true;
  bool inIncMode = false;

  std::shared_ptr<JobFile> (*makeJob)(const Settings& settings);
  std::unique_ptr<JobSolver> (*makeDriver)();

  // The report of what a run left behind. Any thread.
  AnalysisReport (*report)(const JobOutput& output, const AnalysisHooks& hooks);
  // Where a file for the post-processor may be, the likeliest place first. Null: there is none.
  std::vector<std::string> (*results)(const PostSource& source) = nullptr;
};

// What "#solver=" leaves enabled, on a command line or in a hand-over file.
enum class SolverMode : int { kAll = 0, kDyna = 1, kInc = 2 };

// Of "dyna" and "inc", whose case matters; none for other words.
std::optional<SolverMode> SolverModeOf(const std::string& word);

bool IsEnabledIn(SolverMode mode, SolverKind kind);

// In the order in which the settings file has their keys.
std::span<const SolverKindRow> SolverKinds();

const SolverKindRow& RowOfKind(SolverKind kind);

inline std::string NameOfKind(SolverKind kind) {
  return RowOfKind(kind).name;
}

// Whether the path ends in one of the kind's endings.
bool HasJobEnding(const SolverKindRow& row, const std::string& path);

// The kind that a job file's ending asks for; LS-DYNA in single precision when it says nothing.
SolverKind SolverKindOfFile(const std::string& path);

#endif
