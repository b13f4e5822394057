#include "pool/ChangedFolders.h"

#include <utility>

#include "util/PathRules.h"

namespace zolvar {

void ChangedFolders::note(std::string_view path) { noteFolder(parentPath(path)); }

void ChangedFolders::noteFolder(std::string_view folder) {
  const std::lock_guard guard(mutex_);
  if (isEverything_ || folders_.contains(folder)) return;
  if (folders_.size() >= MostFolders) {
    isEverything_ = true;
    folders_.clear();
    arrived_.clear();
    return;
  }
  folders_.emplace(folder);
}

void ChangedFolders::noteArrival(std::string_view path) {
  note(path);
  const std::lock_guard guard(mutex_);
  if (!isEverything_) arrived_.emplace(path);
}

void ChangedFolders::noteEverything() {
  const std::lock_guard guard(mutex_);
  isEverything_ = true;
  folders_.clear();
  arrived_.clear();
}

void ChangedFolders::setObserved(bool isObserved) {
  const std::lock_guard guard(mutex_);
  if (isObserved && !isObserved_) isEverything_ = true;  // what happened before went untold
  isObserved_ = isObserved;
}

bool ChangedFolders::isObserved() const {
  const std::lock_guard guard(mutex_);
  return isObserved_;
}

ScanScope ChangedFolders::take(double now) {
  const std::lock_guard guard(mutex_);
  ScanScope scope;
  scope.folders = std::exchange(folders_, {});
  scope.arrived = std::exchange(arrived_, {});
  scope.isWhole =
      isEverything_ || !isObserved_ || now < lastWhole_ || now - lastWhole_ >= WholeScanInterval;
  if (scope.isWhole) {
    scope.folders.clear();
    scope.arrived.clear();
    isEverything_ = false;
    lastWhole_ = now;
  }
  return scope;
}

void ChangedFolders::giveBack(const ScanScope& scope) {
  const std::lock_guard guard(mutex_);
  if (scope.isWhole) isEverything_ = true;
  folders_.insert(scope.folders.begin(), scope.folders.end());
  arrived_.insert(scope.arrived.begin(), scope.arrived.end());
}

}  // namespace zolvar
