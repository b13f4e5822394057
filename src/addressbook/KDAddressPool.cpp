#include "addressbook/KDAddressPool.h"

#include <fmt/format.h>

#include <algorithm>

#include "addressbook/AddressBookSearch.h"
#include "addressbook/PersonProperties.h"
#include "platform/FileSystem.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/RunLoop.h"
#include "pool/FileChange.h"
#include "util/PathRules.h"
#include "util/QMDigest.h"

namespace zolvar {

namespace {

constexpr std::string_view CardExtension = ".vcf";
constexpr std::uint64_t LargestCard = 4U << 20U;  // bytes
constexpr double WritingTime = 5;                 // seconds
constexpr std::size_t FewDeletions = 10;          // go ahead at once
constexpr double HoldTime = 600;                  // seconds

bool isCardName(std::string_view name) {
  return name.ends_with(CardExtension) && !name.starts_with('.') &&
         name.find('/') == std::string_view::npos;
}

std::string digestOf(const std::string& bytes) {
  QMDigest digest(QMDigest::Algorithm::MD5);
  digest.update(bytes);
  std::string text;
  for (const char byte : digest.finish()) {
    text += fmt::format("{:02x}", static_cast<unsigned char>(byte));
  }
  return text;
}

}  // namespace

std::shared_ptr<KDAddressPool> KDAddressPool::make(const std::string& path, const Options& options,
                                                   Platform& platform, NotificationCenter& center,
                                                   KDFilePoolDelegate* delegate, AddressBook& book,
                                                   AddressMemory& memory) {
  std::shared_ptr<KDAddressPool> pool(
      new KDAddressPool(path, options, platform, center, delegate, book, memory));
  pool->readPassword(options);
  return pool;
}

KDAddressPool::KDAddressPool(const std::string& path, const Options& options, Platform& platform,
                             NotificationCenter& center, KDFilePoolDelegate* delegate,
                             AddressBook& book, AddressMemory& memory)
    : KDFilePool(path, options, platform, center, delegate),
      book_(book),
      memory_(memory),
      checked_(checkedProperties(book)),
      observation_(center.observe<AddressBookDidChange>(
          [this](const AddressBookDidChange& change) { addressBookChanged(change); })) {}

// What is shown.

std::string KDAddressPool::displayName() const {
  const std::string whole = name();
  return whole.ends_with(Extension) ? whole.substr(0, whole.size() - Extension.size()) : whole;
}

std::string KDAddressPool::url() {
  const auto group = syncGroup();
  return group ? fmt::format("addressbook://{}", group->uniqueId) : std::string();
}

std::string KDAddressPool::descriptionForFile(const std::string& path) const {
  memory_.load();
  const auto record =
      book_.recordForUniqueId(memory_.uniqueIdForFilename(std::string(lastPathComponent(path))));
  return record && *record ? fullnameOrOrganization(**record) : "New Person";
}

Result<ABGroup> KDAddressPool::syncGroup() {
  if (group_ && groupsBook_ == book_.identity()) return *group_;
  const auto found = groupWithName(book_, displayName());
  if (!found) return tl::unexpected(found.error());
  if (*found) {
    group_ = **found;
  } else {
    const auto added = book_.addGroup(displayName());
    if (!added) return added;
    if (const auto saved = book_.save(); !saved) return tl::unexpected(saved.error());
    group_ = *added;
  }
  groupsBook_ = book_.identity();
  memory_.load();
  memory_.useBook(name(), groupsBook_, !found->has_value());
  memory_.save();
  return *group_;
}

void KDAddressPool::note(const Failure& failure) {
  platform().log.warning("'{}': {}", name(), failure.message());
}

std::optional<AddressMemory::Mark> KDAddressPool::mark(const std::string& fileName) const {
  return memory_.mark(name(), fileName);
}

bool KDAddressPool::isChanged(const ABPerson& record, const AddressMemory::Mark& mark) const {
  return digestOfProperties(record, checked_) != mark.record;
}

// Life.

void KDAddressPool::didActivate() {
  memory_.load();
  copyVCardsFromAddressBook();
}

void KDAddressPool::willDeactivate() {
  exportGroup(readCards(platform().fileSystem, folderPath()));
}

KDAddressPool::Contents KDAddressPool::readCards(FileSystem& fileSystem,
                                                 const std::string& folderPath) {
  Contents contents;
  const auto folder = fileSystem.open(folderPath);
  const auto files = folder ? (*folder)->list("") : tl::unexpected(folder.error());
  if (!files) return contents;
  for (const auto& [name, attributes] : *files) {
    if (!isCardName(name) || attributes.kind != FileKind::Regular) continue;
    if (auto content = (*folder)->read(name, 0, LargestCard)) contents[name] = std::move(*content);
  }
  return contents;
}

void KDAddressPool::withCards(std::function<void(const Contents&)> job) {
  onFilesLane([weak = weak_from_this(), &fileSystem = platform().fileSystem,
               &runLoop = platform().runLoop, path = folderPath(), job = std::move(job)] {
    runLoop.post([weak, job, contents = readCards(fileSystem, path)] {
      if (const auto pool = weak.lock()) job(contents);
    });
  });
}

// From the book to the folder.

void KDAddressPool::copyVCardsFromAddressBook() {
  exportsAgain_ = isExporting_;
  if (isExporting_ || !isActive()) return;
  isExporting_ = true;
  withCards([this](const Contents& contents) {
    isExporting_ = isActive();
    if (isExporting_) exportGroup(contents);
  });
}

/// One comparison of the group's members with the cards in the folder.
class KDAddressPool::Export {
 public:
  Export(KDAddressPool& pool, const Contents& contents)
      : pool_(pool), contents_(contents), missing_(pool.snapshot()->missing) {}

