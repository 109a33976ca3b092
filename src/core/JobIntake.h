// Makes jobs of requests on a thread of its own, so that big decks do not stop the window.
#ifndef KR_CORE_JOBINTAKE_H
#define KR_CORE_JOBINTAKE_H

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <thread>

#include "core/JobGroupManager.h"
#include "jobs/JobRequest.h"
#include "util/signals/Mutex.h"

// Owned by the application. Any thread. Jobs appear at the end of their group in the order of the
// requests; the observer hears of the progress and of each new job. A job whose group is gone joins
// the current group, else the first one. A deck that cannot be read is reported in the log and
// queued all the same, so that nothing is lost: its run says what is wrong. A deck that names
// stages (see StageDecks) becomes a job with stages.
class JobIntake {
 public:
  explicit JobIntake(JobGroupManager& manager);
  ~JobIntake();  // closes it

  // Gives the id of the job that is to be.
  JobId Add(JobRequest request);
  // Gives up the requests that have not become jobs yet.
  void Cancel();
  // For the end of the program: makes no more jobs, but gives nothing up. What has not become a job
  // yet stays in the record.
  void Close();
  bool Busy() const;
  // The jobs that are asked for and not made yet.
  int Waiting() const;
  // How many requests did not become jobs.
  int NotMade() const;
  // Waits until nothing is left to read. For tests and programs without a window.
  void Drain();

 private:
  void Work();
  bool TakeRequest(JobRequest& request, unsigned& burst);
  void MakeAndAdd(const JobRequest& request, unsigned burst);
  void MakeAndAddStage(const JobRequest& request, unsigned burst);
  std::shared_ptr<JobFile> MakeJob(const JobRequest& request, unsigned burst);
  bool ReadDeck(JobFileDyna& job, const JobRequest& request, const Settings& settings,
                unsigned burst);
  bool Scan(JobFileDyna& job, unsigned burst);
  bool AddStages(JobFileDyna& job, const JobRequest& request, const Settings& settings,
                 unsigned burst);
  bool ReadStage(JobFileDyna& stage, const JobRequest& request, const Settings& settings,
                 unsigned burst);
  std::shared_ptr<JobGroup> GroupFor(const JobRequest& request) const;
  std::deque<JobRequest> Interrupt(bool forGood);
  bool GivenUp(unsigned burst) const;
  void GiveUp(const JobRequest& request);
  void TellProgress(const std::string& file, int percent);
  void NoteSharedFolder(JobId job);
  void EndRequest();

  JobGroupManager& manager_;
  mutable Mutex mutex_;
  std::condition_variable changed_;
  std::deque<JobRequest> waiting_ KR_GUARDED_BY(mutex_);
  bool reading_ KR_GUARDED_BY(mutex_) = false;
  bool readsStage_ KR_GUARDED_BY(mutex_) = false;
  bool closed_ KR_GUARDED_BY(mutex_) = false;
  unsigned burst_ KR_GUARDED_BY(mutex_) = 0;  // counts the calls of Interrupt
  int done_ KR_GUARDED_BY(mutex_) = 0;        // of the requests since nothing was to do
  int total_ KR_GUARDED_BY(mutex_) = 0;
  int notMade_ KR_GUARDED_BY(mutex_) = 0;
  bool end_ KR_GUARDED_BY(mutex_) = false;
  std::thread worker_;
};

#endif
