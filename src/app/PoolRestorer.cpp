#include "app/PoolRestorer.h"

#include <algorithm>
#include <utility>

#include "net/KDPeer.h"
#include "platform/Lanes.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/RunLoop.h"
#include "pool/KDFilePool.h"
#include "util/InconsistencyError.h"
#include "util/PathRules.h"

namespace zolvar {

PoolRestorer::PoolRestorer(Platform& platform, PoolPlaces& places, KDPeer& peer, const Pace& pace,
                           Restored restored)
    : platform_(platform),
      places_(places),
      peer_(peer),
      pace_(pace),
      restored_(std::move(restored)),
      lane_(platform.lanes.start("restore")) {}

PoolRestorer::~PoolRestorer() { *alive_ = false; }

void PoolRestorer::restore(std::function<void()> done) {
  search(places_.storedPlaces(), false, std::move(done));
}

void PoolRestorer::retryMissing() {
  if (missing_.empty() || isSearching_) return;
  search(missing_, true, {});
}

void PoolRestorer::forget(const std::string& poolName) {
  std::erase_if(missing_, [&](const auto& place) { return place.name == poolName; });
}

void PoolRestorer::search(std::vector<StoredPlace> places, bool isRetry,
                          std::function<void()> done) {
  isSearching_ = true;
  lane_->post([this, alive = alive_, places = std::move(places), isRetry, done = std::move(done),
               userId = peer_.userId(), &platform = platform_] {
    std::vector<FoundPlace> found;
    for (const auto& place : places) {
      found.push_back(findFolder(place, platform.fileSystem, userId));
    }
    platform.runLoop.post([this, alive, found = std::move(found), isRetry, done] {
      if (!*alive) return;
      isSearching_ = false;
      for (const auto& each : found) {
        const auto isThis = [&each](const auto& place) { return place.name == each.place.name; };
        if (isRetry && std::erase_if(missing_, isThis) == 0) continue;  // forgotten meanwhile
        take(each);
      }
      if (done) done();
    });
  });
}

void PoolRestorer::take(const FoundPlace& found) {
  const std::string& name = found.place.name;
  if (found.finding == Finding::Renamed) {
    platform_.log.warning(
        "Warning! Synced Folder '{}' has been renamed to '{}'. Illegal. Deactivating folder.", name,
        lastPathComponent(found.path));
  } else if (found.finding == Finding::Missing) {
    if (found.place.isSubscribed) missing_.push_back(found.place);
  } else {
    addPool(found);
  }
}

void PoolRestorer::addPool(const FoundPlace& found) {
  const std::string& name = found.place.name;
  const auto isIllegal = [&] {
    platform_.log.warning("Unable to activate synced folder '{}'. Illegal path ''.", name);
  };
  if (poolNameProblem(name) || poolPathProblem(found.path)) return isIllegal();
  try {
    auto pool = peer_.poolNamed(name);
    if (!pool) {
      KDFilePool::Options options;
      options.userId = peer_.userId();
      options.pace = pace_;
      const auto added = peer_.addPoolWithPath(found.path, options);
      if (!added) return isIllegal();
      pool = *added;
    } else if (pool->phase() == PoolPhase::Inactive) {
      pool->setFolderPath(found.path);  // it was announced before its folder was found
    } else {
      return;  // somebody subscribed to it meanwhile
    }
    if (!pool->hasFullFolderPath()) return isIllegal();  // a Trash
    places_.setPath(name, found.path);
    if (places_.isSubscribed(name)) restored_(*pool, found.finding == Finding::Found);
  } catch (const InconsistencyError&) {
    isIllegal();
  }
}

}  // namespace zolvar
