#include "ui/help/HelpBook.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>

#include "ui/help/HelpPage.h"
#include "util/files/FileDirWrapper.h"
#include "util/text/PlainText.h"

extern char** environ;

namespace {

std::string PageName(const std::string& name) {
  std::string out = Lower(name);
  std::replace(out.begin(), out.end(), '\\', '/');
  const std::size_t begin = out.find_first_not_of('/');
  return begin == std::string::npos ? std::string() : out.substr(begin);
}

// The program that reads the file, its output coming in through a pipe.
class ReaderProgram {
 public:
  explicit ReaderProgram(const std::string& file) {
    std::string folder;
    FileDirWrapper::DirOf(FileDirWrapper::ProgramPath(), folder);
    std::string program = FileDirWrapper::Join(folder, "krhelp");
    std::string path = file;
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    char* arguments[] = {program.data(), path.data(), nullptr};
    if (posix_spawn(&id_, program.c_str(), &actions, nullptr, arguments, environ) != 0) id_ = 0;
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    output_ = ends[0];
  }

  ~ReaderProgram() {
    if (output_ >= 0) close(output_);
    if (id_ <= 0 || waitpid(id_, nullptr, WNOHANG) != 0) return;
    kill(id_, SIGKILL);
    while (waitpid(id_, nullptr, 0) < 0 && errno == EINTR) continue;
  }

  ReaderProgram(const ReaderProgram&) = delete;
  ReaderProgram& operator=(const ReaderProgram&) = delete;

  // Everything it writes, up to the limits.
  std::string ReadAll() const {
    using Clock = std::chrono::steady_clock;
    const auto until = Clock::now() + std::chrono::seconds(HelpBook::kMostSeconds);
    constexpr std::size_t kMost = HelpBook::kMostBytes + HelpBook::kMostEntries * 300;
    std::string all;
    std::array<char, 65536> piece;
    while (id_ > 0 && all.size() < kMost) {
      const auto left =
          std::chrono::duration_cast<std::chrono::milliseconds>(until - Clock::now()).count();
      pollfd wait{output_, POLLIN, 0};
      const int ready = left > 0 ? poll(&wait, 1, static_cast<int>(left)) : 0;
      if (ready < 0 && errno == EINTR) continue;
      if (ready <= 0) break;
      const ssize_t count = read(output_, piece.data(), piece.size());
      if (count < 0 && errno == EINTR) continue;
      if (count <= 0) break;
      all.append(piece.data(), static_cast<std::size_t>(count));
    }
    return all;
  }

 private:
  pid_t id_ = 0;
  int output_ = -1;
};

}  // namespace

bool HelpBook::Open(const std::string& path) {
  pages_.clear();
  contents_.clear();
  return Take(ReaderProgram(path).ReadAll()) && !pages_.empty();
}

bool HelpBook::Take(const std::string& stream) {
  for (std::size_t at = 0; at < stream.size();) {
    const std::size_t end = stream.find('\n', at);
    if (end == std::string::npos) return false;
    const std::string line = stream.substr(at, end - at);
    if (line == "end") return true;
    const std::size_t blank = line.find(' ');
    const std::size_t size = std::strtoul(line.c_str(), nullptr, 10);
    if (blank == std::string::npos || size > stream.size() - end - 1) return false;
    const std::string name = PageName(line.substr(blank + 1));
    const std::string bytes = stream.substr(end + 1, size);
    at = end + 1 + size;
    if (name.size() > 4 && name.compare(name.size() - 4, 4, ".hhc") == 0) {
      contents_ = ParseContents(bytes);
    } else {
      pages_.emplace(name, bytes);
    }
  }
  return false;
}

const std::string* HelpBook::Page(const std::string& name) const {
  const auto found = pages_.find(PageName(name));
  return found == pages_.end() ? nullptr : &found->second;
}

bool HelpBook::Resolve(const std::string& from, const std::string& link, std::string& page,
                       std::string& anchor) {
  const std::size_t hash = link.find('#');
  const std::string target = link.substr(0, hash);
  anchor = hash == std::string::npos ? std::string() : link.substr(hash + 1);
  if (target.find(':') != std::string::npos) return false;
  const std::string source = PageName(from);
  if (target.empty()) {
    page = source;
    return true;
  }
  const std::string wanted = PageName(target);
  const bool absolute = target[0] == '/' || target[0] == '\\';
  const std::size_t folder = source.rfind('/');
  std::string whole =
      absolute || folder == std::string::npos ? wanted : source.substr(0, folder + 1) + wanted;
  std::vector<std::string> parts;
  for (std::size_t at = 0; at <= whole.size();) {
    const std::size_t end = std::min(whole.find('/', at), whole.size());
    const std::string part = whole.substr(at, end - at);
    if (part == ".." && !parts.empty()) parts.pop_back();
    if (!part.empty() && part != "." && part != "..") parts.push_back(part);
    at = end + 1;
  }
  page.clear();
  for (const std::string& part : parts) page += (page.empty() ? "" : "/") + part;
  return true;
}