  void compare(const std::vector<ABPerson>& members) {
    for (const ABPerson& member : members) compareMember(member);
    for (const auto& [fileName, card] : contents_) {
      if (ids_.contains(pool_.memory_.uniqueIdForFilename(fileName))) continue;
      if (fileNames_.contains(fileName) || isMissing(fileName)) continue;
      const auto mark = pool_.mark(fileName);
      if (mark && mark->isMatched) {
        // Whoever leaves the group only had a like name: the card is not theirs to take along.
        const auto own = pool_.book_.recordForUniqueId(pool_.memory_.uniqueIdForFilename(fileName));
        if (own && !*own) toImport[fileName] = card;
        continue;
      }
      if (mark && !mark->isNew) {
        changes.push_back({fileName, card, std::nullopt});
      } else {
        toImport[fileName] = card;
      }
    }
  }

  std::vector<FileChange> changes;
  std::map<std::string, AddressMemory::Mark> marks;  ///< once the changes are carried out
  Contents toImport;

 private:
  [[nodiscard]] bool isMissing(const std::string& fileName) const {
    return std::binary_search(missing_->begin(), missing_->end(), fileName);
  }

  /// A file of other people's is not written over while it is only alike by a part of the name.
  [[nodiscard]] std::string fileNameFor(const ABPerson& member) const {
    std::string fileName = pool_.memory_.filenameForUniqueId(member.uniqueId, pool_.name());
    const auto mark = pool_.mark(fileName);
    const auto file = contents_.find(fileName);
    if (mark && mark->isMatched && file != contents_.end()) {
      const auto person = pool_.book_.personWithVCardData(file->second);
      if (person && !hasSameName(*person, member)) {
        fileName = member.uniqueId + std::string(CardExtension);
      }
    }
    if (!isCardName(fileName) || !isSafeRelativePath(fileName) ||
        pool_.memory_.uniqueIdForFilename(fileName) != member.uniqueId) {
      fileName = digestOf(member.uniqueId) + std::string(CardExtension);
      pool_.memory_.setUniqueIdForFileName(member.uniqueId, fileName);
    }
    return fileName;
  }

