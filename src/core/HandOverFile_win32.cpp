#include <windows.h>

#include <aclapi.h>

#include <cstdint>
#include <vector>

#include "core/HandOverFile.h"

namespace hand_over_file {

namespace {

class Handle {
 public:
  explicit Handle(HANDLE handle) : handle_(handle) {}
  ~Handle() {
    if (*this) CloseHandle(handle_);
  }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  HANDLE get() const { return handle_; }
  explicit operator bool() const { return handle_ != INVALID_HANDLE_VALUE && handle_ != nullptr; }

 private:
  HANDLE handle_;
};

std::vector<unsigned char> TokenInformation(TOKEN_INFORMATION_CLASS what) {
  HANDLE token = nullptr;
  if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token)) return {};
  const Handle owned(token);
  DWORD size = 0;
  GetTokenInformation(token, what, nullptr, 0, &size);
  std::vector<unsigned char> data(size);
  if (size == 0 || !GetTokenInformation(token, what, data.data(), size, &size)) return {};
  return data;
}

// Files that an administrator makes may belong to the group instead of the user.
bool IsOurs(PSID owner) {
  const std::vector<unsigned char> user = TokenInformation(TokenUser);
  const std::vector<unsigned char> maker = TokenInformation(TokenOwner);
  if (!user.empty() &&
      EqualSid(owner, reinterpret_cast<const TOKEN_USER*>(user.data())->User.Sid)) {
    return true;
  }
  return !maker.empty() &&
         EqualSid(owner, reinterpret_cast<const TOKEN_OWNER*>(maker.data())->Owner);
}

bool BelongsToUs(HANDLE file) {
  PSID owner = nullptr;
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  if (GetSecurityInfo(file, SE_FILE_OBJECT, OWNER_SECURITY_INFORMATION, &owner, nullptr, nullptr,
                      nullptr, &descriptor) != ERROR_SUCCESS) {
    return false;
  }
  const bool ours = owner != nullptr && IsOurs(owner);
  LocalFree(descriptor);
  return ours;
}

// Who may write is what the user's own folder hands down, so the owner is enough here.
bool IsTrusted(HANDLE file, const BY_HANDLE_FILE_INFORMATION& info) {
  constexpr DWORD kOther =
      FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DEVICE;
  return GetFileType(file) == FILE_TYPE_DISK && (info.dwFileAttributes & kOther) == 0 &&
         info.nNumberOfLinks == 1 && BelongsToUs(file);
}

std::uint64_t Joined(DWORD high, DWORD low) {
  return (std::uint64_t{high} << 32) | low;
}

std::uint64_t SizeOf(const BY_HANDLE_FILE_INFORMATION& info) {
  return Joined(info.nFileSizeHigh, info.nFileSizeLow);
}

// Of the file, whatever is written into it. The system's own file system counts on before it gives
// the number of a file that is gone to a new one.
std::string NumberOf(const BY_HANDLE_FILE_INFORMATION& info) {
  return std::to_string(info.dwVolumeSerialNumber) + ':' +
         std::to_string(Joined(info.nFileIndexHigh, info.nFileIndexLow));
}

bool ReadAll(HANDLE file, std::size_t limit, std::string& text) {
  char piece[16384];
  for (;;) {
    DWORD got = 0;
    if (!ReadFile(file, piece, sizeof(piece), &got, nullptr)) return false;
    if (got == 0) return true;
    text.append(piece, got);
    if (text.size() > limit) return false;
  }
}

bool SeekTo(HANDLE file, std::uint64_t place) {
  LARGE_INTEGER where;
  where.QuadPart = static_cast<LONGLONG>(place);
  return SetFilePointerEx(file, where, nullptr, FILE_BEGIN) != 0;
}

bool WriteAt(HANDLE file, std::uint64_t place, const std::string& text) {
  DWORD put = 0;
  return SeekTo(file, place) &&
         WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &put, nullptr) &&
         put == text.size();
}

bool CutAt(HANDLE file, std::uint64_t size) {
  return SeekTo(file, size) && SetEndOfFile(file);
}

// Text of another program may lack the end of its last line.
bool EndsInMidLine(HANDLE file, std::uint64_t size) {
  char last = '\n';
  DWORD got = 0;
  return size > 0 && SeekTo(file, size - 1) && ReadFile(file, &last, 1, &got, nullptr) &&
         got == 1 && last != '\n';
}

bool IsYoung(const BY_HANDLE_FILE_INFORMATION& info) {
  constexpr std::uint64_t kSpan = 20000000;  // two seconds, in units of 100 nanoseconds
  FILETIME now;
  GetSystemTimeAsFileTime(&now);
  const std::uint64_t current = Joined(now.dwHighDateTime, now.dwLowDateTime);
  const FILETIME& time = info.ftLastWriteTime;
  const std::uint64_t written = Joined(time.dwHighDateTime, time.dwLowDateTime);
  return (current > written ? current - written : written - current) <= kSpan;
}

