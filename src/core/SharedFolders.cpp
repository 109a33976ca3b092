#include "core/SharedFolders.h"

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <string_view>

#include "jobs/OutputPrefix.h"
#include "solvers/SolverKinds.h"
#include "util/files/FileDirWrapper.h"
#include "util/text/PlainText.h"

namespace {

constexpr bool kBothCases = FileDirWrapper::kSeparator == '\\';

// Of an absolute path, without asking the system: a queue may hold thousands of jobs.
std::string_view FolderView(std::string_view path) {
  const std::size_t end = path.find_last_of(kBothCases ? "\\/" : "/");
  return path.substr(0, end == std::string_view::npos ? 0 : end);
}

bool IsSameFolder(std::string_view a, std::string_view b) {
  return kBothCases ? SameButForCase(a, b) : a == b;
}

struct ByFolder {
  using is_transparent = void;
  bool operator()(std::string_view a, std::string_view b) const {
    return kBothCases ? Lower(a) < Lower(b) : a < b;
  }
};
template <typename T>
using FolderMap = std::map<std::string, T, ByFolder>;

std::string_view FolderOf(const JobFile& job) {
  return FolderView(job.MainFile());
}

// What the deck calls its results itself; empty: nothing.
std::string NameInDeck(const JobFile& job) {
  const auto* const dyna = dynamic_cast<const JobFileDyna*>(&job);
  return dyna != nullptr && dyna->deckIdentifierFlag == 1 ? dyna->deckIdentifier : std::string();
}

bool WritesUsualNames(const JobFile& job) {
  return RowOfKind(job.GetSolverType()).runsDecks && OutputPrefix(job).empty() &&
         NameInDeck(job).empty();
}

using Names = std::set<std::string>;  // in small letters

void TakeNamesOf(const JobFile& job, Names& names) {
  const std::string prefix = OutputPrefix(job);
  if (!prefix.empty()) names.insert(Lower(prefix.substr(0, prefix.size() - 1)));
  if (const std::string name = NameInDeck(job); !name.empty()) names.insert(Lower(name));
}

bool IsSeparable(const JobFile& job) {
  return job.status == JobStatus::kQueued && TakesJobId(job.GetSolverType()) &&
         job.stages.empty() && job.restartFile.empty() && TypedJobId(job.extraOptions).empty();
}

void ReadAllJobs(const JobGroupManager& manager,
                 const std::function<void(JobGroup& group, const JobFile& job)>& read) {
  for (int index = 0; index < manager.GroupCount(); ++index) {
    const std::shared_ptr<JobGroup> group = manager.GroupAt(index);
    if (group) group->ReadJobs([&](const JobFile& job) { read(*group, job); });
  }
}

}  // namespace

SharedResults FindSharedResults(const JobGroupManager& manager, const std::set<JobId>& jobs) {
  struct Folder {
    int writers = 0;
    bool isAsked = false;
    std::vector<JobId> separable;
  };
  FolderMap<Folder> folders;
  ReadAllJobs(manager, [&](JobGroup&, const JobFile& job) {
    if (jobs.contains(job.id)) folders.try_emplace(std::string(FolderOf(job)));
  });
  ReadAllJobs(manager, [&](JobGroup&, const JobFile& job) {
    const auto found = folders.find(FolderOf(job));
    if (found == folders.end() || !WritesUsualNames(job)) return;
    Folder& folder = found->second;
    ++folder.writers;
    folder.isAsked = folder.isAsked || jobs.contains(job.id);
    if (IsSeparable(job)) folder.separable.push_back(job.id);
  });
  SharedResults shared;
  for (const auto& [path, folder] : folders) {
    if (!folder.isAsked || folder.writers < 2) continue;
    shared.jobs += folder.writers;
    shared.folders.push_back(path);
    shared.separable.insert(shared.separable.end(), folder.separable.begin(),
                            folder.separable.end());
  }
  return shared;
}

int KeepResultsApart(JobGroupManager& manager, const std::vector<JobId>& jobs) {
  struct Unnamed {
    std::shared_ptr<JobList> list;
    std::string folder, deck;
  };
  const std::set<JobId> wanted(jobs.begin(), jobs.end());
  std::map<JobId, Unnamed> unnamed;
  FolderMap<Names> taken;
  ReadAllJobs(manager, [&](JobGroup& group, const JobFile& job) {
    if (!wanted.contains(job.id)) return;
    const std::string folder(FolderOf(job));
    taken.try_emplace(folder);
    if (OutputPrefix(job).empty() && IsSeparable(job))
      unnamed[job.id] = {group.shared_from_this(), folder, job.jobFile};
  });
  ReadAllJobs(manager, [&](JobGroup&, const JobFile& job) {
    const auto found = taken.find(FolderOf(job));
    if (found != taken.end()) TakeNamesOf(job, found->second);
  });
  int named = 0;
  for (const JobId id : jobs) {
    const auto found = unnamed.find(id);
    if (found == unnamed.end()) continue;
    const Unnamed& job = found->second;
    const std::string name = OutputNameFor(job.deck, taken[job.folder]);
    if (!job.list->SetOutputName(id, name)) continue;
    taken[job.folder].insert(Lower(name));
    ++named;
  }
  return named;
}

void KeepNewJobApart(JobGroupManager& manager, JobFile& job) {
  auto* const dyna = dynamic_cast<JobFileDyna*>(&job);
  if (dyna == nullptr || !WritesUsualNames(job) || !IsSeparable(job)) return;
  Names taken;
  std::vector<JobId> others;
  bool isShared = false;
  ReadAllJobs(manager, [&](JobGroup&, const JobFile& other) {
    if (!IsSameFolder(FolderOf(job), FolderOf(other))) return;
    if (!RowOfKind(other.GetSolverType()).runsDecks) return;
    isShared = true;
    if (WritesUsualNames(other) && IsSeparable(other)) others.push_back(other.id);
  });
  if (!isShared) return;
  KeepResultsApart(manager, others);
  ReadAllJobs(manager, [&](JobGroup&, const JobFile& other) {
    if (IsSameFolder(FolderOf(job), FolderOf(other))) TakeNamesOf(other, taken);
  });
  dyna->outputName = OutputNameFor(job.jobFile, taken);
}

bool CanKeepApart(const JobFile& job) {
  return IsSeparable(job) || (job.status == JobStatus::kQueued && !OutputPrefix(job).empty() &&
                              TypedJobId(job.extraOptions).empty());
}

std::vector<std::string> PrefixesBeside(const JobGroupManager& manager, const JobFile& job) {
  std::vector<std::string_view> folders = {FolderOf(job)};
  for (const auto& stage : job.stages) folders.push_back(FolderOf(*stage));
  const std::string own = OutputPrefix(job);
  std::vector<std::string> prefixes;
  ReadAllJobs(manager, [&](JobGroup&, const JobFile& other) {
    if (other.id == job.id) return;
    const std::string_view folder = FolderOf(other);
    const bool isBeside = std::any_of(folders.begin(), folders.end(), [&](std::string_view mine) {
      return IsSameFolder(mine, folder);
    });
    if (!isBeside) return;
    std::string prefix = OutputPrefix(other);
    if (!prefix.empty() && prefix != own) prefixes.push_back(std::move(prefix));
  });
  return prefixes;
}
