#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "pool/KDPoolSync.h"
#include "pool/ParticipantAddress.h"
#include "pool/PoolSyncSteps.h"

namespace zolvar {

struct SyncContext;

/// One sync of a pool with one participant: local changes, logs, listing, copies. Each phase that
/// reaches a daemon leaves its exit status in the end; the last one counts, and there is no status
/// before the first. A pool that waits for its own log only loads logs. Used once; the transfer
/// lane; the context outlives it.
class SyncRun {
 public:
  SyncRun(SyncContext& context, const ParticipantAddress& participant,
          const KDPoolSync::Settings& settings);

  /// Throws what the steps throw; after a log load was prepared it is finished in any case.
  SyncEnd perform();

 private:
  struct Start {
    int status = 0;
    bool isRecovering = false;
  };

  Start start();
  void recoverLogs();
  int listLogs(std::map<std::string, std::uint64_t>& sizes);
  void loadLogs();
  void loadTodoFiles();
  void copyFilesFromParticipant(const std::set<std::string>& wanted);
  std::vector<ListingEntry> filesToGetFromParticipant(const std::set<std::string>& wanted);
  void copyFiles(const std::set<std::string>& files, const std::vector<ListingEntry>& listed,
                 bool updatesOnly);
  void settleReplacedFiles();
  [[nodiscard]] std::string url(bool logsOnly) const;

  SyncContext& context_;
  ParticipantAddress participant_;
  KDPoolSync::Settings settings_;
  std::string folder_;  ///< the pool's folder, absolute
  SyncEnd end_;
};

}  // namespace zolvar
