#pragma once

#include <functional>
#include <memory>
#include <string>

#include "pool/ChangedFolders.h"
#include "pool/QMFileNotifier.h"

namespace zolvar {

class Log;

/// Observes the folder of an active pool and keeps ChangedFolders up to date. Where the observation
/// is not whole (watches run out, a file system that reports nothing) it says so once, and scans
/// look at everything until a later attempt works. Main thread; file system, centre and log outlive
/// it.
class FolderWatch {
 public:
  /// `changed` is told of each change outside the metadata folder.
  FolderWatch(FileSystem& fileSystem, NotificationCenter& center, Log& log,
              const std::string& folderPath, std::shared_ptr<ChangedFolders> folders,
              std::function<void()> changed);
  ~FolderWatch();

  /// Looks whether the observation has become whole, and tries a lost one again. Before each scan.
  void refresh(double now);

 private:
  void take(const QMFileSystemChanged& change);
  void takeLoss(const Failure& failure);
  void note(const std::string& path, bool isArrival);

  Log& log_;
  std::string folderPath_;
  std::shared_ptr<ChangedFolders> folders_;
  std::function<void()> changed_;
  bool isLost_ = false;
  bool hasWarned_ = false;
  double lastAttempt_ = 0;  ///< seconds since 1970
  QMFileNotifier notifier_;
  NotificationCenter::Observation losses_;
  NotificationCenter::Observation changes_;
};

}  // namespace zolvar
