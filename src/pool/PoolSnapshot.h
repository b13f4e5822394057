#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "log/KDLogFileEntry.h"

namespace zolvar {

enum class PoolPhase {
  Inactive,    ///< known, not subscribed to
  Recovering,  ///< waits for its own log from the network
  Activating,  ///< folders and log are there; reading and first scan run on the state lane
  Active,
  Leaving,  ///< deactivated; a job still running finishes on its own and changes nothing
};
[[nodiscard]] const char* phaseName(PoolPhase phase);  ///< "inactive", "recovering", ...

/// One version of a file in conflict.
struct ConflictVersion {
  VersionId id;
  double modTime = 0;
  bool isLocal = false;                 ///< the one that the local user selected
  std::vector<std::string> selectedBy;  ///< user ids, sorted
};

struct Conflict {
  std::string path;
  std::vector<ConflictVersion> versions;  ///< newest first
};

/// Files vanished here: fetch them again, or delete them on the network? One question a pool.
struct DeleteQuestion {
  std::uint64_t id = 0;
  std::vector<std::string> paths;  ///< sorted
};

/// What a copy run has done so far. Bytes count the listing's sizes.
struct TransferProgress {
  std::string participant;  ///< user id
  std::uint64_t filesDone = 0;
  std::uint64_t filesWanted = 0;
  std::uint64_t bytesDone = 0;
  std::uint64_t bytesWanted = 0;
  double bytesPerSecond = 0;
};

/// What the last listings told of a missing path.
struct SeenFile {
  std::set<std::string> holders;      ///< user ids that have a fitting version
  std::optional<std::uint64_t> size;  ///< bytes; none for directories
};
using SeenFiles = std::map<std::string, SeenFile>;

/// A pool's state after one of its jobs. Immutable; any thread. Parts that can be large are shared
/// with the snapshot before, so publishing costs nothing for what did not change.
struct PoolSnapshot {
  PoolPhase phase = PoolPhase::Inactive;
  std::uint64_t serial = 0;                                 ///< grows with each snapshot
  std::uint64_t fileCount = 0;                              ///< paths with a live version
  std::shared_ptr<const std::vector<std::string>> missing;  ///< the to-do list, sorted; never null
  std::shared_ptr<const std::vector<Conflict>> conflicts;   ///< by path; never null
  std::shared_ptr<const DeleteQuestion> question;           ///< null: none open
  std::shared_ptr<const SeenFiles> seen;                    ///< by missing path; never null
  std::map<std::string, std::uint64_t> logSizes;            ///< log file name → bytes
  std::string logFilesHash;  ///< 16 raw bytes, "" before the first reading
  double lastScan = 0;       ///< seconds since 1970 of the end of the last scan; 0: none yet
  bool isAccessible = true;  ///< the folder is where it lay
  std::string trouble;  ///< one sentence while something keeps the pool from working, else empty
};

}  // namespace zolvar
