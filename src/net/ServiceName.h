#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/ServiceDirectory.h"

namespace zolvar {

/// The parts of a service name "user@host:port/hash".
struct ServiceNameParts {
  std::string hostName;
  std::string user;
  std::string poolName;    ///< the pool name's hash, eight hexadecimal digits
  std::uint32_t port = 0;  ///< 0 when the name has none

  [[nodiscard]] std::string userId() const { return user + "@" + hostName; }
};

[[nodiscard]] std::string makeServiceName(std::string_view userId, std::uint32_t port,
                                          std::string_view poolNameHash);

/// The inverse: cut at the first "/", the first "@" and the last ":" (where there is none, the host
/// ends at the "/" and the port is 0). None when one of them is missing or stands at the very
/// start.
[[nodiscard]] std::optional<ServiceNameParts> parseServiceName(std::string_view name);

/// Why an announcement that has a folder name is not to be believed, as one sentence; none when it
/// is in order. The rules: a name that parses, a user without control characters, slashes and
/// colons, a host on the local network, a port from 1024 to 65535, a folder name that
/// poolNameProblem accepts and whose hash is the one in the service name, a protocol version, a
/// log digest of 16 bytes if any.
[[nodiscard]] std::optional<std::string> announcementProblem(const std::string& name,
                                                             const TxtRecord& record);

}  // namespace zolvar