HANDLE Open(const std::string& path, DWORD access, DWORD disposition) {
  return CreateFileA(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr,
                     disposition, FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
}

// A virus scanner may hold what was written a moment ago.
HANDLE OpenToWrite(const std::string& path, DWORD disposition) {
  constexpr int kMostTries = 50;
  constexpr DWORD kBetweenTries = 20;  // milliseconds
  HANDLE file = INVALID_HANDLE_VALUE;
  for (int i = 0; i < kMostTries && file == INVALID_HANDLE_VALUE; ++i) {
    if (i > 0) Sleep(kBetweenTries);
    file = Open(path, GENERIC_READ | GENERIC_WRITE | READ_CONTROL, disposition);
    if (file == INVALID_HANDLE_VALUE && GetLastError() != ERROR_SHARING_VIOLATION) break;
  }
  return file;
}

// A file that somebody is writing is looked at again with the next poll.
Result WhyNotOpened() {
  return GetLastError() == ERROR_ACCESS_DENIED ? Result::kRefused : Result::kMissing;
}

Result Check(const Handle& file, std::size_t limit, BY_HANDLE_FILE_INFORMATION& info) {
  if (!GetFileInformationByHandle(file.get(), &info)) return Result::kFailed;
  if (!IsTrusted(file.get(), info)) return Result::kRefused;
  return SizeOf(info) > limit ? Result::kTooBig : Result::kDone;
}

}  // namespace

// Nothing is held open, which would keep the file's name after its end.
struct Record::Place {
  std::string file;
  std::vector<std::uint64_t> beginnings;
};

Record::Record() = default;
Record::~Record() = default;
Record::Record(Record&& other) noexcept = default;
Record& Record::operator=(Record&& other) noexcept = default;

bool Record::IsIn(const std::string& path) const {
  if (!place_) return false;
  constexpr DWORD kAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  const Handle file(CreateFileA(path.c_str(), FILE_READ_ATTRIBUTES, kAll, nullptr, OPEN_EXISTING,
                                FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
  BY_HANDLE_FILE_INFORMATION info;
  return file && GetFileInformationByHandle(file.get(), &info) && NumberOf(info) == place_->file;
}

bool Record::TakeBack(const std::string& path) {
  if (!IsIn(path)) return false;
  const Handle file(OpenToWrite(path, OPEN_EXISTING));
  if (!file) return false;
  for (const std::uint64_t place : place_->beginnings) {
    if (!WriteAt(file.get(), place, {kNotValid})) return false;
  }
  return true;
}

bool Exists(const std::string& path) {
  return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

Result Append(const std::string& path, const std::string& text,
              const std::vector<std::size_t>& beginnings, std::size_t limit, Record& record) {
  const Handle file(OpenToWrite(path, OPEN_ALWAYS));
  if (!file) return Exists(path) ? Result::kRefused : Result::kFailed;
  BY_HANDLE_FILE_INFORMATION info;
  const Result state = Check(file, limit, info);
  if (state != Result::kDone) return state;
  const std::uint64_t size = SizeOf(info);
  const std::string joint = EndsInMidLine(file.get(), size) ? "\n" : "";
  std::string whole = joint + text;
  if (size + whole.size() > limit) return Result::kTooBig;

  auto place = std::make_unique<Record::Place>();
  place->file = NumberOf(info);
  for (const std::size_t at : beginnings) {
    place->beginnings.push_back(size + joint.size() + at);
    whole[joint.size() + at] = kNotValid;
  }
  bool written = WriteAt(file.get(), size, whole);
  for (std::size_t i = 0; written && i < beginnings.size(); ++i) {
    written = WriteAt(file.get(), place->beginnings[i], text.substr(beginnings[i], 1));
  }
  if (!written) {
    CutAt(file.get(), size);  // where even that fails, no reader takes it for valid
    return Result::kFailed;
  }
  record.place_ = std::move(place);
  return Result::kDone;
}

Result TakeAway(const std::string& path, std::size_t limit, const std::string& taken) {
  {
    const Handle file(Open(path, GENERIC_READ | READ_CONTROL, OPEN_EXISTING));
    if (!file) return WhyNotOpened();
    BY_HANDLE_FILE_INFORMATION info;
    const Result state = Check(file, limit, info);
    if (state != Result::kDone) return state;
    if (EndsInMidLine(file.get(), SizeOf(info)) && IsYoung(info)) return Result::kGrowing;
  }
  if (MoveFileExA(path.c_str(), taken.c_str(), MOVEFILE_REPLACE_EXISTING)) return Result::kDone;
  return GetLastError() == ERROR_SHARING_VIOLATION ? Result::kGrowing : Result::kFailed;
}

Result Read(const std::string& path, std::size_t limit, std::string& text) {
  text.clear();
  const Handle file(Open(path, GENERIC_READ | READ_CONTROL, OPEN_EXISTING));
  if (!file) return WhyNotOpened();
  BY_HANDLE_FILE_INFORMATION info;
  const Result state = Check(file, limit, info);
  if (state != Result::kDone) return state;
  return ReadAll(file.get(), limit, text) ? Result::kDone : Result::kFailed;
}

bool PutAsideWhenBigger(const std::string& path, std::size_t limit, const std::string& aside) {
  {
    const Handle file(Open(path, GENERIC_READ | READ_CONTROL, OPEN_EXISTING));
    BY_HANDLE_FILE_INFORMATION info;
    if (!file || Check(file, limit, info) != Result::kTooBig) return false;
  }
  return MoveFileExA(path.c_str(), aside.c_str(), MOVEFILE_REPLACE_EXISTING) != 0;
}

}  // namespace hand_over_file
