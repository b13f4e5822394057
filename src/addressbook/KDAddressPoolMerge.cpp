// Two cards of one person, or one name of two people.

#include <fmt/ranges.h>

#include <algorithm>

#include "addressbook/AddressBookSearch.h"
#include "addressbook/KDAddressPool.h"
#include "addressbook/PersonProperties.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "pool/FileChange.h"
#include "util/PathRules.h"

namespace zolvar {

std::optional<std::string> KDAddressPool::idOfSameName(const ABPerson& person) {
  // A part of any name is nobody's name.
  if (firstname(person).empty() && lastname(person).empty()) return std::nullopt;
  if (!names_) {
    const auto people = book_.people();
    if (!people) return std::nullopt;
    names_.emplace(*people);
  }
  auto found = names_->find(firstname(person), lastname(person));
  // Whoever came by another card of this folder is another person there.
  std::erase_if(found, [this](const std::string& id) {
    const auto files = memory_.filesOf(id, name());
    const auto record = book_.recordForUniqueId(id);
    return !record || !*record || std::any_of(files.begin(), files.end(), [&](const auto& file) {
      return memory_.isMapped(file) && (mark(file) || pendingMarks_.contains(file));
    });
  });
  return found.empty() ? std::nullopt : std::optional(found.back());
}

void KDAddressPool::mergeFilesWithAddressBook(const std::set<std::string>& fileNames) {
  if (!fileNames.empty()) center().post(KDAddressMergeNeeded{this, fileNames});
}

void KDAddressPool::addressBookChanged(const AddressBookDidChange& change) {
  if (!isActive()) return;
  const auto merging = mergePaths_;
  for (const std::string& id : change.updated) {
    const auto merged = merging.find(id);
    if (merged == merging.end()) continue;
    const std::string& fileName = merged->second;
    const std::string base = fileName.substr(0, fileName.rfind('.'));
    const auto record = book_.recordForUniqueId(id);
    platform().log.warning("Detected an Address Book merge of {} ({} with {}",
                           record && *record ? fullname(**record) : "", id, base);
    if (base < id) {
      deleteMerged(joinPath(id, "vcf"));  // meant to be so, though no card has such a path
      memory_.setUniqueIdForFileName(id, fileName);
      saveMemory();
    } else {
      deleteMerged(fileName);
    }
  }
  platform().log.warning(
      "Got external address book changed notification: updated {}, inserted {}, deleted {}",
      change.updated, change.inserted, change.deleted);
  copyVCardsFromAddressBook();
}

/// The file of a pair that a person has made one.
void KDAddressPool::deleteMerged(const std::string& fileName) {
  withCards([this, fileName](const MirroredCards& cards) {
    const auto found = cards.find(fileName);
    if (found == cards.end() || !found->second.isRead) return;
    changeFiles({{fileName, found->second.text, std::nullopt}}, [](const Result<bool>&) {});
  });
}

}  // namespace zolvar
