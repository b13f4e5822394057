#include "app/PoolPlaces.h"

#include <charconv>
#include <string_view>

#include "platform/UserDefaults.h"
#include "util/PathRules.h"

namespace zolvar {
namespace {

constexpr const char* ActivePoolsKey = "activePools";
const std::string PathPrefix = "QMPool-";
const std::string IdentityPrefix = "QMPoolIdentity-";

std::optional<std::uint64_t> parseNumber(std::string_view text) {
  std::uint64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (text.empty() || error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

}  // namespace

PoolPlaces::PoolPlaces(UserDefaults& defaults, FileSystem& fileSystem,
                       std::string syncFolderDirectory)
    : defaults_(defaults),
      fileSystem_(fileSystem),
      syncFolderDirectory_(std::move(syncFolderDirectory)) {}

std::string PoolPlaces::trackedPathForPoolName(const std::string& name) {
  if (auto stored = defaults_.string(PathPrefix + name); stored && !stored->empty()) return *stored;
  const std::string path = joinPath(syncFolderDirectory_, name);
  setPath(name, path);
  return path;
}

void PoolPlaces::setPath(const std::string& name, const std::string& path) {
  defaults_.setString(PathPrefix + name, path);
  if (const auto identity = fileSystem_.identity(path)) {
    defaults_.setString(IdentityPrefix + name, identityText(*identity));
  } else {
    defaults_.remove(IdentityPrefix + name);
  }
}

void PoolPlaces::forget(const std::string& name) {
  defaults_.remove(PathPrefix + name);
  defaults_.remove(IdentityPrefix + name);
  setSubscribed(name, false);
}

bool PoolPlaces::isStored(const std::string& name) const {
  return defaults_.string(PathPrefix + name).has_value();
}

bool PoolPlaces::isSubscribed(const std::string& name) const {
  return defaults_.dictionary(ActivePoolsKey).contains(name);
}

void PoolPlaces::setSubscribed(const std::string& name, bool subscribed) {
  auto active = defaults_.dictionary(ActivePoolsKey);
  const bool changed = subscribed ? active.emplace(name, name).second : active.erase(name) > 0;
  if (changed) defaults_.setDictionary(ActivePoolsKey, active);
}

std::vector<StoredPlace> PoolPlaces::storedPlaces() const {
  std::vector<StoredPlace> places;
  const auto active = defaults_.dictionary(ActivePoolsKey);
  for (const auto& key : defaults_.keys(PathPrefix)) {
    StoredPlace place;
    place.name = key.substr(PathPrefix.size());
    place.path = defaults_.string(key).value_or("");
    if (const auto text = defaults_.string(IdentityPrefix + place.name)) {
      place.identity = parseIdentity(*text);
    }
    place.isSubscribed = active.contains(place.name);
    if (!place.name.empty() && place.path.starts_with('/')) places.push_back(std::move(place));
  }
  return places;
}

std::string PoolPlaces::identityText(const FileIdentity& identity) {
  return std::to_string(identity.device) + ":" + std::to_string(identity.inode);
}

std::optional<FileIdentity> PoolPlaces::parseIdentity(const std::string& text) {
  const auto colon = text.find(':');
  if (colon == std::string::npos) return std::nullopt;
  const auto device = parseNumber(std::string_view(text).substr(0, colon));
  const auto inode = parseNumber(std::string_view(text).substr(colon + 1));
  if (!device || !inode) return std::nullopt;
  return FileIdentity{*device, *inode};
}

}  // namespace zolvar
