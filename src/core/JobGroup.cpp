#include "core/JobGroup.h"

namespace {

int NextId() {
  static std::atomic<int> last{0};
  return ++last;
}

}  // namespace

JobGroup::JobGroup(JobGroupSetup setup)
    : JobList(NextId(), setup.observer, setup.log), setup_(std::move(setup)) {}

JobGroup::~JobGroup() = default;

std::string JobGroup::Name() const {
  const MutexLock lock(textMutex_);
  return name_;
}

void JobGroup::SetName(const std::string& name) {
  {
    const MutexLock lock(textMutex_);
    name_ = name;
  }
  setup_.observer.GroupChanged(Id(), name, Text());
}

std::optional<GroupPause> JobGroup::Paused() const {
  const MutexLock lock(textMutex_);
  if (!pause_) return std::nullopt;
  return GroupPause{pause_->Count(), pause_->Reason()};
}

std::string JobGroup::Text() const {
  const MutexLock lock(textMutex_);
  return text_;
}

void JobGroup::SetText(const std::string& text) {
  {
    const MutexLock lock(textMutex_);
    text_ = text;
  }
  setup_.observer.GroupChanged(Id(), Name(), text);
}
