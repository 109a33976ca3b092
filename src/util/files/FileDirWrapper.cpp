#include "util/files/FileDirWrapper.h"

#include <atomic>
#include <set>

#include "util/files/FileSystemCalls.h"
#include "util/process/ProcessByName.h"

namespace {

using file_system::Kind;

bool IsSeparator(char c) {
  return c == '/' || c == '\\';
}

bool EndsInSeparator(const std::string& path) {
  return !path.empty() && IsSeparator(path.back()) &&
         file_system::ForSystem(path).back() == FileDirWrapper::kSeparator;
}

// `visited` holds the folders that were listed, so that links leading back end the recursion.
void ListInto(const std::string& folder, std::vector<std::string>& files,
              std::vector<std::string>& dirs, bool recursive,
              std::set<file_system::FileId>& visited) {
  for (const file_system::Entry& entry : file_system::ReadFolder(folder)) {
    const std::string path = FileDirWrapper::Join(folder, entry.name);
    if (!entry.isFolder) {
      files.push_back(path);
      continue;
    }
    dirs.push_back(path);
    file_system::FileId id;
    if (recursive && file_system::IdOf(path, id) && visited.insert(id).second) {
      ListInto(path, files, dirs, recursive, visited);
    }
  }
}

}  // namespace

void FileDirWrapper::ListDir(const std::string& folder, std::vector<std::string>& files,
                             std::vector<std::string>& dirs, bool recursive) {
  std::string trimmed;
  if (!TrimTrailingSeparator(folder, trimmed)) return;
  trimmed = file_system::ForSystem(trimmed);
  std::set<file_system::FileId> visited;
  file_system::FileId id;
  if (file_system::IdOf(trimmed, id)) visited.insert(id);
  ListInto(trimmed, files, dirs, recursive, visited);
}

bool FileDirWrapper::CreateDirTree(const std::string& path) {
  std::string trimmed;
  if (!TrimTrailingSeparator(path, trimmed)) return false;
  trimmed = file_system::ForSystem(trimmed);
  for (std::size_t end = file_system::RootLength(trimmed) + 1; end <= trimmed.size(); ++end) {
    if (end < trimmed.size() && trimmed[end] != kSeparator) continue;
    const std::string prefix = trimmed.substr(0, end);
    if (!FileExists(prefix) && !file_system::MakeFolder(prefix)) return false;
  }
  return true;
}

bool FileDirWrapper::TrimTrailingSeparator(const std::string& path, std::string& out) {
  out = path;
  if (out.empty()) return false;
  if (EndsInSeparator(out) && file_system::RootLength(out) < out.size()) out.pop_back();
  return true;
}

bool FileDirWrapper::QuotePath(const std::string& path, std::string& out) {
  out = path.find_first_of(" \t") == std::string::npos ? path : "\"" + path + "\"";
  return true;
}

bool FileDirWrapper::IsDirWritable(const std::string& folder) {
  static std::atomic<unsigned> counter{0};
  if (!FileExists(folder)) return false;
  const std::string path = file_system::ForSystem(folder) + "/filedirwrapper_tmpfile";
  if (file_system::MakeAndRemoveFile(path)) return true;
  // Another user's file, or one that another process is just removing, says nothing of the folder.
  return file_system::MakeAndRemoveFile(path + "." + std::to_string(OwnProcessId()) + "." +
                                        std::to_string(counter++));
}

bool FileDirWrapper::FileExists(const std::string& path) {
  return !path.empty() && file_system::KindOf(file_system::ForSystem(path)) != Kind::kMissing;
}

bool FileDirWrapper::IsFolder(const std::string& path) {
  return !path.empty() && file_system::KindOf(file_system::ForSystem(path)) == Kind::kFolder;
}

bool FileDirWrapper::IsFile(const std::string& path) {
  return !path.empty() && file_system::KindOf(file_system::ForSystem(path)) == Kind::kFile;
}

bool FileDirWrapper::IsPipe(const std::string& path) {
  return !path.empty() && file_system::KindOf(file_system::ForSystem(path)) == Kind::kPipe;
}

bool FileDirWrapper::IsSameFile(const std::string& path, const std::string& other) {
  file_system::FileId id;
  file_system::FileId otherId;
  return file_system::IdOf(file_system::ForSystem(path), id) &&
         file_system::IdOf(file_system::ForSystem(other), otherId) && id == otherId;
}

std::string FileDirWrapper::IdentityOf(const std::string& path) {
  file_system::FileId id;
  if (path.empty() || !file_system::IdOf(file_system::ForSystem(path), id)) return {};
  return std::to_string(id.first) + ":" + std::to_string(id.second);
}

bool FileDirWrapper::FileNameOf(const std::string& path, std::string& name, bool withExtension) {
  const std::string whole = path;  // `name` may be the same object
  name.clear();
  if (whole.empty()) return false;
  const std::size_t separator = WithOwnSeparators(whole).rfind(kSeparator);
  name = separator == std::string::npos ? whole : whole.substr(separator + 1);
  if (!withExtension) name = name.substr(0, name.rfind('.'));
  return true;
}

bool FileDirWrapper::DirOf(const std::string& path, std::string& dir) {
  const std::string whole = WithOwnSeparators(path);
  dir.clear();
  if (whole.empty()) return false;
  const std::size_t separator = whole.rfind(kSeparator);
  if (separator == std::string::npos) return true;
  const bool belowRoot = separator + 1 == file_system::RootLength(whole);
  dir = whole.substr(0, belowRoot ? separator + 1 : separator);
  return true;
}

bool FileDirWrapper::ExtensionOf(const std::string& path, std::string& ext) {
  std::string name;
  const bool ok = FileNameOf(path, name, true);
  const std::size_t dot = name.rfind('.');
  ext = dot == std::string::npos ? std::string() : name.substr(dot + 1);
  return ok;
}

std::string FileDirWrapper::WithOwnSeparators(const std::string& path) {
  return file_system::ForSystem(path);
}

std::string FileDirWrapper::NameOf(const std::string& path) {
  std::string name;
  FileNameOf(path, name, true);
  return name;
}

std::string FileDirWrapper::Join(const std::string& folder, const std::string& name) {
  if (folder.empty()) return name;
  return EndsInSeparator(folder) ? folder + name : folder + kSeparator + name;
}
