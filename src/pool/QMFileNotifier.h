#pragma once

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>

#include "platform/FileSystem.h"
#include "util/NotificationCenter.h"

namespace zolvar {

/// One change at or below an observed path. Posted on the main thread, once for each observed path
/// that one of the two paths is or lies beneath.
struct QMFileSystemChanged {
  std::string Object;     ///< the observed path
  std::string EventName;  ///< "CREATE FILE", "DELETE", "STAT CHANGED", "RENAME", …
  int EventId = 0;        ///< the number of that name
  std::string Path1;      ///< standardized
  std::string Path2;      ///< standardized; the new path of a rename, else empty
  bool closed = false;    ///< a writer closed the file
  int uid = -1;           ///< who made the change; -1: the system does not tell
  int gid = -1;
  int pid = -1;
};

/// The notifier can no longer tell all that happens at or below an observed path: watches ran out,
/// events were dropped, the folder was moved or removed, or its file system tells nothing. Posted
/// once for each observed path concerned; adding the path again tries again.
struct QMFileSystemObservationLost {
  std::string Object;  ///< the observed path
  Failure failure;
};

/// Turns the file system's events into QMFileSystemChanged for observed paths. A path that lies
/// beneath another observed one shares its observation. Main thread; the file system and the centre
/// outlive it. It may be destroyed inside a notification.
class QMFileNotifier {
 public:
  QMFileNotifier(FileSystem& fileSystem, NotificationCenter& center);
  ~QMFileNotifier();
  QMFileNotifier(const QMFileNotifier&) = delete;

  /// Begins to observe the paths; nothing when it does already. A path that cannot be observed is
  /// told as lost.
  void startLogging();
  /// Ends observing; the paths are kept.
  void stopLogging();

  /// Whether changes by this process are wanted. The system does not tell who made a change, so
  /// they are told in either case; kept for whoever knows more.
  void setSkipsOwnChanges(bool skips) { skipsOwnChanges_ = skips; }
  [[nodiscard]] bool skipsOwnChanges() const { return skipsOwnChanges_; }

  void addObservedPath(const std::string& path);
  void removeObservedPath(const std::string& path);
  [[nodiscard]] const std::set<std::string>& observedPaths() const { return observedPaths_; }
  /// Adds the standardized prefix to the observed paths and calls `handler` for its notifications
  /// while the result lives; the prefix stays observed afterwards.
  [[nodiscard]] NotificationCenter::Observation addObserver(
      const std::string& pathPrefix, std::function<void(const QMFileSystemChanged&)> handler);

  /// Whether everything at and below an observed path is being told. Right after the start it is
  /// not: a scan of everything is due once it has become so.
  [[nodiscard]] bool isComplete(const std::string& path) const;

  /// The path without doubled and trailing slashes and without "." and ".." steps.
  [[nodiscard]] static std::string standardized(const std::string& path);

 private:
  void refreshObservations();
  [[nodiscard]] bool isCovered(const std::string& path) const;
  void take(const std::string& root, const FileEvent& event);
  void takeLoss(const std::string& root, const Failure& failure);

  FileSystem& fileSystem_;
  NotificationCenter& center_;
  std::set<std::string> observedPaths_;
  bool isReading_ = false;
  bool skipsOwnChanges_ = false;
  /// By root; null once the observation was lost.
  std::map<std::string, std::unique_ptr<FolderObservation>> observations_;
  /// False once destroyed, for loops that post.
  const std::shared_ptr<bool> isAlive_ = std::make_shared<bool>(true);
};

}  // namespace zolvar
