#pragma once

#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "pool/PoolSyncSteps.h"
#include "util/Failure.h"

namespace zolvar {

class Folder;
class UserDefaults;
struct Platform;

/// How long, and how much of, replaced content is kept. Either being 0: none is.
struct VersionLimits {
  unsigned long days = 30;
  unsigned long megabytes = 1024;

  [[nodiscard]] bool keepsAny() const { return days != 0 && megabytes != 0; }
  /// From "VersionsDays" and "VersionsMegabytes"; what is unset has the figures above. Main thread.
  static VersionLimits fromDefaults(const UserDefaults& defaults);
};

/// One file that a copy run replaced.
struct KeptVersion {
  std::string path;         ///< in the store
  std::int64_t keptAt = 0;  ///< start of the copy run, seconds since 1970
  std::uint64_t size = 0;
};

/// A version of one path that can be had back.
struct StoredVersion {
  std::string id;           ///< name of the run that kept it
  std::int64_t keptAt = 0;  ///< when it was replaced, seconds since 1970
  std::int64_t modTime = 0;
  std::uint64_t size = 0;
};

/// Which of one pool's versions go: those older than the days, and then the oldest ones until the
/// rest is within the megabytes. Without limits set to keep any: all.
std::set<std::string> versionsToRemove(std::vector<KeptVersion> versions, double now,
                                       const VersionLimits& limits);

/// Content that copy runs replaced, in the support folder:
///
///     versions/POOLHASH/SECONDS-NUMBER/path in the pool
///     versions/POOLHASH/SECONDS-rNUMBER/path in the pool      (replaced by a restored version)
///
/// with a folder for each run, named for the run's start. The transfer tool itself moves what it
/// replaces there. A run's folder has the suffix ".open" until someone has looked through it for
/// content that is no logged version; one that a crash left so is looked through by the next sync
/// and is never pruned. The support folder is closed to other users, and so is all of this. One
/// lane at a time; the platform outlives it.
class VersionStore {
 public:
  explicit VersionStore(Platform& platform);
  ~VersionStore();

  /// The absolute path of a fresh, empty folder for one copy run.
  Result<std::string> startRun(const std::string& poolHash);
  /// The folders of this pool's runs that are still open, in order of their start.
  Result<std::vector<std::string>> openRuns(const std::string& poolHash);
  /// Files and links that the run of that folder replaced, sorted by path.
  Result<std::vector<ReplacedFile>> replacedFiles(const std::string& runFolder);
  /// The run has been looked through; removes its folder when nothing is in it.
  Result<> closeRun(const std::string& runFolder);
  /// The versions of a path that closed runs have kept, newest first.
  Result<std::vector<StoredVersion>> versionsOf(const std::string& poolHash,
                                                const std::string& path);
  /// Puts a version back in its place in the pool's folder, with the time `now` or, where a file
  /// lies there, a time after that file's; that file is kept in turn. The restored version leaves
  /// the store. Fails: Absent (no such version), Refused (a folder lies there).
  Result<> restore(const std::string& poolHash, const std::string& path, const std::string& id,
                   Folder& folder);
  /// Keeps what lies at the path now, as a replacement would; the id of the kept version. The file
  /// stays where it is.
  Result<std::string> keep(const std::string& poolHash, const std::string& path, Folder& folder);
  /// Removes what the limits do not cover of each pool, and runs that have become empty.
  Result<> prune(const VersionLimits& limits);

 private:
  Result<> open();
  Result<std::string> startFolder(const std::string& poolHash, std::string_view prefix,
                                  std::string_view suffix);
  void prunePool(const std::string& pool, const VersionLimits& limits);
  [[nodiscard]] std::string relative(const std::string& runFolder) const;

  Platform& platform_;
  std::string support_;  ///< absolute path of the support folder; "" before open()
  std::unique_ptr<Folder> folder_;
};

}  // namespace zolvar
