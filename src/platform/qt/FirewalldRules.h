#pragma once

#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/Firewall.h"

namespace zolvar {

/// One zone of firewalld, as much of it as concerns new connections to ports.
struct FirewalldZone {
  std::string target;  ///< "default", "ACCEPT", "DROP" or "%%REJECT%%"
  /// Ranges ("49999" or "49999-50003", the last one included) with their protocols; the ports of
  /// the zone's services among them.
  std::vector<std::pair<std::string, std::string>> ports;
  bool hasRichRules = false;  ///< rules that we do not read
};

/// What the zone does with new connections to a TCP port.
FirewallAnswer firewalldAnswer(const FirewalldZone& zone, unsigned tcpPort);

/// What holds when each of several zones has answered: blocked on one network is blocked.
FirewallAnswer joinedAnswer(FirewallAnswer one, FirewallAnswer other);

/// Whether an interface of this name leads to other programs on this computer or into a tunnel
/// rather than to the local network.
bool isVirtualInterface(std::string_view name);

/// The interfaces by which the local network reaches this computer: up, with an IPv4 address, and
/// neither loop-back, point-to-point nor virtual.
std::set<std::string> localNetworkInterfaces();

}  // namespace zolvar
