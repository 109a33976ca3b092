#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "util/process/Console_posix.h"

namespace {

constexpr std::uint32_t kMagic = 0x4b524332;
constexpr std::uint32_t kMostBytes = 64u << 20;

void Append(std::string& out, std::uint32_t number) {
  out.append(reinterpret_cast<const char*>(&number), sizeof number);
}

void Append(std::string& out, const std::string& text) {
  Append(out, static_cast<std::uint32_t>(text.size()));
  out += text;
}

void Append(std::string& out, const std::vector<std::string>& texts) {
  Append(out, static_cast<std::uint32_t>(texts.size()));
  for (const std::string& text : texts) Append(out, text);
}

class Reader {
 public:
  explicit Reader(const std::string& bytes) : bytes_(bytes) {}

  bool Get(std::uint32_t& number) {
    if (bytes_.size() - at_ < sizeof number) return false;
    std::memcpy(&number, bytes_.data() + at_, sizeof number);
    at_ += sizeof number;
    return true;
  }
  bool Get(std::string& text) {
    std::uint32_t size = 0;
    if (!Get(size) || bytes_.size() - at_ < size) return false;
    text.assign(bytes_, at_, size);
    at_ += size;
    return true;
  }
  bool Get(std::vector<std::string>& texts) {
    std::uint32_t count = 0;
    if (!Get(count) || count > bytes_.size()) return false;
    texts.resize(count);
    return std::all_of(texts.begin(), texts.end(), [this](std::string& text) { return Get(text); });
  }

 private:
  const std::string& bytes_;
  std::size_t at_ = 0;
};

bool SendAll(int socket, const std::string& bytes, std::chrono::steady_clock::time_point deadline) {
  std::size_t sent = 0;
  while (sent < bytes.size()) {
    const ssize_t got =
        send(socket, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL | MSG_DONTWAIT);
    if (got > 0) {
      sent += static_cast<std::size_t>(got);
      continue;
    }
    if (errno == EINTR) continue;
    if (errno != EAGAIN || std::chrono::steady_clock::now() >= deadline) return false;
    pollfd wait{socket, POLLOUT, 0};
    poll(&wait, 1, 50);
  }
  return true;
}

bool ReceiveAll(int socket, char* bytes, std::size_t size) {
  while (size > 0) {
    const ssize_t got = recv(socket, bytes, size, MSG_WAITALL);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return false;
    bytes += got;
    size -= static_cast<std::size_t>(got);
  }
  return true;
}

}  // namespace

bool SendConsoleRequest(int socket, const ConsoleRequest& request,
                        std::chrono::steady_clock::time_point deadline) {
  std::string body;
  Append(body, request.program);
  Append(body, request.folder);
  Append(body, request.args);
  Append(body, request.environment);
  Append(body, request.outputFile);
  if (body.size() > kMostBytes) return false;
  std::string message;
  Append(message, kMagic);
  Append(message, body);
  return SendAll(socket, message, deadline);
}

bool ReceiveConsoleRequest(int socket, ConsoleRequest& request) {
  std::uint32_t head[2];
  if (!ReceiveAll(socket, reinterpret_cast<char*>(head), sizeof head)) return false;
  if (head[0] != kMagic || head[1] > kMostBytes) return false;
  std::string body(head[1], '\0');
  if (!ReceiveAll(socket, body.data(), body.size())) return false;
  Reader reader(body);
  return reader.Get(request.program) && reader.Get(request.folder) && reader.Get(request.args) &&
         reader.Get(request.environment) && reader.Get(request.outputFile) && !request.args.empty();
}

bool SendConsoleReport(int socket, const ConsoleReport& report) {
  const std::string bytes(reinterpret_cast<const char*>(&report), sizeof report);
  return SendAll(socket, bytes, std::chrono::steady_clock::now() + std::chrono::seconds(5));
}
