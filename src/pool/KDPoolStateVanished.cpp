// What vanished from this disk: looked for twice, asked about, and what the answer does.

#include <algorithm>

#include "platform/Platform.h"
#include "pool/KDPoolState.h"
#include "pool/KDPoolStateScan.h"

namespace zolvar {

namespace {

bool isBeneath(std::string_view path, std::string_view directory) {
  return directory.empty() || (path.size() > directory.size() && path.starts_with(directory) &&
                               path[directory.size()] == '/');
}

}  // namespace

void KDPoolState::settleVanished(Scan& scan) {
  if (!scan.scope.isWhole && scan.listed.empty()) return;
  std::set<std::string> toFetch;
  std::set<std::string> vanished;
  std::unordered_set<const KDPathRecord*> missing;
  for (const KDPathRecord* path : missingOnce_) {
    if (!scan.covers(path->text)) missing.insert(path);
  }
  store_->forEachPath([&](KDPathRecord& path) {
    if (path.seenInScan == scan.number || path.activeLeafCount == 0) return;
    if (!scan.covers(path.text) || isIgnored(path)) return;
    if (!todo_.empty() && todo_.contains(path.text)) return;
    if (!inQuestion_.empty() && inQuestion_.contains(path.text)) return;
    for (const std::string& directory : scan.unseen) {
      if (isBeneath(path.text, directory)) return;
    }
    if (isFirstRun_ || !path.disk) {
      toFetch.emplace(path.text);  // never was here, or not while we looked: fetched, not deleted
    } else if (missingOnce_.contains(&path)) {
      vanished.emplace(path.text);
    } else {
      missing.insert(&path);
    }
  });
  missingOnce_ = std::move(missing);
  for (const KDPathRecord* path : missingOnce_) noteChanged(path->text);
  const auto answered = std::erase_if(inQuestion_, [this](const std::string& path) {
    const KDPathRecord* record = store_->findPath(path);
    return !record || record->activeLeafCount == 0;  // a peer deleted it meanwhile
  });
  isQuestionStale_ = isQuestionStale_ || answered > 0;
  if (!toFetch.empty()) {
    for (const std::string& path : toFetch) {
      if (KDPathRecord* record = store_->findPath(path)) record_->forget(*record);
    }
    addTodoFiles(toFetch);
    listener_->fullSyncNeeded();
  }
  if (!missingOnce_.empty()) listener_->scanWanted();
  if (vanished.empty()) return;
  inQuestion_.insert(vanished.begin(), vanished.end());
  raiseQuestion();
}

void KDPoolState::raiseQuestion() {
  ++questionId_;
  isQuestionStale_ = true;
  listener_->questionRaised(std::make_shared<const DeleteQuestion>(
      DeleteQuestion{questionId_, {inQuestion_.begin(), inQuestion_.end()}}));
}

Result<> KDPoolState::answerQuestion(std::uint64_t questionId, int code) {
  constexpr int Reget = 1000;  // the alert code of the first button; above it: the second
  if (inQuestion_.empty() || questionId != questionId_) {
    return fail(FailureKind::Refused, "answer the question about vanished files in",
                settings_.poolName, "it was answered or replaced by another one");
  }
  if (code > Reget && !isAccessible()) {
    return fail(FailureKind::Absent, "delete files in", settings_.folderPath,
                "the folder is not accessible");
  }
  std::set<std::string> paths(inQuestion_.begin(), inQuestion_.end());
  inQuestion_.clear();
  isQuestionStale_ = true;
  std::erase_if(paths,
                [this](const std::string& path) { return folder_->attributes(path).has_value(); });
  if (code == Reget) {
    for (const std::string& path : paths) {
      if (KDPathRecord* record = store_->findPath(path)) record_->forget(*record);
    }
    addTodoFiles(paths);
    listener_->fullSyncNeeded();
  } else if (code > Reget) {
    // The question was about what lay here; a version that came since is fetched, not deleted.
    std::set<std::string> newer;
    for (const std::string& path : paths) {
      const KDPathRecord* record = store_->findPath(path);
      if (!record || !record->disk || tree_->selectedLeaf(*record).leaf != record->disk->entry) {
        newer.insert(path);
      }
    }
    for (const std::string& path : newer) {
      paths.erase(path);
      if (KDPathRecord* record = store_->findPath(path)) record_->forget(*record);
    }
    logFileSystemDeletionsAtPaths(paths);
    if (!newer.empty()) {
      addTodoFiles(newer);
      listener_->fullSyncNeeded();
    }
  }
  const auto written = flush();
  publish();
  return written;
}

Result<> KDPoolState::deleteMissing(const std::set<std::string>& paths) {
  if (!isActive_ || !isAccessible()) {
    return fail(FailureKind::Refused, "delete files in", settings_.poolName,
                "the folder is not active");
  }
  for (const std::string& path : paths) {
    if (!todo_.contains(path)) {
      return fail(FailureKind::Refused, "delete", path, "it is not among the missing files");
    }
  }
  logFileSystemDeletionsAtPaths(paths);
  const auto written = flush();
  publish();
  return written;
}

void KDPoolState::logFileSystemDeletionsAtPaths(const std::set<std::string>& paths) {
  removeTodoFiles(paths);
  for (const std::string& path : paths) {
    KDPathRecord* record = store_->findPath(path);
    if (!record) continue;
    if (KDLogFileEntry* leaf = selectedLeaf(*record).leaf) logDeletionOfBranchLeaf(*leaf);
    if (!folder_->attributes(path)) record_->forget(*record);
    const unsigned remaining = selectedLeaf(*record).count;
    if (remaining > 0) addTodoFiles({path});  // another branch lives on: fetch it
    setConflict(record->activeLeafCount > 1, *record);
  }
}

}  // namespace zolvar
