#include "platform/qt/FirewalldRules.h"

#include <ifaddrs.h>
#include <net/if.h>
#include <sys/socket.h>

#include <algorithm>
#include <charconv>
#include <optional>

namespace zolvar {

namespace {

constexpr std::string_view VirtualPrefixes[] = {"docker", "veth",  "virbr",  "vnet", "br-",
                                                "lxc",    "lxdbr", "podman", "cni",  "tun",
                                                "tap",    "wg",    "zt",     "ppp",  "tailscale"};

std::optional<unsigned> number(std::string_view text) {
  unsigned value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

bool holdsPort(std::string_view range, unsigned port) {
  const auto dash = range.find('-');
  const auto first = number(range.substr(0, dash));
  const auto last = dash == range.npos ? first : number(range.substr(dash + 1));
  return first && last && *first <= port && port <= *last;
}

}  // namespace

FirewallAnswer firewalldAnswer(const FirewalldZone& zone, unsigned tcpPort) {
  if (zone.target == "ACCEPT") return FirewallAnswer::Open;
  for (const auto& [range, protocol] : zone.ports) {
    if (protocol == "tcp" && holdsPort(range, tcpPort)) return FirewallAnswer::Open;
  }
  return zone.hasRichRules ? FirewallAnswer::CannotTell : FirewallAnswer::Blocked;
}

FirewallAnswer joinedAnswer(FirewallAnswer one, FirewallAnswer other) {
  for (const auto worst : {FirewallAnswer::Blocked, FirewallAnswer::CannotTell}) {
    if (one == worst || other == worst) return worst;
  }
  return FirewallAnswer::Open;
}

bool isVirtualInterface(std::string_view name) {
  return std::any_of(std::begin(VirtualPrefixes), std::end(VirtualPrefixes),
                     [name](std::string_view prefix) { return name.starts_with(prefix); });
}

std::set<std::string> localNetworkInterfaces() {
  std::set<std::string> names;
  ifaddrs* list = nullptr;
  if (getifaddrs(&list) != 0) return names;
  for (const ifaddrs* item = list; item != nullptr; item = item->ifa_next) {
    if (item->ifa_addr == nullptr || item->ifa_addr->sa_family != AF_INET) continue;
    const unsigned flags = item->ifa_flags;
    if ((flags & IFF_UP) == 0 || (flags & (IFF_LOOPBACK | IFF_POINTOPOINT)) != 0) continue;
    if (!isVirtualInterface(item->ifa_name)) names.insert(item->ifa_name);
  }
  freeifaddrs(list);
  return names;
}

}  // namespace zolvar
