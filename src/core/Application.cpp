#include "core/Application.h"

#include <algorithm>
#include <chrono>
#include <set>
#include <system_error>

#include "util/files/FileDirWrapper.h"
#include "util/text/DateTimeWrapper.h"
#include "util/text/PlainText.h"

namespace {

Application* theApplication = nullptr;

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kTakerPatience{20};
constexpr std::chrono::seconds kGoingPatience{2};
constexpr unsigned kLookMs = 50;
constexpr char kProgramName[] = "kestrun";
constexpr char kSolverOption[] = "#solver=";

// The first argument that names a mode decides, whatever it says.
SolverMode SolverModeOfArguments(int argc, const char* const* argv) {
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    const std::size_t option = argument.find(kSolverOption);
    if (option == std::string::npos) continue;
    const std::string word = argument.substr(option + sizeof(kSolverOption) - 1);
    return SolverModeOf(word).value_or(SolverMode::kAll);
  }
  return SolverMode::kAll;
}

// A process of the very program that runs here, but not this one.
bool IsSibling(const PTWrapperProcessInfo& process) {
  const std::int32_t own = PTWrapperProcess().ProcessId();
  std::string ownPath;
  std::string path;
  return process.processId != own && PTWrapperProcess::GetProcessPath(own, ownPath) &&
         PTWrapperProcess::GetProcessPath(process.processId, path) && path == ownPath;
}

// The setting is a command; the path of a program that holds blanks is one too.
std::string ViewerCommand(const std::string& viewer) {
  if (!FileDirWrapper::FileExists(viewer)) return viewer;
  std::string quoted;
  FileDirWrapper::QuotePath(viewer, quoted);
  return quoted;
}

bool StartProgram(const std::string& commandLine) {
  PTWrapperProcessStart start;
  start.commandLine = commandLine;
  return PTWrapperProcess().Create(start);
}

// Some systems allow double quotes in file names.
std::string InQuotes(const std::string& path) {
  std::string quoted = "\"";
  for (const char c : path) {
    if (c == '"') quoted += '\\';
    quoted += c;
  }
  return quoted + '"';
}

// True when something changed.
bool TakeSettings(SettingsAndPaths& settings, const Settings& wanted) {
  bool changed = settings.Set(&Settings::use_mpp, wanted.use_mpp);
  changed |= settings.Set(&Settings::mpi_param, wanted.mpi_param);
  changed |= settings.Set(&Settings::mpp_param, wanted.mpp_param);
  changed |= settings.Set(&Settings::group, wanted.group);
  changed |= settings.Set(&Settings::memory2, wanted.memory2);
  changed |= settings.Set(&Settings::cpu_count, wanted.cpu_count);
  changed |= settings.Set(&Settings::force, wanted.force);
  changed |= settings.Set(&Settings::output_dump, wanted.output_dump);
  const std::string& inc = wanted.SolverPath(SolverKind::kInc);
  changed |= settings.Get().SolverPath(SolverKind::kInc) != inc;
  settings.SetSolverPath(SolverKind::kInc, inc);
  return changed;
}

}  // namespace

Application::Application() : title_("Kestrun " + version_) {
  theApplication = this;
}

Application::~Application() {
  if (manager_ && (stuck_ || !manager_->Stop(-1))) LeaveProcess(exitCode);
  if (settings_) settings_->Log().SetListener(nullptr);
  intake_.reset();
  manager_.reset();
  if (theApplication == this) theApplication = nullptr;
}

Application* Application::Get() {
  return theApplication;
}

