// FileDirWrapper's replacing of whole files.
#include <windows.h>

#include <algorithm>
#include <atomic>
#include <optional>
#include <string>

#include "util/files/FileDirWrapper.h"
#include "util/files/FileSystemCalls.h"
#include "util/files/TempName.h"

namespace {

constexpr int kMostTempNames = 100;
constexpr int kMostTries = 10;
constexpr DWORD kBetweenTries = 20;  // milliseconds
constexpr std::size_t kMostBytesAtOnce = std::size_t{1} << 24;

// The path that the file behind a link has; the path itself when there is none yet.
std::string ResolveLinks(const std::string& path) {
  const DWORD attributes = GetFileAttributesA(path.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) {
    return path;
  }
  const HANDLE file =
      CreateFileA(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                  OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return path;
  char target[4096];
  const DWORD length =
      GetFinalPathNameByHandleA(file, target, sizeof(target), FILE_NAME_NORMALIZED);
  CloseHandle(file);
  return length > 0 && length < sizeof(target) ? std::string(target, length) : path;
}

HANDLE CreateTempFile(const std::string& folder, std::string& path) {
  static std::atomic<unsigned> counter{0};
  for (int i = 0; i < kMostTempNames; ++i) {
    path = FileDirWrapper::Join(folder, TempName(GetCurrentProcessId(), counter++));
    const HANDLE file = CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file != INVALID_HANDLE_VALUE || GetLastError() != ERROR_FILE_EXISTS) return file;
  }
  return INVALID_HANDLE_VALUE;
}

bool IsRunning(unsigned long processId) {
  const HANDLE process = OpenProcess(SYNCHRONIZE, FALSE, processId);
  if (process == nullptr) return GetLastError() != ERROR_INVALID_PARAMETER;
  const bool runs = WaitForSingleObject(process, 0) == WAIT_TIMEOUT;
  CloseHandle(process);
  return runs;
}

bool WriteAll(HANDLE file, const std::string& contents) {
  std::size_t done = 0;
  while (done < contents.size()) {
    const auto wanted = static_cast<DWORD>(std::min(contents.size() - done, kMostBytesAtOnce));
    DWORD written = 0;
    if (!WriteFile(file, contents.data() + done, wanted, &written, nullptr) || written == 0) {
      return false;
    }
    done += written;
  }
  return true;
}

// ReplaceFile keeps the old file's rights, but wants an old file.
bool MoveOnce(const std::string& source, const std::string& target) {
  if (ReplaceFileA(target.c_str(), source.c_str(), nullptr, 0, nullptr, nullptr)) return true;
  const DWORD error = GetLastError();
  if (error == ERROR_ACCESS_DENIED || error == ERROR_SHARING_VIOLATION) return false;
  return MoveFileExA(source.c_str(), target.c_str(),
                     MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH);
}

// A virus scanner or a reader may have the old file open for a moment.
bool MoveOver(const std::string& source, const std::string& target) {
  for (int i = 0; i < kMostTries; ++i) {
    if (i > 0) Sleep(kBetweenTries);
    if (MoveOnce(source, target)) return true;
  }
  return false;
}

bool Flush(const std::string& path) {
  const HANDLE file = CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                  nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  const bool ok = FlushFileBuffers(file);
  CloseHandle(file);
  return ok;
}

bool WriteWhole(const std::string& target, const std::string& contents) {
  const file_system::Kind kind = file_system::KindOf(target);
  if (kind != file_system::Kind::kMissing && kind != file_system::Kind::kFile) return false;
  const DWORD attributes = GetFileAttributesA(target.c_str());
  if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0) {
    SetLastError(ERROR_ACCESS_DENIED);
    return false;
  }

  std::string folder;
  FileDirWrapper::DirOf(target, folder);
  std::string temp;
  const HANDLE file = CreateTempFile(folder, temp);
  if (file == INVALID_HANDLE_VALUE) return false;
  bool ok = WriteAll(file, contents) && FlushFileBuffers(file);
  DWORD error = GetLastError();
  ok = CloseHandle(file) && ok;
  if (ok) {
    if (MoveOver(temp, target)) return true;
    error = GetLastError();
  }
  DeleteFileA(temp.c_str());
  SetLastError(error);
  return false;
}

// The system's text for an error, without its line end.
std::string WordsOf(DWORD error) {
  char text[512];
  DWORD length = 0;
  if (error != ERROR_SUCCESS)
    length = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                            error, 0, text, sizeof(text), nullptr);
  while (length > 0 && static_cast<unsigned char>(text[length - 1]) <= ' ') --length;
  return std::string(text, length);
}

}  // namespace

bool FileDirWrapper::ReplaceFileWith(const std::string& from, const std::string& to) {
  if (from.empty() || to.empty()) return false;
  return Flush(from) && MoveOver(from, to);
}

bool FileDirWrapper::MoveFileOver(const std::string& from, const std::string& to) {
  return MoveOver(from, to);
}

// The system keeps the names of files in a journal of its own.
void FileDirWrapper::SyncFolderOf(const std::string&) {}

bool FileDirWrapper::GiveSecondName(const std::string& path, const std::string& name) {
  return CreateHardLinkA(name.c_str(), path.c_str(), nullptr) != 0;
}

// The folder's rights decide who may read it.
bool FileDirWrapper::WritePrivateFile(const std::string& path, const std::string& contents) {
  RemoveFile(path);
  const HANDLE file = CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                  FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  const bool written = WriteAll(file, contents);
  if (CloseHandle(file) && written) return true;
  DeleteFileA(path.c_str());
  return false;
}

bool FileDirWrapper::WriteFileWhole(const std::string& path, const std::string& contents,
                                    std::string* why) {
  SetLastError(ERROR_SUCCESS);
  if (!path.empty() && WriteWhole(ResolveLinks(FileDirWrapper::AbsolutePath(path)), contents))
    return true;
  if (why != nullptr) *why = WordsOf(GetLastError());
  return false;
}

bool FileDirWrapper::WriteOutputFile(const std::string& path, const std::string& contents) {
  if (path.empty()) return false;
  const std::string target = AbsolutePath(path);
  const DWORD attributes = GetFileAttributesA(target.c_str());
  constexpr DWORD kPlace = FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DIRECTORY;
  const bool isLink = attributes != INVALID_FILE_ATTRIBUTES &&
                      (attributes & kPlace) == FILE_ATTRIBUTE_REPARSE_POINT;
  return (!isLink || RemoveFile(target)) && WriteWhole(target, contents);
}

// One that is being written cannot be deleted.
void FileDirWrapper::RemoveLeftTempFiles(const std::string& path) {
  std::string folder;
  if (path.empty() || !DirOf(ResolveLinks(AbsolutePath(path)), folder)) return;
  for (const file_system::Entry& entry : file_system::ReadFolder(folder)) {
    const std::optional<unsigned long> owner = OwnerOfTempName(entry.name);
    if (owner && !IsRunning(*owner)) RemoveFile(Join(folder, entry.name));
  }
}
