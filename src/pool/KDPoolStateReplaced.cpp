// What copy runs replaced: versions that others have too, or edits that nobody had seen.

#include "platform/Log.h"
#include "platform/Platform.h"
#include "pool/FileBeginning.h"
#include "pool/KDPoolState.h"
#include "pool/ScanDecision.h"
#include "util/PathRules.h"

namespace zolvar {

bool KDPoolState::settleReplacedFiles(const std::vector<ReplacedFile>& replaced) {
  if (isDetached_ || !isActive_) return false;
  bool isSettled = true;
  for (const ReplacedFile& file : replaced) {
    KDPathRecord* path = store_->findPath(file.path);
    auto place = platform_.fileSystem.open(std::string(parentPath(file.savedPath)));
    if (!path || judged_.contains(file.savedPath)) continue;
    const auto saved = place ? (*place)->attributes(lastPathComponent(file.savedPath))
                             : Result<FileAttributes>(tl::unexpected(place.error()));
    if (!saved && saved.error().kind != FailureKind::Absent) isSettled = false;
    if (!saved || saved->kind == FileKind::Directory) continue;
    const KDDiskState* disk = path->disk;
    const std::string_view savedName = lastPathComponent(file.savedPath);
    // Moved aside by a rename, it is the very file that the record describes.
    if (disk && disk->kind == saved->kind && disk->size == saved->size &&
        disk->modTime == saved->modTime) {
      // A link that was taken for the version, and led elsewhere.
      const bool wasOther = disk->isGuess && saved->kind == FileKind::Link;
      if (wasOther && !(*place)->trash(savedName)) {
        isSettled = false;
      } else {
        judged_.insert(file.savedPath);
      }
      continue;
    }
    const auto kept = folder_->attributes(file.path);
    if (disk && kept && kept->kind == FileKind::Regular && disk->isUnchanged(*kept) &&
        saved->kind == FileKind::Regular && saved->size <= kept->size &&
        isBeginningOf(**place, savedName, *folder_, file.path)) {
      // Nothing was replaced: the saving itself was cut off, by a full disk as a rule.
      (void)(*place)->removeFile(savedName);
      continue;
    }
    const auto here = folder_->attributes(file.path);
    // While the record tells what lay here before the run, nothing else was logged. Otherwise the
    // time has to tell. Without a record nothing lay here before the run.
    const bool isRecordOld = here && (!disk || (disk->entry && !disk->isUnchanged(*here)));
    // Where a directory lay no version of a file did, whatever the time says.
    const bool isMeanwhile = disk && disk->kind == FileKind::Directory;
    if (!isRecordOld && !isMeanwhile &&
        tree_->versionWithModTime(*path, comparedTime(*saved), settings_.userId)) {
      judged_.insert(file.savedPath);
      continue;
    }
    const auto putAway = [&](const char* what) {
      platform_.log.warning("'{}' in {} was {}; it is in the Trash.", file.path,
                            settings_.folderPath, what);
      if (const auto trashed = (*place)->trash(savedName); !trashed) {
        platform_.log.error("{} It is kept at '{}'.", trashed.error().message(), file.savedPath);
        isSettled = false;
      }
    };
    if (here && here->kind == FileKind::Directory) {
      putAway("made while a directory arrived");
      continue;
    }
    // What lies here may have been saved once more since the run, and then stays. Or its author has
    // not logged it yet.
    const bool isEdit = here && isEditedCopy(file.path, *here);
    const KDLogFileEntry* arrived =
        here ? tree_->versionWithModTime(*path, comparedTime(*here), settings_.userId) : nullptr;
    const bool isRecorded = arrived && disk && disk->entry == arrived;
    const bool mayBeEdited = isRecorded && !disk->isUnchanged(*here);
    // Edited once more before anybody looked here, and logged: it did not come with the run.
    const auto copied = copying_.find(file.path);
    const bool isLaterEdit = isRecorded && !disk->isGuess &&
                             arrived->userId() == settings_.userId &&
                             (copied == copying_.end() || copied->second != arrived);
    if (here && (!arrived || isEdit || isLaterEdit || (mayBeEdited && disk->isGuess))) {
      putAway("edited while a newer version arrived");
      continue;
    }
    // Only what surely came from others may be overwritten.
    const bool isOthers =
        isRecorded ? !mayBeEdited && !disk->isUnseen : copying_.contains(file.path);
    const auto lies = here && isOthers ? std::optional(*here) : std::nullopt;
    if (here && !isOthers && !folder_->trash(file.path)) {
      isSettled = false;
      continue;
    }
    if (disk && here && disk->isUnchanged(*here)) {
      // What arrived was recorded before anyone looked, after a crash. The edit is none of that.
      record_->forget(*path);
      (void)flush();
    }
    const auto moved = folder_->moveIn(file.savedPath, file.path, lies);
    if (!moved && moved.error().kind == FailureKind::Absent) {
      putAway("edited while a newer version arrived");  // and its directory is gone
      continue;
    }
    platform_.log.warning(
        "'{}' in {} was edited while a newer version arrived; the edit stays and becomes a branch.",
        file.path, settings_.folderPath);
    if (!moved) {
      platform_.log.error("{} It is kept at '{}'.", moved.error().message(), file.savedPath);
      isSettled = false;
      continue;
    }
    copying_.erase(file.path);
  }
  if (isSettled) {  // the run is closed
    for (const ReplacedFile& file : replaced) judged_.erase(file.savedPath);
  }
  return isSettled;
}

}  // namespace zolvar