bool Application::Initialise(int argc, const char* const* argv, const StartRequest& request) {
  FileDirWrapper::DirOf(FileDirWrapper::ProgramPath(), programFolder_);
  settings_ = std::make_unique<SettingsAndPaths>(title_);
  if (!request.refusal.Empty()) {
    Fail(ExitCode::kRefused, request.refusal);
    return false;
  }
  std::string otherFile;
  const bool isFirst = BecomeFirstCopy(otherFile);
  const bool isAlone = otherFile.empty() && !AnotherCopyRuns(isFirst);
  writer_ = std::make_unique<HandOverWriter>(
      *settings_, otherFile.empty() ? settings_->handOverFile : otherFile);
  if (!isAlone && !SurvivesOtherCopy(argc, argv, request)) return false;
  if (request.hasWindow && !HasDisplay()) {
    writer_->TakeBack();
    Fail(ExitCode::kNoDisplay, Message(MessageId::kNoDisplay));
    return false;
  }
  settings_->Log().StartNewWhenBig();
  settings_->RemoveLeftFiles();
  if (isAlone || request.ownRun) HandOver(argc, argv);
  ReadFiles();
  solvers_ = MakeSolvers();
  record_ = std::make_unique<QueueRecord>(*settings_);
  manager_ = std::make_unique<JobGroupManager>(*settings_, solvers_, record_.get());
  settings_->Log().SetListener(
      [this](const Message& message) { manager_->Observer().Logged(message); });
  SayTakenPlaces();
  SetSolverMode(SolverModeOfArguments(argc, argv));
  record_->Begin();
  MakeGroups();
  record_->GroupsMade();
  intake_ = std::make_unique<JobIntake>(*manager_);
  const bool atOnce = settings_->Get().keep_jobs == QueueRecord::kAtOnce;
  if (atOnce || request.restore) {
    RestoreLeft();
  } else if (record_->WantsRestore()) {
    record_->RestoreWanted(*manager_, *intake_);
  }
  reader_ = std::make_unique<HandOverReader>(*settings_, QueueOfReader());
  return true;
}

// False when another copy of this user has been first, with the file that it looks at; also when it
// cannot be told.
bool Application::BecomeFirstCopy(std::string& otherFile) {
  if (!firstCopy_.empty()) return true;
  std::vector<std::unique_ptr<FileLock>> locks;
  for (const HandOverPlace& place : settings_->handOverPlaces) {
    if (place.lock.empty()) continue;
    auto lock = std::make_unique<FileLock>();
    const FileLock::Result result = lock->Take(place.lock, 0);
    if (result == FileLock::Result::kBusy) {
      otherFile = SettingsAndPaths::HandOverFileIn(place);
      return false;
    }
    if (result == FileLock::Result::kTaken) locks.push_back(std::move(lock));
  }
  firstCopy_ = std::move(locks);
  return !firstCopy_.empty();
}

// Where somebody has removed a place, the next copy would find nobody.
void Application::HoldPlaces() {
  for (const HandOverPlace& place : settings_->handOverPlaces) {
    if (place.lock.empty() || FileDirWrapper::FileExists(place.lock)) continue;
    HandOverPlaces();  // makes the folders
    auto lock = std::make_unique<FileLock>();
    if (lock->Take(place.lock, 0) == FileLock::Result::kTaken)
      firstCopy_.push_back(std::move(lock));
  }
}

// Two processes of the program that belong to one user; this one is normally one of them. Copies
// that start at the same moment all see each other: the first copy does not count the others, which
// do count it, so that one of them stays.
bool Application::AnotherCopyRuns(bool isFirst) {
  std::vector<PTWrapperProcessInfo> processes;
  PTWrapperProcess::FindRunningProcessName(processes);
  std::erase_if(processes, [isFirst](const PTWrapperProcessInfo& process) {
    return !Holds(Lower(process.exeName), kProgramName) || (isFirst && IsSibling(process));
  });
  if (processes.size() < 2) return false;
  std::set<std::string> users;
  return std::any_of(processes.begin(), processes.end(), [&](const PTWrapperProcessInfo& process) {
    std::string user;
    return PTWrapperProcess::GetProcessUser(process.processId, user) && !users.insert(user).second;
  });
}

// By the copy that has the window, once.
void Application::SayTakenPlaces() {
  for (const std::string& folder : TakenHandOverFolders()) {
    settings_->Log().Report(Message(MessageId::kHandOverFolderTaken, folder));
  }
}

void Application::HandOver(int argc, const char* const* argv) {
  writer_->Write(argc, argv);
  AddFaultsOfWriter();
}

