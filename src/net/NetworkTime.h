#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <tl/expected.hpp>

namespace zolvar {

/// An error of the system's own domain (errno).
struct NetworkTimeError {
  int code = 0;
  std::string message;
};

/// Asks a host for the time by the Time Protocol (RFC 868) over TCP: seconds since 1970-01-01
/// 00:00 UTC. None when the host's name cannot be resolved; an error when it cannot be connected
/// to. Blocks for as long as the network pleases, leaves its sockets open, and ends the process
/// with status 1 when the server sends less than an answer: it is run in a process of its own, by
/// answerTimeQuery. `service` is a port number.
tl::expected<std::optional<double>, NetworkTimeError> networkTimeFromServer(
    const std::string& server, const std::string& service = "37");

/// What such a process does: prints the time on standard output and returns 0, or returns 1, with
/// the error, if there is one, on standard error.
int answerTimeQuery(const std::string& server, const std::string& service = "37");

}  // namespace zolvar
