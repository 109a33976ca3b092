#include <algorithm>

#include "util/files/FileDirWrapper.h"
#include "util/files/FileHold.h"
#include "util/files/IOWrapper.h"

struct IOWrapperLocker::Entries {
  struct Entry {
    std::string path;
    FileHold hold;
  };
  std::vector<Entry> list;  // in the order of locking

  std::vector<Entry>::iterator Find(const std::string& path) {
    return std::find_if(list.begin(), list.end(),
                        [&](const Entry& entry) { return entry.path == path; });
  }
};

IOWrapperLocker::IOWrapperLocker() : entries_(std::make_unique<Entries>()) {}

IOWrapperLocker::~IOWrapperLocker() = default;

bool IOWrapperLocker::Lock(const std::string& path) {
  if (!IsLockable(path)) return false;
  if (entries_->Find(path) != entries_->list.end()) {
    SetLastError("file %s has been locked", path.c_str());
    return false;
  }
  Entries::Entry entry{path, FileHold()};
  if (!entry.hold.Open(path)) {
    SetLastError("open exists file with share read mode failed");
    return false;
  }
  entries_->list.push_back(std::move(entry));
  return true;
}

bool IOWrapperLocker::UnLock(const std::string& path) {
  if (!IsLockable(path)) return false;
  const auto entry = entries_->Find(path);
  if (entry == entries_->list.end()) {
    SetLastError("file %s has not been locked", path.c_str());
    return false;
  }
  entries_->list.erase(entry);
  return true;
}

void IOWrapperLocker::UnLockAllFiles() {
  entries_->list.clear();
}

bool IOWrapperLocker::IsLockable(const std::string& path) {
  if (path.empty()) {
    SetLastError("file path name is empty");
    return false;
  }
  if (!FileDirWrapper::FileExists(path)) {
    SetLastError("file %s not exists", path.c_str());
    return false;
  }
  return true;
}
