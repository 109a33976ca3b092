#include "core/SharedFolders.h"

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <string_view>

#include "jobs/OutputPrefix.h"
#include "solvers/SolverKinds.h"
#include "util/files/FileDirWrapper.h"
#include "util/signals/Mutex.h"
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

using Names = std::set<std::string>;  // in small letters

// What the results are called after; empty: they have the usual names.
std::string ResultName(const JobFile& job) {
  const std::string prefix = OutputPrefix(job);
  return prefix.empty() ? NameInDeck(job) : prefix.substr(0, prefix.size() - 1);
}

bool WritesUsualNames(const JobFile& job) {
  return RowOfKind(job.GetSolverType()).runsDecks && ResultName(job).empty();
}

void TakeNamesOf(const JobFile& job, Names& names) {
  if (const std::string name = ResultName(job); !name.empty()) names.insert(Lower(name));
  if (const std::string name = NameInDeck(job); !name.empty()) names.insert(Lower(name));
}

bool IsSeparable(const JobFile& job) {
  return job.status == JobStatus::kQueued && TakesJobId(job.GetSolverType()) &&
         job.stages.empty() && job.restartFile.empty() && TypedJobId(job.extraOptions).empty();
}

// Whose turn it is to look which names are free and to take some.
Mutex& Naming() {
  static Mutex mutex;
  return mutex;
}

struct Nameable {
  std::shared_ptr<JobGroup> group;
  JobId id = JobId::kNone;
  std::string folder, deck, name;
  bool canChange = false;  // it has a name of ours, under which it has written nothing
};

Nameable NameableOf(JobGroup& group, const JobFile& job) {
  const auto* const dyna = dynamic_cast<const JobFileDyna*>(&job);
  const bool isOurs = dyna != nullptr && !dyna->outputName.empty() && job.stages.empty() &&
                      TypedJobId(job.extraOptions).empty();
  return {group.shared_from_this(),
          job.id,
          std::string(FolderOf(job)),
          job.jobFile,
          ResultName(job),
          isOurs && CanChange(job, JobField::kOutputName)};
}

using NewNames = std::map<std::shared_ptr<JobGroup>, std::vector<FieldBefore>>;

std::string GiveName(const Nameable& job, Names& taken, NewNames& names) {
  const std::string name = OutputNameFor(job.deck, taken);
  taken.insert(Lower(name));
  names[job.group].push_back({job.id, name, {}});
  return name;
}

// How many took theirs.
int SetNames(const NewNames& names, std::vector<GroupFields>* before) {
  int named = 0;
  for (const auto& [group, fields] : names) {
    GroupFields was{group, {}};
    named += group->SetFields(JobField::kOutputName, fields, &was.fields).done;
    if (before != nullptr && !was.fields.empty()) before->push_back(std::move(was));
  }
  return named;
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

int KeepResultsApart(JobGroupManager& manager, const std::vector<JobId>& jobs,
                     std::vector<GroupFields>* before) {
  const MutexLock lock(Naming());
  const std::set<JobId> wanted(jobs.begin(), jobs.end());
  std::map<JobId, Nameable> unnamed;
  FolderMap<Names> taken;
  ReadAllJobs(manager, [&](JobGroup& group, const JobFile& job) {
    if (!wanted.contains(job.id)) return;
    taken.try_emplace(std::string(FolderOf(job)));
    if (OutputPrefix(job).empty() && IsSeparable(job)) unnamed[job.id] = NameableOf(group, job);
  });
  ReadAllJobs(manager, [&](JobGroup&, const JobFile& job) {
    const auto found = taken.find(FolderOf(job));
    if (found != taken.end()) TakeNamesOf(job, found->second);
  });
  NewNames names;
  for (const JobId id : jobs) {
    const auto found = unnamed.find(id);
    if (found != unnamed.end()) GiveName(found->second, taken[found->second.folder], names);
  }
  return SetNames(names, before);
}

void TakeFreeNames(JobGroupManager& manager, const std::vector<JobId>& jobs) {
  struct Folder {
    Names taken;
    std::map<std::string, std::vector<Nameable>> holders;
  };
  const MutexLock lock(Naming());
  const std::set<JobId> wanted(jobs.begin(), jobs.end());
  FolderMap<Folder> folders;
  ReadAllJobs(manager, [&](JobGroup&, const JobFile& job) {
    if (wanted.contains(job.id) && !ResultName(job).empty())
      folders.try_emplace(std::string(FolderOf(job)));
  });
  if (folders.empty()) return;
  ReadAllJobs(manager, [&](JobGroup& group, const JobFile& job) {
    const auto found = folders.find(FolderOf(job));
    if (found == folders.end()) return;
    TakeNamesOf(job, found->second.taken);
    const std::string name = Lower(ResultName(job));
    if (!name.empty() && job.restartFile.empty())
      found->second.holders[name].push_back(NameableOf(group, job));
  });
  NewNames names;
  for (auto& [path, folder] : folders) {
    for (auto& [name, holders] : folder.holders) {
      const auto keepsIt = [&](const Nameable& job) {
        return !job.canChange ? 2 : wanted.contains(job.id) ? 0 : 1;
      };
      std::ranges::stable_sort(holders, std::greater(), keepsIt);
      for (const Nameable& job : holders) {
        if (&job == &holders.front() || !job.canChange) continue;
        const std::string free = GiveName(job, folder.taken, names);
        manager.Settings().Log().Note(
            Message(MessageId::kResultsNameTaken, holders.front().name, job.deck, free));
      }
    }
  }
  SetNames(names, nullptr);
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
