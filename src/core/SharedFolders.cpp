#include "core/SharedFolders.h"

#include <algorithm>
#include <map>
#include <string_view>

#include "jobs/OutputPrefix.h"
#include "runs/JobRun.h"
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

std::string FolderKey(const JobFile& job) {
  const std::string_view folder = FolderView(job.MainFile());
  return kBothCases ? Lower(folder) : std::string(folder);
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
    std::string path;
    std::vector<JobId> separable;
  };
  std::map<std::string, Folder> folders;
  ReadAllJobs(manager, [&](JobGroup&, const JobFile& job) {
    if (!WritesUsualNames(job)) return;
    Folder& folder = folders[FolderKey(job)];
    ++folder.writers;
    folder.isAsked = folder.isAsked || jobs.contains(job.id);
    if (folder.path.empty()) folder.path = FolderView(job.MainFile());
    if (IsSeparable(job)) folder.separable.push_back(job.id);
  });
  SharedResults shared;
  for (const auto& [key, folder] : folders) {
    if (!folder.isAsked || folder.writers < 2 || folder.separable.empty()) continue;
    shared.jobs += folder.writers;
    shared.folders.push_back(folder.path);
    shared.separable.insert(shared.separable.end(), folder.separable.begin(),
                            folder.separable.end());
  }
  return shared;
}

int KeepResultsApart(JobGroupManager& manager, const std::vector<JobId>& jobs) {
  struct Named {
    std::shared_ptr<JobGroup> group;
    std::string folder, deck;
  };
  const std::set<JobId> wanted(jobs.begin(), jobs.end());
  std::map<JobId, Named> toName;
  std::map<std::string, std::set<std::string>> taken;  // by folder
  ReadAllJobs(manager, [&](JobGroup& group, const JobFile& job) {
    const std::string folder = FolderKey(job);
    const std::string prefix = OutputPrefix(job);
    if (!prefix.empty()) taken[folder].insert(Lower(prefix.substr(0, prefix.size() - 1)));
    if (const std::string name = NameInDeck(job); !name.empty()) taken[folder].insert(Lower(name));
    if (prefix.empty() && wanted.contains(job.id) && IsSeparable(job)) {
      toName[job.id] = {std::static_pointer_cast<JobGroup>(group.shared_from_this()), folder,
                        job.jobFile};
    }
  });
  int named = 0;
  for (const JobId id : jobs) {
    const auto found = toName.find(id);
    if (found == toName.end()) continue;
    const Named& job = found->second;
    const std::string name = OutputNameFor(job.deck, taken[job.folder]);
    if (!job.group->SetOutputName(id, name)) continue;
    taken[job.folder].insert(Lower(name));
    toName.erase(found);
    ++named;
  }
  return named;
}

bool CanKeepApart(const JobFile& job) {
  return IsSeparable(job) || (job.status == JobStatus::kQueued && !OutputPrefix(job).empty() &&
                              TypedJobId(job.extraOptions).empty());
}

std::vector<std::string> PrefixesBeside(const JobGroupManager& manager, const JobFile& job) {
  std::vector<std::string_view> folders = {FolderView(job.MainFile())};
  for (const auto& stage : job.stages) folders.push_back(FolderView(stage->MainFile()));
  const std::string own = OutputPrefix(job);
  std::vector<std::string> prefixes;
  ReadAllJobs(manager, [&](JobGroup&, const JobFile& other) {
    if (other.id == job.id) return;
    const std::string_view folder = FolderView(other.MainFile());
    const bool isBeside = std::any_of(folders.begin(), folders.end(), [&](std::string_view mine) {
      return IsSameFolder(mine, folder);
    });
    if (!isBeside) return;
    std::string prefix = OutputPrefix(other);
    if (!prefix.empty() && prefix != own) prefixes.push_back(std::move(prefix));
  });
  return prefixes;
}
