// One solver at a time in a folder: solvers there would remove and judge each other's files.
#ifndef KR_RUNS_FOLDERUSE_H
#define KR_RUNS_FOLDERUSE_H

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

class FileLock;
class PTWrapperProcess;
struct ProcessIdentity;

// Who is in the way.
struct FolderHolder {
  enum class Kind {
    kNobody,
    kJob,           // of this program
    kOtherProgram,  // a Kestrun of another user, or one on another machine
    kSolver         // a solver, or what one started, that outlived its run or its Kestrun
  };
  Kind kind = Kind::kNobody;
  std::string folder;
  std::string job;             // its deck; empty when it is not known
  std::int32_t processId = 0;  // of a solver
};

// The folders in which one job runs, held to the end of its run. Folders are told apart by
// identity, so that links and short names lead to the same one. Within this program a list holds
// them; against others a lock file in the folder, which a crash leaves harmless, and beside it a
// text that names the solver process that runs there and its token, which leads to what it started.
// A folder in which no file can be made is held within this program only.
//
// Used by the run's thread.
class FolderUse {
 public:
  // `job` is what others are told of the holder: the path of its deck. A solver with the token is
  // the job's own and in nobody's way.
  explicit FolderUse(std::string job, std::string token = {});
  ~FolderUse();
  FolderUse(const FolderUse&) = delete;
  FolderUse& operator=(const FolderUse&) = delete;

  // Takes all of the folders or none; holds nothing before. kNobody when they are taken. Folders
  // that do not exist count as taken.
  FolderHolder Take(const std::vector<std::string>& folders);
  void Release();

  // A solver has been started in one of the folders. False when it cannot be written down for
  // others, though the folder is held against them.
  bool NoteSolver(const std::string& folder, const PTWrapperProcess& solver);
  // The run is over, but something of it may run on in the folders: they stay in its use as long as
  // it does. `left`: a process that is known to run on in that folder; id 0: none.
  void LeaveToRest(const std::string& folder, const ProcessIdentity& left);

 private:
  struct Held;
  FolderHolder TakeOne(const std::string& folder);
  bool Note(Held& held, const ProcessIdentity& process);

  const std::string job_;
  const std::string token_;
  std::map<std::string, std::unique_ptr<Held>> held_;  // by identity
};

#endif
