#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/Firewall.h"

namespace zolvar {

/// What ufw keeps below /etc, as far as this user may read it.
struct UfwFiles {
  std::optional<std::string> configuration;  ///< ufw/ufw.conf
  std::optional<std::string> defaults;       ///< default/ufw
  std::optional<std::string> rules;          ///< ufw/user.rules; usually for root only

  static UfwFiles read(const std::string& folder = "/etc");
};

/// What ufw does with new connections to a TCP port: the first rule that fits decides, then the
/// policy. A rule for some senders only counts when it lets them in. None when ufw is not there or
/// is switched off.
std::optional<FirewallAnswer> ufwAnswer(const UfwFiles& files, unsigned tcpPort);

}  // namespace zolvar
