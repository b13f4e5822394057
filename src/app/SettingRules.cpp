#include "app/SettingRules.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cctype>
#include <string_view>
#include <vector>

namespace zolvar {
namespace {

constexpr std::string_view OwnKeys[] = {"QMPoolIdentity-",  "HasPassword-",
                                        "PausedUntil",      "pausedFolders",
                                        "AddressBookInUse", "KnownAddressBookFolder"};

constexpr std::string_view Switches[] = {
    "AutosyncingEnabled",          "NSShowNonLocalizedStrings",
    "ShowOnlyActivePools",         "StartAtLogin",
    "SuppressPoolDeletionWarning", "SuppressPoolDeactivationWarning",
    "SuppressSwitchBranchWarning"};
constexpr std::string_view SwitchPrefix = "DontUseGrowl-";  // a pool's name follows
constexpr std::string_view SwitchValues[] = {"0", "1", "false", "true", "no", "yes"};

struct Choice {
  std::string_view key;
  std::vector<std::string_view> values;
};

const std::vector<Choice>& choices() {
  static const std::vector<Choice> known = {
      {"AddressBook", {"auto", "eds", "folder"}},
      {"Pace", {"normal", "quick"}},
      {"HeadlessDeleteAnswer", {"ask", "reget", "delete"}},
  };
  return known;
}

constexpr std::string_view Numbers[] = {"BWLimitIn", "BWLimitOut", "VersionsDays",
                                        "VersionsMegabytes"};

/// Checked where they are used, if anywhere.
constexpr std::string_view Others[] = {"AddressBookFolder", "KnownVersion", "OwnCard", "Language",
                                       "activePools"};
constexpr std::string_view OtherPrefix = "QMPool-";

constexpr std::string_view Servers[] = {"TimeServer1", "TimeServer2"};
constexpr std::size_t LongestHostName = 253;

/// Whether the text can be a host's name or address. No option begins like one.
bool canBeHost(std::string_view text) {
  constexpr std::string_view Others = ".-_:";
  return text.size() <= LongestHostName && !text.starts_with('-') &&
         std::all_of(text.begin(), text.end(), [&](char character) {
           return std::isalnum(static_cast<unsigned char>(character)) != 0 ||
                  Others.find(character) != Others.npos;
         });
}

}  // namespace

std::optional<std::string> settingProblem(const std::string& key, const std::string& value) {
  const bool isPlain = !key.empty() && std::none_of(key.begin(), key.end(), [](char character) {
    return static_cast<unsigned char>(character) < 0x20 || character == '/';
  });
  if (!isPlain) return "A setting's name is not empty and has no '/' and no control character.";
  for (const auto own : OwnKeys) {
    if (key.starts_with(own)) return fmt::format("Zolvar keeps the setting '{}' itself.", key);
  }
  if (value.empty()) return std::nullopt;
  bool isChoice = false;
  for (const auto& choice : choices()) {
    if (key != choice.key) continue;
    isChoice = true;
    if (std::find(choice.values.begin(), choice.values.end(), value) != choice.values.end()) break;
    return fmt::format("The setting '{}' is one of: {}.", key, fmt::join(choice.values, ", "));
  }
  const auto isOneOf = [](const auto& values, const std::string& text) {
    return std::find(std::begin(values), std::end(values), text) != std::end(values);
  };
  const bool isSwitch = isOneOf(Switches, key) || key.starts_with(SwitchPrefix);
  if (isSwitch && !isOneOf(SwitchValues, value)) {
    return fmt::format("The setting '{}' is 'yes' or 'no'.", key);
  }
  if (std::find(std::begin(Numbers), std::end(Numbers), key) != std::end(Numbers)) {
    const bool isNumber = value.size() <= 9 && std::all_of(value.begin(), value.end(), [](char c) {
                            return c >= '0' && c <= '9';
                          });
    if (!isNumber) return fmt::format("The setting '{}' is a whole number.", key);
  }
  if (std::find(std::begin(Servers), std::end(Servers), key) != std::end(Servers) &&
      !canBeHost(value)) {
    return fmt::format("The setting '{}' is the name of a host, or none.", key);
  }
  // A misspelt one would look as if it were in force.
  const bool isKnown = isSwitch || isChoice || isOneOf(Numbers, key) || isOneOf(Servers, key) ||
                       isOneOf(Others, key) || key.starts_with(OtherPrefix);
  if (!isKnown) return fmt::format("There is no setting '{}'.", key);
  return std::nullopt;
}

}  // namespace zolvar
