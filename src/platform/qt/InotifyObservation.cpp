#include "platform/qt/InotifyObservation.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>

#include "platform/qt/BeneathPath.h"
#include "util/InconsistencyError.h"

namespace zolvar {

namespace {

constexpr const char* Attempt = "observe the folder";
constexpr const char* TooManyWatches = "the system's limit of watches is reached";
constexpr auto LongestSlice = std::chrono::milliseconds(4);
constexpr double DepartureWait = 0.05;  // seconds that the halves of a rename may lie apart
constexpr std::uint32_t Mask = IN_CREATE | IN_DELETE | IN_ATTRIB | IN_MODIFY | IN_CLOSE_WRITE |
                               IN_MOVED_FROM | IN_MOVED_TO | IN_ONLYDIR | IN_DONT_FOLLOW |
                               IN_EXCL_UNLINK;
constexpr std::uint32_t RootMask = Mask | IN_DELETE_SELF | IN_MOVE_SELF;

/// File systems on which others write without our kernel seeing it.
bool isRemote(const std::string& path) {
  constexpr std::array<unsigned long, 8> Remote = {
      NFS_SUPER_MAGIC,  SMB_SUPER_MAGIC, CIFS_SUPER_MAGIC, SMB2_SUPER_MAGIC,
      FUSE_SUPER_MAGIC, V9FS_MAGIC,      AFS_SUPER_MAGIC,  CODA_SUPER_MAGIC};
  struct statfs status;
  return ::statfs(path.c_str(), &status) == 0 &&
         std::find(Remote.begin(), Remote.end(), static_cast<std::uint32_t>(status.f_type)) !=
             Remote.end();
}

struct CloseDirectory {
  void operator()(DIR* directory) const { closedir(directory); }
};

bool isDirectoryEntry(int directory, const dirent& entry) {
  if (entry.d_type != DT_UNKNOWN) return entry.d_type == DT_DIR;
  struct stat status;
  return fstatat(directory, entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
         S_ISDIR(status.st_mode);
}

}  // namespace

Result<std::unique_ptr<FolderObservation>> InotifyObservation::start(RunLoop& runLoop,
                                                                     const std::string& rootPath,
                                                                     Changed changed, Lost lost) {
  require(runLoop.isMainThread(), "runLoop.isMainThread()");
  Descriptor inotify(inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
  if (!inotify) return tl::unexpected(posixFailure(errno, Attempt, rootPath));
  std::unique_ptr<InotifyObservation> observation(new InotifyObservation(
      runLoop, std::move(inotify), rootPath, std::move(changed), std::move(lost)));
  // The root itself may be reached through a link.
  const int watch = inotify_add_watch(observation->inotify_.get(), rootPath.c_str(),
                                      RootMask & ~std::uint32_t{IN_DONT_FOLLOW});
  if (watch < 0 && errno != ENOSPC) {
    return tl::unexpected(posixFailure(errno, Attempt, rootPath));
  }
  if (watch < 0 || isRemote(rootPath)) {
    runLoop.post([isAlive = observation->isAlive_, self = observation.get(), watch] {
      if (!*isAlive) return;
      if (watch < 0) {
        self->lose(FailureKind::Transient, TooManyWatches);
      } else {
        self->lose(FailureKind::Refused, "this file system does not tell what others change");
      }
    });
    return observation;
  }
  observation->rootWatch_ = watch;
  observation->tree_.addRoot(watch);
  observation->pending_.push_back({});
  observation->scheduleWatching();
  return observation;
}

InotifyObservation::InotifyObservation(RunLoop& runLoop, Descriptor inotify, std::string rootPath,
                                       Changed changed, Lost lost)
    : runLoop_(runLoop),
      inotify_(std::move(inotify)),
      rootPath_(rootPath),
      changed_(std::make_shared<const Changed>(std::move(changed))),
      lost_(std::make_shared<const Lost>(std::move(lost))),
      tree_(std::move(rootPath)) {
  readWatch_ = runLoop_.watch(inotify_.get(), RunLoop::Events::Readable, [this] { readEvents(); });
}

InotifyObservation::~InotifyObservation() {
  *isAlive_ = false;
  for (const auto id : {readWatch_, watchingTimer_, departureTimer_}) runLoop_.cancel(id);
}

bool InotifyObservation::isComplete() const {
  return !isLost_ && rootWatch_ != -1 && pending_.empty();
}

// Watching
// -----------------------------------------------------------------------------------------

void InotifyObservation::scheduleWatching() {
  if (watchingTimer_ != 0 || pending_.empty()) return;
  watchingTimer_ = runLoop_.after(0, [this] {
    watchingTimer_ = 0;
    watchPending();
  });
}

void InotifyObservation::watchPending() {
  const auto isAlive = isAlive_;
  const auto end = std::chrono::steady_clock::now() + LongestSlice;
  while (!pending_.empty() && std::chrono::steady_clock::now() < end) {
    const Pending next = std::move(pending_.front());
    pending_.pop_front();
    watchDirectory(next);
    if (!*isAlive) return;
  }
  scheduleWatching();
}

void InotifyObservation::watchDirectory(const Pending& pending) {
  if (pending.parent == -1) {
    listDirectory(rootWatch_, pending.isNew);
    return;
  }
  if (!tree_.isKnown(pending.parent)) return;  // its parent is gone, and so is it
  const std::string path = tree_.path(pending.parent, pending.name);
  const int watch = inotify_add_watch(inotify_.get(), path.c_str(), Mask);
  if (watch >= 0 && watch != rootWatch_) {
    // Watched first and listed then, so that nothing appears unseen in between.
    tree_.add(watch, pending.parent, pending.name);
    listDirectory(watch, pending.isNew);
  } else if (errno == ENOSPC || errno == ENOMEM) {
    lose(FailureKind::Transient, TooManyWatches);
  }
  // Else it is gone, or we may not read it: no scan could either. When that changes, its parent's
  // watch tells that its attributes did.
}

void InotifyObservation::listDirectory(int watch, bool isNew) {
  const auto isAlive = isAlive_;
  const std::unique_ptr<DIR, CloseDirectory> directory(opendir(tree_.path(watch).c_str()));
  if (!directory) return;
  while (const dirent* entry = readdir(directory.get())) {
    const std::string name = entry->d_name;
    if (name == "." || name == "..") continue;
    const bool isDirectory = isDirectoryEntry(dirfd(directory.get()), *entry);
    if (isDirectory) pending_.push_back({watch, name, isNew});
    if (isNew) tellFound(watch, name, isDirectory);
    if (!*isAlive || isLost_) return;
  }
}

void InotifyObservation::tellFound(int parent, const std::string& name, bool isDirectory) {
  tell(isDirectory ? FileEvent::Type::CreateDir : FileEvent::Type::CreateFile,
       tree_.path(parent, name), !isDirectory);
}

// Events
// -------------------------------------------------------------------------------------------

void InotifyObservation::readEvents() {
  const auto isAlive = isAlive_;
  alignas(inotify_event) std::array<char, 65536> buffer;
  const ssize_t count = read(inotify_.get(), buffer.data(), buffer.size());
  toldInThisTurn_.clear();
  for (ssize_t offset = 0; offset < count && !isLost_;) {
    const auto* event = reinterpret_cast<const inotify_event*>(buffer.data() + offset);
    offset += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
    handle(*event);
    if (!*isAlive) return;
  }
  if (departure_ && departureTimer_ == 0) {
    departureTimer_ = runLoop_.after(DepartureWait, [this] {
      departureTimer_ = 0;
      finishDeparture();
    });
  }
  scheduleWatching();
}

void InotifyObservation::handle(const inotify_event& event) {
  const auto isAlive = isAlive_;
  const bool isSecondHalf =
      departure_ && (event.mask & IN_MOVED_TO) != 0 && event.cookie == departure_->cookie;
  if (!isSecondHalf) finishDeparture();  // the halves come one after the other, or not at all
  if (!*isAlive) return;
  if ((event.mask & IN_Q_OVERFLOW) != 0) {
    lose(FailureKind::Transient, "too much changed at once");
  } else if ((event.mask & IN_UNMOUNT) != 0) {
    lose(FailureKind::Absent, "its file system was unmounted");
  } else if (event.wd == rootWatch_ && (event.mask & (IN_DELETE_SELF | IN_MOVE_SELF)) != 0) {
    lose(FailureKind::Absent, "the folder was moved or removed");
  } else if ((event.mask & IN_IGNORED) != 0) {
    forget(event.wd);
  } else if (event.len > 0 && tree_.isKnown(event.wd)) {
    handleInside(event);
  } else if ((event.mask & IN_ATTRIB) != 0 && event.wd == rootWatch_) {
    tell(FileEvent::Type::StatChanged, rootPath_);
  }
}

void InotifyObservation::handleInside(const inotify_event& event) {
  const std::string name = event.name;
  const bool isDirectory = (event.mask & IN_ISDIR) != 0;
  std::string path = tree_.path(event.wd, name);
  if ((event.mask & IN_CREATE) != 0) {
    if (isDirectory) pending_.push_back({event.wd, name, true});
    tell(isDirectory ? FileEvent::Type::CreateDir : FileEvent::Type::CreateFile, std::move(path));
  } else if ((event.mask & IN_DELETE) != 0) {
    if (const auto watch = tree_.child(event.wd, name)) forget(*watch);
    tell(FileEvent::Type::Delete, std::move(path));
  } else if ((event.mask & IN_ATTRIB) != 0) {
    if (isDirectory && !tree_.child(event.wd, name)) pending_.push_back({event.wd, name, true});
    tell(FileEvent::Type::StatChanged, std::move(path));
  } else if ((event.mask & IN_CLOSE_WRITE) != 0) {
    tell(FileEvent::Type::ContentModified, std::move(path), true);
  } else if ((event.mask & IN_MODIFY) != 0) {
    if (toldInThisTurn_.insert(path).second) tell(FileEvent::Type::ContentModified, path);
  } else if ((event.mask & IN_MOVED_FROM) != 0) {
    departure_ = Departure{event.cookie, event.wd, name, isDirectory};
  } else if ((event.mask & IN_MOVED_TO) != 0) {
    arrive(event.wd, name, event.cookie, isDirectory);
  }
}

void InotifyObservation::arrive(int parent, const std::string& name, std::uint32_t cookie,
                                bool isDirectory) {
  if (const auto replaced = tree_.child(parent, name)) forget(*replaced);
  if (!departure_ || departure_->cookie != cookie) {  // it came from outside, whole
    if (isDirectory) pending_.push_back({parent, name, true});
    tellFound(parent, name, isDirectory);
    return;
  }
  const Departure from = *std::exchange(departure_, std::nullopt);
  std::string oldPath = tree_.isKnown(from.parent) ? tree_.path(from.parent, from.name) : "";
  if (isDirectory) {
    if (const auto watch = tree_.child(from.parent, from.name)) {
      tree_.move(*watch, parent, name);
    } else {
      pending_.push_back({parent, name, true});
    }
  }
  if (oldPath.empty()) {
    tellFound(parent, name, isDirectory);
  } else {
    tell(FileEvent::Type::Rename, std::move(oldPath), false, tree_.path(parent, name));
  }
}

/// The second half of a rename did not come: the item has left the tree.
void InotifyObservation::finishDeparture() {
  if (!departure_) return;
  const Departure from = *std::exchange(departure_, std::nullopt);
  if (!tree_.isKnown(from.parent)) return;
  std::string path = tree_.path(from.parent, from.name);
  if (const auto watch = tree_.child(from.parent, from.name)) {
    for (const int each : tree_.remove(*watch)) inotify_rm_watch(inotify_.get(), each);
  }
  tell(FileEvent::Type::Delete, std::move(path));
}

void InotifyObservation::forget(int watch) {
  if (watch != rootWatch_) (void)tree_.remove(watch);
}

void InotifyObservation::tell(FileEvent::Type type, std::string path, bool closed,
                              std::string path2) {
  if (isLost_) return;
  const auto changed = changed_;  // survives our destruction from inside
  (*changed)(FileEvent{type, std::move(path), std::move(path2), closed});
}

void InotifyObservation::lose(FailureKind kind, const std::string& reason) {
  if (isLost_) return;
  isLost_ = true;
  pending_.clear();
  runLoop_.cancel(readWatch_);
  inotify_.reset();  // other programs may need the watches
  const auto lost = lost_;
  (*lost)(Failure{kind, Attempt, rootPath_, reason});
}

}  // namespace zolvar
