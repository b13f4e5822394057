#include "addressbook/KDAddressPool.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "addressbook/AddressBookSearch.h"
#include "addressbook/PersonProperties.h"
#include "platform/FileSystem.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/RunLoop.h"
#include "pool/FileChange.h"
#include "util/PathRules.h"

namespace zolvar {

namespace {

constexpr std::uint64_t LargestCard = 4U << 20U;  // bytes
constexpr double WritingTime = 5;                 // seconds
constexpr std::size_t CardsATurn = 25;            // read in before others have their turn

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
  saveMemory();
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

/// What is in step already needs no look.
void KDAddressPool::willDeactivate() {
  toImport_.clear();  // read in with the next activation
  if (!isExporting_ && !exportsAgain_ && !isBehind_) return;
  const auto group = groupToCompare();
  if (!group) return;
  Outcome outcome;
  outcome.cards = readCards(platform().fileSystem, book_.cardReader(), folderPath());
  outcome.difference = compareGroup(*group, outcome.cards, memory_, platform().log);
  exportGroup(std::move(outcome));
}

MirroredCards KDAddressPool::readCards(FileSystem& fileSystem,
                                       const AddressBook::CardReader& reader,
                                       const std::string& folderPath) {
  MirroredCards cards;
  const auto folder = fileSystem.open(folderPath);
  const auto files = folder ? (*folder)->list("") : tl::unexpected(folder.error());
  if (!files) return cards;
  for (const auto& [name, attributes] : *files) {
    if (!isCardName(name) || attributes.kind != FileKind::Regular) continue;
    MirroredCard& card = cards[name];
    auto text = (*folder)->read(name, 0, LargestCard);
    if (!text || attributes.size > LargestCard) {
      card.isRead = false;
      card.problem = text ? "it is too large" : text.error().message();
      continue;
    }
    card.text = std::move(*text);
    card.digest = cardDigest(card.text);
    if (auto person = reader(card.text)) {
      card.person = std::move(*person);
    } else {
      card.problem = person.error().reason.empty() ? "it is no card" : person.error().reason;
    }
  }
  return cards;
}

/// Another text when any card has come, gone or changed.
std::string KDAddressPool::listing(FileSystem& fileSystem, const std::string& folderPath) {
  std::string text;
  const auto folder = fileSystem.open(folderPath);
  const auto files = folder ? (*folder)->list("") : tl::unexpected(folder.error());
  if (!files) return text;
  for (const auto& [name, attributes] : *files) {
    if (!isCardName(name)) continue;
    text += fmt::format("{} {} {}/", name, attributes.size, attributes.modTime);
  }
  return cardDigest(text);
}

void KDAddressPool::withCards(std::function<void(MirroredCards&)> job) {
  onFilesLane([weak = weak_from_this(), &fileSystem = platform().fileSystem,
               reader = book_.cardReader(), &runLoop = platform().runLoop, path = folderPath(),
               job = std::move(job)] {
    const auto cards = std::make_shared<MirroredCards>(readCards(fileSystem, reader, path));
    runLoop.post([weak, job, cards] {
      if (const auto pool = weak.lock()) job(*cards);
    });
  });
}

/// Once for each card, and once more when it is another one.
void KDAddressPool::noteOnce(const std::string& fileName, const std::string& digest,
                             const std::string& text) {
  const auto [known, isNew] = problems_.try_emplace(fileName, digest);
  if (!isNew && known->second == digest) return;
  known->second = digest;
  platform().log.warning("'{}': nobody is read in from '{}': {}.", name(), fileName, text);
}

void KDAddressPool::noteProblems(const MirroredCards& cards) {
  for (const auto& [fileName, card] : cards) {
    if (!card.problem.empty()) noteOnce(fileName, card.digest, card.problem);
  }
}

// From the book to the folder.

Result<ComparedGroup> KDAddressPool::groupToCompare() {
  const auto group = syncGroup();
  auto members = group ? book_.members(group->uniqueId) : tl::unexpected(group.error());
  if (group && !members && members.error().kind == FailureKind::Absent) {
    // In many books a group is gone with its last member; while we run that is seen for what it is.
    if (auto again = book_.addGroup(displayName())) {
      group_ = *again;
      members = std::vector<ABPerson>();
    }
  }
  if (!members) return tl::unexpected(members.error());
  // What is only in memory must not be told as known.
  if (const auto saved = book_.save(); !saved) return tl::unexpected(saved.error());
  ComparedGroup compared{name(), std::move(*members), {}, checked_, snapshot()->missing};
  for (const ABPerson& member : compared.members) {
    if (!book_.isWritten(member.uniqueId)) compared.unwritten.insert(member.uniqueId);
  }
  return compared;
}

void KDAddressPool::copyVCardsFromAddressBook() {
  exportsAgain_ = isExporting_ || isImporting_;
  if (exportsAgain_ || !isActive()) return;
  isExporting_ = true;
  auto group = groupToCompare();
  if (!group) {
    note(group.error());
    isBehind_ = true;
    return exportEnded();
  }
  onFilesLane([weak = weak_from_this(), memory = memory_.shared_from_this(),
               reader = book_.cardReader(), &fileSystem = platform().fileSystem,
               &log = platform().log, &runLoop = platform().runLoop, path = folderPath(),
               group = std::make_shared<const ComparedGroup>(std::move(*group))] {
    const auto outcome = std::make_shared<Outcome>();
    outcome->listing = listing(fileSystem, path);
    outcome->missing = group->missing;
    outcome->cards = readCards(fileSystem, reader, path);
    outcome->difference = compareGroup(*group, outcome->cards, *memory, log);
    runLoop.post([weak, outcome] {
      const auto pool = std::static_pointer_cast<KDAddressPool>(weak.lock());
      if (!pool) return;
      if (pool->isActive()) return pool->exportGroup(std::move(*outcome));
      pool->isExporting_ = false;
    });
  });
}

void KDAddressPool::exportEnded() {
  isExporting_ = isConfirming_ = false;
  if (std::exchange(exportsAgain_, false)) return copyVCardsFromAddressBook();
  constexpr int Reget = 1000;  // what the export has not written
  const auto question = std::exchange(lossQuestion_, std::nullopt);
  if (question) answerQuestion(*question, Reget, [](const Result<>&) {});
}

void KDAddressPool::exportGroup(Outcome outcome) {
  GroupDifference& difference = outcome.difference;
  noteProblems(outcome.cards);
  isBehind_ = false;
  listing_ = std::move(outcome.listing);
  missing_ = outcome.missing;
  for (const std::string& fileName : difference.deletions) {
    deleteRecord(fileName, difference.deletions);
  }
  for (const auto& [fileName, recordId] : difference.mappings) {
    memory_.setUniqueIdForFileName(recordId, fileName);
  }
  for (const auto& [fileName, settled] : difference.settled) {
    if (mark(fileName) == settled.before) memory_.setMark(name(), fileName, settled.now);
  }
  for (const std::string& fileName : difference.orphans) {
    const auto own = book_.recordForUniqueId(memory_.uniqueIdForFilename(fileName));
    if (own && !*own) difference.toImport.insert(fileName);
  }
  holdMassDeletion(difference.changes, outcome.cards.size(), std::exchange(allowedDeletions_, {}));
  if (!difference.deletions.empty()) saveBook();
  saveMemory();
  MirroredCards toImport;
  for (const std::string& fileName : difference.toImport) {
    toImport.insert(outcome.cards.extract(fileName));
  }
  if (!toImport.empty()) importCards(std::move(toImport), [] {});
  if (difference.changes.empty()) return exportEnded();
  changeFiles(difference.changes, [weak = weak_from_this(), changes = difference.changes,
                                   marks = difference.marks](const Result<bool>& changed) {
    const auto pool = std::static_pointer_cast<KDAddressPool>(weak.lock());
    if (!pool) return;
    pool->isBehind_ = pool->isBehind_ || !changed.value_or(false);
    if (!changed) {
      pool->note(changed.error());
    } else if (*changed) {  // else the next comparison finds what is in step
      for (const auto& [fileName, mark] : marks) {
        pool->memory_.setMark(pool->name(), fileName, mark);
      }
      for (const FileChange& change : changes) {
        if (!change.content) pool->memory_.removeMark(pool->name(), change.path);
      }
      pool->saveMemory();
    }
    pool->exportEnded();
  });
}

// From the folder to the book.

void KDAddressPool::noteTaskDidEnd(const std::set<std::string>& loadedFiles,
                                   const std::function<void()>& tell) {
  if (!isActive()) return tell();
  if (loadedFiles.empty()) {
    tell();
    // Yet a file may have come: one that was fetched as another version than was asked for, of
    // which the log told only now.
    return onFilesLane([weak = weak_from_this(), &fileSystem = platform().fileSystem,
                        &runLoop = platform().runLoop, path = folderPath()] {
      runLoop.post([weak, now = listing(fileSystem, path)] {
        const auto pool = std::static_pointer_cast<KDAddressPool>(weak.lock());
        if (!pool || !pool->isActive()) return;
        const bool isSame = pool->listing_ == now && pool->missing_ &&
                            *pool->missing_ == *pool->snapshot()->missing;
        if (pool->isBehind_ || !isSame) pool->copyVCardsFromAddressBook();
      });
    });
  }
  withCards([this, loadedFiles, tell](MirroredCards& cards) {
    noteProblems(cards);
    MirroredCards loaded;
    for (const std::string& file : loadedFiles) loaded.insert(cards.extract(file));
    if (!isActive()) return tell();
    importCards(std::move(loaded), [this, tell] {
      tell();
      copyVCardsFromAddressBook();
    });
  });
}

void KDAddressPool::importCards(MirroredCards cards, std::function<void()> done) {
  const bool isAny = !cards.empty();
  cards.merge(toImport_);  // the newer ones stay
  toImport_ = std::move(cards);
  afterImport_.push_back(std::move(done));
  confirmsImport_ = confirmsImport_ || (!isConfirming_ && isAny);
  if (std::exchange(isImporting_, true)) return;
  memory_.load();
  importSome();
}

void KDAddressPool::importSome() {
  const auto group = toImport_.empty() ? tl::unexpected(Failure()) : syncGroup();
  if (!group) {
    if (!toImport_.empty()) note(group.error());
    toImport_.clear();
    return importEnded();
  }
  for (std::size_t count = 0; count < CardsATurn && !toImport_.empty(); ++count) {
    const auto next = toImport_.extract(toImport_.begin());
    updateABFromVCard(*group, next.key(), next.mapped());
  }
  saveBook();
  if (toImport_.empty()) return importEnded();
  platform().runLoop.post([weak = weak_from_this()] {
    const auto pool = std::static_pointer_cast<KDAddressPool>(weak.lock());
    if (pool) pool->importSome();
  });
}

void KDAddressPool::importEnded() {
  isImporting_ = false;
  names_.reset();
  std::set<std::string> toMerge;
  for (const auto& [recordId, fileName] : mergePaths_) {
    const auto person = mergePeople_.find(fileName);
    if (person == mergePeople_.end() || !isMerged(recordId, person->second)) {
      toMerge.insert(fileName);
    }
  }
  mergeFilesWithAddressBook(toMerge);
  mergePaths_.clear();
  mergePeople_.clear();
  for (const auto& done : std::exchange(afterImport_, {})) done();
  if (exportsAgain_ && !isExporting_) copyVCardsFromAddressBook();
  if (!std::exchange(confirmsImport_, false)) return;
  // Then the book has written what it will.
  platform().runLoop.after(WritingTime, [weak = weak_from_this()] {
    const auto pool = std::static_pointer_cast<KDAddressPool>(weak.lock());
    if (!pool || !pool->isActive()) return;
    pool->isConfirming_ = true;
    pool->copyVCardsFromAddressBook();
  });
}

bool KDAddressPool::isMerged(const std::string& recordId, const ABPerson& person) {
  const auto record = book_.recordForUniqueId(recordId);
  return record && *record && hasSameName(**record, person) && hasAllOf(**record, person, checked_);
}

void KDAddressPool::updateABFromVCard(const ABGroup& group, const std::string& fileName,
                                      const MirroredCard& card) {
  if (!card.person) return;
  const ABPerson& person = *card.person;
  std::string id = memory_.uniqueIdForFilename(fileName);
  auto record = book_.recordForUniqueId(id);
  if (!record) return note(record.error());
  const auto known = mark(fileName);
  if (*record && !known && (!hasSameName(**record, person) || !marksInStep(id).empty())) {
    record->reset();  // the id means nothing here: it is another book's, or goes by another file
  }
  const auto refuse = [&](const Failure& failure) {
    noteOnce(fileName, card.digest, failure.message());
  };
  bool isMatched = false;
  bool isNew = known && known->isNew;
  Result<> changed;
  if (*record) {
    // Two people as long as nobody has made them one, and of unknown history while either would
    // lose something.
    isMatched =
        known ? known->isMatched
              : !hasAllOf(person, **record, checked_) && !hasAllOf(**record, person, checked_);
    if (!isMatched) {
      if (known && isChanged(**record, *known)) return;  // written out instead, as a later version
      if (!known && !hasAllOf(person, **record, checked_)) {  // poorer: written over instead
        if (auto added = book_.addMember(group.uniqueId, id); !added) refuse(added.error());
        return;
      }
      const ABChanges changes = copyPropertiesFromPerson(**record, person, checked_);
      if (!changes.empty()) changed = book_.setValues(id, changes);
    }
  } else {
    if (const auto match = idOfSameName(person)) {
      isMatched = true;
      id = *match;
    } else if (auto added = book_.addPerson(person)) {
      id = *added;
      isNew = true;
    } else {
      return refuse(added.error());
    }
    memory_.setUniqueIdForFileName(id, fileName);
  }
  if (isMatched) {
    mergePaths_[id] = fileName;
    mergePeople_[fileName] = person;
  }
  if (changed) changed = book_.addMember(group.uniqueId, id);
  if (!changed) return refuse(changed.error());
  const auto groups = book_.parentGroups(id);
  if (!groups || std::find(groups->begin(), groups->end(), group) == groups->end()) {
    return noteOnce(fileName, card.digest, "the address book does not put it into the group");
  }
  // As the book took it over, which may differ from what it was given.
  if (const auto taken = book_.recordForUniqueId(id); taken && *taken) {
    pendingMarks_[fileName] = {digestOfProperties(**taken, checked_), card.digest, isMatched, isNew,
                               false};
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
  saveMemory();
}

void KDAddressPool::saveMemory() {
  onFilesLane([memory = memory_.shared_from_this()] { memory->save(); });
}

}  // namespace zolvar
