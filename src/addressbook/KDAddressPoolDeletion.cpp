// Whose contact goes with a card, and whose card with a contact.

#include <algorithm>
#include <utility>

#include "addressbook/KDAddressPool.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/RunLoop.h"
#include "util/PathRules.h"

namespace zolvar {

namespace {

constexpr std::size_t FewDeletions = 10;  // go ahead at once
constexpr double HoldTime = 600;          // seconds

}  // namespace

/// Most of a group seldom goes on purpose: whatever took it away may bring it back.
void KDAddressPool::holdMassDeletion(std::vector<FileChange>& changes, std::size_t cards,
                                     const std::set<std::string>& allowed) {
  std::set<std::string> deleted;
  for (const FileChange& change : changes) {
    if (!change.content && !allowed.contains(change.path)) deleted.insert(change.path);
  }
  if (heldDeletions_.empty()) {
    if (deleted.size() <= FewDeletions || deleted.size() * 2 <= cards) return;
    heldDeletions_ = deleted;
    platform().log.warning(
        "'{}': {} of {} contacts have left the group at once. They will be deleted on all "
        "computers in ten minutes, unless they come back.",
        name(), deleted.size(), cards);
    platform().runLoop.after(HoldTime, [weak = weak_from_this()] {
      const auto pool = std::static_pointer_cast<KDAddressPool>(weak.lock());
      if (!pool) return;
      auto held = std::exchange(pool->heldDeletions_, {});
      if (!pool->isActive()) return;
      pool->allowedDeletions_ = std::move(held);
      pool->copyVCardsFromAddressBook();
    });
  }
  std::erase_if(changes,
                [&deleted](const FileChange& change) { return deleted.contains(change.path); });
}

/// Contacts are deleted in the address book: what somebody removed here is written anew.
bool KDAddressPool::didLoseFiles(const DeleteQuestion& question) {
  platform().log.warning("'{}': {} cards have vanished from the folder and are put back.", name(),
                         question.paths.size());
  lossQuestion_ = question.id;
  copyVCardsFromAddressBook();
  return true;
}

void KDAddressPool::didDeleteFiles(const std::set<std::string>& paths) {
  memory_.load();
  std::set<std::string> deleted;
  for (const std::string& path : paths) deleted.emplace(lastPathComponent(path));
  for (const std::string& fileName : deleted) deleteRecord(fileName, deleted);
  saveBook();
  copyVCardsFromAddressBook();
}

/// Of the files that the record goes by; more than one, where twins were made one.
std::map<std::string, AddressMemory::Mark> KDAddressPool::marksInStep(
    const std::string& recordId) const {
  std::map<std::string, AddressMemory::Mark> marks;
  for (const std::string& fileName : memory_.filesOf(recordId, name())) {
    const auto known = mark(fileName);
    if (known && !known->isMatched) marks[fileName] = *known;
  }
  return marks;
}

void KDAddressPool::deleteRecord(const std::string& fileName,
                                 const std::set<std::string>& deleted) {
  const std::string id = memory_.uniqueIdForFilename(fileName);
  auto known = mark(fileName);
  const auto marks = marksInStep(id);
  const bool hasOther = std::any_of(marks.begin(), marks.end(), [&](const auto& entry) {
    return !deleted.contains(entry.first) && !entry.second.isDeleted;
  });
  if (known && (known->isMatched || hasOther)) {
    // Our own person, who only had a like name or goes by another file as well.
    return memory_.forgetFile(name(), fileName);
  }
  const auto record = book_.recordForUniqueId(id);
  if (!record) {
    if (known) {
      known->isDeleted = true;
      memory_.setMark(name(), fileName, *known);
    }
    return note(record.error());
  }
  memory_.removeMark(name(), fileName);
  // What was never in step is not ours to delete; what changed since is written out anew.
  const bool isKnown = *record && known;
  if (!isKnown || std::all_of(marks.begin(), marks.end(), [&](const auto& entry) {
        return isChanged(**record, entry.second);
      })) {
    return;
  }
  const auto group = syncGroup();
  if (!group) return note(group.error());
  if (const auto removed = book_.removeMember(group->uniqueId, id); !removed) {
    return note(removed.error());
  }
  const auto others = book_.parentGroups(id);
  if (!others || !others->empty()) return;
  if (const auto removed = book_.removePerson(id); !removed) note(removed.error());
}

}  // namespace zolvar
