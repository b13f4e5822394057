// The scan: what changed on this disk since the last one, and what vanished.

#include "pool/KDPoolStateScan.h"

#include <algorithm>

#include "platform/Clock.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "pool/ArrivingName.h"
#include "pool/CopyRunRecord.h"
#include "pool/KDPoolState.h"
#include "pool/LinkTarget.h"
#include "pool/ScanDecision.h"
#include "util/PathRules.h"

namespace zolvar {

namespace {

/// Places of the desktop and the file system at the top of a folder: never content.
bool isForeignTopLevel(std::string_view path) {
  return path.starts_with(".Trash") || path == "lost+found";
}

/// What a scan of everything would not enter, or nothing beneath it.
bool isLeftOut(std::string_view directory) {
  for (std::string_view step = directory; !step.empty(); step = parentPath(step)) {
    if (isMetadataPath(step) || isForeignTopLevel(step) || !isSafeRelativePath(step)) return true;
  }
  return false;
}

/// Gives back what a scan took, unless it came to its end.
class UnfinishedScope {
 public:
  UnfinishedScope(ChangedFolders* changed, const ScanScope& scope)
      : changed_(changed), scope_(scope) {}
  ~UnfinishedScope() {
    if (changed_) changed_->giveBack(scope_);
  }
  UnfinishedScope(const UnfinishedScope&) = delete;
  void release() { changed_ = nullptr; }