// Gives the other copy what it can take. True when it ends without having taken it: one that is
// killed takes a moment to be gone, and one that was asked to end takes no jobs any more.
bool Application::SurvivesOtherCopy(int argc, const char* const* argv,
                                    const StartRequest& request) {
  if (!request.ownRun) {
    writer_->Write(argc, argv);
    RaiseWindow(title_);
  }
  const bool waitsForTaker = writer_->Waits();
  const Clock::time_point end = Clock::now() + (waitsForTaker ? kTakerPatience : kGoingPatience);
  const auto isToEnd = [&] { return request.endRequested && request.endRequested(); };
  while (Clock::now() < end && writer_->Waits() == waitsForTaker && !isToEnd()) {
    std::string other;
    if (BecomeFirstCopy(other) && !AnotherCopyRuns(true)) {
      AddFaultsOfWriter();
      return true;
    }
    DateTimeWrapper::SleepMSec(kLookMs);
  }
  if (request.ownRun) {
    Fail(ExitCode::kRefused, Message(MessageId::kOwnRunRefused));
  } else {
    GiveUpJobs();
  }
  return false;
}

void Application::GiveUpJobs() {
  writer_->StopWaiting();
  AddFaultsOfWriter();
}

void Application::AddFaultsOfWriter() {
  failures_ = writer_->Faults();
  if (!failures_.empty()) exitCode = ExitCode::kNotHandedOver;
}

void Application::Fail(int code, const Message& failure) {
  exitCode = code;
  failures_.push_back(failure);
  settings_->Log().Report(failure);
}

HandOverReader::Queue Application::QueueOfReader() {
  return {[this](HandOverOrder order, const std::vector<std::string>& files) {
            TakeOver(std::move(order), files);
          },
          [this](const std::string& file) { return record_->HasTaken(file); },
          [this] { return record_->IsSafe(); }};
}

void Application::TakeOver(HandOverOrder order, const std::vector<std::string>& files) {
  const bool changed = TakeSettings(*settings_, order.settings);
  if (order.solverMode) SetSolverMode(*order.solverMode);
  const std::shared_ptr<JobGroup> group = manager_->CurrentGroup();
  if (order.groupText && group) group->SetText(*order.groupText);
  if (settings_->Dirty()) settings_->WriteSettings();
  if (changed || order.groupText || order.solverMode) manager_->Observer().SettingsChanged();
  record_->TakeOver(files, [&] {
    for (JobRequest& job : order.jobs) intake_->Add(std::move(job));
  });
}

void Application::ReadFiles() {
  settings_->ReadSettings();
  settings_->ReadHostFile();
  settings_->ReadGroupFile();
  language = settings_->Get().language;
}

void Application::MakeGroups() {
  const auto& lost = record_->LostGroups();
  for (const auto& [name, text] : lost.empty() ? settings_->groupEntries : lost) {
    const int index = manager_->AddGroup(name);
    manager_->GroupAt(index)->SetText(text);
  }
  if (manager_->GroupCount() == 0) manager_->AddGroup("Group1");
  manager_->SetCurrentGroup(lost.empty() ? 0 : record_->LostCurrent());
}

void Application::SetSolverMode(SolverMode mode) {
  for (const std::unique_ptr<JobSolver>& solver : solvers_) {
    solver->enabled = IsEnabledIn(mode, solver->solverType) ? 1 : 0;
  }
}

bool Application::SolverEnabled(SolverKind kind) const {
  return std::any_of(solvers_.begin(), solvers_.end(), [kind](const auto& solver) {
    return solver->solverType == kind && solver->enabled != 0;
  });
}

bool Application::Tick() {
  if (running && reader_) {
    HoldPlaces();
    reader_->Poll();
  }
  return running;
}

std::vector<SettingsAndPaths::GroupEntry> Application::GroupEntries() const {
  std::vector<SettingsAndPaths::GroupEntry> entries;
  for (int i = 0; manager_ && i < manager_->GroupCount(); ++i) {
    const std::shared_ptr<JobGroup> group = manager_->GroupAt(i);
    entries.emplace_back(group->Name(), group->Text());
  }
  return entries;
}

