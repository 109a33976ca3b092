#include "ui/window/QueueNotes.h"

#include <FL/Fl.H>

#include <algorithm>
#include <utility>

namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

constexpr int kRestFactor = 9;  // at most a tenth of the time goes into showing changes
constexpr Seconds kLongestRest{0.5};

// A wake-up cannot be taken back and may come for one that is gone. Interface thread.
std::set<void*>& Living() {
  static std::set<void*> living;
  return living;
}

}  // namespace

QueueNotes::QueueNotes() {
  Living().insert(this);
}

QueueNotes::~QueueNotes() {
  Living().erase(this);
  Fl::remove_timeout(DeliverLater, this);
}

template <typename Note>
void QueueNotes::Take(Note note) {
  bool wake = false;
  {
    const MutexLock lock(mutex_);
    note(changes_);
    wake = !std::exchange(awake_, true);
  }
  // A full queue of wake-ups: the next note tries again.
  if (wake && Fl::awake(Wake, this) != 0) {
    const MutexLock lock(mutex_);
    awake_ = false;
  }
}

void QueueNotes::Wake(void* self) {
  if (!Living().contains(self)) return;
  auto* notes = static_cast<QueueNotes*>(self);
  const Seconds rest = notes->next_ - Clock::now();
  if (rest <= Seconds(0)) return notes->Deliver();
  if (!Fl::has_timeout(DeliverLater, self)) Fl::add_timeout(rest.count(), DeliverLater, self);
}

void QueueNotes::DeliverLater(void* self) {
  static_cast<QueueNotes*>(self)->Deliver();
}

void QueueNotes::Deliver() {
  QueueChanges changes;
  {
    const MutexLock lock(mutex_);
    awake_ = false;
    std::swap(changes, changes_);
  }
  const Clock::time_point began = Clock::now();
  if (OnChanges) OnChanges(changes);
  const Clock::time_point ended = Clock::now();
  const Seconds rest = std::min<Seconds>((ended - began) * kRestFactor, kLongestRest);
  next_ = ended + std::chrono::duration_cast<Clock::duration>(rest);
}

void QueueNotes::JobStatusChanged(int groupId, const JobFile& job) {
  Take([&](QueueChanges& changes) { changes.jobs[groupId].insert(job.id); });
}

void QueueNotes::StageStatusChanged(int groupId, const JobFile& job, const JobFile&) {
  Take([&](QueueChanges& changes) { changes.jobs[groupId].insert(job.id); });
}

void QueueNotes::JobsChanged(int groupId, const ListChange& change) {
  Take([&](QueueChanges& changes) {
    if (change.what == ListChange::What::kFields) {
      for (const JobFile* const job : change.jobs) changes.jobs[groupId].insert(job->id);
    } else {
      changes.groups.insert(groupId);
    }
  });
}

void QueueNotes::GroupRunChanged(int) {
  Take([](QueueChanges& changes) { changes.running = true; });
}

void QueueNotes::SettingsChanged() {
  Take([](QueueChanges& changes) { changes.settings = true; });
}

void QueueNotes::IntakeProgress(int done, int total, const std::string& file, int percent) {
  Take([&](QueueChanges& changes) {
    changes.intake = true;
    changes.done = done;
    changes.total = total;
    changes.file = file;
    changes.percent = percent;
  });
}

void QueueNotes::RunLookedAt(JobId job) {
  Take([&](QueueChanges& changes) { changes.runs.insert(job); });
}

void QueueNotes::Logged(const Message& message) {
  const bool isAnswer = std::this_thread::get_id() == interface_;
  Take([&](QueueChanges& changes) { (isAnswer ? changes.answer : changes.message) = message; });
}
