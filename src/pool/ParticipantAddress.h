#pragma once

#include <cstdint>
#include <string>

namespace zolvar {

/// Who a member of a pool is and where its transfer daemon listens. A value; any thread.
struct ParticipantAddress {
  std::string user;
  std::string hostName;
  std::uint32_t port = 0;
  std::string poolName;

  bool operator==(const ParticipantAddress&) const = default;
  /// "user@host": the form of user ids and of log names.
  [[nodiscard]] std::string userId() const { return user + "@" + hostName; }
  [[nodiscard]] std::string description() const {
    return userId() + ":" + std::to_string(port) + " (in " + poolName + ")";
  }
};

}  // namespace zolvar
