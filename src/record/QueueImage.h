// The queue as the record has it: what it was when the program ended last, and what it is now.
#ifndef KR_RECORD_QUEUEIMAGE_H
#define KR_RECORD_QUEUEIMAGE_H

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <variant>
#include <vector>

#include "jobs/JobRequest.h"
#include "record/JobImage.h"

// What can happen to a queue. A group or a job that a change names and that is not there is passed
// over.
namespace change {
struct GroupSet {  // a new one is the last
  int group = 0;
  std::string name;
  std::string text;
};
struct GroupGone {
  int group = 0;
};
struct GroupPlaced {  // among the groups
  int group = 0;
  int place = 0;
};
struct CurrentGroup {
  int group = 0;
};
struct JobRequested {  // a job that is to be made: until JobAdded or JobSet has its id, or JobGone
  JobRequest request;
};
struct HandedOver {  // what these hand-over files held has been requested, see QueueImage
  std::vector<std::string> files;
};
struct JobAdded {  // at the end
  int group = 0;
  JobImage job;
};
struct JobGone {
  JobId job = JobId::kNone;
};
struct JobsGone {
  std::vector<JobId> jobs;
};
struct JobMoved {  // in records of 2016 R1 before JobOrder
  JobId job = JobId::kNone;
  std::uint64_t place = 0;
};
struct JobOrder {  // from the place on, these jobs stand in this order
  int group = 0;
  std::uint64_t place = 0;
  std::vector<JobId> jobs;
};
struct JobSet {  // anything of it; the run of one that runs stays
  JobImage job;
};
struct Progress {  // `stage` kNone: of the job
  JobId job = JobId::kNone;
  JobId stage = JobId::kNone;
  JobProgress progress;
};
struct Run {  // one that has begun, or has ended; of a job that is gone, see QueueImage::leaving
  JobId job = JobId::kNone;
  RunRecord run;
};
// What was left behind has been restored or forgotten; `resumed`: only of the sessions that ended
// with a wish to be restored.
struct LeftTaken {
  bool resumed = false;
};
// The program has ended as it should. `resume`: restore it without asking; `stopped`: jobs ran
// until the end stopped them.
struct SessionOver {
  bool resume = false;
  bool stopped = false;
};
// The program starts: what the session before had is left behind, see SessionImage::IsLeft.
struct SessionBegins {
  std::int64_t last = 0;  // of the session before: when it was heard of last; 0: as it is known
};
}  // namespace change

using QueueChange =
    std::variant<change::GroupSet, change::GroupGone, change::GroupPlaced, change::CurrentGroup,
                 change::JobRequested, change::HandedOver, change::JobAdded, change::JobGone,
                 change::JobsGone, change::JobMoved, change::JobOrder, change::JobSet,
                 change::Progress, change::Run, change::LeftTaken, change::SessionOver,
                 change::SessionBegins>;

struct GroupImage {
  int id = 0;
  std::string name;
  std::string text;
  std::vector<JobId> jobs;

  bool operator==(const GroupImage&) const = default;
};

struct SessionImage {
  std::vector<GroupImage> groups;
  std::unordered_map<JobId, JobImage> jobs;
  std::map<JobId, JobRequest> requests;  // in their order
  int current = 0;                       // group id
  std::int64_t last = 0;                 // when it was heard of last, seconds since 1970
  bool over = false;                     // it ended as it should
  bool resume = false;
  bool stopped = false;

  // The next session has something to restore: jobs that had not ended; after a crash, any.
  bool IsLeft() const;
  const JobImage* Find(JobId job) const;
  bool operator==(const SessionImage&) const = default;
};

// In the place of the id of a job that only an earlier session had; no session comes that far.
inline constexpr JobId kFormerJob{(std::uint64_t{1} << 53) - 1};

// Its job was removed while its solver ran, which is to end.
struct LeavingRun {
  JobId job = kFormerJob;
  RunRecord run;

  bool operator==(const LeavingRun&) const = default;
};

struct QueueImage {
  std::vector<SessionImage> left;  // oldest first
  SessionImage now;
  std::vector<LeavingRun> leaving;      // until they have ended
  std::vector<std::string> handedOver;  // files that must not be read again, should they still lie

  void Apply(const QueueChange& change);
  void Apply(QueueChange&& change);
  bool operator==(const QueueImage&) const = default;
};

// Changes that were written together, as one record. They count all or not at all.
std::string RecordOf(const std::vector<QueueChange>& changes, std::int64_t time);
// False when it is none of ours; then nothing has been applied.
bool ApplyRecord(std::string_view record, QueueImage& image);

// The records that lead to the image from an empty one.
std::vector<std::string> SnapshotOf(const QueueImage& image);

#endif
