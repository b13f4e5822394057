#include "net/NetworkTime.h"

#include <fmt/format.h>
#include <netdb.h>
#include <sys/socket.h>
#include <sys/types.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <system_error>

namespace zolvar {
namespace {

constexpr double From1900To1970 = 2208988800.0;  // seconds
constexpr std::size_t AnswerSize = 4;            // bytes

struct AddressListDeleter {
  void operator()(addrinfo* list) const { freeaddrinfo(list); }
};

std::uint32_t readAnswer(int connection) {
  std::array<unsigned char, AnswerSize> bytes{};
  std::size_t count = 0;
  while (count < bytes.size()) {
    const ssize_t got = ::read(connection, bytes.data() + count, bytes.size() - count);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) {
      std::fputs("Could not read data\n", stderr);
      std::exit(1);
    }
    count += static_cast<std::size_t>(got);
  }
  std::uint32_t value = 0;
  for (const unsigned char byte : bytes) value = value << 8U | byte;
  return value;
}

}  // namespace

tl::expected<std::optional<double>, NetworkTimeError> networkTimeFromServer(
    const std::string& server, const std::string& service) {
  addrinfo hints{};
  hints.ai_family = AF_UNSPEC;
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_flags = AI_CANONNAME;
  addrinfo* found = nullptr;
  if (getaddrinfo(server.c_str(), service.c_str(), &hints, &found) != 0) return std::nullopt;
  const std::unique_ptr<addrinfo, AddressListDeleter> addresses(found);

  const char* failedCall = "";
  int error = 0;
  for (const addrinfo* address = found; address != nullptr; address = address->ai_next) {
    const int connection = ::socket(address->ai_family, address->ai_socktype, address->ai_protocol);
    if (connection < 0) {
      failedCall = "socket";
      error = errno;
      continue;
    }
    if (::connect(connection, address->ai_addr, address->ai_addrlen) == 0) {
      return readAnswer(connection) - From1900To1970;
    }
    failedCall = "connect";
    error = errno;
  }
  return tl::unexpected(NetworkTimeError{
      error, fmt::format("Error: {} failed during ntp connect to {}: {}", failedCall, server,
                         std::generic_category().message(error))});
}

int answerTimeQuery(const std::string& server, const std::string& service) {
  const auto time = networkTimeFromServer(server, service);
  if (!time) fmt::print(stderr, "{}\n", time.error().message);
  if (!time || !*time) return 1;
  fmt::print("{:.0f}\n", **time);
  return 0;
}

}  // namespace zolvar