  void compareMember(const ABPerson& member) {
    const std::string fileName = fileNameFor(member);
    ids_.insert(member.uniqueId);
    fileNames_.insert(fileName);
    if (isMissing(fileName)) return;  // what is to come is read in, or met with our change, later
    const std::string digest = digestOfProperties(member, pool_.checked_);
    const bool isNew = !pool_.book_.isWritten(member.uniqueId);
    const auto file = contents_.find(fileName);
    std::optional<std::string> expected;
    if (file != contents_.end()) {
      const auto mark = pool_.mark(fileName);
      const std::string fileDigest = digestOf(file->second);
      const auto person = pool_.book_.personWithVCardData(file->second);
      if (person && hasEqualProperties(member, *person, pool_.checked_)) {
        pool_.memory_.setMark(pool_.name(), fileName, {digest, fileDigest, false, isNew});
        return;
      }
      if (mark && mark->record == digest) {
        if (mark->file != fileDigest) {
          toImport[fileName] = file->second;
        } else if (mark->isNew && !isNew) {
          pool_.memory_.setMark(pool_.name(), fileName,
                                {digest, fileDigest, mark->isMatched, false});
        }
        return;  // the book keeps it in its own way, or two people wait to be merged
      }
      expected = file->second;
    }
    pool_.platform().log.warning("Writing vcard file for {} as {}", fullnameOrOrganization(member),
                                 fileName);
    marks[fileName] = {digest, digestOf(member.vCardData), false, isNew};
    changes.push_back({fileName, expected, member.vCardData});
  }

