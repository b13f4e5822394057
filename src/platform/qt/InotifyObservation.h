#pragma once

#include <sys/inotify.h>

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_set>

#include "platform/FileSystem.h"
#include "platform/RunLoop.h"
#include "platform/qt/Descriptor.h"
#include "platform/qt/WatchedTree.h"

namespace zolvar {

/// Observes one folder tree with inotify. Main thread; the run loop outlives it. It may be
/// destroyed inside its own callbacks.
///
/// Each directory needs a watch. At the start they are added in slices of a few milliseconds a turn
/// of the loop; until isComplete, changes in directories not yet reached go untold. A directory
/// that appears later is watched and then listed, and what lies in it already is told as created,
/// closed. Writes through a memory mapping and changes made by other machines on a network file
/// system are not seen by the kernel: the former go untold, the latter count as lost.
class InotifyObservation : public FolderObservation {
 public:
  using Changed = std::function<void(const FileEvent&)>;
  using Lost = std::function<void(const Failure&)>;

  /// Fails: Absent, Refused, Transient (no inotify instance left). `lost` never comes from inside.
  static Result<std::unique_ptr<FolderObservation>> start(RunLoop& runLoop,
                                                          const std::string& rootPath,
                                                          Changed changed, Lost lost);
  ~InotifyObservation() override;

  [[nodiscard]] bool isComplete() const override;

 private:
  /// A directory to be watched (unless it is the root, which is) and listed.
  struct Pending {
    int parent = -1;
    std::string name;
    bool isNew = false;  ///< appeared after the start: what lies in it is told
  };
  /// The first half of a rename, waiting for the second.
  struct Departure {
    std::uint32_t cookie = 0;
    int parent = -1;
    std::string name;
    bool isDirectory = false;
  };

  InotifyObservation(RunLoop& runLoop, Descriptor inotify, std::string rootPath, Changed changed,
                     Lost lost);

  void watchPending();
  void watchDirectory(const Pending& pending);
  void listDirectory(int watch, bool isNew);
  void tellFound(int parent, const std::string& name, bool isDirectory);
  void scheduleWatching();

  void readEvents();
  void handle(const inotify_event& event);
  void handleInside(const inotify_event& event);
  void arrive(int parent, const std::string& name, std::uint32_t cookie, bool isDirectory);
  void finishDeparture();
  void forget(int watch);

  void tell(FileEvent::Type type, std::string path, bool closed = false, std::string path2 = {});
  void lose(FailureKind kind, const std::string& reason);

  RunLoop& runLoop_;
  Descriptor inotify_;  ///< none once lost
  const std::string rootPath_;
  const std::shared_ptr<const Changed> changed_;
  const std::shared_ptr<const Lost> lost_;
  bool isLost_ = false;
  int rootWatch_ = -1;
  WatchedTree tree_;
  std::deque<Pending> pending_;
  std::optional<Departure> departure_;
  std::unordered_set<std::string> toldInThisTurn_;  ///< modified paths, to tell each only once
  RunLoop::Id readWatch_ = 0;
  RunLoop::Id watchingTimer_ = 0;
  RunLoop::Id departureTimer_ = 0;
  /// False once destroyed; callbacks may destroy us, so loops look at their copy after each.
  const std::shared_ptr<bool> isAlive_ = std::make_shared<bool>(true);
};

}  // namespace zolvar
