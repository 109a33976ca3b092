// A user at random, without a window: restores the queue that the record has and stops what still
// runs, then adds, moves, edits, submits, runs, stops and removes until somebody kills it. Prints
// what the queue is to be, a line each, before it makes it so: milliseconds of the steady clock,
// then the queue. "ready" stands in front of the first one, which is as it was restored. Ends by
// itself only when the queue is not what it said.
//
// Beside that, second copies hand it decks, which take some time to be read. Of such a deck it says
// "hand" before, "handed" when the copy has ended, and "drop" before it removes the job.
//
// With a folder, the decks FOLDER/NAME/deck.k run at the same time, in groups of these names. It
// says so and waits for its end. Once more, it watches them until "plain" and "ends" have ended,
// stops the others, and tells of each status and reason.
//
//   queue_user SEED
//   queue_user hand DECK
//   queue_user solvers FOLDER NAMES
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "core/Application.h"
#include "support/LeftSolvers.h"
#include "support/ProcessesWith_posix.h"
#include "util/files/FileDirWrapper.h"

namespace {

struct Job {
  std::string file;
  std::string options;
  std::uint64_t memory = 0;
  int cpus = 0;
  int pause = 0;
  std::vector<std::string> stages;
  char status = 'Q';  // '*': any
};

struct Group {
  std::string name;
  std::string text;
  std::vector<Job> jobs;
};

struct Model {
  std::vector<Group> groups;
  std::size_t current = 0;

  std::string Text() const {
    std::string text;
    for (std::size_t i = 0; i < groups.size(); ++i) {
      text += (i == current ? "[>" : "[") + groups[i].name + '|' + groups[i].text;
      for (const Job& job : groups[i].jobs) {
        text += " {" + job.file + '|' + job.options + '|' + std::to_string(job.memory) + '|' +
                std::to_string(job.cpus) + '|' + std::to_string(job.pause);
        for (const std::string& stage : job.stages) text += '|' + stage;
        text += std::string("|") + job.status + '}';
      }
      text += ']';
    }
    return text;
  }
};

constexpr char kTitle[] = "Kestrun 2016 R1";

bool IsHanded(const std::string& file) {
  return std::filesystem::path(file).filename().string().front() == 'h';
}

char Letter(JobStatus status) {
  return "QWRFA"[static_cast<int>(status)];
}

Model ModelOf(JobGroupManager& manager) {
  Model model;
  for (int i = 0; i < manager.GroupCount(); ++i) {
    const auto group = manager.GroupAt(i);
    Group& made = model.groups.emplace_back(Group{group->Name(), group->Text(), {}});
    group->ReadJobs([&](const JobFile& job) {
      Job& one = made.jobs.emplace_back(Job{
          job.jobFile, job.extraOptions, job.memory, job.ncpu, job.pause, {}, Letter(job.status)});
      for (const auto& stage : job.stages) one.stages.push_back(stage->jobFile);
    });
  }
  model.current = static_cast<std::size_t>(manager.CurrentGroupIndex());
  return model;
}

class User {
 public:
  User(Application& application, unsigned seed)
      : application_(application),
        manager_(application.Manager()),
        settings_(application.SettingsAndFiles()),
        random_(seed) {
    settings_.Set(&Settings::stop_after_failures, 0);  // most jobs have no deck
    TakeHandedOver();
    model_ = ModelOf(manager_);
    Say("ready ");
    isRight_ = StopWhatRuns();
  }

  bool Step() {
    if (!isRight_) return false;
    const unsigned what = Number(100);
    if (what < 4) return HandOver();
    if (what < 8) return RunAndStop();
    if (what < 30) return Add();
    if (what < 40) return Remove();
    if (what < 55) return Move();
    if (what < 75) return Edit();
    if (what < 90) return ChangeGroups();
    if (what < 95) return Submit();
    return Resubmit();
  }

 private:
  unsigned Number(unsigned below) { return std::uniform_int_distribution(0U, below - 1)(random_); }
  std::string Word() { return "w" + std::to_string(Number(1000000)); }

  void Say(const char* head = "") {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
    std::printf("%s%lld %s\n", head, static_cast<long long>(ms), model_.Text().c_str());
    std::fflush(stdout);
  }

  bool IsSo() {
    const std::string is = ModelOf(manager_).Text();
    if (is == model_.Text()) return true;
    std::printf("wrong %s\n", is.c_str());
    return false;
  }

  std::size_t AnyGroup() { return Number(static_cast<unsigned>(model_.groups.size())); }
  std::shared_ptr<JobGroup> Real(std::size_t group) {
    return manager_.GroupAt(static_cast<int>(group));
  }
  // A job in the model and in the queue. Nothing when the group has none.
  struct Picked {
    std::vector<Job>& jobs;
    std::size_t place;
    std::shared_ptr<JobGroup> real;
    JobId id;
  };
  std::optional<Picked> Pick() {
    const std::size_t group = AnyGroup();
    auto& jobs = model_.groups[group].jobs;
    if (jobs.empty()) return {};
    const std::size_t place = Number(static_cast<unsigned>(jobs.size()));
    const auto real = Real(group);
    return Picked{jobs, place, real, real->JobIds().at(place)};
  }

