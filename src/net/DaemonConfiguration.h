#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "util/Failure.h"

namespace zolvar {

/// One folder that the transfer daemon serves.
struct DaemonModule {
  std::string name;
  std::string folderPath;
  std::string nameHash;  ///< the daemon's user name for it
  bool hasPassword = false;
};

/// Who serves, when the daemon runs as root (it would serve as nobody otherwise).
struct DaemonOwner {
  unsigned uid = 0;
  unsigned gid = 0;
};
/// Our own numbers when running as root, none otherwise.
[[nodiscard]] std::optional<DaemonOwner> currentDaemonOwner();

/// What the transfer daemon is told. A value; the functions below are pure. The file's grammar is
/// in docs/file-formats.md.
struct DaemonConfiguration {
  std::string pidFile;
  std::string logFile;
  std::string lockFile;
  std::string passwordFile;
  std::optional<DaemonOwner> owner;
  std::vector<DaemonModule> modules;  ///< sorted by name
};

/// The configuration file.
[[nodiscard]] std::string configFileContent(const DaemonConfiguration& configuration);

/// The password file: one line a pool with a password, (name hash, password).
[[nodiscard]] std::string passwordFileContent(
    const std::vector<std::pair<std::string, std::string>>& passwordsByNameHash);

/// Two module names that the daemon takes for one: it compares them without case and blanks, and
/// the later section's path would be served under the earlier one's name.
[[nodiscard]] bool isSameModule(std::string_view left, std::string_view right);

/// A part of a configuration as the daemon reads it: the section's name as first written ("" for
/// the global part), parameter names in lower case without blanks, values trimmed.
struct ParsedSection {
  std::string name;
  std::map<std::string, std::string> parameters;
};
/// Follows the daemon's rules: comments, continuation with a backslash, sections that repeat join,
/// "[global]" goes back to the global part, which always comes first. Fails: Damaged (a line
/// without "=", an unclosed section, an include, a "%VAR%", a value given twice).
Result<std::vector<ParsedSection>> parseDaemonConfiguration(std::string_view text);

/// Reads `text` back and compares it with what was meant. Fails: Refused, naming the first
/// difference.
Result<> verifyDaemonConfiguration(std::string_view text, const DaemonConfiguration& meant);

}  // namespace zolvar
