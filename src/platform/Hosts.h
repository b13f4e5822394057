#pragma once

#include <string>
#include <vector>

#include "util/Failure.h"

namespace zolvar {

/// Names of machines. Any thread; lookUp blocks (up to about 5 s) and is for lanes.
class Hosts {
 public:
  virtual ~Hosts() = default;
  /// This machine's names, best first: the name on the local network as the service daemon knows
  /// it, the canonical name of the host name, the host name.
  [[nodiscard]] virtual std::vector<std::string> names() const = 0;
  /// Login name of the current user.
  [[nodiscard]] virtual std::string userName() const = 0;
  /// The host's first address. Fails: Absent.
  virtual Result<std::string> lookUp(const std::string& host) = 0;
};

}  // namespace zolvar
