#include "core/HandOverPlace.h"

#include <windows.h>
// The shell's header needs the one above.
#include <shlobj.h>

#include "util/files/FileDirWrapper.h"
#include "util/files/SpecialFolder_win32.h"

namespace hand_over_place {

namespace {

// Asked for by the process's token: asked for the current user, the system may look at variables.
std::string LocalDataFolder() {
  HANDLE token = nullptr;
  if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY | TOKEN_IMPERSONATE, &token)) return {};
  std::string folder = SpecialFolder(CSIDL_LOCAL_APPDATA | CSIDL_FLAG_CREATE, token);
  CloseHandle(token);
  return folder;
}

}  // namespace

std::vector<std::string> FoldersOfUser() {
  std::string folder = LocalDataFolder();
  if (folder.empty()) FileDirWrapper::AppDataDir(folder);
  return {FileDirWrapper::Join(FileDirWrapper::Join(folder, "orla"), "handover")};
}

// The profile is closed to others, and hands that down.
bool MakeOwn(const std::string& path) {
  FileDirWrapper::CreateDirTree(path);
  return FileDirWrapper::IsDirWritable(path);
}

std::string OthersFolder() {
  std::string folder;
  FileDirWrapper::TempDir(folder);
  return folder;
}

}  // namespace hand_over_place
