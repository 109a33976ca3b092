#include "core/HandOverPlace.h"

#include <cstdlib>
#include <filesystem>

#include "core/HandOverFile.h"
#include "util/files/FileDirWrapper.h"

namespace {

constexpr char kMoved[] = "KESTRUN_HANDOVER_FOLDER";

// Empty where nobody has moved it.
std::string MovedFolder() {
  const char* const moved = std::getenv(kMoved);
  const bool isMoved = moved != nullptr && std::filesystem::path(moved).is_absolute();
  return isMoved ? FileDirWrapper::AbsolutePath(moved) : std::string();
}

std::vector<std::string> WantedFolders(const std::string& moved) {
  return moved.empty() ? hand_over_place::FoldersOfUser() : std::vector{moved};
}

}  // namespace

std::vector<std::string> TakenHandOverFolders() {
  std::vector<std::string> folders = WantedFolders(MovedFolder());
  std::erase_if(folders, [](const std::string& folder) {
    return !hand_over_file::Exists(folder) || hand_over_place::MakeOwn(folder);
  });
  return folders;
}

std::vector<HandOverPlace> HandOverPlaces() {
  const std::string moved = MovedFolder();
  std::vector<std::string> folders = WantedFolders(moved);
  const std::string wanted = folders.front();
  std::erase_if(folders,
                [](const std::string& folder) { return !hand_over_place::MakeOwn(folder); });
  if (folders.empty()) folders.push_back(wanted);
  std::vector<HandOverPlace> places;
  for (const std::string& folder : folders)
    places.push_back({folder, FileDirWrapper::Join(folder, "kr_running.lock")});
  const std::string others = moved.empty() ? hand_over_place::OthersFolder() : std::string();
  if (!others.empty()) places.push_back({others, {}});
  return places;
}
