#include "runs/FolderUse.h"

#include <sstream>

#include "util/files/FileDirWrapper.h"
#include "util/files/FileLock.h"
#include "util/files/InputFile.h"
#include "util/process/ProcessIdentity.h"
#include "util/signals/Mutex.h"

namespace {

constexpr char kLockName[] = ".kr_running.lock";
constexpr char kSolverName[] = ".kr_running.txt";
constexpr std::size_t kMostBytes = 16 * 1024;

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

// The text that names a folder's solver: machine, process id and mark, then the job, a line each.
std::string SolverText(const ProcessIdentity& solver, const std::string& job) {
  return MachineName() + '\n' + std::to_string(solver.id) + '\n' + solver.mark + '\n' + job + '\n';
}

// The solver of this machine that the text in a folder names, and its job. Any file may lie there.
bool ReadSolver(const std::string& path, ProcessIdentity& solver, std::string& job) {
  InputFile file;
  if (!file.Open(path) || file.Size() > kMostBytes) return false;
  std::string text(kMostBytes, '\0');
  const std::ptrdiff_t size = file.Read(text.data(), text.size());
  if (size <= 0) return false;
  text.resize(static_cast<std::size_t>(size));
  std::istringstream lines(text);
  std::string machine, id;
  if (!std::getline(lines, machine) || !std::getline(lines, id) ||
      !std::getline(lines, solver.mark) || !std::getline(lines, job)) {
    return false;
  }
  std::istringstream(id) >> solver.id;
  return machine == MachineName();
}

}  // namespace

struct FolderUse::Held {
  std::string folder;
  FileLock lock;
  bool solverNoted = false;
};

FolderUse::FolderUse(std::string job) : job_(std::move(job)) {}

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
  ProcessIdentity solver;
  std::string job;
  const std::string text = FileDirWrapper::Join(folder, kSolverName);
  if (!ReadSolver(text, solver, job)) return {};
  if (Runs(solver)) return {FolderHolder::Kind::kSolver, folder, job, solver.id};
  FileDirWrapper::RemoveFile(text);  // who left it has crashed
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

void FolderUse::NoteSolver(const std::string& folder, std::int32_t processId) {
  const auto found = held_.find(FileDirWrapper::IdentityOf(folder));
  if (found == held_.end() || !found->second->lock.Taken()) return;
  const ProcessIdentity solver = IdentityOfProcess(processId);
  if (solver.mark.empty()) return;
  found->second->solverNoted = FileDirWrapper::WriteFileWhole(
      FileDirWrapper::Join(found->second->folder, kSolverName), SolverText(solver, job_));
}
