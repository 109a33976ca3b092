// What the cells of the job table say, and what its rows are sorted by.

#include <algorithm>

#include "core/JobTimeLeft.h"
#include "jobs/JobArguments.h"
#include "jobs/OutputPrefix.h"
#include "solvers/SolverKinds.h"
#include "ui/text/Encoding.h"
#include "ui/text/FileText.h"
#include "ui/text/ShownValues.h"
#include "ui/window/JobTable.h"
#include "util/text/DateTimeWrapper.h"

namespace {

// -1: not known.
double PercentOf(const JobFile& job, const std::optional<RunState>& state) {
  if (job.status == JobStatus::kRunning)
    return state && state->running ? state->news.percent.value_or(-1) : -1;
  if (job.status != JobStatus::kFinished) return -1;
  return job.StoppedAt() == kNotStopped ? 100 : job.StoppedAt() < 0 ? -1 : job.StoppedAt();
}

// Of the last run, in seconds since 1970; -1: not known.
std::int64_t StartOf(const JobFile& job) {
  const bool tells = job.status == JobStatus::kRunning || HasEnded(job.status);
  return tells && job.started != 0 ? job.started : -1;
}

// What was counted at the end of the last run: of a job with stages, of the last one where it was.
std::optional<std::int64_t> CountOf(const JobFile& job,
                                    std::optional<std::int64_t> RunResult::*count) {
  for (auto stage = job.stages.rbegin(); stage != job.stages.rend(); ++stage) {
    if (const auto counted = CountOf(**stage, count)) return counted;
  }
  return job.stages.empty() ? job.Result().*count : std::nullopt;
}

// What the solver is given beside what the other columns tell, with a name that keeps its results
// apart in front.
std::string OptionsOf(const JobFile& job) {
  const std::string prefix = OutputPrefix(job);
  if (prefix.empty() || !TypedJobId(job.extraOptions).empty()) return ToUi(job.extraOptions);
  const std::string name = "jobid=" + prefix.substr(0, prefix.size() - 1);
  return ToUi(job.extraOptions.empty() ? name : name + ' ' + job.extraOptions);
}

std::string Shown(std::optional<std::int64_t> count) {
  return count ? std::to_string(*count) : CellDrawing::kNothing;
}

}  // namespace

bool JobTable::CanViewMessage(JobStatus status) {
  return status == JobStatus::kRunning || HasEnded(status);
}

std::optional<RunState> JobTable::StateOf(const JobFile& job) const {
  return stateOf_ ? stateOf_(job.id) : std::nullopt;
}

