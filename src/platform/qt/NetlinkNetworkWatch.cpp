#include "platform/qt/NetlinkNetworkWatch.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <optional>
#include <system_error>
#include <utility>

namespace zolvar {

namespace {

constexpr double BurstTime = 0.2;  // seconds

/// None when the system does not tell, which is no change.
std::optional<std::set<std::string>> currentAddresses() {
  ifaddrs* list = nullptr;
  if (getifaddrs(&list) != 0) return std::nullopt;
  std::set<std::string> addresses;
  for (const ifaddrs* item = list; item != nullptr; item = item->ifa_next) {
    if (item->ifa_addr == nullptr || item->ifa_addr->sa_family != AF_INET) continue;
    std::array<char, INET_ADDRSTRLEN> text{};
    inet_ntop(AF_INET, &reinterpret_cast<const sockaddr_in*>(item->ifa_addr)->sin_addr, text.data(),
              text.size());
    addresses.insert(std::string(item->ifa_name) + " " + text.data());
  }
  freeifaddrs(list);
  return addresses;
}

}  // namespace

NetlinkNetworkWatch::NetlinkNetworkWatch(RunLoop& runLoop, Log& log)
    : runLoop_(runLoop), log_(log) {}

NetlinkNetworkWatch::~NetlinkNetworkWatch() { stop(); }

void NetlinkNetworkWatch::observe(std::function<void()> changed) {
  changed_ = std::move(changed);
  if (!changed_) {
    stop();
  } else if (socket_ < 0) {
    start();
  }
}

void NetlinkNetworkWatch::start() {
  socket_ = ::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_ROUTE);
  sockaddr_nl address{};
  address.nl_family = AF_NETLINK;
  address.nl_groups = RTMGRP_IPV4_IFADDR;
  if (socket_ < 0 ||
      ::bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    log_.warning("Changes of this computer's addresses go unnoticed: {}",
                 std::generic_category().message(errno));
    stop();
    return;
  }
  addresses_ = currentAddresses().value_or(std::set<std::string>());
  watch_ = runLoop_.watch(socket_, RunLoop::Events::Readable, [this] { readable(); });
}

void NetlinkNetworkWatch::stop() {
  if (watch_ != 0) runLoop_.cancel(std::exchange(watch_, 0));
  if (timer_ != 0) runLoop_.cancel(std::exchange(timer_, 0));
  if (socket_ >= 0) ::close(std::exchange(socket_, -1));
}

/// The messages only say that something happened: addresses are also renewed without changing, and
/// messages get lost when many come at once.
void NetlinkNetworkWatch::readable() {
  std::array<char, 8192> buffer{};
  while (::recv(socket_, buffer.data(), buffer.size(), 0) > 0 || errno == ENOBUFS ||
         errno == EINTR) {
  }
  if (timer_ != 0) return;
  timer_ = runLoop_.after(BurstTime, [this] {
    timer_ = 0;
    compare();
  });
}

void NetlinkNetworkWatch::compare() {
  auto addresses = currentAddresses();
  if (!addresses || *addresses == addresses_) return;
  addresses_ = std::move(*addresses);
  log_.debug("This computer's addresses have changed.");
  const auto changed = changed_;  // may replace itself
  if (changed) changed();
}

}  // namespace zolvar
