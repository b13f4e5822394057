// Making entries of our own, merging entries, and what a person decides about branches.

#include <algorithm>

#include "platform/Clock.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "pool/KDPoolState.h"
#include "pool/ScanDecision.h"
#include "pool/VersionStore.h"
#include "util/InconsistencyError.h"
#include "util/hexHash.h"

namespace zolvar {

namespace {

constexpr int ConflictLabel = 6;  ///< the desktop's label colour for files in conflict

}  // namespace

/// The earliest time of our next entry for the path: it names the version, so it is used once.
double KDPoolState::notBefore(std::string_view path) const {
  const KDPathRecord* record = store_->findPath(path);
  const bool isTaken = record && tree_->version(*record, settings_.userId, ownLastLogTime_);
  return isTaken ? ownLastLogTime_ + 1 : ownLastLogTime_;
}

/// The same for a deletion: of two deletions of a path's branches the later one never was known to
/// who made the earlier one, whatever the clocks say.
double KDPoolState::afterDeletions(const KDPathRecord& path) const {
  const double latest = platform_.clock.now() + KDEntryStore::LongestFutureWait;
  double earliest = notBefore(path.text);
  for (const KDLogFileEntry* leaf = path.firstLeaf; leaf; leaf = leaf->nextLeaf()) {
    if (leaf->exists() || leaf->logTime() > latest) continue;
    earliest = std::max(earliest, leaf->logTime() + 1);
  }
  return earliest;
}

void KDPoolState::appendOwn(const KDEntryStore::Made& made) {
  if (made.clockIsOff) {
    listener_->warn(
        "The computer's clock is off! A change was logged after one that lies in the future. "
        "Please set the computer's clock to the current time.");
  }
  ownLastLogTime_ = made.entry->logTime();
  localLog_->appendEntry(made.entry);
  mergeEntry(made.entry);
}

bool KDPoolState::mergeEntry(KDLogFileEntry* entry) {
  noteChanged(entry->path());
  const KDVersionTree::Appended merged = tree_->append(entry);
  KDPathRecord& path = entry->pathRecord();
  if (merged.kind == KDVersionTree::Kind::Selection) {
    if (path.activeLeafCount > 1) areConflictsStale_ = true;
    return false;
  }
  if (merged.kind == KDVersionTree::Kind::Duplicate || merged.isFirstOfPath) return false;
  if (merged.selectionLost && merged.activeAfter > 0) {
    addTodoFiles({std::string(path.text)});  // another branch lives on: fetch it
    if (!isFirstRun_) listener_->fullSyncNeeded();
  }
  if (merged.activeBefore != merged.activeAfter) {
    setConflict(merged.activeAfter > 1, path);
  } else if (merged.activeAfter > 1) {
    areConflictsStale_ = true;
  }
  return merged.grew();
}

void KDPoolState::setConflict(bool isConflict, KDPathRecord& path) {
  isConflict = isConflict && !isIgnored(path);
  areConflictsStale_ = areConflictsStale_ || isConflict;
  if (conflicts_.contains(&path) == isConflict) return;
  areConflictsStale_ = true;
  if (isConflict) {
    conflicts_.insert(&path);
    if (isActive_) listener_->conflictDidOccur(std::string(path.text));
  } else {
    tree_->deselectLogEntry(path, settings_.userId);
    conflicts_.erase(&path);
  }
  if (path.disk) (void)folder_->setLabel(path.text, isConflict ? ConflictLabel : 0);
}

void KDPoolState::repair(KDPathRecord& path) {
  if (tree_->repair(path)) setConflict(path.activeLeafCount > 1, path);
}

KDLogFileEntry* KDPoolState::versionOnDisk(const KDPathRecord& path) {
  const auto attributes = folder_->attributes(path.text);
  if (!attributes) return nullptr;
  if (attributes->kind == FileKind::Directory) return tree_->directoryLeaf(path);
  if (path.disk && path.disk->entry && path.disk->isUnchanged(*attributes)) return path.disk->entry;
  // Two versions can have one time: what arrived is the one that was listed.
  const auto copied = copying_.find(std::string(path.text));
  if (copied != copying_.end() && copied->second &&
      copied->second->modTime() == comparedTime(*attributes)) {
    return copied->second;
  }
  return tree_->versionWithModTime(path, comparedTime(*attributes), settings_.userId);
}

KDVersionTree::Selected KDPoolState::selectedLeaf(KDPathRecord& path) {
  const KDVersionTree::Selected selected = tree_->selectedLeaf(path);
  if (selected.count <= 1) return selected;
  // Several branches and none chosen: what lies on the disk is what the user works with.
  tree_->deselectLogEntry(path, settings_.userId);
  platform_.log.warning(
      "Warning: No branch selected for user '{}' for file '{}'. Trying correction...",
      settings_.userId, path.text);
  KDLogFileEntry* leaf = tree_->leafForEntry(versionOnDisk(path));
  if (!leaf || !leaf->exists() || !KDEntryStore::canBeFollowed(*leaf)) {
    platform_.log.warning("Warning: Correction files for '{}'", path.text);
    return selected;
  }
  platform_.log.warning("Correction successful. Branch selected: {}", leaf->shortDescription());
  logSelectionOfBranchEntry(*leaf);
  return {1, leaf};
}

void KDPoolState::logSelectionOfBranchEntry(KDLogFileEntry& entry) {
  require(entry.exists(), "[branchEntry exists]");
  if (!KDEntryStore::canBeFollowed(entry)) return;  // dated at the end of times
  appendOwn(store_->branchSelectionEntryForUser(platform_.clock, platform_.log,
                                                notBefore(entry.path()), entry, settings_.userId));
  const KDLogFileEntry* leaf = tree_->selectedLeaf(entry.pathRecord()).leaf;
  if (!leaf || !entry.isParentOfEntry(leaf)) {
    throw InconsistencyError("Existing entry not selected as tried.");
  }
}

void KDPoolState::logDeletionOfBranchLeaf(KDLogFileEntry& leaf) {
  // All directories of a path are one branch.
  std::vector<KDLogFileEntry*> leaves;
  for (KDLogFileEntry* other : tree_->leafEntries(leaf.pathRecord())) {
    const bool isOfBranch = other == &leaf || (leaf.isDirectory() && other->isDirectory());
    if (isOfBranch && other->exists() && KDEntryStore::canBeFollowed(*other)) {
      leaves.push_back(other);
    }
  }
  for (KDLogFileEntry* one : leaves) {
    appendOwn(store_->branchDeletionEntryForUser(
        platform_.clock, platform_.log, afterDeletions(one->pathRecord()), *one, settings_.userId));
  }
}

Result<KDLogFileEntry*> KDPoolState::requireVersion(const std::string& path,
                                                    const VersionId& version) const {
  const KDPathRecord* record = tree_ ? store_->findPath(path) : nullptr;
  if (!record || !record->newest) {
    return fail(FailureKind::Absent, "find the file", path, "no log of this folder names it");
  }
  KDLogFileEntry* entry = tree_->version(*record, version);
  if (!entry) {
    return fail(FailureKind::Absent, "find the version " + version.text() + " of", path,
                "the file has no such version");
  }
  return entry;
}

/// The leaf that a person decides about, when the decision can be carried out now; `attempt` names
/// it in the refusal.
Result<KDLogFileEntry*> KDPoolState::decidableLeaf(const std::string& attempt,
                                                   const std::string& path,
                                                   const VersionId& version) {
  if (!isActive_) return fail(FailureKind::Refused, attempt, path, "the folder is not active");
  if (const auto accessible = accessibleFolderPath(); !accessible) {
    return tl::unexpected(accessible.error());
  }
  const auto entry = requireVersion(path, version);
  if (!entry) return entry;
  if ((*entry)->childCount() > 0 || !(*entry)->exists()) {
    return fail(FailureKind::Refused, attempt, path,
                "this version is not a current one: it was changed or deleted since");
  }
  if (!KDEntryStore::canBeFollowed(**entry)) {
    return fail(FailureKind::Refused, attempt, path,
                "this version is dated so far in the future that nothing can follow it");
  }
  const KDDiskState* disk = (*entry)->pathRecord().disk;
  const auto attributes = folder_->attributes(path);
  const bool isKeptOut =
      attributes && ignore_.ignores(path, attributes->kind == FileKind::Directory);
  if (attributes && !isKeptOut && !(disk && disk->isUnchanged(*attributes))) {
    return fail(FailureKind::Transient, attempt, path,
                "the file here was changed a moment ago; try again when that change is recorded");
  }
  return entry;
}

Result<> KDPoolState::selectBranch(const std::string& path, const VersionId& version) {
  const std::string attempt = "choose a version of";
  const auto entry = decidableLeaf(attempt, path, version);
  if (!entry) return tl::unexpected(entry.error());
  KDLogFileEntry& leaf = **entry;
  KDPathRecord& record = leaf.pathRecord();
  if (&leaf == selectedLeaf(record).leaf) {
    return fail(FailureKind::Refused, attempt, path, "this version is chosen already");
  }
  const bool isHere = record.disk && record.disk->entry == &leaf;
  const auto attributes = folder_->attributes(path);
  if (attributes && attributes->kind == FileKind::Directory && !leaf.isDirectory() &&
      !canGiveWay(path)) {
    return fail(FailureKind::Refused, attempt, path,
                "a folder with files in it lies there; move these away first");
  }
  // What lies here stays until the chosen version can be had, directly before it is copied: its
  // only holder may be away, or may give it up for ours at this very moment.
  logSelectionOfBranchEntry(leaf);
  if (!isHere) addTodoFiles({path});
  const auto written = flush();
  if (!isHere) listener_->fullSyncNeeded();
  publish();
  return written;
}

Result<> KDPoolState::deleteBranch(const std::string& path, const VersionId& version) {
  const auto entry = decidableLeaf("delete a version of", path, version);
  if (!entry) return tl::unexpected(entry.error());
  KDLogFileEntry& leaf = **entry;
  KDPathRecord& record = leaf.pathRecord();
  const KDLogFileEntry* onDisk = folder_->attributes(path) ? versionOnDisk(record) : nullptr;
  const bool isOnDisk = onDisk && onDisk->isParentOfEntry(&leaf);
  logDeletionOfBranchLeaf(leaf);
  if (isOnDisk && record.activeLeafCount > 0) addTodoFiles({path});
  if (const auto written = flush(); !written) return written;
  if (isOnDisk) {
    deleteFiles({path});
    listener_->fullSyncNeeded();
  }
  (void)flush();
  publish();
  return {};
}

Result<std::string> KDPoolState::treeDescription(const std::string& path) const {
  if (!tree_) return fail(FailureKind::Refused, "describe", path, "the folder is not active");
  return tree_->treeDescription(path);
}

Result<> KDPoolState::restoreVersion(const std::string& path, const std::string& id) {
  if (!isAccessible()) {
    return fail(FailureKind::Absent, "restore files in", settings_.folderPath,
                "the folder is not accessible");
  }
  const auto restored =
      VersionStore(platform_).restore(hexHash(settings_.poolName), path, id, *folder_);
  if (restored) listener_->scanWanted();
  return restored;
}

Result<double> KDPoolState::modTimeOf(const std::string& path, const VersionId& version) const {
  const auto entry = requireVersion(path, version);
  if (!entry) return tl::unexpected(entry.error());
  if (!(*entry)->exists()) {
    return fail(FailureKind::Absent, "fetch a version of", path, "this version is a deletion");
  }
  return (*entry)->modTime();
}

bool KDPoolState::sharesSecond(const std::string& path, const VersionId& version) const {
  const auto entry = requireVersion(path, version);
  return entry && tree_->sharesSecond(**entry);
}

}  // namespace zolvar
