#include "pool/FileHistory.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

#include "pool/KDDiskRecord.h"
#include "pool/KDVersionTree.h"

namespace zolvar {

FileHistory fileHistory(const KDVersionTree& tree, const KDPathRecord& path, std::size_t most) {
  FileHistory history;
  history.path = path.text;
  const auto leaves = tree.activeLeafEntries(path);
  std::unordered_set<const KDLogFileEntry*> current(leaves.begin(), leaves.end());
  std::vector<const KDLogFileEntry*> entries;
  for (const KDLogFileEntry* entry = path.newest; entry != nullptr; entry = entry->previous()) {
    if (entries.size() < most || current.contains(entry)) {
      entries.push_back(entry);
    } else {
      ++history.omitted;
    }
  }
  std::reverse(entries.begin(), entries.end());
  std::stable_sort(entries.begin(), entries.end(), [](const auto* left, const auto* right) {
    return left->logTime() < right->logTime();
  });
  const KDLogFileEntry* here = path.disk != nullptr ? path.disk->entry : nullptr;
  std::unordered_map<const KDLogFileEntry*, int> places;
  for (const KDLogFileEntry* entry : entries) {
    HistoryVersion version;
    version.id = entry->id();
    version.modTime = entry->modTime();
    version.isContinued = entry->childCount() > 0;
    version.isHere = entry == here;
    if (const auto parent = places.find(entry->parentEntry()); parent != places.end()) {
      version.parent = parent->second;
    }
    if (current.contains(entry)) version.selectedBy = tree.usersWhoSelected(*entry);
    places[entry] = static_cast<int>(history.versions.size());
    history.versions.push_back(std::move(version));
  }
  return history;
}

}  // namespace zolvar
