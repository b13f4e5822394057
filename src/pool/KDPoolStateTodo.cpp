// The to-do list: paths whose chosen version is not here yet.

#include "platform/Log.h"
#include "platform/Platform.h"
#include "pool/KDPoolState.h"
#include "pool/ScanDecision.h"
#include "util/PathRules.h"
#include "util/PropertyList.h"

namespace zolvar {

namespace {

constexpr std::uint64_t LargestTodoFile = 512U << 20U;  ///< bytes; a million long paths
constexpr int ConflictLabel = 6;

}  // namespace

void KDPoolState::loadTodoFiles() {
  const auto bytes =
      folder_->read(joinPath(MetadataFolderName, LogGuard::TodoFileName), 0, LargestTodoFile);
  if (!bytes) return;
  const auto paths = stringsFromPropertyList(*bytes, {LargestTodoFile, 16});
  if (!paths) {
    platform_.log.warning("{}", paths.error().message());
    return;
  }
  std::size_t refused = 0;
  for (const std::string& path : *paths) {
    if (isSafeRelativePath(path)) {
      todo_.insert(path);
    } else {
      ++refused;
    }
  }
  if (refused > 0) {
    platform_.log.warning("Left out {} unsafe paths of the to-do list in {}.", refused,
                          settings_.folderPath);
  }
  areMissingStale_ = true;
}

Result<> KDPoolState::saveTodoFiles() {
  const auto saved = guard_->replaceTodoFile(propertyListFromStrings({todo_.begin(), todo_.end()}));
  if (!saved) {
    platform_.log.error("ERROR while saving todo files: {}\n", saved.error().message());
    return saved;  // stays dirty: the next flush tries again
  }
  isTodoDirty_ = false;
  return {};
}

bool KDPoolState::addTodoFiles(const std::set<std::string>& paths) {
  const std::size_t before = todo_.size();
  for (const std::string& path : paths) {
    const KDPathRecord* record = ignore_.isEmpty() ? nullptr : store_->findPath(path);
    if (record && isIgnored(*record)) continue;
    if (todo_.insert(path).second) noteChanged(path);
  }
  if (todo_.size() == before) return false;
  platform_.log.debug("Will try to load {} files from a peer.", todo_.size());
  isTodoDirty_ = areMissingStale_ = true;
  return true;
}

void KDPoolState::removeTodoFiles(const std::set<std::string>& paths) {
  for (const std::string& path : paths) {
    if (todo_.erase(path) == 0) continue;
    noteChanged(path);
    seen_.erase(path);
    isTodoDirty_ = areMissingStale_ = isSeenStale_ = true;
  }
}

/// Whether what a copy run brought has another size than was listed: somebody has edited it since,
/// unless its author had a later version by then.
bool KDPoolState::isEditedCopy(const std::string& path, const FileAttributes& here) const {
  const auto copied = copying_.find(path);
  const auto listed = listedSizes_.find(path);
  if (copied == copying_.end() || listed == listedSizes_.end()) return false;
  if (here.kind != FileKind::Regular || listed->second == here.size) return false;
  const KDLogFileEntry* version = copied->second;
  if (!version) return true;
  const KDLogFileEntry* found =
      tree_->versionWithModTime(version->pathRecord(), comparedTime(here), settings_.userId);
  return !found || found == version || !version->isParentOfEntry(found);
}

std::set<std::string> KDPoolState::checkTodoFiles() {
  if (isDetached_ || !isActive_) return {};
  forgetPassedOn();
  std::set<std::string> done;
  const std::vector<std::string> paths(todo_.begin(), todo_.end());
  for (const std::string& text : paths) {
    KDPathRecord* path = store_->findPath(text);
    const KDVersionTree::Selected selected =
        path && path->newest ? selectedLeaf(*path) : KDVersionTree::Selected{};
    if (selected.count == 0) {
      platform_.log.warning(
          "File {} on todo list is logged as deleted (or never existed). Removing it from todos.",
          text);
      done.insert(text);
      continue;
    }
    const auto attributes = folder_->attributes(text);
    if (!attributes) continue;
    if (attributes->kind == FileKind::Directory && !tree_->directoryLeaf(*path)) continue;
    KDDiskState* disk = path->disk;
    const bool isUnchanged = disk && disk->isUnchanged(*attributes);
    KDLogFileEntry* found = versionOnDisk(*path);
    if (!found) {
      // A copy run brought what its author has not logged yet: no edit of ours until it changes.
      if (copying_.contains(text) && !isUnchanged) {
        record_->set(*path, KDDiskState::of(*attributes, nullptr));
        isRecordHeld_ = true;
      }
      platform_.log.warning(
          "Warning: File {} might have been modified during sync. May create a conflict.",
          joinPath(settings_.folderPath, text));
      continue;
    }
    if (!isUnchanged && isEditedCopy(text, *attributes)) {
      // Edited as soon as it was here, its time kept. Recorded as what lay elsewhere, it is logged
      // as new.
      KDDiskState state = KDDiskState::of(*attributes, found);
      state.size = listedSizes_.at(text);
      state.inode = 0;
      record_->set(*path, state);
      listener_->scanWanted();
      continue;
    }
    const bool isVerified = attributes->kind == FileKind::Directory || copying_.contains(text) ||
                            (isUnchanged && disk->entry && !disk->isGuess);
    if (found == selected.leaf && !isVerified) {
      // It has the right time, and nobody saw it arrive: the next listing tells whether it is that.
      if (!disk) {
        record_->set(*path, KDDiskState::guess(*attributes, found));
        unverified_.insert(text);
      }
      continue;
    }
    if (found == selected.leaf) {
      if (attributes->kind != FileKind::Regular || !isUnchanged || !disk->entry) {
        record_->set(*path, KDDiskState::of(*attributes, found));
        isRecordHeld_ = isRecordHeld_ || attributes->kind == FileKind::Regular;
      }
      if (conflicts_.contains(path)) (void)folder_->setLabel(text, ConflictLabel);
      if (copying_.contains(text)) notePassedOn(text, *found);
      done.insert(text);
      continue;
    }
    // Another version: an older one of the same line may have come from a peer that lags behind.
    if (!isUnchanged && copying_.contains(text)) {
      record_->set(*path, KDDiskState::of(*attributes, found));
      isRecordHeld_ = true;
    }
  }
  copying_.clear();
  removeTodoFiles(done);
  (void)flush();
  publish();
  return done;
}

void KDPoolState::filesAreOnDisk() {
  isRecordHeld_ = false;
  if (!isActive_ || isDetached_) return;
  (void)flush();
  if (isAnnouncementDue_) publish();
}

std::set<std::string> KDPoolState::todoFiles() const { return {todo_.begin(), todo_.end()}; }

}  // namespace zolvar
