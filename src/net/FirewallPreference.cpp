#include "net/FirewallPreference.h"

#include <algorithm>
#include <cstdint>
#include <string>

#include "platform/FileSystem.h"
#include "util/PropertyList.h"

namespace zolvar {
namespace {

constexpr const char* PreferenceFolder = "/Library/Preferences";
constexpr const char* PreferenceFile = "com.apple.sharing.firewall.plist";
constexpr std::size_t LargestPreference = 1U << 20;

/// Blanks in front are passed over, what follows the digits is ignored, and no digits are 0.
std::uint64_t leadingNumber(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
  std::uint64_t value = 0;
  for (const char digit : text) {
    if (digit < '0' || digit > '9' || value > UINT32_MAX) break;
    value = value * 10 + static_cast<std::uint64_t>(digit - '0');
  }
  return value;
}

bool itemContains(std::string_view item, unsigned index) {
  const auto dash = item.find('-');
  if (dash == item.npos) return leadingNumber(item) == index;
  const std::uint64_t one = leadingNumber(item.substr(0, dash));
  const std::uint64_t other = leadingNumber(item.substr(dash + 1));
  const auto [start, end] = std::minmax(one, other);
  // The length is the difference, so the greater number is no member. Existing preferences are
  // written for that reading.
  return start <= index && index < end;
}

}  // namespace

bool indexSetContains(std::string_view text, unsigned index) {
  while (true) {
    const auto comma = text.find(',');
    if (itemContains(text.substr(0, comma), index)) return true;
    if (comma == text.npos) return false;
    text.remove_prefix(comma + 1);
  }
}

bool doesFirewallPreferenceBlock(std::string_view propertyList, unsigned tcpPort) {
  const auto preference = dictionaryFromPropertyList(propertyList, {LargestPreference, 16});
  if (!preference) return false;
  const auto state = preference->flags.find("state");
  if (state == preference->flags.end() || !state->second) return false;
  const auto ports = preference->lists.find("allports");
  if (ports == preference->lists.end()) return true;
  return std::none_of(ports->second.begin(), ports->second.end(),
                      [&](const auto& entry) { return indexSetContains(entry, tcpPort); });
}

bool isFirewallBlockingTCPPort(FileSystem& files, unsigned tcpPort) {
  if (!files.isFolder(PreferenceFolder)) return false;
  const auto folder = files.open(PreferenceFolder);
  const auto bytes = folder ? (*folder)->read(PreferenceFile, 0, LargestPreference)
                            : tl::unexpected(folder.error());
  return bytes && doesFirewallPreferenceBlock(*bytes, tcpPort);
}

}  // namespace zolvar
