#pragma once

#include <memory>
#include <set>
#include <string>

#include "pool/PoolSnapshot.h"

namespace zolvar {

/// What a pool's state tells the main thread. Called on the state lane; implementations hand over
/// without waiting.
class PoolStateListener {
 public:
  virtual ~PoolStateListener() = default;
  virtual void stateDidChange(std::shared_ptr<const PoolSnapshot> snapshot) = 0;
  virtual void conflictDidOccur(const std::string& path) = 0;
  virtual void willDeleteFiles(const std::set<std::string>& paths) = 0;
  /// These are gone from the folder, as peers wanted it.
  virtual void didDeleteFiles(const std::set<std::string>& /*paths*/) {}
  virtual void announcementNeeded() = 0;
  virtual void fullSyncNeeded() = 0;
  virtual void questionRaised(std::shared_ptr<const DeleteQuestion> question) = 0;
  virtual void pathsNotAccessible() = 0;
  virtual void folderMoved(const std::string& newPath) = 0;
  /// A further scan would settle something: a vanished file is confirmed by a second look.
  virtual void scanWanted() = 0;
  virtual void warn(const std::string& text) = 0;
};

}  // namespace zolvar
