#include "pool/FolderWatch.h"

#include <utility>

#include "platform/Log.h"
#include "util/PathRules.h"

namespace zolvar {

FolderWatch::FolderWatch(FileSystem& fileSystem, NotificationCenter& center, Log& log,
                         const std::string& folderPath, std::shared_ptr<ChangedFolders> folders,
                         std::function<void()> changed)
    : log_(log),
      folderPath_(QMFileNotifier::standardized(folderPath)),
      folders_(std::move(folders)),
      changed_(std::move(changed)),
      notifier_(fileSystem, center),
      losses_(center.observe<QMFileSystemObservationLost>(
          [this](const QMFileSystemObservationLost& loss) {
            if (loss.Object == folderPath_) takeLoss(loss.failure);
          })),
      changes_(notifier_.addObserver(folderPath_,
                                     [this](const QMFileSystemChanged& change) { take(change); })) {
  notifier_.startLogging();
}

FolderWatch::~FolderWatch() { folders_->setObserved(false); }

void FolderWatch::refresh(double now) {
  if (isLost_ && now - lastAttempt_ >= ChangedFolders::WholeScanInterval) {
    lastAttempt_ = now;
    isLost_ = false;
    notifier_.addObservedPath(folderPath_);
  }
  folders_->setObserved(!isLost_ && notifier_.isComplete(folderPath_));
  if (isLost_ && lastAttempt_ == 0) lastAttempt_ = now;
}

void FolderWatch::take(const QMFileSystemChanged& change) {
  const bool isMove = !change.Path2.empty();
  note(change.Path1, !isMove && change.EventName == "CREATE DIR");
  if (isMove) note(change.Path2, true);
}

void FolderWatch::takeLoss(const Failure& failure) {
  isLost_ = true;
  folders_->setObserved(false);
  if (std::exchange(hasWarned_, true)) return;
  log_.warning("{} Until this folder can be observed it is scanned as a whole each time.",
               failure.message());
}

void FolderWatch::note(const std::string& path, bool isArrival) {
  if (path.size() <= folderPath_.size() + 1 || !path.starts_with(folderPath_)) return;
  const std::string_view inside = std::string_view(path).substr(folderPath_.size() + 1);
  if (isMetadataPath(inside)) return;
  if (isArrival) {
    folders_->noteArrival(inside);
  } else {
    folders_->note(inside);
  }
  changed_();
}

}  // namespace zolvar
