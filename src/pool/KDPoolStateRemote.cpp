// Entries that came from peers: merged, and turned into files to fetch and files to delete.

#include <algorithm>

#include "platform/Clock.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "pool/KDPoolState.h"
#include "pool/ScanDecision.h"
#include "util/InconsistencyError.h"

namespace zolvar {

/// Remembers who handed on a version of somebody else, while the version is some minutes old.
void KDPoolState::notePassedOn(const std::string& path, KDLogFileEntry& version) {
  if (version.userId() == listedBy_ || version.logTime() < rememberedSince()) return;
  passedOn_[path] = {listedBy_, &version};
}

void KDPoolState::forgetPassedOn() {
  std::erase_if(passedOn_, [since = rememberedSince()](const auto& item) {
    return item.second.version->logTime() < since;
  });
}

double KDPoolState::rememberedSince() const {
  constexpr double Remembered = 10 * 60;  // seconds; a file is logged within one, as a rule
  return platform_.clock.now() - Remembered;
}

/// Whether this line shows that what its author handed on as somebody else's version was the
/// author's own file, of that version's second and not logged yet. It gets the next free second.
bool KDPoolState::cameFromAnotherFile(const KDLogFileEntry& entry) const {
  constexpr double MostLater = 5;  // seconds
  const auto passed = passedOn_.find(entry.path());
  if (passed == passedOn_.end() || passed->second.from != entry.userId()) return false;
  const KDLogFileEntry& version = *passed->second.version;
  const double later = entry.modTime() - version.modTime();
  if (entry.isDirectory() || later <= 0 || later > MostLater) return false;
  const KDDiskState* disk = entry.pathRecord().disk;
  return !version.isParentOfEntry(&entry) && disk && disk->entry == &version;
}

void KDPoolState::applyRemoteLogEntries(std::vector<KDLogFileEntry*> entries) {
  if (entries.empty()) return;
  noteLogged(entries);
  entries.insert(entries.end(), waiting_.begin(), waiting_.end());
  waiting_.clear();
  std::stable_sort(entries.begin(), entries.end(), [](const auto* left, const auto* right) {
    return left->logTime() < right->logTime();
  });
  std::set<std::string> toLoad;
  std::set<std::string> toDelete;
  std::set<KDPathRecord*> toRepair;
  std::set<std::string> doubtful;
  for (KDLogFileEntry* entry : entries) {
    if (mustWait(*entry)) continue;
    toRepair.insert(&entry->pathRecord());
    if (cameFromAnotherFile(*entry)) doubtful.emplace(entry->path());
    try {
      applyRemoteLogEntry(*entry, toLoad, toDelete);
    } catch (const InconsistencyError& error) {  // costs its path only
      platform_.log.error("An entry for '{}' could not be applied: {}", entry->path(),
                          error.what());
    }
  }
  for (KDPathRecord* path : toRepair) repair(*path);
  // The choices made above are on disk before anything is deleted.
  if (const auto written = flush(); !written) return;
  // What lives on in another branch, or was created anew, is not deleted but fetched.
  std::erase_if(toDelete, [this](const std::string& text) {
    const KDPathRecord* path = store_->findPath(text);
    return path && path->activeLeafCount > 0 && !path->disk;
  });
  std::vector<std::string> kept;
  std::erase_if(toDelete, [&](const std::string& text) {
    const KDPathRecord* path = store_->findPath(text);
    const KDDiskState* disk = path ? path->disk : nullptr;
    if (!disk || !disk->entry || todo_.contains(text)) return false;
    if (!wasKeptInCrossedDrops(*tree_, *disk->entry)) return false;
    const auto attributes = folder_->attributes(text);
    const bool isKept = attributes && disk->isUnchanged(*attributes);
    if (isKept) kept.push_back(text);
    return isKept;
  });
  logWritten(kept);
  if (!toDelete.empty()) {
    listener_->willDeleteFiles(toDelete);
    deleteFiles(toDelete);
  }
  for (const std::string& text : doubtful) {
    passedOn_.erase(text);
    const KDPathRecord* path = store_->findPath(text);
    const auto attributes = folder_->attributes(text);
    if (attributes && path->disk && path->disk->isUnchanged(*attributes)) trashOne(text);
    toLoad.insert(text);
    listener_->fullSyncNeeded();
  }
  addTodoFiles(toLoad);
  checkTodoFiles();
}

void KDPoolState::applyRemoteLogEntry(KDLogFileEntry& entry, std::set<std::string>& toLoad,
                                      std::set<std::string>& toDelete) {
  KDPathRecord& path = entry.pathRecord();
  KDLogFileEntry* current = nullptr;
  try {
    if (path.newest) current = selectedLeaf(path).leaf;
  } catch (const InconsistencyError& error) {  // whatever this brings, the entry is merged
    platform_.log.error("'{}' could not be corrected: {}", path.text, error.what());
  }
  const bool grew = mergeEntry(&entry);
  if (entry.type() == KDLogFileEntry::KDBranchSelectionType) return;
  // A choice can lie where the version at hand and the new one begin.
  const bool isUnclear =
      current && current->childCount() == 0 && current->exists() && !tree_->isSelectionClear(path);
  if (current && (grew || isUnclear)) {
    // Both sides go on working on what they have; a person decides. Of several directories that
    // were one the entry may have turned just one into a file.
    KDLogFileEntry* directory = current->isDirectory() ? tree_->directoryLeaf(path) : nullptr;
    logSelectionOfBranchEntry(directory ? *directory : *current);
    return;
  }
  if (current && entry.parentEntry() != current) {
    platform_.log.debug("Change in log entry {} ignored because it affects a foreign branch.",
                        entry.shortDescription());
    return;
  }
  std::string text(path.text);
  if (entry.exists()) {
    toDelete.erase(text);
    toLoad.insert(std::move(text));
  } else {
    toLoad.erase(text);
    toDelete.insert(std::move(text));
  }
}

bool KDPoolState::mayDelete(const KDPathRecord& path, const FileAttributes& attributes) const {
  const KDDiskState* disk = path.disk;
  if (!disk || !disk->entry || !disk->isUnchanged(attributes)) return false;
  if (disk->kind == FileKind::Directory && tree_->directoryLeaf(path)) return false;
  for (const KDLogFileEntry* leaf = path.firstLeaf; leaf; leaf = leaf->nextLeaf()) {
    if (!leaf->exists() && disk->entry->isParentOfEntry(leaf)) return true;
  }
  return false;
}

bool KDPoolState::goesAsAWhole(const std::string& directory, const std::set<std::string>& paths) {
  bool isWhole = true;
  folder_->walk(
      directory,
      [&](std::string_view path, const FileAttributes& attributes) {
        const KDPathRecord* record = store_->findPath(path);
        isWhole = record && !isIgnored(*record) && paths.contains(std::string(path)) &&
                  mayDelete(*record, attributes);
        return isWhole ? Folder::Visit::Enter : Folder::Visit::Stop;
      },
      [&](std::string_view, const Failure&) { isWhole = false; });
  return isWhole;
}

void KDPoolState::trashOne(const std::string& path) {
  if (const auto trashed = folder_->trash(path); !trashed) {
    // The record stays, so the next scan tries again.
    warnOnce("trash " + path, trashed.error().message());
    stuck_[path] = trashed.error().message();
    noteChanged(path);
    return;
  }
  if (KDPathRecord* record = store_->findPath(path)) record_->forget(*record);
}

/// Only what the record says is the deleted version, or an older one of its line, goes to the
/// Trash. Anything else stays, and the scan logs it anew. A directory goes as one item when all in
/// it goes, else item by item, and stays when something is left in it.
void KDPoolState::deleteFiles(const std::set<std::string>& paths) {
  std::vector<std::string> directories;  // parents before children
  std::string trashedWhole;              // the last directory that went as one item
  const auto wentAlong = [&](const std::string& path) {
    return !trashedWhole.empty() && path.size() > trashedWhole.size() &&
           path.starts_with(trashedWhole) && path[trashedWhole.size()] == '/';
  };
  for (const std::string& path : paths) {
    KDPathRecord* record = store_->findPath(path);
    if (!record || isIgnored(*record)) continue;
    if (wentAlong(path)) {
      if (!folder_->attributes(path)) record_->forget(*record);
      continue;
    }
    const auto attributes = folder_->attributes(path);
    if (!attributes) {
      if (attributes.error().kind == FailureKind::Absent) record_->forget(*record);
      continue;
    }
    if (!mayDelete(*record, *attributes)) continue;
    if (attributes->kind != FileKind::Directory) {
      trashOne(path);
    } else if (goesAsAWhole(path, paths)) {
      trashOne(path);
      trashedWhole = path;
    } else {
      directories.push_back(path);
    }
  }
  for (auto directory = directories.rbegin(); directory != directories.rend(); ++directory) {
    KDPathRecord* record = store_->findPath(*directory);
    const auto content = folder_->list(*directory);
    if (!content || !record) continue;
    if (content->empty()) {
      trashOne(*directory);
    } else if (std::any_of(stuck_.begin(), stuck_.end(), [&](const auto& item) {
                 return item.first.starts_with(*directory + "/");
               })) {
      continue;  // tried again with what is in it
    } else if (record->activeLeafCount == 0 && localLog_ && !holdsOnlyIgnored(*directory)) {
      // Something that nobody deleted lives in it: the directory is wanted again.
      platform_.log.warning(
          "Found File that ought to be deleted according to the logs. Logging a re-creation.");
      KDEntryFields fields;
      fields.path = record->text;
      fields.isDirectory = true;
      fields.userId = settings_.userId;
      const auto made =
          store_->make(platform_.clock, platform_.log, notBefore(fields.path), fields);
      appendOwn(made);
      if (const auto attributes = folder_->attributes(*directory)) {
        record_->set(*record, KDDiskState::of(*attributes, made.entry));
      }
    }
  }
  std::set<std::string> gone;
  for (const std::string& path : paths) {
    const auto attributes = folder_->attributes(path);
    if (!attributes && attributes.error().kind == FailureKind::Absent) gone.insert(path);
  }
  if (!gone.empty()) listener_->didDeleteFiles(gone);
}

}  // namespace zolvar
