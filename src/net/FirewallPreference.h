#pragma once

#include <string_view>

namespace zolvar {

class FileSystem;

/// Whether the index set written as `text` contains `index`: items separated by ",", each one
/// number or a range of two numbers with "-" between them. A range has as many members as the
/// numbers differ by, beginning with the smaller: "10-13" is 10, 11 and 12.
[[nodiscard]] bool indexSetContains(std::string_view text, unsigned index);

/// What a firewall preference (a property list: "state", "allports") says about a TCP port. Not
/// blocked when the firewall is off or the bytes cannot be read; switched on, it blocks each port
/// that no entry opens.
[[nodiscard]] bool doesFirewallPreferenceBlock(std::string_view propertyList, unsigned tcpPort);

/// The same for the preference file of this machine; systems without one are not blocked by it.
/// Reads a file: for lanes.
[[nodiscard]] bool isFirewallBlockingTCPPort(FileSystem& files, unsigned tcpPort);

}  // namespace zolvar
