#include "pool/KDVersionTree.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "pool/HeldLogs.h"
#include "util/InconsistencyError.h"

namespace zolvar {

namespace {

/// Up to this many versions of a path are searched one by one, from the newest; more get an index.
constexpr std::uint32_t SearchedVersions = 48;

bool isNewerFirst(const KDLogFileEntry* left, const KDLogFileEntry* right) {
  if (left->logTime() != right->logTime()) return left->logTime() > right->logTime();
  return left->userId() < right->userId();
}

}  // namespace

std::size_t KDVersionTree::VersionKeyHash::operator()(const VersionKey& key) const {
  return std::hash<const void*>()(key.user) * 31 + std::hash<double>()(key.logTime);
}

KDVersionTree::KDVersionTree(KDEntryStore& store, std::string_view localUserId)
    : store_(store), localUserId_(internedUserId(localUserId)) {}

template <class Visit>
void KDVersionTree::findAll(const KDPathRecord& path, const std::string* user, double logTime,
                            const Visit& visit) const {
  std::uint32_t steps = 0;
  for (KDLogFileEntry* entry = path.newest; entry; entry = entry->previous()) {
    if (entry->logTime() == logTime && &entry->userId() == user && visit(entry)) return;
    if (++steps == SearchedVersions) break;
  }
  if (path.entryCount <= SearchedVersions) return;
  Index& index = indexes_[&path];
  for (KDLogFileEntry* entry = path.newest; index.covered < path.entryCount;
       entry = entry->previous()) {
    index.versions.emplace(VersionKey{&entry->userId(), entry->logTime()}, entry);
    ++index.covered;
  }
  const auto [first, last] = index.versions.equal_range({user, logTime});
  for (auto found = first; found != last; ++found) {
    if (visit(found->second)) return;
  }
}

KDLogFileEntry* KDVersionTree::find(const KDPathRecord& path, const std::string* user,
                                    double logTime) const {
  KDLogFileEntry* found = nullptr;
  findAll(path, user, logTime, [&found](KDLogFileEntry* entry) {
    found = entry;
    return entry->exists();  // a deletion of the same second is nobody's parent
  });
  return found;
}

bool KDVersionTree::isStored(const KDLogFileEntry& entry) const {
  bool isStored = false;
  findAll(entry.pathRecord(), &entry.userId(), entry.logTime(), [&](KDLogFileEntry* known) {
    isStored = known->isEqual(entry);
    return isStored;
  });
  return isStored;
}

KDLogFileEntry* KDVersionTree::version(const KDPathRecord& path, const std::string& userId,
                                       double logTime) const {
  return find(path, &internedUserId(userId), logTime);
}

KDLogFileEntry* KDVersionTree::version(const KDPathRecord& path, const VersionId& id) const {
  return version(path, id.userId, id.logTime);
}

void KDVersionTree::link(KDLogFileEntry& entry) {
  if (entry.parentEntry() || entry.plogTime() == 0) return;
  KDLogFileEntry* parent = find(entry.pathRecord(), &entry.puserId(), entry.plogTime());
  if (parent) entry.setParentEntry(parent);
}

void KDVersionTree::setActive(KDPathRecord& path, std::uint32_t count) {
  if (path.activeLeafCount == 0 && count > 0) ++liveCount_;
  if (path.activeLeafCount > 0 && count == 0) --liveCount_;
  path.activeLeafCount = count;
}

bool KDVersionTree::hasOtherDirectory(const KDPathRecord& path, const KDLogFileEntry& leaf) {
  for (const KDLogFileEntry* other = path.firstLeaf; other; other = other->nextLeaf()) {
    if (other != &leaf && other->isDirectory()) return true;
  }
  return false;
}

void KDVersionTree::removeLeaf(KDPathRecord& path, KDLogFileEntry& leaf) {
  KDLogFileEntry* before = nullptr;
  for (KDLogFileEntry* entry = path.firstLeaf; entry; entry = entry->nextLeaf()) {
    if (entry == &leaf) {
      if (before) {
        before->setNextLeaf(leaf.nextLeaf());
      } else {
        path.firstLeaf = leaf.nextLeaf();
      }
      leaf.setNextLeaf(nullptr);
      const bool isOne = leaf.isDirectory() && hasOtherDirectory(path, leaf);
      if (leaf.exists() && !isOne) setActive(path, path.activeLeafCount - 1);
      return;
    }
    before = entry;
  }
}

void KDVersionTree::store(KDLogFileEntry& entry) {
  KDPathRecord& path = entry.pathRecord();
  if (path.newest && entry.logTime() < path.newest->logTime()) needsRepair_.insert(&path);
  entry.setPrevious(path.newest);
  path.newest = &entry;
  ++path.entryCount;
  if (KDLogFileEntry* parent = entry.parentEntry()) {
    if (parent->childCount() == 0) removeLeaf(path, *parent);
    parent->setChildCount(parent->childCount() + 1);
  } else if (entry.plogTime() != 0) {
    ++orphans_;
    needsRepair_.insert(&path);
  }
  entry.setNextLeaf(path.firstLeaf);
  path.firstLeaf = &entry;
  const bool isOne = entry.isDirectory() && hasOtherDirectory(path, entry);
  if (entry.exists() && !isOne) setActive(path, path.activeLeafCount + 1);
}

KDVersionTree::Appended KDVersionTree::append(KDLogFileEntry* entry) {
  Appended result;
  if (!entry) {
    result.kind = Kind::Duplicate;
    return result;
  }
  KDPathRecord& path = entry->pathRecord();
  const bool isLatest = !path.newest || (entry->logTime() > path.newest->logTime() &&
                                         (needsRepair_.empty() || !needsRepair_.contains(&path)));
  if (!isLatest && isStored(*entry)) {
    result.kind = Kind::Duplicate;
    return result;
  }
  if (path.newest) link(*entry);
  if (entry->type() == KDLogFileEntry::KDBranchSelectionType) {
    takeSelection(*entry);
    result.kind = Kind::Selection;
    return result;
  }
  result.isFirstOfPath = path.newest == nullptr;
  result.activeBefore = path.activeLeafCount;
  store(*entry);
  result.activeAfter = path.activeLeafCount;
  if (!entry->exists() && !result.isFirstOfPath) {
    const KDLogFileEntry* selected = selectedEntry(path, localUserId_);
    result.selectionLost = !selected || selected->isParentOfEntry(entry);
    deselectBranch(*entry);
  }
  if (result.activeBefore > 1 && result.activeAfter <= 1) deselectLogEntry(path, localUserId_);
  return result;
}

void KDVersionTree::appendAll(std::vector<KDLogFileEntry*>& entries) {
  const auto earlier = [](const KDLogFileEntry* left, const KDLogFileEntry* right) {
    return left->logTime() < right->logTime();
  };
  if (!std::is_sorted(entries.begin(), entries.end(), earlier)) {
    std::stable_sort(entries.begin(), entries.end(), earlier);
  }
  for (KDLogFileEntry* entry : entries) append(entry);
}

bool KDVersionTree::repair(KDPathRecord& path) {
  if (needsRepair_.erase(&path) == 0) return false;
  std::vector<KDLogFileEntry*> entries;
  entries.reserve(path.entryCount);
  for (KDLogFileEntry* entry = path.newest; entry; entry = entry->previous()) {
    entries.push_back(entry);
  }
  std::reverse(entries.begin(), entries.end());
  std::stable_sort(entries.begin(), entries.end(), [](const auto* left, const auto* right) {
    return left->logTime() < right->logTime();
  });
  const bool wasConflict = path.activeLeafCount > 1;
  path.newest = path.firstLeaf = nullptr;
  path.entryCount = 0;
  setActive(path, 0);
  indexes_.erase(&path);
  for (KDLogFileEntry* entry : entries) {
    entry->setPrevious(nullptr);
    entry->setNextLeaf(nullptr);
    entry->setChildCount(0);
  }
  const std::uint64_t orphansBefore = orphans_;
  bool orphaned = false;
  for (KDLogFileEntry* entry : entries) {
    link(*entry);
    if (entry->type() == KDLogFileEntry::KDBranchSelectionType) {
      takeSelection(*entry);  // its parent came late
      continue;
    }
    orphaned = orphaned || (entry->plogTime() != 0 && !entry->parentEntry());
    store(*entry);
  }
  orphans_ = orphansBefore;
  needsRepair_.erase(&path);
  if (orphaned) needsRepair_.insert(&path);  // looked at again when more entries have come
  if (wasConflict && path.activeLeafCount <= 1) deselectLogEntry(path, localUserId_);
  return true;
}

void KDVersionTree::repairAll() {
  const std::vector<KDPathRecord*> paths(needsRepair_.begin(), needsRepair_.end());
  for (KDPathRecord* path : paths) repair(*path);
}

std::vector<KDLogFileEntry*> KDVersionTree::leafEntries(const KDPathRecord& path) const {
  std::vector<KDLogFileEntry*> leaves;
  for (KDLogFileEntry* leaf = path.firstLeaf; leaf; leaf = leaf->nextLeaf()) leaves.push_back(leaf);
  std::sort(leaves.begin(), leaves.end(), isNewerFirst);
  return leaves;
}

std::vector<KDLogFileEntry*> KDVersionTree::activeLeafEntries(const KDPathRecord& path) const {
  auto leaves = leafEntries(path);
  bool hasDirectory = false;
  std::erase_if(leaves, [&hasDirectory](const auto* leaf) {
    return !leaf->exists() || (leaf->isDirectory() && std::exchange(hasDirectory, true));
  });
  return leaves;
}

KDLogFileEntry* KDVersionTree::leafForEntry(KDLogFileEntry* entry) const {
  if (!entry || entry->childCount() == 0) return entry;
  const KDPathRecord& path = entry->pathRecord();
  const Selected selected = selectedLeaf(path);
  if (selected.leaf && entry->isParentOfEntry(selected.leaf)) return selected.leaf;
  KDLogFileEntry* deleted = nullptr;
  for (KDLogFileEntry* leaf : leafEntries(path)) {
    if (!entry->isParentOfEntry(leaf)) continue;
    if (leaf->exists()) return leaf;  // a living branch goes before a deleted one
    if (!deleted) deleted = leaf;
  }
  if (deleted) return deleted;
  throw InconsistencyError("Did not find a leaf for entry " + entry->description());
}

KDLogFileEntry* KDVersionTree::directoryLeaf(const KDPathRecord& path) const {
  KDLogFileEntry* one = nullptr;
  for (KDLogFileEntry* leaf = path.firstLeaf; leaf; leaf = leaf->nextLeaf()) {
    if (leaf->isDirectory() && (!one || isNewerFirst(leaf, one))) one = leaf;
  }
  return one;
}

KDVersionTree::Selected KDVersionTree::selectedLeaf(const KDPathRecord& path) const {
  return selectedLeaf(path, localUserId_);
}

KDVersionTree::Selected KDVersionTree::selectedLeaf(const KDPathRecord& path,
                                                    const std::string& userId) const {
  if (path.activeLeafCount == 0) return {};
  if (path.activeLeafCount == 1) {
    KDLogFileEntry* one = nullptr;
    for (KDLogFileEntry* leaf = path.firstLeaf; leaf; leaf = leaf->nextLeaf()) {
      if (leaf->exists() && (!one || isNewerFirst(leaf, one))) one = leaf;
    }
    return {1, one};
  }
  const auto leaves = activeLeafEntries(path);
  const KDLogFileEntry* chosen = selectedEntry(path, userId);
  if (chosen) {
    for (KDLogFileEntry* leaf : leaves) {
      if (chosen->isParentOfEntry(leaf)) return {1, leaf};
    }
    for (const KDLogFileEntry* leaf = path.firstLeaf; leaf; leaf = leaf->nextLeaf()) {
      if (leaf->isDirectory() && chosen->isParentOfEntry(leaf)) return {1, directoryLeaf(path)};
    }
  }
  return {path.activeLeafCount, nullptr};
}

bool KDVersionTree::isSelectionClear(const KDPathRecord& path) const {
  if (path.activeLeafCount <= 1) return true;
  const KDLogFileEntry* chosen = selectedEntry(path, localUserId_);
  unsigned files = 0;
  bool hasDirectory = false;
  for (const KDLogFileEntry* leaf = path.firstLeaf; leaf && chosen; leaf = leaf->nextLeaf()) {
    if (!leaf->exists() || !chosen->isParentOfEntry(leaf)) continue;
    leaf->isDirectory() ? hasDirectory = true : ++files != 0;
  }
  return files + (hasDirectory ? 1 : 0) == 1;
}

KDLogFileEntry* KDVersionTree::selectedEntry(const KDPathRecord& path,
                                             const std::string& userId) const {
  const auto found = selectedBranches_.find(&path);
  if (found == selectedBranches_.end()) return nullptr;
  for (const auto& [user, entry] : found->second) {
    if (*user == userId) return entry;
  }
  return nullptr;
}

/// Somebody may have given a branch up before the news came that another one had chosen it. As if
/// they had come in the other order, nothing is chosen then.
void KDVersionTree::takeSelection(const KDLogFileEntry& selection) {
  KDLogFileEntry& chosen = *selection.parentEntry();
  const KDPathRecord& path = chosen.pathRecord();
  for (const KDLogFileEntry* own = path.newest; own; own = own->previous()) {
    if (own->userId() == selection.userId() && own->modTime() == chosen.modTime() &&
        !own->isParentOfEntry(&chosen)) {
      left_.insert(own);
    }
  }
  bool isAlive = chosen.isDirectory();  // any directory is as good
  for (const KDLogFileEntry* leaf = path.firstLeaf; leaf && !isAlive; leaf = leaf->nextLeaf()) {
    isAlive = leaf->exists() && chosen.isParentOfEntry(leaf);
  }
  if (isAlive) return selectLogEntry(chosen, selection.userId());
  deselectLogEntry(path, selection.userId());
}

void KDVersionTree::selectLogEntry(KDLogFileEntry& entry, const std::string& userId) {
  auto& selections = selectedBranches_[&entry.pathRecord()];
  for (auto& [user, selected] : selections) {
    if (*user == userId) {
      selected = &entry;
      return;
    }
  }
  selections.emplace_back(&internedUserId(userId), &entry);
}

void KDVersionTree::deselectLogEntry(const KDPathRecord& path, const std::string& userId) {
  const auto found = selectedBranches_.find(&path);
  if (found == selectedBranches_.end()) return;
  std::erase_if(found->second, [&](const auto& selection) { return *selection.first == userId; });
  if (found->second.empty()) selectedBranches_.erase(found);
}

void KDVersionTree::deselectBranch(const KDLogFileEntry& entry) {
  const auto found = selectedBranches_.find(&entry.pathRecord());
  if (found == selectedBranches_.end()) return;
  std::erase_if(found->second, [&](const auto& selection) {
    return selection.second->isParentOfEntry(&entry) || entry.isParentOfEntry(selection.second);
  });
  if (found->second.empty()) selectedBranches_.erase(found);
}

std::vector<std::string> KDVersionTree::usersWhoSelected(const KDLogFileEntry& leaf) const {
  std::vector<std::string> users;
  const auto found = selectedBranches_.find(&leaf.pathRecord());
  if (found == selectedBranches_.end()) return users;
  for (const auto& [user, entry] : found->second) {
    if (entry->isParentOfEntry(&leaf)) users.push_back(*user);
  }
  std::sort(users.begin(), users.end());
  return users;
}

KDLogFileEntry* KDVersionTree::versionWithModTime(const KDPathRecord& path, double modTime,
                                                  const std::string& userId) const {
  if (modTime == 0) return directoryLeaf(path);
  const KDLogFileEntry* chosen = selectedEntry(path, userId);
  std::vector<KDLogFileEntry*> matches;  // newest first
  for (KDLogFileEntry* entry = path.newest; entry; entry = entry->previous()) {
    // A directory's time is when it was logged; a file that has it is none.
    if (entry->modTime() != modTime || entry->isDirectory()) continue;
    if (chosen && chosen->isParentOfEntry(entry)) return entry;
    matches.push_back(entry);
  }
  if (matches.size() <= 1) return matches.empty() ? nullptr : matches.front();
  const auto leaves = activeLeafEntries(path);
  for (KDLogFileEntry* match : matches) {
    for (const KDLogFileEntry* leaf : leaves) {
      if (match->isParentOfEntry(leaf)) return match;
    }
  }
  return matches.front();
}

bool KDVersionTree::isAmbiguous(const KDLogFileEntry& version, const std::string& userId,
                                const HeldLogs& held) const {
  const bool isSure =
      version.userId() == userId && !held.hasLoggedMore() && !left_.contains(&version);
  if (version.isDirectory() || isSure) return false;
  const KDPathRecord& path = version.pathRecord();
  for (const KDLogFileEntry* leaf = path.firstLeaf; leaf; leaf = leaf->nextLeaf()) {
    if (!leaf->exists() && held.hasCarriedOut(*leaf)) continue;
    if (hasAnotherOfSecond(version, *leaf)) return true;
  }
  return false;
}

bool KDVersionTree::sharesSecond(const KDLogFileEntry& version) const {
  const auto leaves = activeLeafEntries(version.pathRecord());
  return !version.isDirectory() && std::any_of(leaves.begin(), leaves.end(), [&](const auto* leaf) {
    return hasAnotherOfSecond(version, *leaf);
  });
}

bool KDVersionTree::hasAnotherOfSecond(const KDLogFileEntry& version, const KDLogFileEntry& leaf) {
  if (version.isParentOfEntry(&leaf)) return false;
  for (const KDLogFileEntry* other = &leaf; other; other = other->parentEntry()) {
    if (other->isDirectory() || other->modTime() != version.modTime()) continue;
    if (!other->isParentOfEntry(&version)) return true;
  }
  return false;
}

std::set<std::string> KDVersionTree::usersIdsForBranch(const KDLogFileEntry& entry) const {
  std::set<std::string> users;
  for (const KDLogFileEntry* leaf : activeLeafEntries(entry.pathRecord())) {
    if (!entry.isParentOfEntry(leaf)) continue;
    for (const KDLogFileEntry* author = leaf; author; author = author->parentEntry()) {
      users.insert(author->userId());
    }
  }
  users.erase(localUserId_);
  return users;
}

bool KDVersionTree::isTimeWarped(const KDPathRecord& path, double fileTime) const {
  const KDLogFileEntry* current = selectedLeaf(path).leaf;
  while (current && current->parentEntry()) {
    const KDLogFileEntry* parent = current->parentEntry();
    if (fileTime == current->modTime()) return false;
    if (parent->modTime() > current->modTime()) return true;
    current = parent;
  }
  return false;
}

std::string KDVersionTree::treeDescription(std::string_view path) const {
  std::string text = "Tree Description for '" + std::string(path) + "'\n";
  const KDPathRecord* record = store_.findPath(path);
  if (!record || !record->newest) return text + "No entries present.";
  std::vector<KDLogFileEntry*> entries;
  for (KDLogFileEntry* entry = record->newest; entry; entry = entry->previous()) {
    entries.push_back(entry);
  }
  std::reverse(entries.begin(), entries.end());
  std::unordered_map<const KDLogFileEntry*, std::vector<KDLogFileEntry*>> children;
  std::vector<std::pair<KDLogFileEntry*, std::size_t>> open;  // depth-first, first child on top
  for (auto entry = entries.rbegin(); entry != entries.rend(); ++entry) {
    if ((*entry)->parentEntry()) {
      children[(*entry)->parentEntry()].push_back(*entry);
    } else {
      open.emplace_back(*entry, 0);
    }
  }
  const KDLogFileEntry* selected = selectedLeaf(*record).leaf;
  while (!open.empty()) {
    const auto [entry, depth] = open.back();
    open.pop_back();
    text += std::string(depth, '+') + " " + entry->shortDescription() +
            (entry == selected ? " <-- selected" : "") + "\n";
    for (KDLogFileEntry* child : children[entry]) open.emplace_back(child, depth + 1);
  }
  return text;
}

std::uint64_t KDVersionTree::takeOrphanCount() { return std::exchange(orphans_, 0); }

}  // namespace zolvar
