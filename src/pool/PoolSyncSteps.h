#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "pool/ParticipantAddress.h"
#include "util/Failure.h"

namespace zolvar {

struct KDEntryFields;

/// One wanted path as the participant's listing shows it.
struct ListingEntry {
  char kind = '-';  ///< first character of the mode: '-', 'd', 'l', ...
  std::uint64_t size = 0;
  std::vector<std::int64_t> modTimes;  ///< candidates: a local time that occurs twice has two
  std::string path;
};

/// What is to be copied from one participant.
struct CopyPlan {
  std::set<std::string> files;
  std::map<std::string, std::uint64_t> sizes;  ///< of the regular files, from the listing
};

/// A file that a copy run replaced, saved by the transfer tool.
struct ReplacedFile {
  std::string path;       ///< in the pool
  std::string savedPath;  ///< absolute
};

/// The steps of a sync that touch the pool's state. The transfer lane calls them through the state
/// lane (`Lane::run`), so each runs alone. Implemented by KDPoolState; a detached state (the pool
/// was left) answers isDetached and does nothing.
class PoolSyncSteps {
 public:
  virtual ~PoolSyncSteps() = default;

  [[nodiscard]] virtual bool isDetached() const = 0;
  /// True while the pool waits for its own log: logs are loaded and guarded, entries not applied.
  [[nodiscard]] virtual bool isRecovering() const = 0;
  /// Where the folder lies now. Fails when it is missing (poolPathsNotAccessible was told).
  virtual Result<std::string> accessibleFolderPath() = 0;

  /// Scans for local changes (no-op when recovering).
  virtual void checkFileSystemChanges() = 0;

  /// Closes the local log, takes the size snapshot and links every log, and our list of missing
  /// files, aside, so that finishLogLoad can tell what the run did to them.
  virtual Result<> prepareLogLoad() = 0;
  /// Repairs logs that the run made shorter or other (the union of both), removes what else arrived
  /// in the metadata folder, brings our todos.plist back, reads what is new behind each log's
  /// merged offset and applies it (unless recovering). Called whatever the run's status was.
  virtual void finishLogLoad() = 0;
  /// Names and sizes of the logs on this disk now.
  virtual std::map<std::string, std::uint64_t> logSizesOnDisk() = 0;

  /// The to-do list that may be fetched now (without what is in question).
  virtual std::set<std::string> wantedFiles() = 0;
  /// Which of the listed wanted files the participant holds in a version on the chosen branch.
  /// Remembers who holds what.
  virtual CopyPlan decideListing(const std::vector<ListingEntry>& listed,
                                 const ParticipantAddress& participant) = 0;
  /// Called directly before a copy run: files whose disk state changed since the last scan are left
  /// out and logged by the next one. Returns what may be copied.
  virtual std::set<std::string> prepareCopy(const std::set<std::string>& files) = 0;
  /// The subset that may look newer on disk than the version wanted: along its own history, or
  /// because another branch lies here.
  virtual std::set<std::string> timeWarpedFilesFromSet(const std::set<std::string>& files) = 0;
  /// What the run replaced: logged versions are kept as saved, an edit of the last seconds goes
  /// back in place and becomes a branch. False when one could not be put back: ask again later.
  virtual bool settleReplacedFiles(const std::vector<ReplacedFile>& replaced) = 0;
  /// Takes arrived and no longer wanted paths off the list and returns them; writes the local log.
  virtual std::set<std::string> checkTodoFiles() = 0;
  /// Whether files have come of which nobody knows that a power failure would leave them; they are
  /// not put on record before filesAreOnDisk is told.
  [[nodiscard]] virtual bool awaitsDisk() const = 0;
  virtual void filesAreOnDisk() = 0;
  /// What is still wanted, for the log line of an incomplete sync.
  virtual std::set<std::string> todoFiles() const = 0;
};

}  // namespace zolvar
