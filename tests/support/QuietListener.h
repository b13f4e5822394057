#pragma once

#include <memory>
#include <utility>

#include "pool/PoolStateListener.h"

namespace zolvar {

/// For who asks a pool's state alone: keeps its latest snapshot where told, and hears nothing else.
class QuietListener : public PoolStateListener {
 public:
  explicit QuietListener(std::shared_ptr<const PoolSnapshot>& latest) : latest_(latest) {}
  void stateDidChange(std::shared_ptr<const PoolSnapshot> snapshot) override {
    latest_ = std::move(snapshot);
  }
  void conflictDidOccur(const std::string&) override {}
  void willDeleteFiles(const std::set<std::string>&) override {}
  void announcementNeeded() override {}
  void fullSyncNeeded() override {}
  void questionRaised(std::shared_ptr<const DeleteQuestion>) override {}
  void pathsNotAccessible() override {}
  void folderMoved(const std::string&) override {}
  void scanWanted() override {}
  void warn(const std::string&) override {}

 private:
  std::shared_ptr<const PoolSnapshot>& latest_;
};

}  // namespace zolvar
