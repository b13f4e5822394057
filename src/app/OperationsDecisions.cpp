#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "app/Application.h"
#include "app/FolderRules.h"
#include "app/Operations.h"
#include "app/Outcomes.h"
#include "app/Pauses.h"
#include "app/PoolPlaces.h"
#include "app/SettingRules.h"
#include "net/KDParticipant.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "util/InconsistencyError.h"
#include "util/PathRules.h"

// What a person decides: versions, questions, pauses, settings.

namespace zolvar {
namespace {

constexpr std::string_view PlacePrefix = "QMPool-";
constexpr const char* ActivePools = "activePools";

/// The one version that `when` means.
Result<std::string> versionKept(const std::vector<StoredVersion>& versions, std::string when) {
  constexpr std::size_t ShortestTime = 10;  // a day
  std::vector<std::string> ids;
  const bool isTime = when.size() >= ShortestTime;
  if (when.size() > ShortestTime && when[ShortestTime] == ' ') when[ShortestTime] = 'T';
  for (const auto& version : versions) {
    if (version.id == when) return version.id;
    if (isTime && whenText(version.keptAt).starts_with(when)) ids.push_back(version.id);
  }
  if (ids.empty()) return refusal(fmt::format("No version was kept at '{}'.", when));
  if (ids.size() > 1) {
    return refusal(fmt::format("{} versions were kept at '{}'; give the id of one of them.",
                               ids.size(), when));
  }
  return ids.front();
}

}  // namespace

// Versions.

void Operations::onVersion(const std::string& name, const std::string& path, const std::string& id,
                           const Done& done,
                           const std::function<void(KDFilePool&, const VersionId&)>& act) {
  const auto pool = subscribed(name);
  if (!pool) return done(tl::unexpected(pool.error()));
  if (!isSafeRelativePath(path)) {
    return done(refusal(fmt::format("'{}' is no path of a file in '{}'.", path, name)));
  }
  const auto version = VersionId::parse(id);
  if (!version) return done(refusal(fmt::format("'{}' is no id of a version.", id)));
  act(**pool, *version);
}

void Operations::useVersion(const std::string& name, const std::string& path, const std::string& id,
                            Done done) {
  onVersion(name, path, id, done,
            [&](auto& pool, const auto& version) { pool.selectBranch(path, version, done); });
}

void Operations::dropVersion(const std::string& name, const std::string& path,
                             const std::string& id, Done done) {
  onVersion(name, path, id, done,
            [&](auto& pool, const auto& version) { pool.deleteBranch(path, version, done); });
}

void Operations::fetchVersion(const std::string& name, const std::string& path,
                              const std::string& id, const std::string& to, Done done) {
  if (!to.starts_with('/')) {
    return done(refusal("The path to fetch to must be a full one, beginning with '/'."));
  }
  onVersion(name, path, id, done, [&](auto& pool, const auto& version) {
    pool.fetchVersion(path, version, to, application_.peer().presence(name)->remoteAddresses(),
                      done);
  });
}

// Versions that fetches have replaced.

std::string whenText(std::int64_t seconds) {
  return fmt::format("{:%Y-%m-%dT%H:%M:%S}", fmt::localtime(static_cast<std::time_t>(seconds)));
}

void Operations::versions(const std::string& name, const std::string& path,
                          std::function<void(Result<std::vector<StoredVersion>>)> done) {
  const auto pool = subscribed(name);
  if (!pool) return done(tl::unexpected(pool.error()));
  if (!isSafeRelativePath(path)) {
    return done(refusal(fmt::format("'{}' is no path of a file in '{}'.", path, name)));
  }
  (*pool)->keptVersions(path, std::move(done));
}

void Operations::keep(const std::string& name, const std::string& path,
                      std::function<void(Result<std::string>)> done) {
  const auto pool = subscribed(name);
  if (!pool) return done(tl::unexpected(pool.error()));
  if (!isSafeRelativePath(path)) {
    return done(refusal(fmt::format("'{}' is no path of a file in '{}'.", path, name)));
  }
  (*pool)->keepVersion(path, std::move(done));
}

void Operations::restore(const std::string& name, const std::string& path, const std::string& when,
                         Done done) {
  versions(name, path,
           [this, alive = std::weak_ptr<bool>(alive_), name, path, when,
            done = std::move(done)](const auto& kept) mutable {
             if (alive.expired()) return;
             if (!kept) return done(tl::unexpected(kept.error()));
             const auto id = versionKept(*kept, when);
             if (!id) return done(tl::unexpected(id.error()));
             const auto pool = subscribed(name);
             if (!pool) return done(tl::unexpected(pool.error()));
             (*pool)->restoreVersion(path, *id, std::move(done));
           });
}

// Questions.

Result<> Operations::deleteQueuedFiles(const std::string& name, std::vector<std::string> paths) {
  const auto pool = subscribed(name);
  if (!pool) return tl::unexpected(pool.error());
  const auto missing = (*pool)->snapshot()->missing;
  if (missing->empty()) return refusal(fmt::format("No file is missing in '{}'.", name));
  if (paths.empty()) paths = *missing;
  if (!std::is_sorted(paths.begin(), paths.end())) std::sort(paths.begin(), paths.end());
  paths.erase(std::unique(paths.begin(), paths.end()), paths.end());
  // There may be a hundred thousand: the one that is wrong is looked for only when there is one.
  if (!std::includes(missing->begin(), missing->end(), paths.begin(), paths.end())) {
    const auto wrong = std::find_if(paths.begin(), paths.end(), [&](const std::string& path) {
      return !std::binary_search(missing->begin(), missing->end(), path);
    });
    return refusal(fmt::format("'{}' is not missing in '{}'.", *wrong, name));
  }
  application_.outcomes().askToDeleteQueuedFiles(**pool, std::move(paths));
  return {};
}

void Operations::answer(const std::string& name, bool deletes, Done done) {
  const auto pool = subscribed(name);
  if (!pool) return done(tl::unexpected(pool.error()));
  application_.outcomes().answer(**pool, deletes ? SecondButton : FirstButton, std::move(done));
}

Result<> Operations::ignore(const std::string& name, const std::string& userId, bool ignored) {
  const auto presence = known(name);
  if (!presence) return tl::unexpected(presence.error());
  bool isFound = false;
  for (const auto& participant : (*presence)->participants()) {
    if (participant->userId() != userId || participant->isLocalParticipant()) continue;
    if (participant->isIgnored() != ignored) participant->setIsIgnored(ignored);
    isFound = true;
  }
  if (!isFound) return refusal(fmt::format("'{}' does not take part in '{}' now.", userId, name));
  application_.tell([&](auto& observer) { observer.poolDidChange((*presence)->pool()); });
  return {};
}

// Pauses.

std::optional<Failure> Operations::pauseProblem(const std::string& name) const {
  const auto& pauses = application_.pauses();
  if (!pauses.isPaused(name)) return std::nullopt;
  if (pauses.isEverythingPaused()) return everythingIsPaused();
  return refusal(fmt::format("'{0}' is paused. Resume it with: zolvar resume '{0}'", name)).value();
}

Failure Operations::everythingIsPaused() const {
  return refusal("Everything is paused. Resume with: zolvar resume").value();
}

Result<> Operations::pause(const std::optional<std::string>& name, std::optional<double> seconds) {
  if (name) {
    if (auto known = wanted(*name); !known) return known;
  }
  application_.pauses().pause(name.value_or(""), seconds);
  return {};
}

Result<> Operations::resume(const std::optional<std::string>& name) {
  auto& pauses = application_.pauses();
  if (name) {
    if (auto known = wanted(*name); !known) return known;
    pauses.resume(*name);
    if (const auto still = pauseProblem(*name)) return tl::unexpected(*still);
    return {};
  }
  pauses.resume("");
  return {};
}

// Settings.

std::optional<std::string> Operations::setting(const std::string& key) const {
  const auto& defaults = application_.platform().defaults;
  if (key != ActivePools) return defaults.string(key);
  const auto active = defaults.dictionary(key);
  if (active.empty()) return std::nullopt;
  nlohmann::json names = nlohmann::json::array();
  for (const auto& [name, unused] : active) names.push_back(name);
  return names.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

Result<> Operations::set(const std::string& key, const std::string& value) {
  if (const auto problem = settingProblem(key, value)) return refusal(*problem);
  if (key == ActivePools) return setActivePools(value);
  if (key.starts_with(PlacePrefix)) return setPlace(key.substr(PlacePrefix.size()), value);
  auto& defaults = application_.platform().defaults;
  if (value.empty()) {
    defaults.remove(key);
  } else {
    defaults.setString(key, value);
  }
  return {};
}

Result<> Operations::setActivePools(const std::string& value) {
  std::set<std::string> names;
  if (!value.empty()) {
    const auto list = nlohmann::json::parse(value, nullptr, false);
    const auto isText = [](const auto& name) { return name.is_string(); };
    if (!list.is_array() || !std::all_of(list.begin(), list.end(), isText)) {
      return refusal("The setting 'activePools' is a JSON array of names, like [\"Docs\"].");
    }
    for (const auto& name : list) names.insert(name.get<std::string>());
  }
  for (const auto& name : names) {
    if (application_.isWaitingForDrive(name)) continue;
    if (const auto there = known(name); !there) return tl::unexpected(there.error());
  }
  std::vector<std::string> away;
  for (const auto& place : application_.missingPlaces()) {
    if (!names.contains(place.name)) away.push_back(place.name);
  }
  for (const auto& name : away) application_.giveUpMissing(name);
  for (const auto& pool : application_.peer().filePools()) {
    if (names.contains(pool->name())) {
      if (wanted(pool->name())) continue;
      // What goes wrong later is told as a warning.
      const auto outcome = std::make_shared<Result<>>();
      subscribe(pool->name(), {}, {}, [outcome](Result<> ended) { *outcome = std::move(ended); });
      if (!*outcome) return *outcome;
    } else if (subscribed(pool->name())) {
      if (auto left = unsubscribe(pool->name()); !left) return left;
    }
  }
  return {};
}

Result<> Operations::setPlace(const std::string& name, const std::string& value) {
  if (subscribed(name)) {
    return refusal(fmt::format("'{}' is in use. Unsubscribe first, or move its folder.", name));
  }
  if (value.empty()) {
    application_.places().forget(name);
    return {};
  }
  const std::string path = tidyPath(value);
  if (lastPathComponent(path) != name) {
    return refusal(fmt::format("The folder must be named '{}', as the shared folder is.", name));
  }
  if (const auto problem =
          folderProblem(path, name, application_.peer(), application_.platform().fileSystem,
                        application_.blacklist())) {
    return refusal(problem->oneLine());
  }
  if (const auto pool = application_.peer().poolNamed(name)) {
    try {
      pool->setFolderPath(path);
    } catch (const InconsistencyError&) {
      return refusal(fmt::format("The folder '{}' cannot be used.", path));
    }
  }
  application_.places().setPath(name, path);
  application_.noteListChanged();
  return {};
}

}  // namespace zolvar
