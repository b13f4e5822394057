#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <vector>

namespace zolvar {

/// Looks at what a process and its descendants do, through /proc. Holds no state but the pid, which
/// the caller keeps from being reaped. Any thread.
class ProcessGroupActivity {
 public:
  struct Bytes {
    std::uint64_t read = 0;
    std::uint64_t written = 0;
    bool operator==(const Bytes&) const = default;
  };

  explicit ProcessGroupActivity(pid_t leader) : leader_(leader) {}

  /// Bytes passed through the read and write calls of all of them since they started, sockets
  /// included; none when the kernel does not tell. Smaller again after one of them has ended.
  [[nodiscard]] std::optional<Bytes> bytes() const;
  /// Whether one of them waits for a TCP connection to be answered.
  [[nodiscard]] bool isConnecting() const;

 private:
  /// None when the kernel does not tell who is whose child.
  [[nodiscard]] std::optional<std::vector<pid_t>> members() const;

  const pid_t leader_;
};

}  // namespace zolvar
