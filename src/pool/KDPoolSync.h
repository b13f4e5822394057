#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include "pool/PoolSnapshot.h"
#include "pool/PoolSyncSteps.h"
#include "pool/VersionStore.h"

namespace zolvar {

class Lane;
class Process;
struct Platform;

/// How one sync ended; becomes KDSyncDidEndNotification.
struct SyncEnd {
  int status = 0;  ///< exit status of the last run; 10 host not found, 11 folder not accessible, 20
                   ///< given up, 30 silent, 37 authentication failed, -1 an exception
  std::set<std::string> loadedFiles;
  std::string exceptionText;  ///< with status -1
};

/// The transfer tool's words for a status: "ok", "authentication failed", ... or the number.
std::string statusText(int status);

/// Syncs one pool with one participant at a time: pulls its logs, lists its folder, copies what is
/// wanted. Runs on the pool's transfer lane; state is touched only through PoolSyncSteps on the
/// state lane. Destroyed after its lane's last job.
class KDPoolSync {
 public:
  struct Settings {
    std::string poolName;
    std::string ownUserId;
    std::string password;         ///< "" without one
    unsigned bandwidthLimit = 0;  ///< KB/s, 0: none
    bool keepsVersions = true;    ///< --backup into the support folder
    VersionLimits versionLimits;  ///< how much of that is kept; none: as without keepsVersions
  };
  /// Told about twice a second during copy runs, and with none at the end; on the transfer lane.
  using ProgressSink = std::function<void(std::optional<TransferProgress>)>;

  KDPoolSync(Platform& platform, std::shared_ptr<Lane> stateLane,
             std::shared_ptr<PoolSyncSteps> steps, ProgressSink progress);
  ~KDPoolSync();

  /// The body of a sync; on the transfer lane. Never throws anything derived from std::exception.
  SyncEnd performSyncWithParticipant(const ParticipantAddress& participant,
                                     const Settings& settings);
  /// Makes what the syncs before have brought outlast a power failure, and lets it be put on
  /// record; on the transfer lane, when nobody waits for the sync any more.
  void bringToDisk();
  /// Copies one version of a file, whose listed time must be `modTime`, to `to` (a path outside the
  /// folder that does not exist yet); tries the participants in turn. On the transfer lane.
  Result<> fetchVersion(const std::string& path, double modTime, const std::string& to,
                        const std::vector<ParticipantAddress>& participants,
                        const Settings& settings);

  [[nodiscard]] bool hasRunningTask() const;  ///< any thread
  /// Ends the run in progress and keeps the current sync from starting another; any thread.
  void terminateTask();

 private:
  struct Work;
  std::unique_ptr<Work> work_;
};

}  // namespace zolvar
