#include "platform/qt/UfwRules.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <fstream>
#include <sstream>
#include <vector>

namespace zolvar {

namespace {

constexpr std::string_view TupleMark = "### tuple ###";

std::optional<std::string> contentOf(const std::string& path) {
  std::ifstream file(path);
  if (!file) return std::nullopt;
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

std::vector<std::string> words(std::string_view line) {
  std::istringstream stream{std::string(line)};
  std::vector<std::string> result;
  for (std::string word; stream >> word;) result.push_back(word);
  return result;
}

template <class Visit>
void eachLine(std::string_view text, const Visit& visit) {
  for (std::size_t start = 0; start < text.size();) {
    const auto end = std::min(text.find('\n', start), text.size());
    visit(text.substr(start, end - start));
    start = end + 1;
  }
}

/// The value of KEY=value or KEY="value" in lower case; the last one counts, as in a shell.
std::string valueOf(std::string_view text, std::string_view key) {
  std::string found;
  eachLine(text, [&](std::string_view line) {
    line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
    if (!line.starts_with(key) || line.substr(key.size(), 1) != "=") return;
    found.clear();
    for (const char character : line.substr(key.size() + 1)) {
      if (character == '#') break;
      if (std::isalpha(static_cast<unsigned char>(character)) == 0) continue;
      found += static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
    }
  });
  return found;
}

std::optional<unsigned> number(std::string_view text) {
  unsigned value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

/// "any", "22", "80,443", "6000:6007" and mixtures.
bool holdsPort(std::string_view ports, unsigned port) {
  if (ports == "any") return true;
  for (std::size_t start = 0; start <= ports.size();) {
    const auto end = std::min(ports.find(',', start), ports.size());
    const std::string_view item = ports.substr(start, end - start);
    const auto colon = item.find(':');
    const auto first = number(item.substr(0, colon));
    const auto last = colon == item.npos ? first : number(item.substr(colon + 1));
    if (first && last && *first <= port && port <= *last) return true;
    start = end + 1;
  }
  return false;
}

/// What one rule says about the port; none when it is about something else. The fields: action,
/// protocol, port, destination, sender's port, sender, ..., direction.
std::optional<FirewallAnswer> ruleAnswer(std::string_view line, unsigned port) {
  if (!line.starts_with(TupleMark)) return std::nullopt;
  const auto fields = words(line.substr(TupleMark.size()));
  if (fields.size() < 6) return std::nullopt;
  const bool isIncoming = std::none_of(fields.begin() + 6, fields.end(), [](const auto& field) {
    return field == "out" || field.starts_with("out_");
  });
  if (!isIncoming || fields[0].starts_with("route:") ||
      (fields[1] != "tcp" && fields[1] != "any") || !holdsPort(fields[2], port) ||
      fields[4] != "any") {
    return std::nullopt;
  }
  const std::string action = fields[0].substr(0, fields[0].find('_'));  // "allow_log-all"
  if (action == "allow" || action == "limit") return FirewallAnswer::Open;
  const bool isForAll = fields[3] == "0.0.0.0/0" && fields[5] == "0.0.0.0/0";
  if (isForAll) return FirewallAnswer::Blocked;
  return std::nullopt;
}

}  // namespace

UfwFiles UfwFiles::read(const std::string& folder) {
  return {contentOf(folder + "/ufw/ufw.conf"), contentOf(folder + "/default/ufw"),
          contentOf(folder + "/ufw/user.rules")};
}

std::optional<FirewallAnswer> ufwAnswer(const UfwFiles& files, unsigned tcpPort) {
  if (!files.configuration || valueOf(*files.configuration, "ENABLED") != "yes") {
    return std::nullopt;
  }
  if (!files.rules || !files.defaults) return FirewallAnswer::CannotTell;
  std::optional<FirewallAnswer> answer;
  eachLine(*files.rules, [&](std::string_view line) {
    if (!answer) answer = ruleAnswer(line, tcpPort);
  });
  if (answer) return answer;
  const std::string policy = valueOf(*files.defaults, "DEFAULT_INPUT_POLICY");
  if (policy == "accept") return FirewallAnswer::Open;
  return policy == "drop" || policy == "reject" ? FirewallAnswer::Blocked
                                                : FirewallAnswer::CannotTell;
}

}  // namespace zolvar
