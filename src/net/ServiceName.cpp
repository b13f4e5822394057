#include "net/ServiceName.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>

#include "net/DaemonConfiguration.h"
#include "net/TxtCodec.h"
#include "util/PathRules.h"
#include "util/hexHash.h"

namespace zolvar {

namespace {

constexpr std::uint32_t LowestPort = 1024;
constexpr std::uint32_t HighestPort = 65535;
constexpr std::size_t DigestSize = 16;

bool isControl(char character) {
  const auto byte = static_cast<unsigned char>(character);
  return byte < 0x20 || byte == 0x7F;
}

/// A user name becomes part of a log's name, so it must be able to. With a colon the name of a
/// service could be read in two ways.
bool isUserName(const std::string& user) {
  return isValidUtf8(user) && user.front() != '.' &&
         user.find_first_of("/:") == std::string::npos &&
         std::none_of(user.begin(), user.end(), isControl);
}

}  // namespace

std::string makeServiceName(std::string_view userId, std::uint32_t port,
                            std::string_view poolNameHash) {
  return fmt::format("{}:{}/{}", userId, port, poolNameHash);
}

std::optional<ServiceNameParts> parseServiceName(std::string_view name) {
  const auto slash = name.find('/');
  const auto at = name.find('@');
  const auto colon = name.rfind(':');
  const auto hostEnd = colon == std::string_view::npos ? slash : colon;
  if (slash == std::string_view::npos || at == std::string_view::npos) return std::nullopt;
  if (slash == 0 || at == 0 || hostEnd == 0) return std::nullopt;
  if (at > hostEnd || hostEnd > slash) return std::nullopt;

  ServiceNameParts parts;
  parts.user = name.substr(0, at);
  parts.hostName = name.substr(at + 1, hostEnd - at - 1);
  parts.poolName = name.substr(slash + 1);
  if (colon != std::string_view::npos) {
    const std::string_view digits = name.substr(colon + 1, slash - colon - 1);
    std::uint32_t port = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), port);
    if (error == std::errc() && end == digits.data() + digits.size()) parts.port = port;
  }
  return parts;
}

std::optional<std::string> announcementProblem(const std::string& name, const TxtRecord& record) {
  const auto parts = parseServiceName(name);
  if (!parts) return "The service name is malformed.";
  if (!isUserName(parts->user)) return "The user name cannot be part of a log's name.";
  if (!isLocalHostName(parts->hostName)) return "The host is not on the local network.";
  if (parts->port < LowestPort || parts->port > HighestPort) {
    return fmt::format("The port is not between {} and {}.", LowestPort, HighestPort);
  }
  const std::string folder = fullServiceName(record);
  if (auto problem = poolNameProblem(folder)) return problem;
  if (parts->poolName != hexHash(folder)) return "Service name and folder name do not match.";
  if (decodedUnsignedIntValue(record, txt::Version) == 0) return "There is no protocol version.";
  const auto digest = record.find(txt::LogDigest);
  if (digest != record.end() && digest->second.size() != DigestSize) {
    return "The log digest has a wrong size.";
  }
  return std::nullopt;
}

}  // namespace zolvar
