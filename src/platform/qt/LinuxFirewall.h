#pragma once

#include <cstdint>
#include <map>
#include <memory>

#include "platform/Firewall.h"
#include "platform/RunLoop.h"

namespace zolvar {

class FirewalldQuery;

/// The firewalls that Linux desktops and servers are set up with: firewalld, asked over the system
/// bus, and ufw, read from its files. Rules made by other means are not for ordinary users to read,
/// so without either of the two the answer is CannotTell. Main thread.
class LinuxFirewall final : public Firewall {
 public:
  explicit LinuxFirewall(RunLoop& runLoop);
  ~LinuxFirewall() override;

  void ask(unsigned tcpPort, std::function<void(FirewallAnswer)> answer) override;

 private:
  RunLoop& runLoop_;
  std::uint64_t lastQuery_ = 0;
  std::map<std::uint64_t, std::unique_ptr<FirewalldQuery>> queries_;
  std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);  ///< tasks hold it weakly
};

}  // namespace zolvar