  bool Add() {
    const std::size_t group = AnyGroup();
    if (model_.groups[group].jobs.size() > 30) return true;
    auto job = std::make_shared<JobFileDyna>(settings_.Get());
    job->jobFile = "/nowhere/" + Word() + ".k";
    job->memory = Number(5000);
    job->pause = 0;
    Job made{job->jobFile, "", job->memory, 0, 0, {}, 'Q'};
    for (unsigned i = Number(4); i > 2; --i) {
      job->stages.push_back(std::make_shared<JobFileDyna>(settings_.Get()));
      made.stages.push_back(job->stages.back()->jobFile = "/nowhere/" + Word() + ".k");
    }
    model_.groups[group].jobs.push_back(made);
    Say();
    Real(group)->AddJob(job);
    return IsSo();
  }

  void TakeHandedOver() {
    const auto pause = std::chrono::milliseconds(1);
    for (application_.Tick(); FileDirWrapper::FileExists(settings_.handOverFile);
         application_.Tick()) {
      std::this_thread::sleep_for(pause);
    }
    application_.Intake().Drain();
  }

  bool HandOver() {
    Group& group = model_.groups[model_.current];
    if (group.jobs.size() > 30) return true;
    const std::string deck = home_ + "/h" + std::to_string(random_()) + ".k";
    std::filesystem::create_symlink(home_ + "/deck.k", deck);
    std::printf("hand %s\n", deck.c_str());
    std::fflush(stdout);
    const pid_t copy = fork();
    if (copy == 0) {
      execl("/proc/self/exe", "queue_user", "hand", deck.c_str(), nullptr);
      _exit(127);
    }
    int status = 0;
    if (waitpid(copy, &status, 0) != copy || status != 0) return IsSo();
    std::printf("handed %s\n", deck.c_str());
    std::fflush(stdout);
    TakeHandedOver();
    const Settings& settings = settings_.Get();
    group.jobs.push_back(
        {deck, "", settings.memory_size, settings.cpu_count, settings.pause_time, {}, 'Q'});
    return IsSo();
  }

  bool Remove() {
    const auto picked = Pick();
    if (!picked) return true;
    const auto& [jobs, place, real, id] = *picked;
    if (IsHanded(jobs[place].file)) std::printf("drop %s\n", jobs[place].file.c_str());
    jobs.erase(jobs.begin() + static_cast<std::ptrdiff_t>(place));
    Say();
    real->RemoveJob(id);
    return IsSo();
  }

  bool Move() {
    const auto picked = Pick();
    if (!picked) return true;
    const auto& [jobs, place, real, id] = *picked;
    const bool up = Number(2) == 0;
    const bool can = jobs[place].status == 'Q' &&
                     (up ? place > 0 && jobs[place - 1].status == 'Q' : place + 1 < jobs.size());
    if (can) std::swap(jobs[place], jobs[up ? place - 1 : place + 1]);
    Say();
    real->MoveJob(id, up);
    return IsSo();
  }

  bool Edit() {
    const auto picked = Pick();
    if (!picked) return true;
    const auto& [jobs, place, real, id] = *picked;
    Job& job = jobs[place];
    const unsigned what = Number(3);
    if (what == 0) job.memory = Number(9000);
    if (what == 1) job.cpus = static_cast<int>(Number(64));
    if (what == 2 && job.stages.empty()) job.options = Word();
    Say();
    if (what == 0) real->SetMemory(id, job.memory);
    if (what == 1) real->SetCpuCount(id, job.cpus);
    if (what == 2) real->SetExtraOptions(id, job.stages.empty() ? job.options : Word());
    return IsSo();
  }

  bool ChangeGroups() {
    const std::size_t group = AnyGroup();
    const unsigned what = Number(5);
    const bool add = what == 0 && model_.groups.size() < 8;
    const auto& jobs = model_.groups[group].jobs;
    const bool remove =
        what == 1 && model_.groups.size() > 4 &&
        std::none_of(jobs.begin(), jobs.end(), [](const Job& job) { return IsHanded(job.file); });
    if (add) model_.groups.push_back({Word(), "", {}});
    if (remove) {
      model_.groups.erase(model_.groups.begin() + static_cast<std::ptrdiff_t>(group));
      const bool before = group < model_.current || model_.current == model_.groups.size();
      if (before) --model_.current;
    }
    if (what == 2) model_.groups[group].name = Word();
    if (what == 3) model_.groups[group].text = Word();
    if (what == 4) model_.current = group;
    Say();
    if (add) manager_.AddGroup(model_.groups.back().name);
    if (remove) manager_.RemoveGroup(static_cast<int>(group));
    if (what == 2) Real(group)->SetName(model_.groups[group].name);
    if (what == 3) Real(group)->SetText(model_.groups[group].text);
    if (what == 4) manager_.SetCurrentGroup(static_cast<int>(group));
    return IsSo();
  }

