// Entries that came before what they follow.
//
// A load that is cut off brings some logs and not others. What follows a version of a log that has
// not come yet cannot be understood: it may be a choice or a version of its own. Merged as a
// version it would get successors that nobody else can place, so it waits. The log that holds its
// parent shows that there is none once it goes on beyond the parent's time.

#include <algorithm>

#include "pool/KDPoolState.h"

namespace zolvar {

void KDPoolState::noteLogged(const std::vector<KDLogFileEntry*>& entries) {
  double* until = nullptr;
  const std::string* userId = nullptr;
  for (const KDLogFileEntry* entry : entries) {
    if (userId != &entry->userId()) {
      userId = &entry->userId();
      until = &loggedUntil_[userId];
    }
    *until = std::max(*until, entry->logTime());
  }
}

bool KDPoolState::mayHaveToWait(const KDLogFileEntry& entry) const {
  if (entry.plogTime() == 0) return false;
  const auto until = loggedUntil_.find(&entry.puserId());
  return until == loggedUntil_.end() || until->second <= entry.plogTime();
}

/// Entries are asked about in the order of their times.
bool KDPoolState::mustWait(KDLogFileEntry& entry) {
  const auto isParent = [&entry](const KDLogFileEntry* other) {
    return &other->pathRecord() == &entry.pathRecord() && other->logTime() == entry.plogTime() &&
           other->userId() == entry.puserId();
  };
  const bool isKnown = entry.plogTime() == 0 || tree_->version(entry.pathRecord(), entry.puserId(),
                                                               entry.plogTime()) != nullptr;
  if (isKnown) return false;
  const bool isFollowing = std::any_of(waiting_.begin(), waiting_.end(), isParent);
  if (!isFollowing && !mayHaveToWait(entry)) return false;
  waiting_.push_back(&entry);
  return true;
}

void KDPoolState::appendAll(std::vector<KDLogFileEntry*>& entries) {
  std::unordered_set<const KDPathRecord*> paths;
  for (const KDLogFileEntry* entry : entries) {
    if (mayHaveToWait(*entry)) paths.insert(&entry->pathRecord());
  }
  if (paths.empty()) return tree_->appendAll(entries);
  const auto doubtful = std::stable_partition(
      entries.begin(), entries.end(),
      [&paths](const KDLogFileEntry* entry) { return !paths.contains(&entry->pathRecord()); });
  std::vector<KDLogFileEntry*> careful(doubtful, entries.end());
  entries.erase(doubtful, entries.end());
  tree_->appendAll(entries);
  std::stable_sort(careful.begin(), careful.end(), [](const auto* left, const auto* right) {
    return left->logTime() < right->logTime();
  });
  for (KDLogFileEntry* entry : careful) {
    if (!mustWait(*entry)) tree_->append(entry);
  }
}

}  // namespace zolvar
