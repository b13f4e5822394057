#pragma once

#include <string>
#include <tl/expected.hpp>
#include <utility>

namespace zolvar {

/// What a caller does differently about a failure; retry is decided by kind, never by text.
enum class FailureKind {
  Absent,     ///< the thing is not there
  Damaged,    ///< it is there and cannot be understood
  Refused,    ///< permission, a rule of ours, or the other side said no
  Transient,  ///< may work later: host away, disk full, busy
  Cancelled,  ///< we gave it up ourselves
};

/// Why something that a disk, a network, a child process or a peer can spoil did not work.
/// Immutable by custom.
struct Failure {
  FailureKind kind = FailureKind::Transient;
  std::string attempt;  ///< what was tried, for example "write the log"
  std::string subject;  ///< on which path or peer
  std::string reason;   ///< the system's text

  /// One sentence a person can act on.
  [[nodiscard]] std::string message() const {
    return "Could not " + attempt + (subject.empty() ? "" : " '" + subject + "'") +
           (reason.empty() ? "." : ": " + reason + ".");
  }
};

template <class T = void>
using Result = tl::expected<T, Failure>;

inline tl::unexpected<Failure> fail(FailureKind kind, std::string attempt, std::string subject = {},
                                    std::string reason = {}) {
  return tl::unexpected<Failure>(
      Failure{kind, std::move(attempt), std::move(subject), std::move(reason)});
}

/// A failure told by an error number of the system (errno).
Failure failureFromErrno(int error, std::string attempt, std::string subject);

}  // namespace zolvar
