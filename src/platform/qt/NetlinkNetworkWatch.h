#pragma once

#include <set>
#include <string>

#include "platform/Log.h"
#include "platform/NetworkWatch.h"
#include "platform/RunLoop.h"

namespace zolvar {

/// Hears of IPv4 addresses from the kernel's routing socket, waits 0.2 s for the rest of the burst
/// and reports when the set of addresses is another one than before. Main thread. Where the socket
/// cannot be had it says so in the log and reports nothing.
class NetlinkNetworkWatch final : public NetworkWatch {
 public:
  NetlinkNetworkWatch(RunLoop& runLoop, Log& log);
  ~NetlinkNetworkWatch() override;
  NetlinkNetworkWatch(const NetlinkNetworkWatch&) = delete;
  NetlinkNetworkWatch& operator=(const NetlinkNetworkWatch&) = delete;

  void observe(std::function<void()> changed) override;

 private:
  void start();
  void stop();
  void readable();
  void compare();

  RunLoop& runLoop_;
  Log& log_;
  std::function<void()> changed_;
  int socket_ = -1;
  RunLoop::Id watch_ = 0;
  RunLoop::Id timer_ = 0;
  std::set<std::string> addresses_;  ///< "interface address"
};

}  // namespace zolvar
