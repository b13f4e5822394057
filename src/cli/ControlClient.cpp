#include "cli/ControlClient.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace zolvar {

ControlClient::~ControlClient() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

Result<> ControlClient::connect(const std::string& path) {
  sockaddr_un address{};
  if (path.empty() || path.size() >= sizeof address.sun_path) {
    return fail(FailureKind::Refused, "use the control socket", path, "its path does not fit");
  }
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, path.data(), path.size());
  descriptor_ = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (descriptor_ < 0) return tl::unexpected(failureFromErrno(errno, "make a socket", {}));
  if (::connect(descriptor_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    return fail(FailureKind::Absent, "reach the running Zolvar", path, std::strerror(errno));
  }
  return {};
}

Result<> ControlClient::send(std::string_view line) {
  std::string bytes(line);
  bytes += '\n';
  std::string_view left = bytes;
  while (!left.empty()) {
    const ssize_t sent = ::send(descriptor_, left.data(), left.size(), MSG_NOSIGNAL);
    if (sent < 0 && errno == EINTR) continue;
    if (sent < 0) {
      return fail(FailureKind::Transient, "send the command", {}, std::strerror(errno));
    }
    left.remove_prefix(static_cast<std::size_t>(sent));
  }
  return {};
}

std::optional<std::string> ControlClient::receive() {
  std::size_t searched = 0;
  for (;;) {
    if (const auto end = received_.find('\n', searched); end != std::string::npos) {
      std::string line = received_.substr(0, end);
      received_.erase(0, end + 1);
      return line;
    }
    searched = received_.size();
    char buffer[16384];
    const ssize_t count = ::recv(descriptor_, buffer, sizeof buffer, 0);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return std::nullopt;
    received_.append(buffer, static_cast<std::size_t>(count));
  }
}

bool ControlClient::waitForClose(std::chrono::milliseconds limit) {
  using Clock = std::chrono::steady_clock;
  const auto end = Clock::now() + limit;
  for (;;) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now());
    if (left.count() <= 0) return false;
    pollfd ready{descriptor_, POLLIN, 0};
    if (::poll(&ready, 1, static_cast<int>(left.count())) <= 0) continue;
    char buffer[4096];
    const ssize_t count = ::recv(descriptor_, buffer, sizeof buffer, 0);
    if (count == 0 || (count < 0 && errno != EINTR)) return true;
  }
}

}  // namespace zolvar
