#pragma once

#include <stdexcept>
#include <string>

namespace zolvar {

/// A broken precondition: a programmer's error, never caused by a disk, a network or a peer.
class InconsistencyError : public std::logic_error {
 public:
  using std::logic_error::logic_error;
};

/// Throws InconsistencyError with "Invalid parameter not satisfying: CONDITION" unless `holds`.
inline void require(bool holds, const char* condition) {
  if (!holds)
    throw InconsistencyError(std::string("Invalid parameter not satisfying: ") + condition);
}

}  // namespace zolvar
