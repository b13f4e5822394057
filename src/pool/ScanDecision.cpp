#include "pool/ScanDecision.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <utility>

#include "pool/KDDiskRecord.h"
#include "pool/KDVersionTree.h"

namespace zolvar {

namespace {

/// Nobody saw how the file came to have this version's time. What we logged ourselves we saw, but
/// not what is put where nothing lay, nor what a power failure may have emptied.
ScanDecision taken(const KDVersionTree& tree, KDLogFileEntry* version, const ScanFacts& facts) {
  const bool isDoubtful =
      facts.attributes.kind != FileKind::Directory &&
      (facts.isTodo || version->userId() != tree.localUserId() || facts.attributes.size == 0);
  return {isDoubtful ? ScanAction::Guess : ScanAction::Confirm, version};
}

/// The file is `existing`: is that still what ought to be here?
ScanDecision decideKnown(const KDVersionTree& tree, KDLogFileEntry* existing, bool isRecorded,
                         const ScanFacts& facts) {
  KDLogFileEntry* leaf = tree.leafForEntry(existing);
  if (!leaf->exists()) {
    // Recorded as the version that was deleted: the deletion is still to be carried out, perhaps
    // because the program ended before it was. Put back by someone since: there is no record.
    if (isRecorded && !facts.isTodo && wasKeptInCrossedDrops(tree, *existing)) {
      return {ScanAction::LogRecreation, existing};
    }
    if (isRecorded) return {ScanAction::Delete, existing};
    if (facts.isTodo && facts.isFirstRun) return {ScanAction::Delete, existing};
    if (facts.isTodo) return {ScanAction::LogRecreation, existing};
    if (facts.isFirstRun && leaf->logTime() >= static_cast<double>(facts.parentModTime)) {
      return {ScanAction::Delete, existing};  // deleted by a peer while we were away
    }
    return {ScanAction::LogRecreation, existing};
  }
  if (leaf != existing && !facts.isTodo) {
    return {ScanAction::Reget, existing};
  }
  if (isRecorded) return {ScanAction::Nothing, existing};
  // It was not there at the last look: a person has put back another version than the wanted one.
  const KDLogFileEntry* wanted = tree.selectedLeaf(existing->pathRecord()).leaf;
  if (facts.isTodo && !facts.isFirstRun && wanted && existing != wanted) {
    return {ScanAction::Guess, existing};  // to the Trash when it has to make room
  }
  return taken(tree, existing, facts);
}

/// The version that the file was before a power failure took what was not yet on the disk: nobody
/// empties a file and gives it its old time again. The tool flushes nothing either; what it brought
/// just before may be a version without content, fetched in vain once more.
KDLogFileEntry* emptiedVersion(const KDVersionTree& tree, const KDPathRecord& path,
                               KDLogFileEntry* existing, const ScanFacts& facts) {
  if (facts.attributes.kind != FileKind::Regular || facts.attributes.size > 0) return nullptr;
  const KDDiskState* record = path.disk;
  if (record && record->entry && record->inode == facts.attributes.inode &&
      record->modTime == facts.attributes.modTime && record->size > 0) {
    return tree.leafForEntry(record->entry)->exists() ? record->entry : nullptr;
  }
  const KDLogFileEntry* wanted = tree.selectedLeaf(path).leaf;
  const bool isUndecided = !wanted && path.activeLeafCount > 1;
  const bool isOurs = existing && existing->userId() == tree.localUserId();
  const bool hasArrived = (facts.isTodo || (facts.isResumed && !isOurs)) && facts.isFirstRun &&
                          existing && (!record || record->inode != facts.attributes.inode) &&
                          (existing == wanted || isUndecided);
  return hasArrived ? existing : nullptr;
}

/// A directory is what a version says or it is not; it has no time.
ScanDecision decideDirectory(const KDVersionTree& tree, const KDPathRecord& path,
                             const ScanFacts& facts) {
  const KDDiskState* record = path.disk;
  KDLogFileEntry* version = tree.directoryLeaf(path);
  if (record && record->entry && record->kind == FileKind::Directory) {
    if (version)
      return {version == record->entry ? ScanAction::Nothing : ScanAction::Confirm, version};
    const KDLogFileEntry* leaf = tree.leafForEntry(record->entry);
    if (!leaf->exists()) return {ScanAction::Delete, record->entry};
    return {facts.isTodo ? ScanAction::Nothing : ScanAction::Reget, record->entry};  // now a file
  }
  const bool hasReplaced = record && record->entry && record->inode != 0;
  if (!version || (hasReplaced && !facts.isTodo && !record->entry->isParentOfEntry(version))) {
    const bool isChild = hasReplaced && !record->isGuess;
    return {ScanAction::LogModification, nullptr, isChild ? record->entry : nullptr};
  }
  return {ScanAction::Confirm, version};
}

}  // namespace

double comparedTime(const FileAttributes& attributes) {
  if (attributes.kind == FileKind::Directory) return 0;
  return static_cast<double>(std::max<std::int64_t>(attributes.modTime, 1));
}

bool wasKeptInCrossedDrops(const KDVersionTree& tree, const KDLogFileEntry& version) {
  const KDPathRecord& path = version.pathRecord();
  if (path.activeLeafCount > 0 || version.isDirectory()) return false;
  using Moment = std::pair<double, std::string_view>;
  Moment deleted;
  Moment dropped;  // another version, by the local user
  for (const KDLogFileEntry* leaf = path.firstLeaf; leaf; leaf = leaf->nextLeaf()) {
    const Moment moment(leaf->logTime(), leaf->userId());
    const bool isOurs = leaf->userId() == tree.localUserId();
    if (version.isParentOfEntry(leaf)) {
      if (isOurs) return false;
      deleted = std::max(deleted, moment);
    } else if (isOurs) {
      dropped = std::max(dropped, moment);
    }
  }
  return deleted < dropped;
}

ScanDecision decideScan(const KDVersionTree& tree, const KDPathRecord* path,
                        const ScanFacts& facts) {
  const bool isDirectory = facts.attributes.kind == FileKind::Directory;
  if (isDirectory)
    return path ? decideDirectory(tree, *path, facts) : ScanDecision{ScanAction::LogModification};
  const KDDiskState* record = path ? path->disk : nullptr;
  const bool isUnchanged = record && record->isUnchanged(facts.attributes);
  if (isUnchanged && record->entry) return decideKnown(tree, record->entry, true, facts);

  const double time = comparedTime(facts.attributes);
  KDLogFileEntry* existing =
      path ? tree.versionWithModTime(*path, time, tree.localUserId()) : nullptr;
  if (KDLogFileEntry* was = path ? emptiedVersion(tree, *path, existing, facts) : nullptr) {
    return {ScanAction::Emptied, was};
  }
  const bool isFresh = time != 0 && std::abs(facts.now - time) < facts.freshFiles;
  if (isFresh) return {ScanAction::TooFresh};
  if (!path) return {ScanAction::LogModification};

  if (record && record->inode == 0) {
    // Recorded in another folder: what lies here never was that version.
    if (time != 0 && existing && existing == record->entry) return {ScanAction::LogLaterTime};
    record = nullptr;
  }
  if (!record) {
    if (existing) return decideKnown(tree, existing, false, facts);
    return {ScanAction::LogModification};
  }
  if (!record->entry) {
    if (existing && isUnchanged && tree.leafForEntry(existing)->exists()) {
      // It came before its author had logged it, and may have been saved once more in that second.
      return {facts.isTodo ? ScanAction::Nothing : ScanAction::Reget, existing};
    }
    if (existing) return taken(tree, existing, facts);
    if (isUnchanged && facts.now - time <= UnknownCopyPatience) return {ScanAction::Nothing};
    return {ScanAction::LogModification};
  }
  // Changed since the record. What a copy run brings is recorded at its end; if that never came, a
  // wanted version that is here now was fetched, and so was a later one of the same line. Anything
  // else that has a known time, an older version put back for example, is a person's work.
  if (existing && existing != record->entry && facts.mayHaveArrived) {
    const bool isWanted = facts.isTodo && existing == tree.selectedLeaf(*path).leaf;
    const bool isLater =
        facts.attributes.kind == record->kind && record->entry->isParentOfEntry(existing);
    if (isWanted || isLater) return taken(tree, existing, facts);
  }
  // A time tells which version a file is, here and elsewhere, so each version has its own.
  // With that of a directory that it replaces it would be a mere choice.
  const bool isKnownTime = time != 0 && (existing || record->entry->modTime() == time);
  return {isKnownTime ? ScanAction::LogLaterTime : ScanAction::LogModification, nullptr,
          record->isGuess ? nullptr : record->entry};
}

}  // namespace zolvar
