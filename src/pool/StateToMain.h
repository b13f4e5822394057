#pragma once

#include <functional>
#include <memory>

#include "pool/KDFilePoolParts.h"
#include "pool/PoolStateListener.h"

namespace zolvar {

/// Carries what the state lane tells over to the main thread; a pool that is gone hears nothing,
/// one that left and came back hears only its present state.
class KDFilePool::StateToMain final : public PoolStateListener {
 public:
  StateToMain(std::weak_ptr<KDFilePool> pool, RunLoop& runLoop, std::uint64_t generation)
      : pool_(std::move(pool)), runLoop_(runLoop), generation_(generation) {}

  void stateDidChange(std::shared_ptr<const PoolSnapshot> snapshot) override {
    hop([snapshot = std::move(snapshot)](KDFilePool& pool) { pool.took(snapshot); });
  }
  void conflictDidOccur(const std::string& path) override {
    hop([path](KDFilePool& pool) {
      pool.center_.post(KDConflictDidOccurNotification{&pool, path});
    });
  }
  void willDeleteFiles(const std::set<std::string>& paths) override {
    hop([paths](KDFilePool& pool) {
      pool.center_.post(KDSyncDidDeleteFilesNotification{&pool, paths});
    });
  }
  void didDeleteFiles(const std::set<std::string>& paths) override {
    hop([paths](KDFilePool& pool) { pool.didDeleteFiles(paths); });
  }
  void announcementNeeded() override {
    hop([](KDFilePool& pool) { pool.announcementNeededInMainThread(); });
  }
  void fullSyncNeeded() override {
    hop([](KDFilePool& pool) { pool.fullSyncNeededInMainThread(); });
  }
  void questionRaised(std::shared_ptr<const DeleteQuestion> question) override {
    hop([question = std::move(question)](KDFilePool& pool) {
      if (pool.didLoseFiles(*question)) return;
      if (pool.delegate_) {
        pool.delegate_->shouldDeleteFiles(pool, *question);
      } else {
        constexpr int Delete = 1001;  // what nobody can object to
        pool.answerQuestion(question->id, Delete, [](const Result<>&) {});
      }
    });
  }
  void pathsNotAccessible() override {
    hop([](KDFilePool& pool) {
      if (pool.delegate_) pool.delegate_->poolPathsNotAccessible(pool);
    });
  }
  void folderMoved(const std::string& newPath) override {
    hop([newPath](KDFilePool& pool) { pool.folderMoved(newPath); });
  }
  void scanWanted() override {
    hop([](KDFilePool& pool) {
      constexpr double SecondLook = 1.5;  // seconds; scans are more than one apart
      pool.scanSoon(SecondLook);
    });
  }
  void warn(const std::string& text) override {
    hop([text](KDFilePool& pool) { pool.warn(text); });
  }

 private:
  void hop(std::function<void(KDFilePool&)> task) {
    runLoop_.post([pool = pool_, generation = generation_, task = std::move(task)] {
      const auto living = pool.lock();
      if (living && living->parts_->generation == generation) task(*living);
    });
  }

  std::weak_ptr<KDFilePool> pool_;
  RunLoop& runLoop_;
  std::uint64_t generation_;
};

}  // namespace zolvar
