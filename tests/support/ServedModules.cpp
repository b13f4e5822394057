#include "support/ServedModules.h"

#include <algorithm>
#include <set>
#include <sstream>
#include <stdexcept>

namespace zolvar {
namespace {

std::string folded(const std::string& text) {
  std::string result;
  for (const char character : text) {
    if (character == ' ' || character == '\t') continue;
    result += static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
  }
  return result;
}

std::string trimmed(const std::string& text) {
  const auto first = text.find_first_not_of(" \t");
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

const std::set<std::string> KnownParameters = {"usechroot",
                                               "pidfile",
                                               "logfile",
                                               "lockfile",
                                               "transferlogging",
                                               "path",
                                               "maxconnections",
                                               "readonly",
                                               "comment",
                                               "authusers",
                                               "secretsfile",
                                               "uid",
                                               "gid"};

}  // namespace

ServedModules ServedModules::parse(const std::string& text) {
  ServedModules result;
  Parameters* current = &result.global;
  std::istringstream lines(text);
  for (std::string raw; std::getline(lines, raw);) {
    const std::string line = trimmed(raw);
    if (line.empty() || line.front() == '#' || line.front() == ';') continue;
    if (line.front() == '[') {
      if (line.back() != ']')
        throw std::logic_error("Unclosed section in the configuration: " + line);
      const std::string name = trimmed(line.substr(1, line.size() - 2));
      if (folded(name) == "global") {
        current = &result.global;
        continue;
      }
      const auto known =
          std::find_if(result.sections.begin(), result.sections.end(),
                       [&](const auto& section) { return folded(section.first) == folded(name); });
      if (known != result.sections.end()) {
        current = &known->second;
      } else {
        current = &result.sections.emplace_back(name, Parameters{}).second;
      }
      continue;
    }
    const auto equals = line.find('=');
    const std::string name = folded(line.substr(0, equals));
    if (equals == std::string::npos || !KnownParameters.contains(name)) {
      throw std::logic_error("The daemon does not know this configuration line: " + line);
    }
    (*current)[name] = trimmed(line.substr(equals + 1));
  }
  return result;
}

const ServedModules::Parameters* ServedModules::find(const std::string& name) const {
  for (const auto& [section, parameters] : sections) {
    if (section == name) return &parameters;
  }
  return nullptr;
}

bool secretsAccept(const std::string& secrets, const std::string& user,
                   const std::string& password) {
  std::istringstream lines(secrets);
  for (std::string line; std::getline(lines, line);) {
    if (!line.starts_with('#') && line == user + ":" + password) return true;
  }
  return false;
}

}  // namespace zolvar
