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

// Who may write is what the user's own temporary folder hands down, so the owner is enough here.
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

std::string IdentityOf(const BY_HANDLE_FILE_INFORMATION& info) {
  return std::to_string(info.dwVolumeSerialNumber) + ':' +
         std::to_string(Joined(info.nFileIndexHigh, info.nFileIndexLow)) + ':' +
         std::to_string(SizeOf(info)) + ':' +
         std::to_string(
             Joined(info.ftLastWriteTime.dwHighDateTime, info.ftLastWriteTime.dwLowDateTime));
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

bool WriteAll(HANDLE file, const std::string& text) {
  DWORD put = 0;
  return WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &put, nullptr) &&
         put == text.size();
}

bool CutAt(HANDLE file, std::uint64_t size) {
  LARGE_INTEGER place;
  place.QuadPart = static_cast<LONGLONG>(size);
  return SetFilePointerEx(file, place, nullptr, FILE_BEGIN) && SetEndOfFile(file);
}

// Text of another program may lack the end of its last line.
bool EndsInMidLine(HANDLE file, std::uint64_t size) {
  LARGE_INTEGER place;
  place.QuadPart = static_cast<LONGLONG>(size) - 1;
  char last = '\n';
  DWORD got = 0;
  return size > 0 && SetFilePointerEx(file, place, nullptr, FILE_BEGIN) &&
         ReadFile(file, &last, 1, &got, nullptr) && got == 1 && last != '\n';
}

HANDLE Open(const std::string& path, DWORD access, DWORD disposition) {
  return CreateFileA(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr,
                     disposition, FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
}

// A virus scanner may hold what was written a moment ago.
HANDLE OpenToWrite(const std::string& path) {
  constexpr int kMostTries = 50;
  constexpr DWORD kBetweenTries = 20;  // milliseconds
  HANDLE file = INVALID_HANDLE_VALUE;
  for (int i = 0; i < kMostTries && file == INVALID_HANDLE_VALUE; ++i) {
    if (i > 0) Sleep(kBetweenTries);
    file = Open(path, GENERIC_READ | GENERIC_WRITE | READ_CONTROL, OPEN_ALWAYS);
    if (file == INVALID_HANDLE_VALUE && GetLastError() != ERROR_SHARING_VIOLATION) break;
  }
  return file;
}

}  // namespace

bool Exists(const std::string& path) {
  return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

Result Read(const std::string& path, std::size_t limit, Contents& contents) {
  contents = {};
  const Handle file(Open(path, GENERIC_READ | READ_CONTROL, OPEN_EXISTING));
  // One that a writer holds open is looked at again with the next poll.
  if (!file) {
    return GetLastError() == ERROR_ACCESS_DENIED ? Result::kRefused : Result::kMissing;
  }
  BY_HANDLE_FILE_INFORMATION info;
  if (!GetFileInformationByHandle(file.get(), &info)) return Result::kFailed;
  contents.identity = IdentityOf(info);
  if (!IsTrusted(file.get(), info) || SizeOf(info) > limit) return Result::kRefused;
  return ReadAll(file.get(), limit, contents.text) ? Result::kDone : Result::kFailed;
}

bool PutAsideWhenBigger(const std::string& path, std::size_t limit, const std::string& aside) {
  const Handle file(Open(path, GENERIC_READ | READ_CONTROL, OPEN_EXISTING));
  BY_HANDLE_FILE_INFORMATION info;
  return file && GetFileInformationByHandle(file.get(), &info) && IsTrusted(file.get(), info) &&
         SizeOf(info) > limit &&
         MoveFileExA(path.c_str(), aside.c_str(), MOVEFILE_REPLACE_EXISTING);
}

Result Write(const std::string& path, const std::string& text, bool append) {
  const Handle file(OpenToWrite(path));
  if (!file) return Exists(path) ? Result::kRefused : Result::kFailed;
  BY_HANDLE_FILE_INFORMATION info;
  if (!GetFileInformationByHandle(file.get(), &info)) return Result::kFailed;
  if (!IsTrusted(file.get(), info)) return Result::kRefused;
  const std::uint64_t keep = append ? SizeOf(info) : 0;
  const std::string joint = EndsInMidLine(file.get(), keep) ? "\n" : "";
  const bool written = CutAt(file.get(), keep) && WriteAll(file.get(), joint + text);
  if (!written) CutAt(file.get(), keep);
  return written ? Result::kDone : Result::kFailed;
}

}  // namespace hand_over_file
