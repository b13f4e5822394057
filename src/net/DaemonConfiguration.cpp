#include "net/DaemonConfiguration.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>

#include "util/PathRules.h"

namespace zolvar {

namespace {

constexpr const char* PasswordFileHead =
    "#This file is generated automatically. Do not change its content.\n";

bool isBlank(char character) { return std::isspace(static_cast<unsigned char>(character)) != 0; }

/// `text` in lower case without blanks: how the daemon compares names.
std::string folded(std::string_view text) {
  std::string result;
  for (const char character : text) {
    if (!isBlank(character)) {
      result += static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
    }
  }
  return result;
}

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
  return text;
}

tl::unexpected<Failure> damaged(const std::string& line, const std::string& reason) {
  return fail(FailureKind::Damaged, "read the daemon configuration line", line, reason);
}

/// The text's lines, those that end in a backslash joined with their successors.
std::vector<std::string> logicalLines(std::string_view text) {
  std::vector<std::string> lines;
  std::string line;
  while (!text.empty()) {
    const auto end = text.find('\n');
    std::string_view piece = text.substr(0, end);
    text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
    const bool isComment =
        line.empty() && (trimmed(piece).starts_with('#') || trimmed(piece).starts_with(';'));
    if (isComment) continue;
    const bool continues = !piece.empty() && piece.back() == '\\';
    if (continues) piece.remove_suffix(1);
    line += piece;
    if (continues && !text.empty()) continue;
    lines.push_back(line);
    line.clear();
  }
  return lines;
}

/// What verify expects the daemon to understand.
std::vector<ParsedSection> meantSections(const DaemonConfiguration& meant) {
  std::vector<ParsedSection> sections;
  sections.push_back({"",
                      {{"usechroot", "no"},
                       {"pidfile", meant.pidFile},
                       {"logfile", meant.logFile},
                       {"lockfile", meant.lockFile},
                       {"transferlogging", "yes"}}});
  for (const DaemonModule& module : meant.modules) {
    ParsedSection section{module.name,
                          {{"path", module.folderPath + "/"},
                           {"maxconnections", "2"},
                           {"readonly", "yes"},
                           {"comment", "Zolvar Synced Folder " + module.name}}};
    if (meant.owner) {
      section.parameters["uid"] = std::to_string(meant.owner->uid);
      section.parameters["gid"] = std::to_string(meant.owner->gid);
    }
    if (module.hasPassword) {
      section.parameters["authusers"] = module.nameHash;
      section.parameters["secretsfile"] = meant.passwordFile;
    }
    sections.push_back(std::move(section));
  }
  return sections;
}

}  // namespace

std::optional<DaemonOwner> currentDaemonOwner() {
  if (::geteuid() != 0) return std::nullopt;
  return DaemonOwner{::geteuid(), ::getegid()};
}

std::string configFileContent(const DaemonConfiguration& configuration) {
  std::string sections;
  for (const DaemonModule& module : configuration.modules) {
    sections += fmt::format(
        "[{}]\npath = {}/\nmax connections = 2\nread only = yes\n"
        "comment = Zolvar Synced Folder {}\n",
        module.name, module.folderPath, module.name);
    if (configuration.owner) {
      sections +=
          fmt::format("uid = {}\ngid = {}\n", configuration.owner->uid, configuration.owner->gid);
    }
    if (module.hasPassword) {
      sections += fmt::format("auth users = {}\nsecrets file = {}\n", module.nameHash,
                              configuration.passwordFile);
    }
  }
  return fmt::format(
      "use chroot = no\n#syslog facility = local5\npid file = {}\nlog file = {}\nlock file = {}\n"
      "transfer logging = yes\n\n{}",
      configuration.pidFile, configuration.logFile, configuration.lockFile, sections);
}

std::string passwordFileContent(
    const std::vector<std::pair<std::string, std::string>>& passwordsByNameHash) {
  std::string content = PasswordFileHead;
  for (const auto& [nameHash, password] : passwordsByNameHash) {
    content += fmt::format("{}:{}\n", nameHash, password);
  }
  return content;
}

bool isSameModule(std::string_view left, std::string_view right) {
  return folded(left) == folded(right);
}

Result<std::vector<ParsedSection>> parseDaemonConfiguration(std::string_view text) {
  std::vector<ParsedSection> sections{{"", {}}};
  std::size_t current = 0;
  for (const std::string& whole : logicalLines(text)) {
    const std::string_view line = trimmed(whole);
    if (line.empty() || line.front() == '#' || line.front() == ';') continue;
    if (line.front() == '&') return damaged(whole, "an include");
    if (line.find('\0') != std::string_view::npos) return damaged(whole, "a NUL");
    if (line.find('%') != std::string_view::npos) return damaged(whole, "a variable");
    if (line.front() == '[') {
      const auto end = line.find(']');
      if (end != line.size() - 1) return damaged(whole, "an unclosed section");
      const std::string_view name = trimmed(line.substr(1, end - 1));
      if (name.empty()) return damaged(whole, "an empty section name");
      if (isSameModule(name, "global")) {
        current = 0;
        continue;
      }
      const auto known = std::find_if(
          sections.begin() + 1, sections.end(),
          [name](const ParsedSection& section) { return isSameModule(section.name, name); });
      current = static_cast<std::size_t>(known - sections.begin());
      if (known == sections.end()) sections.push_back({std::string(name), {}});
      continue;
    }
    const auto equals = line.find('=');
    if (equals == std::string_view::npos) return damaged(whole, "no \"=\"");
    const std::string name = folded(line.substr(0, equals));
    const std::string value(trimmed(line.substr(equals + 1)));
    if (!sections[current].parameters.emplace(name, value).second) {
      return damaged(whole, "given twice");
    }
  }
  return sections;
}

Result<> verifyDaemonConfiguration(std::string_view text, const DaemonConfiguration& meant) {
  const auto refused = [](const std::string& section, const std::string& reason) {
    return fail(FailureKind::Refused, "use the daemon configuration for", section, reason);
  };
  const auto read = parseDaemonConfiguration(text);
  if (!read) return refused("", read.error().message());
  const std::vector<ParsedSection> expected = meantSections(meant);
  for (std::size_t i = 0; i < std::max(read->size(), expected.size()); ++i) {
    if (i >= read->size()) return refused(expected[i].name, "the section is missing");
    const ParsedSection& section = (*read)[i];
    if (i >= expected.size()) return refused(section.name, "the section was not meant");
    if (section.name != expected[i].name) return refused(section.name, "the name reads otherwise");
    if (section.parameters != expected[i].parameters) {
      return refused(section.name, "a line reads otherwise");
    }
  }
  return {};
}

}  // namespace zolvar