  bool StopWhatRuns() {
    for (Group& group : model_.groups) {
      for (Job& job : group.jobs) {
        if (job.status == 'R') job.status = '*';
      }
    }
    Say();
    for (std::size_t i = 0; i < model_.groups.size(); ++i) {
      while (!Real(i)->Stop()) {
      }
      HaveEnded(model_.groups[i]);
    }
    Say();
    // What the one before had removed is being ended.
    for (int looks = 0; looks < 500 && !ProcessesWith(home_ + "/run").empty(); ++looks)
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    return NothingIsLeft() && IsSo();
  }

  static void HaveEnded(Group& group) {
    for (Job& job : group.jobs) {
      if (job.status == '*') job.status = 'A';
    }
  }

  bool NothingIsLeft() const {
    if (ProcessesWith(home_ + "/run").empty()) return true;
    std::printf("wrong: a solver is left\n");
    return false;
  }

  // A solver that takes longer than any of us lives: it is stopped, or its job is removed.
  bool RunAndStop() {
    const std::size_t group = AnyGroup();
    auto& jobs = model_.groups[group].jobs;
    if (jobs.size() > 30) return true;
    const std::string folder = home_ + "/run" + std::to_string(random_());
    std::filesystem::create_directory(folder);
    auto job = std::make_shared<JobFileDyna>(settings_.Get());
    job->solverType = SolverKind::kLsDynaDouble;
    job->jobFile = folder + "/deck.k";
    std::ofstream(job->jobFile) << "*KEYWORD\n$ standin: run 60\n*END\n";
    jobs.push_back({job->jobFile, "", job->memory, job->ncpu, job->pause, {}, 'Q'});
    for (Job& one : jobs) {
      if (one.status == 'Q') one.status = '*';
    }
    Say();
    Real(group)->AddJob(job);
    Real(group)->Submit();
    const auto pause = std::chrono::milliseconds(2);
    while (Real(group)->Running() && ProcessesWith(job->jobFile).empty())
      std::this_thread::sleep_for(pause);
    std::this_thread::sleep_for(Number(30) * pause);
    if (Number(3) == 0) {
      std::erase_if(jobs, [&](const Job& one) { return one.file == job->jobFile; });
      Say();
      Real(group)->RemoveJob(job->id);
      while (Real(group)->Running()) std::this_thread::sleep_for(pause);
    }
    while (!Real(group)->Stop()) {
    }
    HaveEnded(model_.groups[group]);
    Say();
    return NothingIsLeft() && IsSo();
  }

  // The solver is not set: each job of the group is Aborted at once.
  bool Submit() {
    const std::size_t group = AnyGroup();
    for (Job& job : model_.groups[group].jobs) {
      if (job.status == 'Q') job.status = '*';
    }
    Say();
    Real(group)->Submit();
    while (Real(group)->Running()) std::this_thread::sleep_for(std::chrono::milliseconds(2));
    HaveEnded(model_.groups[group]);
    Say();
    return IsSo();
  }

  bool Resubmit() {
    const auto picked = Pick();
    if (!picked) return true;
    picked->jobs[picked->place].status = 'Q';
    Say();
    picked->real->Resubmit(picked->id);
    return IsSo();
  }

  Application& application_;
  JobGroupManager& manager_;
  SettingsAndPaths& settings_;
  std::mt19937 random_;
  Model model_;
  const std::string home_ = std::getenv("HOME");
  bool isRight_ = true;
};

int RunSolvers(Application& application, const std::string& folder, char** names) {
  if (application.Left().Jobs() > 0) {
    for (const std::string& end : WatchSolvers(application)) std::printf("%s\n", end.c_str());
    return 0;
  }
  std::vector<std::string> started;
  for (; *names != nullptr; ++names) started.emplace_back(*names);
  StartSolvers(application, folder, started);
  std::printf("all run\n");
  std::fflush(stdout);
  for (;;) pause();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  const bool runsSolvers = std::string(argv[1]) == "solvers";
  if (argc > 2 && !runsSolvers) {
    SettingsAndPaths files(kTitle);
    return HandOverWriter(files).Write(argc - 1, argv + 1) ? 0 : 1;
  }
  Application application;
  if (!application.Initialise(1, argv)) return 3;
  UseStandin(application);
  if (runsSolvers) return RunSolvers(application, argv[2], argv + 3);
  application.RestoreLeft();
  User user(application, static_cast<unsigned>(std::stoul(argv[1])));
  while (user.Step()) std::this_thread::sleep_for(std::chrono::microseconds(500));
  return 1;
}
