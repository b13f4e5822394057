#pragma once

#include <functional>

namespace zolvar {

enum class FirewallAnswer {
  Open,        ///< connections from the local network get through
  Blocked,     ///< they do not
  CannotTell,  ///< there is no firewall that tells us
};

/// What this computer's firewall does with connections to our ports. Main thread.
class Firewall {
 public:
  virtual ~Firewall() = default;
  /// `answer` is called once on a later turn of the run loop; not at all when this object goes
  /// first.
  virtual void ask(unsigned tcpPort, std::function<void(FirewallAnswer)> answer) = 0;
};

}  // namespace zolvar
