#include "ui/QueueNotes.h"

#include <FL/Fl.H>

#include <utility>

template <typename Note>
void QueueNotes::Take(Note note) {
  bool wake = false;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    note(changes_);
    wake = !std::exchange(awake_, true);
  }
  // A full queue of wake-ups: the next note tries again.
  if (wake && Fl::awake(Wake, this) != 0) {
    std::lock_guard<std::mutex> lock(mutex_);
    awake_ = false;
  }
}

void QueueNotes::Wake(void* self) {
  static_cast<QueueNotes*>(self)->Deliver();
}

void QueueNotes::Deliver() {
  QueueChanges changes;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    awake_ = false;
    std::swap(changes, changes_);
  }
  if (OnChanges) OnChanges(changes);
}

void QueueNotes::JobStatusChanged(int groupId, int jobIndex, int) {
  Take([&](QueueChanges& changes) { changes.rows[groupId].insert(jobIndex); });
}

void QueueNotes::StageStatusChanged(int groupId, int jobIndex, int, int) {
  Take([&](QueueChanges& changes) { changes.rows[groupId].insert(jobIndex); });
}

void QueueNotes::JobsChanged(int groupId) {
  Take([&](QueueChanges& changes) { changes.groups.insert(groupId); });
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

void QueueNotes::Logged(const std::string& message) {
  Take([&](QueueChanges& changes) { changes.message = message; });
}