int Application::Shutdown() {
  running = false;
  if (!settings_) return exitCode;
  if (manager_) manager_->RequestStop(-1);
  if (intake_) intake_->Close();
  if (manager_ && JobsWait()) GiveUpJobs();
  WriteFiles();
  stuck_ = manager_ && !manager_->Stop(-1);
  if (record_) record_->End(IsToComeBack());
  if (reader_) reader_->RemoveApplied();
  if (!stuck_) firstCopy_.clear();
  return exitCode;
}

void Application::WriteFiles() {
  settings_->WriteGroupFile(GroupEntries());
  settings_->WriteHostFile();
  settings_->WriteSettings();
}

void Application::LeaveRunning() {
  if (settings_) WriteFiles();
  if (record_) record_->Flush();
  if (manager_) manager_->AwaitStopped();
  if (record_) record_->Flush();
  if (reader_) reader_->RemoveApplied();
  LeaveProcess(exitCode);
}

void Application::RestoreLeft() {
  const int jobs = Left().Jobs();
  record_->Restore(*manager_, *intake_);
  if (jobs > 0) settings_->Log().Note(Message(MessageId::kJobsRestored, jobs));
}

void Application::ForgetLeft() {
  settings_->Log().Note(Message(MessageId::kJobsForgotten, Left().Jobs()));
  record_->Forget();
}

bool Application::ViewTextFile(const std::string& path) {
  return OpenTextFile(path, TextFallback);
}

bool Application::EditTextFile(const std::string& path) {
  return OpenTextFile(path, EditFallback);
}

bool Application::OpenTextFile(const std::string& path,
                               const std::function<bool(const std::string& path)>& fallback) {
  if (!FileDirWrapper::FileExists(path)) {
    settings_->Log().Report(Message(MessageId::kFileMissing, path));
    return false;
  }
  const std::string viewer = ViewerCommand(settings_->Get().viewer);
  if (fallback && !ProgramExists(viewer) && fallback(path)) return true;

  PTWrapperProcessStart start;
  start.commandLine = viewer + ' ' + InQuotes(path);
  start.title = "ORLA/Kestrun Text";
  start.creationFlags = PTWrapperProcess::kNewConsole;
  start.console.terminal = settings_->Get().xterm_path;
  try {
    if (ProgramExists(viewer)) {
      StartOffThread([this, start] {
        if (!PTWrapperProcess().Create(start)) ReportNoViewer(start.commandLine);
      });
      return true;
    }
  } catch (const std::system_error&) {
    // No thread to be had; reported like any other failure.
  }
  ReportNoViewer(start.commandLine);
  return false;
}

void Application::StartOffThread(std::function<void()> start) {
  std::erase_if(starts_, [](const std::future<void>& one) {
    return one.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
  });
  starts_.push_back(std::async(std::launch::async, std::move(start)));
}

void Application::ReportNoViewer(const std::string& commandLine) {
  settings_->Log().Report(Message(MessageId::kViewerFailed, commandLine));
}

void Application::OpenResult(const std::string& path) {
  const std::string program = settings_->Get().post_processor;
  if (!program.empty() && !ProgramExists(ViewerCommand(program)))
    return settings_->Log().Report(Message(MessageId::kPostProcessorMissing, program));
  const std::string commandLine = ViewerCommand(program) + ' ' + InQuotes(path);
  const Message failure = program.empty() ? Message(MessageId::kNoPostProcessor, path)
                                          : Message(MessageId::kPostProcessorFailed, commandLine);
  StartOrReport(
      [path, commandLine, byDesktop = program.empty()] {
        return byDesktop ? OpenWithDesktop(path) : StartProgram(commandLine);
      },
      failure);
}

void Application::OpenFolder(const std::string& path) {
  StartOrReport([path] { return OpenWithDesktop(path); }, Message(MessageId::kNoFolderShown, path));
}

void Application::StartOrReport(std::function<bool()> start, const Message& failure) {
  try {
    StartOffThread([this, start = std::move(start), failure] {
      if (!start()) settings_->Log().Report(failure);
    });
  } catch (const std::system_error&) {
    settings_->Log().Report(failure);
  }
}