JobRows::KeyOf JobTable::KeyOf(Column column) const {
  using Key = JobRows::SortKey;
  using Entry = JobRows::Entry;
  const auto text = [](const std::string& shown) { return Key{.text = NaturalKey(Folded(shown))}; };
  const auto number = [](auto of) {
    return [of](const JobFile& job, const Entry&) {
      const double value = of(job);
      return Key{value < 0, value, {}};
    };
  };
  const auto textIfAny = [text](auto shownOf) {
    return [=](const JobFile& job, const Entry&) {
      Key key = text(shownOf(job));
      key.isUnknown = key.text.empty();
      return key;
    };
  };
  switch (column) {
    case kName:
      return [](const JobFile&, const Entry& entry) { return Key{.text = NaturalKey(entry.name)}; };
    case kFolder:
      return
          [](const JobFile&, const Entry& entry) { return Key{.text = NaturalKey(entry.folder)}; };
    case kSolver:
      return [=](const JobFile& job, const Entry&) {
        return text(RowOfKind(job.GetSolverType()).name);
      };
    case kStages:
      return [](const JobFile& job, const Entry&) {
        return Key{.number = static_cast<double>(job.stages.size())};
      };
    case kMemory:
      return [](const JobFile& job, const Entry&) {
        return Key{job.memory == 0, static_cast<double>(job.memory), {}};
      };
    case kForce:
      return [](const JobFile& job, const Entry&) {
        const auto* dyna = dynamic_cast<const JobFileDyna*>(&job);
        return Key{dyna == nullptr, dyna && dyna->useSFile ? 1.0 : 0.0, {}};
      };
    case kOther:
      return textIfAny(&OptionsOf);
    case kMessage:
    case kSummary:
      return [column](const JobFile& job, const Entry&) {
        const bool can = column == kMessage ? CanViewMessage(job.status) : HasEnded(job.status);
        return Key{.number = can && job.stages.empty() ? 0.0 : 1.0};
      };
    case kOrder:
      return {};
    case kCpus:
      return number([this](const JobFile& job) { return CpusOf(job); });
    case kProgress:
      return number([this](const JobFile& job) { return PercentOf(job, StateOf(job)); });
    case kStarted:
      return number([](const JobFile& job) { return static_cast<double>(StartOf(job)); });
    case kElapsed:
      return number([](const JobFile& job) { return static_cast<double>(job.RunSeconds()); });
    case kEnds:
      return number([this](const JobFile& job) { return EndOf(job).value_or(-1); });
    case kResult:
    case kErrors:
    case kWarnings:
      return number([column](const JobFile& job) {
        const auto count = column == kErrors     ? &RunResult::errors
                           : column == kWarnings ? &RunResult::warnings
                                                 : &RunResult::nodes;
        return static_cast<double>(CountOf(job, count).value_or(-1));
      });
    case kRestart:
      return textIfAny([](const JobFile& job) { return ToUi(job.restartFile); });
    case kWhere:
    case kGroup:
      return [](const JobFile&, const Entry&) { return Key{}; };
    default:
      // As the counts have them, and within the running ones the farthest last.
      return [this](const JobFile& job, const Entry& entry) {
        double rank = 2 * static_cast<double>(entry.status);
        if (job.status == JobStatus::kWaiting) rank += 1;
        if (job.status != JobStatus::kRunning) return Key{.number = rank};
        const std::optional<RunState> state = StateOf(job);
        if (state && state->news.percent) rank += *state->news.percent / 200;
        return Key{.number = rank};
      };
  }
}

JobTable::Row JobTable::MakeRow(const JobFile& job) const {
  const auto* dyna = dynamic_cast<const JobFileDyna*>(&job);
  Row row;
  const std::optional<RunState> state = StateOf(job);
  row.shown = ShownStatus(job, state, texts_);
  const bool tellsWhy = job.status == JobStatus::kAborted || job.status == JobStatus::kWaiting;
  const std::string why = tellsWhy ? FailureWords(job, texts_) : std::string();
  if (!why.empty()) row.tip = texts_.Format("ui_code", why);
  if (HasEnded(job.status)) row.dump = ShownName(job.RestartDump());
  const auto add = [&row](const std::string& lines) {
    if (!lines.empty()) row.tip += (row.tip.empty() ? "" : "\n") + lines;
  };
  add(RunTip(job, state, texts_));
  row.past = PastText(job);
  if (why.empty()) add(row.past);
  if (!row.dump.empty()) add(texts_.Format("ui_tip_go_on", row.dump));
  row.multiStage = !job.stages.empty();
  row.dyna = dyna != nullptr;
  row.force = dyna && dyna->useSFile;
  row.path = ShownPath(job.jobFile, job.restartFile, texts_);
  row.cells[kName] = ShownJob(job.jobFile, job.restartFile);
  row.cells[kFolder] = ToUi(job.Folder());
  row.cells[kSolver] = RowOfKind(job.GetSolverType()).name;
  row.cells[kStages] = texts_.Get(row.multiStage ? "lab_yes" : "lab_no");
  row.cells[kMemory] = job.memory ? std::to_string(job.memory) : CellDrawing::kNothing;
  row.cells[kStatus] = row.shown.words.front();
  row.cells[kMessage] = row.cells[kSummary] = texts_.Get("lab_view");
  row.cells[kForce] =
      row.dyna ? texts_.Get(row.force ? "ui_other_yes" : "lab_no") : CellDrawing::kNothing;
  row.cells[kOther] = OptionsOf(job);
  if (const std::string prefix = OutputPrefix(job); !prefix.empty())
    row.results = texts_.Format("ui_tip_results_name", ToUi(prefix));
  AddExtraCells(job, state, row);
  return row;
}

bool JobTable::IsShown(Column column) const {
  return std::ranges::count(ShownColumns(), static_cast<int>(column)) > 0;
}

