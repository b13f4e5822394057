#include "pool/QMFileNotifier.h"

#include <filesystem>
#include <tuple>
#include <utility>

#include "util/InconsistencyError.h"

namespace zolvar {

namespace {

/// Steps count as wholes: "/a/bc" does not lie beneath "/a/b".
bool liesBeneath(const std::string& path, const std::string& folder) {
  return path.size() > folder.size() && path.starts_with(folder) &&
         (folder.ends_with('/') || path[folder.size()] == '/');
}

bool isAtOrBeneath(const std::string& path, const std::string& folder) {
  return path == folder || liesBeneath(path, folder);
}

std::pair<int, const char*> idAndNameOf(FileEvent::Type type) {
  switch (type) {
    case FileEvent::Type::CreateFile:
      return {0, "CREATE FILE"};
    case FileEvent::Type::Delete:
      return {1, "DELETE"};
    case FileEvent::Type::StatChanged:
      return {2, "STAT CHANGED"};
    case FileEvent::Type::Rename:
      return {3, "RENAME"};
    case FileEvent::Type::ContentModified:
      return {4, "CONTENT MODIFIED"};
    case FileEvent::Type::CreateDir:
      break;
  }
  return {7, "CREATE DIR"};
}

}  // namespace

QMFileNotifier::QMFileNotifier(FileSystem& fileSystem, NotificationCenter& center)
    : fileSystem_(fileSystem), center_(center) {}

QMFileNotifier::~QMFileNotifier() { *isAlive_ = false; }

std::string QMFileNotifier::standardized(const std::string& path) {
  std::string normal = std::filesystem::path(path).lexically_normal().string();
  if (normal.size() > 1 && normal.ends_with('/')) normal.pop_back();
  return normal;
}

void QMFileNotifier::startLogging() {
  if (isReading_) return;
  isReading_ = true;
  refreshObservations();
}

void QMFileNotifier::stopLogging() {
  isReading_ = false;
  observations_.clear();
}

void QMFileNotifier::addObservedPath(const std::string& path) {
  const std::string added = standardized(path);
  observedPaths_.insert(added);
  // Once lost, a path is tried again when someone asks for it again.
  std::erase_if(observations_, [&](const auto& known) {
    return !known.second && isAtOrBeneath(added, known.first);
  });
  refreshObservations();
}

void QMFileNotifier::removeObservedPath(const std::string& path) {
  observedPaths_.erase(standardized(path));
  refreshObservations();
}

NotificationCenter::Observation QMFileNotifier::addObserver(
    const std::string& pathPrefix, std::function<void(const QMFileSystemChanged&)> handler) {
  const std::string prefix = standardized(pathPrefix);
  addObservedPath(prefix);
  return center_.observe<QMFileSystemChanged>(
      [prefix, handler = std::move(handler)](const QMFileSystemChanged& change) {
        if (change.Object == prefix) handler(change);
      });
}

bool QMFileNotifier::isComplete(const std::string& path) const {
  const std::string wanted = standardized(path);
  for (const auto& [root, observation] : observations_) {
    if (!isAtOrBeneath(wanted, root)) continue;
    return observation && observation->isComplete();
  }
  return false;
}

bool QMFileNotifier::isCovered(const std::string& path) const {
  for (const auto& other : observedPaths_) {
    if (liesBeneath(path, other)) return true;
  }
  return false;
}

/// Observations are for the outermost observed paths, and for these only while reading.
void QMFileNotifier::refreshObservations() {
  if (!isReading_) return;
  std::erase_if(observations_, [this](const auto& known) {
    return !observedPaths_.contains(known.first) || isCovered(known.first);
  });
  std::map<std::string, Failure> failures;
  for (const auto& path : observedPaths_) {
    if (observations_.contains(path) || isCovered(path)) continue;
    auto observation = fileSystem_.observe(
        path, [this, path](const FileEvent& event) { take(path, event); },
        [this, path](const Failure& failure) { takeLoss(path, failure); });
    if (!observation) failures.emplace(path, observation.error());
    observations_[path] = observation ? std::move(*observation) : nullptr;
  }
  const auto isAlive = isAlive_;
  for (const auto& [root, failure] : failures) {
    takeLoss(root, failure);
    if (!*isAlive) return;
  }
}

void QMFileNotifier::take(const std::string& rootPath, const FileEvent& event) {
  if (event.path1.empty() && event.path2.empty()) return;
  require(!event.path1.empty(), "path1");
  QMFileSystemChanged change;
  std::tie(change.EventId, change.EventName) = idAndNameOf(event.type);
  change.Path1 = standardized(event.path1);
  if (!event.path2.empty()) change.Path2 = standardized(event.path2);
  change.closed = event.closed;
  const std::string root = rootPath;  // an observer may end the observation that holds it
  const auto isAlive = isAlive_;
  const auto paths = observedPaths_;
  for (const auto& path : paths) {
    if (!isAtOrBeneath(path, root)) continue;  // another observation tells it
    if (!isAtOrBeneath(change.Path1, path) && !isAtOrBeneath(change.Path2, path)) continue;
    change.Object = path;
    center_.post(change);
    if (!*isAlive) return;
  }
}

void QMFileNotifier::takeLoss(const std::string& rootPath, const Failure& failure) {
  const std::string root = rootPath;  // the observation that holds them may go meanwhile
  const Failure reason = failure;
  if (const auto lost = observations_.find(root); lost != observations_.end()) {
    // It may be the one that is calling us, and may be destroyed inside its callback.
    lost->second.reset();
  }
  const auto isAlive = isAlive_;
  const auto paths = observedPaths_;
  for (const auto& path : paths) {
    if (!isAtOrBeneath(path, root)) continue;
    center_.post(QMFileSystemObservationLost{path, reason});
    if (!*isAlive) return;
  }
}

}  // namespace zolvar