  KDAddressPool& pool_;
  const Contents& contents_;
  std::shared_ptr<const std::vector<std::string>> missing_;
  std::set<std::string> ids_;
  std::set<std::string> fileNames_;
};

void KDAddressPool::exportGroup(const Contents& contents) {
  const auto finish = [weak = weak_from_this()] {
    const auto pool = std::static_pointer_cast<KDAddressPool>(weak.lock());
    if (!pool) return;
    pool->isExporting_ = pool->isConfirming_ = false;
    if (std::exchange(pool->exportsAgain_, false)) pool->copyVCardsFromAddressBook();
  };
  const auto allowed = std::exchange(allowedDeletions_, {});
  const auto group = syncGroup();
  if (!deletedUnread_.empty()) {
    for (const std::string& fileName : std::exchange(deletedUnread_, {})) {
      if (!contents.contains(fileName)) deleteRecord(fileName);
    }
  }
  auto members = group ? book_.members(group->uniqueId) : tl::unexpected(group.error());
  if (group && !members && members.error().kind == FailureKind::Absent) {
    // In many books a group is gone with its last member; while we run that is seen for what it is.
    if (auto again = book_.addGroup(displayName())) {
      group_ = *again;
      members = std::vector<ABPerson>();
    }
  }
  if (!members) {
    note(members.error());
    return finish();
  }
  // What is only in memory must not be told as known.
  if (const auto saved = book_.save(); !saved) {
    note(saved.error());
    return finish();
  }
  Export exported(*this, contents);
  exported.compare(*members);
  holdMassDeletion(exported.changes, contents.size(), allowed);
  memory_.save();
  if (!exported.toImport.empty()) importCards(exported.toImport);
  if (exported.changes.empty()) return finish();
  changeFiles(exported.changes, [weak = weak_from_this(), changes = exported.changes,
                                 marks = exported.marks, finish](const Result<bool>& changed) {
    const auto pool = std::static_pointer_cast<KDAddressPool>(weak.lock());
    if (!pool) return;
    if (!changed) {
      pool->note(changed.error());
    } else if (*changed) {  // else the next comparison finds what is in step
      for (const auto& [fileName, mark] : marks) {
        pool->memory_.setMark(pool->name(), fileName, mark);
      }
      for (const FileChange& change : changes) {
        if (!change.content) pool->memory_.removeMark(pool->name(), change.path);
      }
      pool->memory_.save();
    }
    finish();
  });
}

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

// From the folder to the book.

void KDAddressPool::noteTaskDidEnd(const std::set<std::string>& loadedFiles,
                                   const std::function<void()>& tell) {
  if (!isActive()) return tell();
  withCards([this, loadedFiles, tell](const Contents& contents) {
    Contents loaded;
    for (const std::string& file : loadedFiles) {
      const auto found = contents.find(file);
      if (found != contents.end()) loaded.insert(*found);
    }
    if (!loaded.empty() && isActive()) importCards(loaded);
    tell();
    copyVCardsFromAddressBook();
  });
}

void KDAddressPool::importCards(const Contents& cards) {
  memory_.load();
  const auto group = syncGroup();
  if (!group) return note(group.error());
  for (const auto& [fileName, card] : cards) updateABFromVCard(*group, fileName, card);
  saveBook();
  std::set<std::string> toMerge;
  for (const auto& [recordId, fileName] : mergePaths_) toMerge.insert(fileName);
  mergeFilesWithAddressBook(toMerge);
  mergePaths_.clear();
  if (isConfirming_) return;
  // Then the book has written what it will.
  platform().runLoop.after(WritingTime, [weak = weak_from_this()] {
    const auto pool = std::static_pointer_cast<KDAddressPool>(weak.lock());
    if (!pool) return;
    pool->isConfirming_ = true;
    pool->copyVCardsFromAddressBook();
  });
}

void KDAddressPool::updateABFromVCard(const ABGroup& group, const std::string& fileName,
                                      const std::string& card) {
  const auto person = book_.personWithVCardData(card);
  if (!person) return;
  std::string id = memory_.uniqueIdForFilename(fileName);
  auto record = book_.recordForUniqueId(id);
  if (!record) return note(record.error());
  const auto known = mark(fileName);
  if (*record && !known && !memory_.isMapped(fileName) && !hasSameName(**record, *person)) {
    record->reset();  // the file is called by another book's id, which means nothing here
  }
  bool isMatched = false;
  bool isNew = known && known->isNew;
  Result<> changed;
  if (*record) {
    if (known && known->isMatched) {
      // Two people as long as nobody has made them one.
      isMatched = true;
      mergePaths_[id] = fileName;
    } else {
      if (known && isChanged(**record, *known)) return;  // written out instead, as a later version
      const ABChanges changes = copyPropertiesFromPerson(**record, *person, checked_);
      if (!changes.empty()) changed = book_.setValues(id, changes);
    }
  } else {
    if (const auto match = personOfSameName(*person)) {
      isMatched = true;
      id = match->uniqueId;
      mergePaths_[id] = fileName;
    } else if (auto added = book_.addPerson(*person)) {
      id = *added;
      isNew = true;
    } else {
      return note(added.error());
    }
    memory_.setUniqueIdForFileName(id, fileName);
  }
  if (changed) changed = book_.addMember(group.uniqueId, id);
  if (!changed) return note(changed.error());
  // As the book took it over, which may differ from what it was given.
  if (const auto taken = book_.recordForUniqueId(id); taken && *taken) {
    pendingMarks_[fileName] = {digestOfProperties(**taken, checked_), digestOf(card), isMatched,
                               isNew};
  }
}

/// The mark is written after the record: what was lost with a crash is read in once more.
void KDAddressPool::saveBook() {
  const auto saved = book_.save();
  if (!saved) {
    note(saved.error());
  } else {
    for (const auto& [fileName, mark] : pendingMarks_) memory_.setMark(name(), fileName, mark);
  }
  pendingMarks_.clear();
  memory_.save();
}

void KDAddressPool::didDeleteFiles(const std::set<std::string>& paths) {
  memory_.load();
  for (const std::string& path : paths) deleteRecord(std::string(lastPathComponent(path)));
  saveBook();
}

void KDAddressPool::deleteRecord(const std::string& fileName) {
  const std::string id = memory_.uniqueIdForFilename(fileName);
  const auto record = book_.recordForUniqueId(id);
  if (!record) {
    deletedUnread_.insert(fileName);
    return note(record.error());
  }
  const auto known = mark(fileName);
  if (*record && known && known->isMatched) {
    return memory_.forgetFile(name(), fileName);  // our own person, who only had a like name
  }
  memory_.removeMark(name(), fileName);
  // What was never in step is not ours to delete; what changed since is written out anew.
  if (!*record || !known || isChanged(**record, *known)) return;
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
