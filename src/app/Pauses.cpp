#include "app/Pauses.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <limits>
#include <map>
#include <vector>

#include "platform/Clock.h"
#include "platform/Platform.h"
#include "platform/UserDefaults.h"

namespace zolvar {
namespace {

constexpr const char* AllKey = "PausedUntil";
constexpr const char* FoldersKey = "pausedFolders";
constexpr double LongestPause = 366.0 * 24 * 60 * 60;  // seconds
/// Seconds; looked at anew after it. A timer stands still while the computer sleeps.
constexpr double LongestTimer = 60;

/// The stored end of a pause; damage counts as until resumed.
double endOf(const std::string& text) {
  std::int64_t seconds = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
  return error == std::errc() && end == text.data() + text.size() && seconds > 0
             ? static_cast<double>(seconds)
             : 0;
}

}  // namespace

Pauses::Pauses(Platform& platform, std::function<void(const std::string&)> changed)
    : platform_(platform), changed_(std::move(changed)) {
  schedule();
}

Pauses::~Pauses() { platform_.runLoop.cancel(timer_); }

void Pauses::pause(const std::string& poolName, std::optional<double> seconds) {
  std::string until = "0";
  if (seconds) {
    const double end = platform_.clock.now() + std::min(*seconds, LongestPause);
    until = std::to_string(static_cast<std::int64_t>(end) + 1);
  }
  if (poolName.empty()) {
    platform_.defaults.setString(AllKey, until);
  } else {
    auto folders = platform_.defaults.dictionary(FoldersKey);
    folders[poolName] = until;
    platform_.defaults.setDictionary(FoldersKey, folders);
  }
  schedule();
  changed_(poolName);
}

void Pauses::resume(const std::string& poolName) {
  if (poolName.empty()) {
    platform_.defaults.remove(AllKey);
    platform_.defaults.remove(FoldersKey);
  } else {
    auto folders = platform_.defaults.dictionary(FoldersKey);
    if (folders.erase(poolName) == 0) return;
    if (folders.empty()) {
      platform_.defaults.remove(FoldersKey);
    } else {
      platform_.defaults.setDictionary(FoldersKey, folders);
    }
  }
  schedule();
  changed_(poolName);
}

bool Pauses::isEverythingPaused() const { return own("").has_value(); }

bool Pauses::isPaused(const std::string& poolName) const {
  return isEverythingPaused() || own(poolName).has_value();
}

std::optional<double> Pauses::own(const std::string& poolName) const {
  std::optional<double> end;
  if (poolName.empty()) {
    if (const auto text = platform_.defaults.string(AllKey)) end = endOf(*text);
  } else {
    const auto folders = platform_.defaults.dictionary(FoldersKey);
    if (const auto found = folders.find(poolName); found != folders.end()) {
      end = endOf(found->second);
    }
  }
  if (end && *end > 0 && *end <= platform_.clock.now()) return std::nullopt;  // over
  return end;
}

std::optional<double> Pauses::pausedUntil(const std::string& poolName) const {
  const auto all = own("");
  const auto single = poolName.empty() ? std::nullopt : own(poolName);
  if (!all || !single) return all ? all : single;
  return *all == 0 || *single == 0 ? 0 : std::max(*all, *single);
}

void Pauses::schedule() {
  platform_.runLoop.cancel(timer_);
  timer_ = 0;
  double next = std::numeric_limits<double>::infinity();
  const auto consider = [&](const std::string& text) {
    if (const double end = endOf(text); end > 0) next = std::min(next, end);
  };
  if (const auto text = platform_.defaults.string(AllKey)) consider(*text);
  for (const auto& [name, text] : platform_.defaults.dictionary(FoldersKey)) consider(text);
  if (next == std::numeric_limits<double>::infinity()) return;
  const double wait = std::clamp(next - platform_.clock.now(), 0.0, LongestTimer);
  timer_ = platform_.runLoop.after(wait, [this] { endExpired(); });
}

void Pauses::endExpired() {
  timer_ = 0;
  const double now = platform_.clock.now();
  const auto isOver = [now](const std::string& text) {
    const double end = endOf(text);
    return end > 0 && end <= now;
  };
  std::vector<std::string> ended;
  if (const auto text = platform_.defaults.string(AllKey); text && isOver(*text)) {
    platform_.defaults.remove(AllKey);
    ended.emplace_back();
  }
  auto folders = platform_.defaults.dictionary(FoldersKey);
  for (const auto& [name, text] : folders) {
    if (isOver(text)) ended.push_back(name);
  }
  const auto before = folders.size();
  std::erase_if(folders, [&](const auto& folder) { return isOver(folder.second); });
  if (folders.empty()) {
    platform_.defaults.remove(FoldersKey);
  } else if (folders.size() != before) {
    platform_.defaults.setDictionary(FoldersKey, folders);
  }
  schedule();
  for (const auto& name : ended) changed_(name);
}

std::optional<double> Pauses::parseDuration(const std::string& text) {
  const std::map<char, double> units = {{'s', 1}, {'m', 60}, {'h', 3600}, {'d', 86400}};
  double total = 0;
  const char* at = text.data();
  const char* const end = at + text.size();
  while (at != end) {
    unsigned number = 0;
    const auto [rest, error] = std::from_chars(at, end, number);
    if (error != std::errc()) return std::nullopt;
    const auto unit = units.find(rest == end ? 's' : *rest);
    if (unit == units.end()) return std::nullopt;
    total += number * unit->second;
    at = rest == end ? end : rest + 1;
  }
  return total > 0 ? std::optional(total) : std::nullopt;
}

}  // namespace zolvar
