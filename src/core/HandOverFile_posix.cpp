#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "core/HandOverFile.h"
#include "util/files/FileDirWrapper.h"
#include "util/files/ReadAll_posix.h"
#include "util/files/UniqueFd_posix.h"

namespace hand_over_file {

namespace {

// Neither a link nor a pipe without a writer may catch us.
constexpr int kSafely = O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;

// A second name of the file may be one that the user never meant to hand over or to overwrite.
bool IsTrusted(const struct stat& info) {
  return S_ISREG(info.st_mode) && info.st_uid == geteuid() && info.st_nlink == 1 &&
         (info.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

// In a folder that others may write to they could take away what was handed over.
bool IsInTrustedFolder(const std::string& path) {
  struct stat info {};
  std::string folder;
  FileDirWrapper::DirOf(path, folder);
  return lstat(folder.c_str(), &info) != 0 ||  // which opening will say
         (S_ISDIR(info.st_mode) && info.st_uid == geteuid() &&
          (info.st_mode & (S_IWGRP | S_IWOTH)) == 0);
}

bool WriteAt(int fd, off_t place, const std::string& text) {
  ssize_t put = -1;
  do {
    put = pwrite(fd, text.data(), text.size(), place);
  } while (put < 0 && errno == EINTR);
  return put == static_cast<ssize_t>(text.size());
}

// Text of another program may lack the end of its last line.
bool EndsInMidLine(int fd, off_t size) {
  char last = '\n';
  return size > 0 && pread(fd, &last, 1, size - 1) == 1 && last != '\n';
}

bool IsYoung(const struct stat& info) {
  constexpr std::time_t kSeconds = 2;
  return std::abs(std::time(nullptr) - info.st_mtim.tv_sec) <= kSeconds;
}

bool IsSame(const struct stat& a, const struct stat& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

Result WhyNotOpened(const std::string& path) {
  return Exists(path) ? Result::kRefused : Result::kMissing;
}

// For reading; kDone when it is open.
Result OpenTrusted(const std::string& path, std::size_t limit, UniqueFd& fd, struct stat& info) {
  fd = UniqueFd(open(path.c_str(), O_RDONLY | kSafely));
  if (!fd) return WhyNotOpened(path);
  if (fstat(fd.get(), &info) != 0) return Result::kFailed;
  if (!IsTrusted(info)) return Result::kRefused;
  return static_cast<std::uintmax_t>(info.st_size) > limit ? Result::kTooBig : Result::kDone;
}

}  // namespace

// The open file keeps its number from being given to another one.
struct Record::Place {
  UniqueFd file;
  std::vector<off_t> beginnings;
};

Record::Record() = default;
Record::~Record() = default;
Record::Record(Record&& other) noexcept = default;
Record& Record::operator=(Record&& other) noexcept = default;

bool Record::IsIn(const std::string& path) const {
  struct stat ours {
  }, there{};
  return place_ && fstat(place_->file.get(), &ours) == 0 && lstat(path.c_str(), &there) == 0 &&
         IsSame(ours, there);
}

bool Record::TakeBack(const std::string& path) {
  if (!IsIn(path)) return false;
  for (const off_t place : place_->beginnings) {
    if (!WriteAt(place_->file.get(), place, {kNotValid})) return false;
  }
  return true;
}

bool Exists(const std::string& path) {
  struct stat info {};
  return lstat(path.c_str(), &info) == 0;
}

Result Append(const std::string& path, const std::string& text,
              const std::vector<std::size_t>& beginnings, std::size_t limit, Record& record) {
  if (!IsInTrustedFolder(path)) return Result::kRefused;
  UniqueFd fd(open(path.c_str(), O_RDWR | O_CREAT | kSafely, S_IRUSR | S_IWUSR));
  struct stat info {};
  if (!fd) return Exists(path) ? Result::kRefused : Result::kFailed;
  if (fstat(fd.get(), &info) != 0) return Result::kFailed;
  if (!IsTrusted(info)) return Result::kRefused;
  const std::string joint = EndsInMidLine(fd.get(), info.st_size) ? "\n" : "";
  std::string whole = joint + text;
  if (static_cast<std::uintmax_t>(info.st_size) + whole.size() > limit) return Result::kTooBig;

  auto place = std::make_unique<Record::Place>();
  for (const std::size_t at : beginnings) {
    place->beginnings.push_back(info.st_size + static_cast<off_t>(joint.size() + at));
    whole[joint.size() + at] = kNotValid;
  }
  bool written = WriteAt(fd.get(), info.st_size, whole);
  for (std::size_t i = 0; written && i < beginnings.size(); ++i) {
    written = WriteAt(fd.get(), place->beginnings[i], text.substr(beginnings[i], 1));
  }
  if (!written) {
    // Where even that fails, no reader takes it for valid.
    [[maybe_unused]] const int cut = ftruncate(fd.get(), info.st_size);
    return Result::kFailed;
  }
  place->file = std::move(fd);
  record.place_ = std::move(place);
  return Result::kDone;
}

Result TakeAway(const std::string& path, std::size_t limit, const std::string& taken) {
  if (!IsInTrustedFolder(path)) return Result::kRefused;
  UniqueFd fd;
  struct stat info {};
  if (const Result opened = OpenTrusted(path, limit, fd, info); opened != Result::kDone)
    return opened;
  if (EndsInMidLine(fd.get(), info.st_size) && IsYoung(info)) return Result::kGrowing;
  return rename(path.c_str(), taken.c_str()) == 0 ? Result::kDone : Result::kFailed;
}

Result Read(const std::string& path, std::size_t limit, std::string& text) {
  text.clear();
  UniqueFd fd;
  struct stat info {};
  if (const Result opened = OpenTrusted(path, limit, fd, info); opened != Result::kDone)
    return opened;
  return ReadAll(fd.get(), limit, text) ? Result::kDone : Result::kFailed;
}

bool PutAsideWhenBigger(const std::string& path, std::size_t limit, const std::string& aside) {
  struct stat info {};
  return lstat(path.c_str(), &info) == 0 && IsTrusted(info) &&
         static_cast<std::uintmax_t>(info.st_size) > limit &&
         rename(path.c_str(), aside.c_str()) == 0;
}

}  // namespace hand_over_file