bool JobTable::RunsOnHosts(const JobFile& job) const {
  return around_.hostCpus > 0 && MppSolver(job.GetSolverType()) != nullptr;
}

int JobTable::CpusOf(const JobFile& job) const {
  return RunsOnHosts(job) ? around_.hostCpus : job.ncpu < 1 ? around_.cpus : job.ncpu;
}

std::optional<double> JobTable::TimeLeftOf(const JobFile& job, std::int64_t now) const {
  const auto past = [this](const JobFile& of) {
    return PastRunOf ? PastRunOf(of) : std::optional<PastRun>();
  };
  return JobTimeLeft(job, StateOf(job), past, now);
}

std::optional<double> JobTable::EndOf(const JobFile& job) const {
  if (job.status == JobStatus::kRunning) {
    const std::int64_t now = DateTimeWrapper::CurrentTime();
    const std::optional<double> left = TimeLeftOf(job, now);
    return left ? std::optional(static_cast<double>(now) + *left) : std::nullopt;
  }
  if (HasEnded(job.status)) return std::nullopt;
  const auto found = ends_.find(job.id);
  return found == ends_.end() ? std::nullopt : std::optional(found->second);
}

// Each waits for those before it; behind one of which nothing is known nothing can be told.
void JobTable::EstimateEnds() const {
  constexpr std::chrono::seconds kHold{5};
  const auto now = std::chrono::steady_clock::now();
  if (now < endsUntil_) return;
  endsUntil_ = now + kHold;
  ends_.clear();
  if (!around_.runs) return;
  const std::int64_t moment = DateTimeWrapper::CurrentTime();
  std::optional<double> end = static_cast<double>(moment);
  list_->ReadJobs([&](const JobFile& job) {
    if (!end || HasEnded(job.status)) return;
    const std::optional<double> left = TimeLeftOf(job, moment);
    end = left ? std::optional(*end + *left) : std::nullopt;
    if (end) ends_[job.id] = *end;
  });
}

// Those that are not known stay a dash.
void JobTable::AddExtraCells(const JobFile& job, const std::optional<RunState>& state,
                             Row& row) const {
  for (int column = kOrder; column < kColumns; ++column) row.cells[column] = CellDrawing::kNothing;
  if (const JobRows::Entry* const entry = rows_.Find(job.id))
    row.cells[kOrder] = std::to_string(entry->place + 1);
  row.cells[kCpus] = std::to_string(CpusOf(job));
  if (const double percent = PercentOf(job, state); percent >= 0)
    row.cells[kProgress] = std::to_string(static_cast<int>(percent)) + "%";
  if (StartOf(job) >= 0) row.cells[kStarted] = ShownMoment(StartOf(job), texts_);
  if (const std::int64_t elapsed = job.RunSeconds(); elapsed >= 0)
    row.cells[kElapsed] = ShownDuration(static_cast<double>(elapsed), texts_);
  if (const std::optional<double> end = EndOf(job))
    row.cells[kEnds] = ShownMoment(static_cast<std::int64_t>(*end), texts_);
  row.cells[kWhere] = RunsOnHosts(job) ? around_.hosts : around_.computer;
  if (const auto nodes = CountOf(job, &RunResult::nodes))
    row.cells[kResult] = Shown(nodes) + " / " + Shown(CountOf(job, &RunResult::elements));
  row.cells[kErrors] = Shown(CountOf(job, &RunResult::errors));
  row.cells[kWarnings] = Shown(CountOf(job, &RunResult::warnings));
  if (!job.restartFile.empty()) row.cells[kRestart] = ShownName(job.restartFile);
  row.restart = ToUi(job.restartFile);
  row.cells[kGroup] = around_.group;
}

std::string JobTable::PastText(const JobFile& job) const {
  const bool waits = job.status == JobStatus::kQueued || job.status == JobStatus::kWaiting;
  const std::optional<PastRun> past = waits && PastRunOf ? PastRunOf(job) : std::nullopt;
  if (!past) return {};
  const std::string took = ShownDuration(static_cast<double>(past->seconds), texts_);
  const std::string when = ShownMoment(past->started, texts_);
  if (past->cpus < 1) return texts_.Format("ui_past_run_time", took, when);
  return texts_.Format("ui_past_run", took, std::to_string(past->cpus), when);
}