 private:
  ChangedFolders* changed_;
  const ScanScope& scope_;
};

}  // namespace

void KDPoolState::checkFileSystemChanges() {
  if (isDetached_ || isRecovering_) return;
  if (!isActive_ || !localLog_) {
    platform_.log.debug("Skipped check for file system changes until local log has been loaded.");
    return;
  }
  if (!isAccessible()) return;
  scan();
  publish();
}

void KDPoolState::scan() {
  // Modification times have whole seconds: two scans are at least one apart.
  if (wholeSeconds(platform_.clock.now()) - lastScan_ <= 1) {
    platform_.clock.sleepUntil(platform_.clock.now() + 1);
  }
  copying_.clear();  // what changes from now on is no copy run's doing
  Scan scan;
  scan.number = ++scanNumber_;
  scan.now = platform_.clock.now();
  refreshIgnoreRules();
  if (settings_.changed) scan.scope = settings_.changed->take(scan.now);
  UnfinishedScope unfinished(settings_.changed.get(), scan.scope);
  stuck_.clear();
  look(scan);
  if (isDetached_) return;

  putAwayLeftovers(scan);
  if (!scan.reappeared.empty()) {
    for (const std::string& path : scan.reappeared) inQuestion_.erase(path);
    isQuestionStale_ = true;
  }
  chooseOwn(scan);
  chooseWhatLiesHere();
  if (isFirstRun_) wantWhatWasChosen(scan);
  (void)flush();
  for (const std::string& path : scan.emptied) {
    trashOne(path);
    scan.toFetch.insert(path);
  }
  if (!scan.toDelete.empty()) {
    for (const std::string& path : scan.toDelete) {
      const KDPathRecord* record = store_->findPath(path);
      const bool hasOtherBranch = record && record->activeLeafCount > 0;
      // What cannot make way is met at each scan, but is no reason to ask everybody each time.
      if (hasOtherBranch && !todo_.contains(path)) scan.toFetch.insert(path);
    }
    deleteFiles(scan.toDelete);
  }
  if (!scan.toFetch.empty() && addTodoFiles(scan.toFetch)) listener_->fullSyncNeeded();
  settleVanished(scan);
  tellApart();
  askForListings(scan.now);
  (void)flush();
  isFirstRun_ = false;
  lastScan_ = wholeSeconds(platform_.clock.now());
  unfinished.release();
}

/// All at once: a choice waits until the clock has passed the time of the version it names.
void KDPoolState::chooseOwn(const Scan& scan) {
  for (KDLogFileEntry* entry : scan.toSelect) {
    if (entry->childCount() == 0 && entry->pathRecord().activeLeafCount > 1) {
      logSelectionOfBranchEntry(*entry);
    }
  }
}

void KDPoolState::look(Scan& scan) {
  if (!scan.scope.isWhole) {
    lookAtFolders(scan);
    return;
  }
  folder_->walk(
      "",
      [&](std::string_view path, const FileAttributes& attributes) {
        return isDetached_ ? Folder::Visit::Stop : visit(scan, path, attributes);
      },
      [&](std::string_view directory, const Failure& failure) {
        noteUnseen(scan, directory, failure);
      });
}

/// Compares the entries of some directories, and all beneath a directory that came since.
void KDPoolState::lookAtFolders(Scan& scan) {
  std::set<std::string, std::less<>> folders;
  const auto isKnown = [this](std::string_view path, const FileAttributes& attributes) {
    const KDPathRecord* record = store_->findPath(path);
    return record && record->disk && record->disk->kind == FileKind::Directory &&
           attributes.kind == FileKind::Directory && record->disk->inode != 0 &&
           record->disk->inode == attributes.inode && record->disk->device == attributes.device;
  };
  for (std::string_view folder : scan.scope.folders) {
    while (!folder.empty()) {  // one that went, or came since, is met where it lies
      const auto there = folder_->attributes(folder);
      if (there && isKnown(folder, *there)) break;
      folder = parentPath(folder);
    }
    folders.emplace(folder);
  }
  const auto isWalked = [&scan](std::string_view folder) {
    for (; !folder.empty(); folder = parentPath(folder)) {
      if (scan.walked.contains(folder)) return true;
    }
    return false;
  };
  const auto failed = [&](std::string_view directory, const Failure& failure) {
    noteUnseen(scan, directory, failure);
  };
  for (const std::string& folder : folders) {  // parents before children
    if (isLeftOut(folder) || isWalked(folder) || ignore_.ignores(folder, true)) continue;
    const auto entries = folder_->list(folder);
    if (!entries) {
      failed(folder, entries.error());
      continue;
    }
    scan.listed.insert(folder);
    for (const auto& [name, attributes] : *entries) {
      if (isDetached_) return;
      const std::string path = folder.empty() ? name : joinPath(folder, name);
      const bool wasKnown = !scan.scope.arrived.contains(path) && isKnown(path, attributes);
      const auto next = visit(scan, path, attributes);
      if (attributes.kind != FileKind::Directory) continue;
      scan.directories.insert(path);
      if (next != Folder::Visit::Enter || wasKnown) continue;
      scan.walked.insert(path);
      folder_->walk(
          path,
          [&](std::string_view inner, const FileAttributes& found) {
            return isDetached_ ? Folder::Visit::Stop : visit(scan, inner, found);
          },
          failed);
    }
  }
}

/// What a copy run leaves that is cut off hard is nobody's file.
void KDPoolState::putAwayLeftovers(const Scan& scan) {
  bool isAllGone = true;
  for (const std::string& path : scan.leftovers) {
    platform_.log.warning("A transfer was cut off; '{}' in {}, which it left, goes to the Trash.",
                          path, settings_.folderPath);
    trashOne(path);
    isAllGone = isAllGone && !folder_->attributes(path);
  }
  if (isAllGone) {
    if (const auto ended = copyRuns_->end(); !ended) {
      platform_.log.warning("{}", ended.error().message());
    }
  }
  for (const std::string& path : scan.shaped) copyRuns_->noteSeen(path);
}

void KDPoolState::noteUnseen(Scan& scan, std::string_view directory, const Failure& failure) {
  scan.unseen.emplace_back(directory);
  warnOnce("unreadable " + std::string(directory), failure.message());
  if (settings_.changed) settings_.changed->noteFolder(directory);  // looked at each time
}

void KDPoolState::noteChanged(std::string_view path) {
  if (settings_.changed) settings_.changed->note(path);
}

/// Who subscribes to a folder with conflicts works with the branch that lies here already.
void KDPoolState::chooseWhatLiesHere() {
  std::vector<KDPathRecord*> paths;
  for (const KDPathRecord* path : conflicts_) {
    const bool isHere = path->disk && path->disk->entry && path->seenInScan == scanNumber_;
    if (isHere && !tree_->selectedLeaf(*path).leaf) paths.push_back(store_->findPath(path->text));
  }
  for (KDPathRecord* path : paths) (void)selectedLeaf(*path);
}

/// When the list of missing files was lost, by a power failure or a hand, what was chosen and does
/// not lie here is nowhere noted as missing.
void KDPoolState::wantWhatWasChosen(Scan& scan) {
  for (const KDPathRecord* path : conflicts_) {
    const KDLogFileEntry* chosen = tree_->selectedLeaf(*path).leaf;
    const KDDiskState* disk = path->disk;
    if (!chosen || !disk || !disk->entry || path->seenInScan != scan.number) continue;
    const bool isIt = disk->kind == FileKind::Directory ? chosen->isDirectory()
                                                        : disk->entry->isParentOfEntry(chosen);
    if (!isIt && !todo_.contains(path->text)) scan.toFetch.emplace(path->text);
  }
}

/// Two people have given their versions of a file one time. By its time nobody could tell which one
/// lies somewhere; so the one with the greater user id gives the own one a later time.
void KDPoolState::tellApart() {
  std::vector<std::string> paths;
  for (const KDPathRecord* path : conflicts_) {
    if (!sameTimed(*path) || (twin(*path) && !noTwins_.contains(std::string(path->text)))) continue;
    const auto attributes = folder_->attributes(path->text);
    if (!attributes || !path->disk->isUnchanged(*attributes)) continue;
    std::int64_t later = attributes->modTime;
    do ++later;
    while (tree_->versionWithModTime(*path, static_cast<double>(later), settings_.userId));
    if (folder_->setModTime(path->text, later)) paths.emplace_back(path->text);
  }
  noTwins_.clear();
  if (!paths.empty()) logWritten(paths);
}

Folder::Visit KDPoolState::visit(Scan& scan, std::string_view path,
                                 const FileAttributes& attributes) {
  KDPathRecord* record = store_->findPath(path);
  if (!(record && record->newest) && isShapedAsArriving(lastPathComponent(path))) {
    if (copyRuns_->isLeftover(path, attributes, scan.now, todo_)) {
      scan.leftovers.emplace_back(path);
      return Folder::Visit::Enter;
    }
    scan.shaped.emplace_back(path);
  }
  if (!ignore_.isEmpty() && ignore_.ignoresItem(path, attributes.kind == FileKind::Directory)) {
    if (record) record->seenInScan = scan.number;  // something lies there: nothing has vanished
    return Folder::Visit::Skip;
  }
  if (record) {
    record->seenInScan = scan.number;
    const KDDiskState* disk = record->disk;
    // What nearly every file is: a current version, as it was.
    if (disk && disk->entry && disk->inode != 0 && disk->isUnchanged(attributes) &&
        disk->device == attributes.device && disk->entry->childCount() == 0 &&
        disk->entry->exists() && inQuestion_.empty()) {
      return Folder::Visit::Enter;
    }
  }
  if (isMetadataPath(path) || isForeignTopLevel(path)) return Folder::Visit::Skip;
  if (path.ends_with(".DS_Store")) return Folder::Visit::Enter;
  if (!isSafeRelativePath(path)) {
    if (path.find_first_of("\r\n") == std::string_view::npos) {
      warnOnce("name " + std::string(path),
               fmt::format("'{}' in {} is left out: its name or path cannot be shared.", path,
                           settings_.folderPath));
    }
    return Folder::Visit::Skip;
  }
  if (!record && settings_.folderPath.size() + 1 + path.size() >= LongestPath) {
    // Other programs, and the Trash, name a file by its whole path.
    warnOnce("length " + std::string(path),
             fmt::format("'{}' in {} is left out: its path is longer than the {} bytes that the "
                         "system can open.",
                         lastPathComponent(path), settings_.folderPath, LongestPath - 1));
    return Folder::Visit::Skip;
  }
  if (attributes.kind == FileKind::Other) {
    warnOnce("kind " + std::string(path),
             fmt::format("'{}' in {} is left out: only files, folders and links are shared.", path,
                         settings_.folderPath));
    return Folder::Visit::Enter;
  }
  if (attributes.kind == FileKind::Link) {
    const auto target = folder_->readLink(path);
    if (!target) {
      noteChanged(path);
      return Folder::Visit::Enter;
    }
    if (!isInnerLinkTarget(path, *target)) {
      warnOnce("link " + std::string(path),
               fmt::format("The link '{}' in {} is left out: it points outside the folder.", path,
                           settings_.folderPath));
      return Folder::Visit::Enter;
    }
  }
  if (record && record->disk && attributes.kind == FileKind::Directory &&
      record->disk->kind == FileKind::Directory && record->disk->device != 0 &&
      record->disk->device != attributes.device) {
    // A drive came or went here: what is missing beneath is not deleted.
    scan.unseen.emplace_back(path);
    warnOnce("device " + std::string(path),
             fmt::format("'{}' in {} is on another drive than before; files missing beneath it are "
                         "not taken for deleted.",
                         path, settings_.folderPath));
  }
  const bool isDeleted = record && record->newest && record->activeLeafCount == 0;
  if (isDeleted && attributes.kind == FileKind::Directory && holdsOnlyIgnored(path)) {
    noteChanged(path);            // something else may come to lie in it, at any depth
    return Folder::Visit::Enter;  // deleted as far as it is shared
  }
  carryOut(scan, path, record, attributes);
  return Folder::Visit::Enter;
}

void KDPoolState::carryOut(Scan& scan, std::string_view path, KDPathRecord* record,
                           const FileAttributes& attributes) {
  ScanFacts facts;
  facts.attributes = attributes;
  facts.isTodo = !todo_.empty() && todo_.contains(path);
  facts.isFirstRun = isFirstRun_;
  facts.isResumed = record_->knowsRoot();
  facts.mayHaveArrived = isFirstRun_ || tooFreshAtStart_.contains(path);
  facts.now = scan.now;
  facts.freshFiles = scan.takesFresh ? 0 : settings_.pace.freshFiles;
  if (isFirstRun_ && record && record->newest && record->activeLeafCount == 0) {
    if (const auto parent = folder_->attributes(parentPath(path)))
      facts.parentModTime = parent->modTime;
  }
  if (!inQuestion_.empty() && inQuestion_.contains(path)) scan.reappeared.emplace(path);

  const ScanDecision decision =
      decideScan(*tree_, record && record->newest ? record : nullptr, facts);
  const bool isTooFresh = decision.action == ScanAction::TooFresh;
  if (isTooFresh && isFirstRun_) tooFreshAtStart_.emplace(path);
  if (!isTooFresh && facts.mayHaveArrived && !isFirstRun_)
    tooFreshAtStart_.erase(std::string(path));
  switch (decision.action) {
    case ScanAction::TooFresh:
      noteChanged(path);
      return;
    case ScanAction::Nothing:
      // After a restore or a move between drives inodes are learned anew.
      if (record && record->disk && record->disk->entry && record->disk->device == 0) {
        record_->set(*record, KDDiskState::of(attributes, record->disk->entry));
      }
      return;
    case ScanAction::Confirm:
      record_->set(*record, KDDiskState::of(attributes, decision.version));
      return;
    case ScanAction::Guess:
      record_->set(*record, KDDiskState::guess(attributes, decision.version));
      unverified_.emplace(path);
      return;
    case ScanAction::Reget:
      platform_.log.warning(
          "Warning: Existing version of file {} is not the current version! File system not "
          "up-to-date. Activating re-get.",
          path);
      if (!record->disk || !record->disk->isUnchanged(attributes)) {
        record_->set(*record, KDDiskState::guess(attributes, decision.version));
      }
      scan.toFetch.emplace(path);
      return;
    case ScanAction::Emptied:
      platform_.log.warning("'{}' in {} was emptied by a power failure; it is fetched again.", path,
                            settings_.folderPath);
      record_->set(*record, KDDiskState::guess(attributes, decision.version));
      scan.emptied.emplace(path);
      return;
    case ScanAction::Delete:
      warnOnce(fmt::format("delete {} {}", path, decision.version->logTime()),
               "Will delete file as recorded in the logs here: " +
                   tree_->leafForEntry(decision.version)->shortDescription());
      record_->set(*record, KDDiskState::of(attributes, decision.version));
      scan.toDelete.emplace(path);
      return;
    case ScanAction::LogRecreation:
      platform_.log.warning(
          "Found File that ought to be deleted according to the logs. Logging a re-creation.");
      logModification(scan, path, attributes, nullptr);
      return;
    case ScanAction::LogLaterTime: {
      FileAttributes later = attributes;
      const auto isTaken = [&](double time) {  // with a directory's time it would be a mere choice
        return (decision.parent && decision.parent->modTime() == time) ||
               tree_->versionWithModTime(*record, time, settings_.userId);
      };
      do ++later.modTime;
      while (isTaken(comparedTime(later)));
      if (const auto set = folder_->setModTime(path, later.modTime); !set) {
        warnOnce("time " + std::string(path), set.error().message());
        noteChanged(path);
        return;
      }
      logModification(scan, path, later, decision.parent);
      return;
    }
    case ScanAction::LogModification:
      logModification(scan, path, attributes, decision.parent);
      return;
  }
}

KDLogFileEntry* KDPoolState::logModification(Scan& scan, std::string_view path,
                                             FileAttributes attributes, KDLogFileEntry* parent) {
  KDEntryFields fields;
  fields.path = path;
  fields.isDirectory = attributes.kind == FileKind::Directory;
  fields.modTime = comparedTime(attributes);
  fields.userId = settings_.userId;
  if (parent && !KDEntryStore::canBeFollowed(*parent)) parent = nullptr;
  double earliest = notBefore(path);
  if (parent) {
    fields.plogTime = parent->logTime();
    fields.puserId = parent->userId();
    // With its parent's time it would be a mere choice of the parent.
    if (fields.isDirectory) earliest = std::max(earliest, parent->modTime() + 1);
  }
  const KDEntryStore::Made made = store_->make(platform_.clock, platform_.log, earliest, fields);
  platform_.log.debug("logFileSystemModificationAtPath: {}", made.entry->description());
  if (parent && !made.entry->parentEntry()) made.entry->setParentEntry(parent);
  appendOwn(made);
  KDPathRecord& record = made.entry->pathRecord();
  if (parent && parent->isDirectory() && !fields.isDirectory) {
    // The directory that it replaces was one, whoever logged it.
    if (KDLogFileEntry* other = tree_->directoryLeaf(record)) logDeletionOfBranchLeaf(*other);
  }
  record.seenInScan = scan.number;
  record_->set(record, KDDiskState::of(attributes, made.entry));
  // An earlier choice may lie where both branches begin.
  if (!tree_->isSelectionClear(record) || tree_->selectedLeaf(record).leaf != made.entry) {
    scan.toSelect.push_back(made.entry);
  }
  return made.entry;
}

}  // namespace zolvar
