#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "app/FolderFinder.h"
#include "pool/Pace.h"

namespace zolvar {

class KDFilePool;
class KDPeer;
class Lane;
struct Platform;

/// Brings back the pools of the last run. Folders are looked for on a lane; what was found is added
/// to the peer on the main thread. A subscribed folder that is not there (a disk that is not
/// mounted) is looked for again until it is. Owned by the application; everything handed in
/// outlives it. Main thread.
class PoolRestorer {
 public:
  /// Told of each restored pool that was subscribed to; `hasLog` as in Finding.
  using Restored = std::function<void(KDFilePool& pool, bool hasLog)>;

  PoolRestorer(Platform& platform, PoolPlaces& places, KDPeer& peer, const Pace& pace,
               Restored restored);
  ~PoolRestorer();

  /// Restores every stored pool, then calls `done`.
  void restore(std::function<void()> done);
  /// Looks again for the subscribed folders that were missing.
  void retryMissing();
  /// No longer looks for a pool: it got a place, or is not wanted any more.
  void forget(const std::string& poolName);
  /// The subscribed folders that are looked for.
  [[nodiscard]] const std::vector<StoredPlace>& missing() const { return missing_; }

 private:
  void search(std::vector<StoredPlace> places, bool isRetry, std::function<void()> done);
  void take(const FoundPlace& found);
  void addPool(const FoundPlace& found);

  Platform& platform_;
  PoolPlaces& places_;
  KDPeer& peer_;
  const Pace& pace_;
  Restored restored_;
  std::shared_ptr<Lane> lane_;
  std::vector<StoredPlace> missing_;
  bool isSearching_ = false;
  std::shared_ptr<bool> alive_ =
      std::make_shared<bool>(true);  ///< tasks that outlive us look at it
};

}  // namespace zolvar
