#include "solvers/SolverKinds.h"

#include <algorithm>

#include "jobs/JobArguments.h"
#include "solvers/Drivers.h"
#include "solvers/JobOutput.h"
#include "solvers/OutputAnalysis.h"
#include "solvers/PostResult.h"
#include "util/files/FileDirWrapper.h"
#include "util/text/PlainText.h"

namespace {

template <typename Job>
std::shared_ptr<JobFile> MakeJob(const Settings& settings) {
  return std::make_shared<Job>(settings);
}

template <SolverKind kind>
std::shared_ptr<JobFile> MakeDeckJob(const Settings& settings) {
  auto job = std::make_shared<JobFileDyna>(settings);
  job->solverType = kind;
  return job;
}

template <typename Driver, auto... arguments>
std::unique_ptr<JobSolver> MakeDriver() {
  return std::make_unique<Driver>(arguments...);
}

AnalysisReport MessageReport(const JobOutput& output, const AnalysisHooks& hooks) {
  return AnalyseMessageFile(output.messageFile, hooks);
}

// The results that lie beside the job file and have its name.
std::vector<std::string> Beside(const PostSource& source,
                                std::initializer_list<const char*> endings) {
  std::vector<std::string> paths;
  for (const char* ending : endings) paths.push_back(PathWithoutExtension(source.jobFile) + ending);
  return paths;
}

constexpr char kDynaProgramFilter[] = "LS-DYNA Solver (*.exe)|*.exe|";
constexpr BothLanguages kDeckTitle = {"Select DYNA File (LS-DYNA)", "选择 DYNA 文件 (LS-DYNA)"};
constexpr char kDeckFilter[] = "Dyna File (*.dyn;*.k)|*.dyn;*.k;*.key|All Files (*.*)|*|";

constexpr SolverKindRow kRows[] = {
    {
        .kind = SolverKind::kLsDynaSingle,
        .name = "LS-DYNA (S)",
        .settingsKey = "ls_dyna_s",
        .program = "lsdyna.exe",
        .programTitle = {"Select Single LS-DYNA Solver", "选择单精度 LS-DYNA 求解器"},
        .programFilter = kDynaProgramFilter,
        .jobTitle = kDeckTitle,
        .jobFilter = kDeckFilter,
        .handOverKey = "#dyna_precision",
        .handOverValue = 1,
        .jobEndings = {"k", "dyn", "key"},
        .runsDecks = true,
        .makeJob = MakeDeckJob<SolverKind::kLsDynaSingle>,
        .makeDriver = MakeDriver<JobSolverLsDyna, false>,
        .report = MessageReport,
        .results = DeckResults,
    },
    {
        .kind = SolverKind::kLsDynaDouble,
        .name = "LS-DYNA (D)",
        .settingsKey = "ls_dyna_d",
        .program = "lsdyna_d.exe",
        .programTitle = {"Select Double LS-DYNA Solver", "选择双精度 LS-DYNA 求解器"},
        .programFilter = kDynaProgramFilter,
        .jobTitle = kDeckTitle,
        .jobFilter = kDeckFilter,
        .handOverKey = "#dyna_precision",
        .handOverValue = 2,
        .runsDecks = true,
        .makeJob = MakeDeckJob<SolverKind::kLsDynaDouble>,
        .makeDriver = MakeDriver<JobSolverLsDyna, true>,
        .report = MessageReport,
        .results = DeckResults,
    },
    {
        .kind = SolverKind::kVorel,
        .name = "VOREL",
        .settingsKey = "v_orel",
        .program = "Vorel.exe",
        .programTitle = {"Select VOREL", "选择 VOREL"},
        .programFilter = "VOREL (*.exe)|*.exe|",
        .jobTitle = {"Select DAT File (VOREL)", "选择 DAT 文件 (VOREL)"},
        .jobFilter = "Dat File (*.dat)|*.dat|All Files (*.*)|*|",
        .handOverKey = "#vorel",
        .jobEndings = {JobFileVorel::kNames.jobExtension},
        .makeJob = MakeJob<JobFileVorel>,
        .makeDriver = MakeDriver<JobSolverVorel>,
        .report =
            [](const JobOutput& output, const AnalysisHooks& hooks) {
              const bool hasWritten = !output.messageFile.empty();
              return hasWritten ? AnalyseVorelOut(output.jobFile, hooks)
                                : NameOfOutput(VorelOutFile(output.jobFile), hooks);
            },
        .results =
            [](const PostSource& source) {
              return Beside(source, {".mes", ".dynain"});
            },
    },
    {
        .kind = SolverKind::kUtilityBatch,
        .name = "UTILITYBATCH",
        .settingsKey = "u_batch",
        .program = "UtilityBatch.exe",
        .programTitle = {"Select UTILITYBATCH", "选择 UTILITYBATCH"},
        .programFilter = "UTILITYBATCH (*.exe)|*.exe|",
        .jobTitle = kDeckTitle,
        .jobFilter = kDeckFilter,
        .runsDecks = true,
        .makeJob = MakeDeckJob<SolverKind::kUtilityBatch>,
        .makeDriver = MakeDriver<JobSolverUBatch>,
        .report = MessageReport,
    },
    {
        .kind = SolverKind::kInc,
        .name = "INCSolver",
        .settingsKey = "inc",
        .program = "KVIN_SC.EXE",
        .programTitle = {"Select INCSolver", "选择 INCSolver"},
        .programFilter = "INCSolver (*.exe)|*.exe|",
        .jobTitle = {"Select FIN File (INC)", "选择 FIN 文件 (INC)"},
        .jobFilter = "Fin File (*.fin)|*.fin|All Files (*.*)|*|",
        .handOverKey = "#inc",
        .jobEndings = {JobFileInc::kNames.jobExtension},
        .inDynaMode = false,
        .inIncMode = true,
        .makeJob = MakeJob<JobFileInc>,
        .makeDriver = MakeDriver<JobSolverInc>,
        .report =
            [](const JobOutput& output, const AnalysisHooks& hooks) {
              return AnalyseIncInfo(output.jobFile, output.status, hooks);
            },
        .results = [](const PostSource& source) { return Beside(source, {".idx"}); },
    },
};

}  // namespace

std::span<const SolverKindRow> SolverKinds() {
  return kRows;
}

const SolverKindRow& RowOfKind(SolverKind kind) {
  return *std::find_if(std::begin(kRows), std::end(kRows) - 1,
                       [kind](const SolverKindRow& row) { return row.kind == kind; });
}

std::optional<SolverMode> SolverModeOf(const std::string& word) {
  if (word == "dyna") return SolverMode::kDyna;
  if (word == "inc") return SolverMode::kInc;
  return {};
}

bool IsEnabledIn(SolverMode mode, SolverKind kind) {
  switch (mode) {
    case SolverMode::kDyna:
      return RowOfKind(kind).inDynaMode;
    case SolverMode::kInc:
      return RowOfKind(kind).inIncMode;
    default:
      return true;
  }
}

bool HasJobEnding(const SolverKindRow& row, const std::string& path) {
  std::string ending;
  if (!FileDirWrapper::ExtensionOf(path, ending)) return false;
  return std::any_of(row.jobEndings.begin(), row.jobEndings.end(), [&](const char* known) {
    return known != nullptr && SameButForCase(ending, known);
  });
}

SolverKind SolverKindOfFile(const std::string& path) {
  const auto row = std::find_if(std::begin(kRows), std::end(kRows),
                                [&](const SolverKindRow& one) { return HasJobEnding(one, path); });
  return row == std::end(kRows) ? SolverKind::kLsDynaSingle : row->kind;
}
