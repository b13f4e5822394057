// What a sync on the transfer lane asks of the state, step by step.

#include <algorithm>

#include "log/LogReader.h"
#include "platform/Clock.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "pool/CopyRunRecord.h"
#include "pool/HeldLogs.h"
#include "pool/KDPoolState.h"
#include "pool/ScanDecision.h"
#include "util/PathRules.h"

namespace zolvar {

namespace {

std::string joined(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  return text;
}

/// Hands out a text as a log reader wants it.
Folder::Reader readerOf(const std::string& text) {
  return [&text, offset = std::size_t{0}](char* buffer, std::size_t size) mutable {
    const std::size_t count = std::min(size, text.size() - offset);
    std::copy_n(text.data() + offset, count, buffer);
    offset += count;
    return Result<std::size_t>(count);
  };
}

}  // namespace

Result<> KDPoolState::prepareLogLoad() {
  if (localLog_) localLog_->close();
  if (guard_->hasSetAside()) {
    // An earlier load could not be settled (a full disk, perhaps). A log that is made whole only
    // now has lines before the offset up to which it was merged.
    const GuardReport report = guard_->settle();
    for (const GuardedLog& log : report.logs) {
      if (log.rewritten) mergedOffsets_[log.name] = 0;
    }
    if (report.trouble) return tl::unexpected(*report.trouble);
  }
  // Without one of our own a load would leave the participant's.
  if (!folder_->attributes(joinPath(MetadataFolderName, LogGuard::TodoFileName))) {
    isTodoDirty_ = true;
    if (const auto saved = saveTodoFiles(); !saved) return saved;
  }
  return guard_->setAside();
}

void KDPoolState::finishLogLoad() {
  if (isDetached_) return;
  if (!guard_->hasSetAside()) isTodoDirty_ = true;  // the folder was away meanwhile
  GuardReport report = guard_->settle();
  if (report.trouble) platform_.log.error("{}", report.trouble->message());
  if (isActive_) {
    const std::string ownName = settings_.userId + std::string(LogFileExtension);
    std::vector<KDLogFileEntry*> entries;
    for (const GuardedLog& guarded : report.logs) {
      const std::uint64_t offset = mergedOffsets_[guarded.name];
      if (guarded.rewritten && offset > 0) {
        const std::string userId =
            guarded.name.substr(0, guarded.name.size() - LogFileExtension.size());
        LogReader reader(*store_, userId, LogReader::Mode::Tolerant, platform_.log);
        const std::string text = joined(guarded.linesNewToUs);
        (void)reader.readAll(readerOf(text), 0, text.size());
        const auto& read = reader.summary().entries;
        entries.insert(entries.end(), read.begin(), read.end());
        if (const auto now = folder_->attributes(joinPath(MetadataFolderName, guarded.name))) {
          mergedOffsets_[guarded.name] = now->size;
        }
        continue;
      }
      const auto now = folder_->attributes(joinPath(MetadataFolderName, guarded.name));
      if (!now || now->size <= offset) continue;
      LogReadSummary summary = readLog(guarded.name, offset);
      if (!summary.entries.empty()) {
        platform_.log.debug("Loading {} changes to log file {}.", summary.entries.size(),
                            guarded.name);
      }
      mergedOffsets_[guarded.name] = summary.endOffset;
      if (offset == 0 || guarded.name == ownName) {  // new to us, or read once more
        std::erase_if(summary.entries, [this](const KDLogFileEntry* entry) {
          const KDLogFileEntry* known = tree_->version(entry->pathRecord(), entry->id());
          return known && known->isEqual(*entry);
        });
      }
      entries.insert(entries.end(), summary.entries.begin(), summary.entries.end());
    }
    for (const KDLogFileEntry* entry : entries) {
      if (entry->userId() == settings_.userId) {
        ownLastLogTime_ = std::max(ownLastLogTime_, entry->logTime());
      }
    }
    applyRemoteLogEntries(std::move(entries));
    (void)flush();
  }
  refreshLogState();
  if (std::any_of(report.logs.begin(), report.logs.end(),
                  [](const GuardedLog& log) { return log.changed || log.rewritten; })) {
    isAnnouncementDue_ = true;  // others may get these changes from us
  }
  publish();
}

std::map<std::string, std::uint64_t> KDPoolState::logSizesOnDisk() {
  refreshLogState();
  return published_.logSizes;
}

std::set<std::string> KDPoolState::wantedFiles() {
  std::set<std::string> wanted(todo_.begin(), todo_.end());
  for (const std::string& path : inQuestion_) wanted.erase(path);
  std::set<std::string_view> directories;
  for (const std::string& path : wanted) {
    for (auto slash = path.find('/'); slash != std::string::npos;
         slash = path.find('/', slash + 1)) {
      directories.insert(std::string_view(path).substr(0, slash));
    }
  }
  for (const std::string_view directory : directories) (void)makeRealDirectory(directory);
  wanted.merge(toBeCompared());
  return wanted;
}

/// Files that lie here and of which a listing can tell which version they are.
std::set<std::string> KDPoolState::toBeCompared() const {
  std::set<std::string> paths = unverified_;
  for (const KDPathRecord* path : conflicts_) {
    if (twin(*path)) paths.emplace(path->text);
  }
  return paths;
}

/// While there are such files everybody is asked, after growing pauses.
void KDPoolState::askForListings(double now) {
  constexpr double LeastPause = 60;
  constexpr double LongestPause = 15 * 60;
  std::erase_if(unverified_, [this](const std::string& path) {
    const KDPathRecord* record = store_->findPath(path);
    return !record || !record->disk || !record->disk->isGuess;  // gone, or fetched since
  });
  if (toBeCompared().empty()) {
    listingsPause_ = 0;
  } else if (now - listingsAskedAt_ >= listingsPause_) {
    listener_->fullSyncNeeded();
    listingsAskedAt_ = now;
    listingsPause_ = std::clamp(listingsPause_ * 2, LeastPause, LongestPause);
  }
}

/// The other's version with the time of ours that lies here. Only one of the two sees the other's.
KDLogFileEntry* KDPoolState::sameTimed(const KDPathRecord& path) const {
  const KDDiskState* disk = path.disk;
  if (!disk || !disk->entry || disk->kind == FileKind::Directory) return nullptr;
  const KDLogFileEntry& own = *disk->entry;
  if (own.userId() != settings_.userId || own.childCount() > 0) return nullptr;
  for (KDLogFileEntry* leaf = path.firstLeaf; leaf; leaf = leaf->nextLeaf()) {
    if (leaf->modTime() == own.modTime() && leaf->userId() < own.userId()) return leaf;
  }
  return nullptr;
}

/// The other's version of a file that two people have logged as new, with the same time: perhaps
/// two copies of one file.
KDLogFileEntry* KDPoolState::twin(const KDPathRecord& path) const {
  KDLogFileEntry* other = sameTimed(path);
  return other && other->plogTime() == 0 && path.disk->entry->plogTime() == 0 ? other : nullptr;
}

/// A file here that has the time of a version, and a listing that tells the version's size.
void KDPoolState::compareWithListing(KDPathRecord& path, const ListingEntry& entry,
                                     const std::string& participant, const HeldLogs& held) {
  KDDiskState* disk = path.disk;
  if (!disk || !disk->entry || entry.kind == 'd') return;
  const auto& times = entry.modTimes;
  if (std::find(times.begin(), times.end(), disk->modTime) == times.end()) return;
  KDLogFileEntry* listed =
      tree_->versionWithModTime(path, std::max(disk->entry->modTime(), 1.0), participant);
  if (listed && !held.mayHold(*listed)) return;
  const auto attributes = folder_->attributes(path.text);
  if (!attributes || !disk->isUnchanged(*attributes)) return;
  KDLogFileEntry* other = twin(path);
  const FileKind kind = entry.kind == 'l' ? FileKind::Link : FileKind::Regular;
  const bool looksSame = disk->kind == kind && disk->size == entry.size;
  const bool isListed = other && other == listed;
  // From who may have it from us, it would always look the same.
  if (isListed && tree_->isAmbiguous(*other, participant, held)) return;
  if (isListed && looksSame && kind == FileKind::Regular) {
    KDLogFileEntry& own = *disk->entry;
    KDDiskState state = KDDiskState::of(*attributes, other);
    state.isUnseen = true;
    record_->set(path, state);
    isRecordHeld_ = true;
    logDeletionOfBranchLeaf(own);
    return;
  }
  if (isListed) {  // and a link is one of two only if both lead to the same place
    noTwins_.emplace(path.text);
    listener_->scanWanted();
  }
  if (!disk->isGuess || disk->entry != listed) return;
  // Empty instead of what it should be, after a power failure: what waits to be fetched again.
  if (disk->kind == kind && disk->size == 0 && entry.size > 0) {
    addTodoFiles({std::string(path.text)});
    return;
  }
  // It would look the same with who has the other one of its second.
  if (tree_->isAmbiguous(*listed, participant, held)) return;
  if (looksSame && kind == FileKind::Link) {
    // A listing tells the length of its target and no more; the tool compares the target itself.
    addTodoFiles({std::string(path.text)});
    return;
  }
  unverified_.erase(std::string(path.text));
  KDDiskState state = KDDiskState::of(*attributes, disk->entry);
  state.isUnseen = true;
  if (!looksSame) {
    // Another file with the same time: recorded as one that lay elsewhere, it is logged as new.
    state.kind = kind;
    state.size = entry.size;
    state.inode = 0;
    listener_->scanWanted();
  }
  record_->set(path, state);
  isRecordHeld_ = true;
}

CopyPlan KDPoolState::decideListing(const std::vector<ListingEntry>& listed,
                                    const ParticipantAddress& participant) {
  CopyPlan plan;
  if (isDetached_ || !isActive_) return plan;
  const std::string userId = participant.userId();
  const HeldLogs held(listed, userId, published_.logSizes, *folder_, toldLogs_[userId],
                      platform_.clock.now());
  listed_.clear();
  listedBy_ = userId;
  for (auto& [path, seen] : seen_) seen.holders.erase(userId);
  for (const ListingEntry& entry : listed) {
    KDPathRecord* path = store_->findPath(entry.path);
    if (path) compareWithListing(*path, entry, userId, held);
    if (!todo_.contains(entry.path)) continue;
    if (ignore_.ignores(entry.path, entry.kind == 'd')) {
      removeTodoFiles({entry.path});
      continue;
    }
    // Where nothing is chosen any more, what lies here counts: nobody else may have it.
    const KDLogFileEntry* leaf = path ? selectedLeaf(*path).leaf : nullptr;
    if (path && path->disk && !path->disk->entry &&
        std::find(entry.modTimes.begin(), entry.modTimes.end(), path->disk->modTime) ==
            entry.modTimes.end()) {
      // Nobody logged what lies here since the last copy run, and the participant does not have it:
      // an edit of ours from the moment of the arrival. The next scan logs it.
      record_->forget(*path);
      listener_->scanWanted();
    }
    listed_[entry.path] = nullptr;
    if (entry.kind == 'd') {
      if (leaf && !leaf->isDirectory()) continue;  // the participant has not yet got the file
    } else {
      KDLogFileEntry* remote = nullptr;
      for (const std::int64_t time : entry.modTimes) {
        const auto compared = static_cast<double>(std::max<std::int64_t>(time, 1));
        if (path && !remote) remote = tree_->versionWithModTime(*path, compared, userId);
      }
      if (leaf && !(remote && remote->isParentOfEntry(leaf))) continue;
      if (remote && !held.mayHold(*remote)) continue;  // some other file of its time
      // An older one, too: when the wanted one is dropped, what lies here is judged by its time.
      if (remote && tree_->isAmbiguous(*remote, userId, held)) {
        if (!leaf || remote == leaf) seen_[entry.path].holders.insert(userId);  // it is waited for
        continue;
      }
      // Nothing older than what lies here already, if it still does.
      if (remote && path->disk && path->disk->entry && !path->disk->isGuess &&
          folder_->attributes(entry.path) && remote->isParentOfEntry(path->disk->entry)) {
        continue;
      }
      // What lies here of another branch makes room for the chosen version, not for older ones.
      if (leaf && remote != leaf && path->disk && path->disk->entry &&
          !path->disk->entry->isParentOfEntry(leaf) && folder_->attributes(entry.path)) {
        continue;
      }
      listed_[entry.path] = remote;
      plan.sizes[entry.path] = entry.size;
    }
    plan.files.insert(entry.path);
    SeenFile& seen = seen_[entry.path];
    seen.holders.insert(userId);
    seen.size.reset();
    if (entry.kind != 'd') seen.size = entry.size;
  }
  listedSizes_ = plan.sizes;
  isSeenStale_ = true;
  publish();
  if (plan.files.contains(std::string(IgnoreFileName)) && plan.files.size() > 1) {
    // Rules come before what they may keep out.
    plan.files = {std::string(IgnoreFileName)};
    listener_->fullSyncNeeded();
  }
  return plan;
}

/// Makes way for what is wanted beneath `directory`: a file or a link there goes to the Trash when
/// it is a logged version, and the scan then logs the directory that takes its place.
bool KDPoolState::makeRealDirectory(std::string_view directory) {
  const auto attributes = folder_->attributes(directory);
  if (!attributes) return attributes.error().kind == FailureKind::Absent;
  if (attributes->kind == FileKind::Directory) return true;
  const KDPathRecord* path = store_->findPath(directory);
  const KDDiskState* disk = path ? path->disk : nullptr;
  if (!disk || !disk->entry || !disk->isUnchanged(*attributes)) return false;
  if (const auto trashed = folder_->trash(directory); !trashed) {
    warnOnce("trash " + std::string(directory), trashed.error().message());
    return false;
  }
  listener_->scanWanted();
  return folder_->makeDirectories(directory).has_value();
}

/// Whether a file can take the place of the directory: nothing lives in it, here or elsewhere.
bool KDPoolState::canGiveWay(std::string_view directory) const {
  const auto content = folder_->list(directory);
  if (content && !content->empty()) return false;
  bool isFree = true;
  const std::string beneath = std::string(directory) + "/";
  store_->forEachPath([&](const KDPathRecord& path) {
    if (path.activeLeafCount > 0 && path.text.starts_with(beneath)) isFree = false;
  });
  return isFree;
}

std::set<std::string> KDPoolState::prepareCopy(const std::set<std::string>& files) {
  std::set<std::string> ready;
  if (isDetached_ || !isActive_ || !isAccessible()) return ready;
  std::map<std::string, bool, std::less<>> realDirectories;
  const auto isReal = [&](std::string_view directory) {
    const auto known = realDirectories.find(directory);
    if (known != realDirectories.end()) return known->second;
    const bool isReal = makeRealDirectory(directory);
    realDirectories.emplace(directory, isReal);
    return isReal;
  };
  for (const std::string& text : files) {
    if (!listed_.contains(text)) continue;  // the folder was away meanwhile, and read anew
    bool isFree = true;
    // From the top: beneath a link or a file nothing can be looked at.
    for (auto slash = text.find('/'); isFree && slash != std::string::npos;
         slash = text.find('/', slash + 1)) {
      isFree = isReal(std::string_view(text).substr(0, slash));
    }
    const auto attributes = folder_->attributes(text);
    const KDPathRecord* path = store_->findPath(text);
    if (attributes && attributes->kind != FileKind::Directory) {
      isFree = isFree && path && path->disk && path->disk->isUnchanged(*attributes);
    } else if (!attributes && attributes.error().kind != FailureKind::Absent) {
      isFree = false;
    }
    const KDLogFileEntry* leaf = path ? tree_->selectedLeaf(*path).leaf : nullptr;
    const bool isDirectory = attributes && attributes->kind == FileKind::Directory;
    if (isDirectory && leaf && !leaf->isDirectory()) isFree = isFree && canGiveWay(text);
    // A choice is carried out here: now that the chosen version can be had.
    const bool isOtherBranch =
        leaf && path->disk && path->disk->entry && !path->disk->entry->isParentOfEntry(leaf);
    // A link is only compared, by the tool; settleReplacedFiles puts away what was another one.
    const bool isCompared = path && path->disk && path->disk->isGuess &&
                            path->disk->kind == FileKind::Link && path->disk->entry == leaf;
    if (isFree && attributes && !isDirectory && path->disk &&
        (isOtherBranch || !path->disk->entry || (path->disk->isUnseen && !isCompared) ||
         (leaf && leaf->isDirectory()) || mayDelete(*path, *attributes))) {
      // Deleted by someone, or to become a directory, or perhaps another file than its time tells:
      // what came before its author had logged it, for one, and the tool would leave it alone.
      trashOne(text);
      // Where no Trash takes it, or it was saved again just now, the tool would replace it.
      const auto left = folder_->attributes(text);
      if (left || left.error().kind != FailureKind::Absent) continue;
    }
    if (isFree) {
      ready.insert(text);
    } else {
      platform_.log.warning("'{}' in {} changed here meanwhile; it is fetched after the next scan.",
                            text, settings_.folderPath);
    }
  }
  for (const std::string& path : ready) {
    copying_[path] = listed_[path];
    noteChanged(path);  // what the run leaves there is looked at
  }
  if (!ready.empty()) {
    if (const auto noted = copyRuns_->begin(platform_.clock.now()); !noted) {
      platform_.log.warning("{}", noted.error().message());
    }
  }
  return ready;
}

std::set<std::string> KDPoolState::timeWarpedFilesFromSet(const std::set<std::string>& files) {
  std::set<std::string> warped;
  for (const std::string& text : files) {
    const KDPathRecord* path = store_->findPath(text);
    const auto attributes = folder_->attributes(text);
    if (!path || !attributes || attributes->kind == FileKind::Directory) continue;
    // A version of the branch that was not chosen may be the later one: a choice that a crash left
    // half done would wait for ever.
    const KDLogFileEntry* leaf = tree_->selectedLeaf(*path).leaf;
    const bool isOtherBranch = leaf && path->disk && path->disk->entry &&
                               path->disk->isUnchanged(*attributes) &&
                               !path->disk->entry->isParentOfEntry(leaf);
    if (isOtherBranch || tree_->isTimeWarped(*path, comparedTime(*attributes))) warped.insert(text);
  }
  return warped;
}

}  // namespace zolvar
