#pragma once

#include <memory>
#include <mutex>
#include <optional>

#include "platform/FileSystem.h"
#include "platform/Lanes.h"
#include "pool/ChangedFolders.h"
#include "pool/FolderWatch.h"
#include "pool/KDFilePool.h"
#include "pool/KDPoolState.h"
#include "pool/KDPoolSync.h"

namespace zolvar {

/// What belongs to one activation (state, sync) and what lives as long as the pool (lanes, timers).
struct KDFilePool::Parts {
  std::shared_ptr<Lane> stateLane;
  std::shared_ptr<Lane> transferLane;
  std::shared_ptr<KDPoolState> state;
  std::shared_ptr<KDPoolSync> sync;
  std::uint64_t generation = 0;  ///< grows with each activation and each leaving
  RunLoop::Id scanTimer = 0;
  RunLoop::Id soonTimer = 0;
  RunLoop::Id announceTimer = 0;
  RunLoop::Id fullSyncTimer = 0;
  bool isScanQueued = false;
  bool isSyncing = false;
  std::shared_ptr<ChangedFolders> changed;  ///< of one activation
  std::unique_ptr<FolderWatch> watch;

  mutable std::mutex shownMutex;  ///< guards snapshot and progress
  std::shared_ptr<const PoolSnapshot> snapshot;
  std::optional<TransferProgress> progress;
};

}  // namespace zolvar
