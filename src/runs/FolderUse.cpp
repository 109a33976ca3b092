#include "runs/FolderUse.h"

#include <sstream>

#include "util/files/FileDirWrapper.h"
#include "util/files/FileLock.h"
#include "util/files/InputFile.h"
#include "util/process/ProcessIdentity.h"
#include "util/process/PTWrapper.h"
#include "util/signals/Mutex.h"

namespace {

constexpr char kLockName[] = ".kr_running.lock";
constexpr char kSolverName[] = ".kr_running.txt";
constexpr std::size_t kMostBytes = 16 * 1024;
constexpr std::size_t kLeastToken = 16;  // a shorter one would be found in places by chance

// The folders in which jobs of this program run.
class OwnFolders {
 public:
  // Empty when the folder was free and is the job's now, else the job that has it.
  std::string Take(const std::string& identity, const std::string& job) {
    const MutexLock lock(mutex_);
    const auto [entry, isNew] = jobs_.emplace(identity, job);
    return isNew ? std::string() : entry->second;
  }

  void Release(const std::string& identity) {
    const MutexLock lock(mutex_);
    jobs_.erase(identity);
  }

 private:
  Mutex mutex_;
  std::map<std::string, std::string> jobs_ KR_GUARDED_BY(mutex_);
};

OwnFolders& Own() {
  static OwnFolders& folders = *new OwnFolders;  // threads may use it while the process ends
  return folders;
}

// What the text in a folder tells, a line each: machine, process id and mark, job, token.
struct Solver {
  std::string machine;
  ProcessIdentity process;
  std::string job;
  std::string token;
};

std::string TextOf(const Solver& solver) {
  return solver.machine + '\n' + std::to_string(solver.process.id) + '\n' + solver.process.mark +
         '\n' + solver.job + '\n' + solver.token + '\n';
}

// The solver that the text in a folder names. Any file may lie there.
bool ReadSolver(const std::string& path, Solver& solver) {
  InputFile file;
  if (!file.Open(path) || file.Size() > kMostBytes) return false;
  std::string text(kMostBytes, '\0');
  const std::ptrdiff_t size = file.Read(text.data(), text.size());
  if (size <= 0) return false;
  text.resize(static_cast<std::size_t>(size));
  std::istringstream lines(text);
  std::string id;
  if (!std::getline(lines, solver.machine) || !std::getline(lines, id) ||
      !std::getline(lines, solver.process.mark) || !std::getline(lines, solver.job)) {
    return false;
  }
  std::istringstream(id) >> solver.process.id;
  std::getline(lines, solver.token);
  if (solver.token.size() < kLeastToken) solver.token.clear();
  return true;
}

// The solver itself, or what it started and left in the folder; 0 when nothing of it runs here.
// Whatever the machine was called when it started.
std::int32_t RunningOf(const Solver& solver, const std::string& folder) {
  if (Runs(solver.process)) return solver.process.id;
  return PTWrapperProcess::FindStarted(solver.token, folder);
}

}  // namespace

struct FolderUse::Held {
  std::string folder;
  FileLock lock;
  bool solverNoted = false;
  std::string token;
};

FolderUse::FolderUse(std::string job, std::string token)
    : job_(std::move(job)), token_(std::move(token)) {}

FolderUse::~FolderUse() {
  Release();
}

FolderHolder FolderUse::Take(const std::vector<std::string>& folders) {
  Release();
  for (const std::string& folder : folders) {
    FolderHolder holder = TakeOne(folder);
    if (holder.kind == FolderHolder::Kind::kNobody) continue;
    Release();
    return holder;
  }
  return {};
}

FolderHolder FolderUse::TakeOne(const std::string& folder) {
  const std::string identity = FileDirWrapper::IdentityOf(folder);
  if (identity.empty() || held_.contains(identity)) return {};
  const std::string holder = Own().Take(identity, job_);
  if (!holder.empty()) return {FolderHolder::Kind::kJob, folder, holder, 0};

  const auto held = held_.emplace(identity, std::make_unique<Held>()).first->second.get();
  held->folder = folder;
  if (held->lock.Take(FileDirWrapper::Join(folder, kLockName), 0) == FileLock::Result::kBusy) {
    return {FolderHolder::Kind::kOtherProgram, folder, {}, 0};
  }
  Solver solver;
  const std::string text = FileDirWrapper::Join(folder, kSolverName);
  if (!ReadSolver(text, solver)) return {};
  if (!token_.empty() && solver.token == token_) {
    held->solverNoted = true;
    held->token = token_;
    return {};
  }
  const std::int32_t running = RunningOf(solver, folder);
  if (running != 0) return {FolderHolder::Kind::kSolver, folder, solver.job, running};
  // Who left it has crashed. Another machine's stays: there its solver may run.
  if (solver.machine == MachineName()) FileDirWrapper::RemoveFile(text);
  return {};
}

// The text goes before the lock: nobody may find it without a lock while its solver is ours.
void FolderUse::Release() {
  for (const auto& [identity, held] : held_) {
    if (held->solverNoted) {
      FileDirWrapper::RemoveFile(FileDirWrapper::Join(held->folder, kSolverName));
    }
    held->lock.Release();
    Own().Release(identity);
  }
  held_.clear();
}

bool FolderUse::NoteSolver(const std::string& folder, const PTWrapperProcess& solver) {
  const auto found = held_.find(FileDirWrapper::IdentityOf(folder));
  if (found == held_.end() || !found->second->lock.Taken()) return true;
  found->second->token = solver.Token();
  return Note(*found->second, IdentityOfProcess(solver.ChildId()));
}

bool FolderUse::Note(Held& held, const ProcessIdentity& process) {
  held.solverNoted =
      FileDirWrapper::WriteOutputFile(FileDirWrapper::Join(held.folder, kSolverName),
                                      TextOf({MachineName(), process, job_, held.token}));
  return held.solverNoted;
}

// The text that stays names who runs on: what it started may not be seen by its token.
void FolderUse::LeaveToRest(const std::string& folder, const ProcessIdentity& left) {
  const std::string itsFolder = left.id != 0 ? FileDirWrapper::IdentityOf(folder) : std::string();
  for (const auto& [identity, held] : held_) {
    const bool runsOn = identity == itsFolder && held->lock.Taken() && Note(*held, left);
    if (runsOn || PTWrapperProcess::FindStarted(held->token, held->folder) != 0)
      held->solverNoted = false;
  }
}
