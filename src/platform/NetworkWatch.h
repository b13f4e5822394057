#pragma once

#include <functional>

namespace zolvar {

/// Tells when the list of this machine's IPv4 addresses changes. Main thread.
class NetworkWatch {
 public:
  virtual ~NetworkWatch() = default;
  /// Replaces the callback; an empty one ends the watching.
  virtual void observe(std::function<void()> changed) = 0;
};

}  // namespace zolvar
