#include "addressbook/CardBook.h"

#include <fmt/format.h>

#include <algorithm>

#include "addressbook/PersonProperties.h"
#include "addressbook/VCardEditor.h"
#include "addressbook/VCardPerson.h"
#include "platform/Lanes.h"
#include "platform/Platform.h"
#include "platform/Random.h"
#include "platform/RunLoop.h"
#include "platform/UserDefaults.h"

namespace zolvar {
namespace {

constexpr std::string_view GroupPrefix = "group:";
constexpr const char* OwnCardKey = "OwnCard";
// No person's card is larger, but for pictures and the like; one that is made so costs time.
constexpr std::size_t MostLines = 2000;
constexpr std::size_t LongestText = 64U << 10U;  // bytes

ABGroup groupNamed(const std::string& name) { return {std::string(GroupPrefix) + name, name}; }

bool contains(const std::vector<std::string>& list, const std::string& text) {
  return std::find(list.begin(), list.end(), text) != list.end();
}

bool isOfUsualSize(std::string_view card) {
  const auto lines = linesOfCard(card);
  return lines.size() <= MostLines &&
         std::all_of(lines.begin(), lines.end(), [](const VCardLine& line) {
           return line.value.size() <= LongestText || line.isBase64 ||
                  line.value.starts_with("data:");
         });
}

}  // namespace

CardBook::CardBook(std::unique_ptr<CardSource> source, Platform& platform,
                   NotificationCenter& center)
    : platform_(platform),
      center_(center),
      unknown_(Failure{FailureKind::Transient, "use the address book", "", "it is being read"}),
      lane_(platform.lanes.start("cards")),
      source_(std::move(source)) {}

CardBook::~CardBook() = default;

std::vector<std::string> CardBook::allPersonProperties() const {
  using namespace ABProperty;
  return {UniqueId,   FirstName,    LastName,    MiddleName, Title,    Suffix, Nickname,
          MaidenName, Organization, Department,  JobTitle,   Birthday, Phones, Emails,
          Addresses,  AIMNames,     JabberNames, URLs,       Note,     Image,  Modification};
}

// What is read

/// Nothing is read before somebody asks.
Result<> CardBook::checkIsRead() {
  if (!std::exchange(isStarted_, true)) {
    source_->start({[this](KeptCards cards) {
                      understand(std::move(cards), [this](Records& records) { takeAll(records); });
                    },
                    [this](KeptCards changed, const std::vector<std::string>& removed) {
                      understand(std::move(changed), [this, removed](Records& records) {
                        takeChanges(records, removed);
                      });
                    },
                    [this](const Failure& failure) {
                      understand({}, [this, failure](Records&) { lose(failure); });
                    },
                    [this](std::size_t count) {
                      understand({}, [this, count](Records&) { forgetWritten(count); });
                    }});
  }
  if (unknown_) return tl::unexpected(*unknown_);
  return {};
}

/// Reading thousands of cards takes longer than anybody should wait.
void CardBook::understand(KeptCards cards, std::function<void(Records&)> then) {
  lane_->post([kept = std::make_shared<KeptCards>(std::move(cards)), then = std::move(then),
               &runLoop = platform_.runLoop, alive = std::weak_ptr(isAlive_)] {
    const auto records = std::make_shared<Records>();
    for (auto& [id, card] : *kept) records->emplace(id, recordOf(id, std::move(card)));
    runLoop.post([records, then, alive] {
      if (alive.lock()) then(*records);
    });
  });
}

bool CardBook::isGroup(const std::string& name) const {
  return newGroups_.contains(name) ||
         std::any_of(records_.begin(), records_.end(), [&name](const auto& entry) {
           return entry.second.isPerson && contains(entry.second.categories, name);
         });
}

std::set<std::string> CardBook::groupNames() const {
  std::set<std::string> names = newGroups_;
  for (const auto& [id, record] : records_) {
    if (record.isPerson) names.insert(record.categories.begin(), record.categories.end());
  }
  return names;
}

Result<std::vector<ABGroup>> CardBook::groups() {
  if (const auto isRead = checkIsRead(); !isRead) return tl::unexpected(isRead.error());
  std::vector<ABGroup> found;
  for (const auto& name : groupNames()) found.push_back(groupNamed(name));
  return found;
}

Result<std::string> CardBook::nameOfGroup(const std::string& groupId) {
  if (const auto isRead = checkIsRead(); !isRead) return tl::unexpected(isRead.error());
  const std::string name =
      groupId.starts_with(GroupPrefix) ? groupId.substr(GroupPrefix.size()) : std::string();
  if (!name.empty() && isGroup(name)) return name;
  return fail(FailureKind::Absent, "find the group", groupId);
}

const CardBook::Record* CardBook::person(const std::string& personId) const {
  const auto found = records_.find(personId);
  return found == records_.end() || !found->second.isPerson ? nullptr : &found->second;
}

Result<std::vector<ABPerson>> CardBook::members(const std::string& groupId) {
  const auto name = nameOfGroup(groupId);
  if (!name) return tl::unexpected(name.error());
  std::vector<ABPerson> found;
  for (const auto& [id, record] : records_) {
    if (record.isPerson && contains(record.categories, *name)) found.push_back(record.person);
  }
  return found;
}

Result<std::vector<ABGroup>> CardBook::parentGroups(const std::string& personId) {
  if (const auto isRead = checkIsRead(); !isRead) return tl::unexpected(isRead.error());
  const Record* record = person(personId);
  if (!record) return fail(FailureKind::Absent, "find the contact", personId);
  std::vector<ABGroup> found;
  for (const auto& name : record->categories) found.push_back(groupNamed(name));
  return found;
}

Result<std::vector<ABPerson>> CardBook::people() {
  if (const auto isRead = checkIsRead(); !isRead) return tl::unexpected(isRead.error());
  std::vector<ABPerson> found;
  for (const auto& [id, record] : records_) {
    if (record.isPerson) found.push_back(record.person);
  }
  return found;
}

Result<std::optional<ABPerson>> CardBook::recordForUniqueId(const std::string& personId) {
  if (const auto isRead = checkIsRead(); !isRead) return tl::unexpected(isRead.error());
  const Record* record = person(personId);
  return record ? std::optional(record->person) : std::nullopt;
}

AddressBook::CardReader CardBook::cardReader() const {
  return [](const std::string& vCardData) -> Result<ABPerson> {
    const auto cards = cardsIn(vCardData);
    if (cards.size() != 1) return fail(FailureKind::Damaged, "read the card");
    if (!isOfUsualSize(cards.front())) {
      return fail(FailureKind::Damaged, "read the card", {}, "it is larger than any person's");
    }
    if (!isPersonsCard(linesOfCard(cards.front()))) {
      return fail(FailureKind::Damaged, "read the card", {}, "it is not of a person");
    }
    return personOfCard(cards.front());
  };
}

Result<std::optional<ABPerson>> CardBook::me() {
  if (const auto isRead = checkIsRead(); !isRead) return tl::unexpected(isRead.error());
  const std::string setting = platform_.defaults.string(OwnCardKey).value_or("");
  for (const auto& id : {setting, recordId(setting), source_->ownCard(setting)}) {
    if (const Record* record = person(id)) return record->person;
  }
  return std::optional<ABPerson>();
}

std::string CardBook::addressToOpen(const std::string& recordId) {
  const auto found = records_.find(recordId);
  return found == records_.end() ? std::string() : found->second.card.addressToOpen;
}

// What is changed here

bool CardBook::isInUse(const std::string& id) const {
  return records_.contains(id) || removed_.contains(id);
}

std::string CardBook::newUid() const {
  std::string uid;
  for (const int digits : {8, 4, 4, 4, 12}) {
    if (!uid.empty()) uid += '-';
    for (int digit = 0; digit < digits; ++digit) {
      uid += "0123456789abcdef"[static_cast<std::size_t>(platform_.random.uniform() * 16)];
    }
  }
  return uid;
}

Result<> CardBook::change(const std::string& personId, CardEdit edit) {
  if (const auto isRead = checkIsRead(); !isRead) return tl::unexpected(isRead.error());
  const Record* known = person(personId);
  if (!known) return fail(FailureKind::Absent, "find the contact", personId);
  if (!known->card.isWritable) {
    return fail(FailureKind::Refused, "change the contact", personId,
                "its file holds several contacts");
  }
  KeptCard card = known->card;
  card.text = edit(card.text);
  if (card.text == known->card.text) return {};
  records_[personId] = recordOf(personId, std::move(card));
  edits_[personId].push_back({++asked_, edit});
  unsaved_.push_back({CardWrite::Kind::Change, personId, {}, std::move(edit)});
  return {};
}

Result<ABGroup> CardBook::addGroup(const std::string& name) {
  if (const auto isRead = checkIsRead(); !isRead) return tl::unexpected(isRead.error());
  newGroups_.insert(name);
  return groupNamed(name);
}

Result<> CardBook::addMember(const std::string& groupId, const std::string& personId) {
  const auto name = nameOfGroup(groupId);
  if (!name) return tl::unexpected(name.error());
  return change(personId,
                [name = *name](std::string_view card) { return cardInCategory(card, name); });
}

Result<> CardBook::removeMember(const std::string& groupId, const std::string& personId) {
  const auto name = nameOfGroup(groupId);
  if (!name) return tl::unexpected(name.error());
  newGroups_.insert(*name);  // a group stays when its last member leaves
  return change(personId,
                [name = *name](std::string_view card) { return cardNotInCategory(card, name); });
}

Result<> CardBook::setValues(const std::string& personId, const ABChanges& changes) {
  return change(personId,
                [changes](std::string_view card) { return cardWithChanges(card, changes); });
}

Result<std::string> CardBook::addPerson(const ABPerson& person) {
  if (const auto isRead = checkIsRead(); !isRead) return tl::unexpected(isRead.error());
  const auto cards = cardsIn(person.vCardData);
  std::string text;
  if (cards.empty()) {
    text = cardWithChanges(emptyCard(), ABChanges(person.values.begin(), person.values.end()));
  } else {
    text = cardInNoCategory(cards.front());
  }
  const std::string ownUid = personOfCard(text).uniqueId;
  std::string uid = ownUid;
  while (uid.empty() || isInUse(recordId(uid))) uid = newUid();
  if (uid != ownUid) text = cardWithUid(text, uid);
  const std::string id = recordId(uid);
  Record record = recordOf(id, {text, true, ""});
  if (!record.isPerson) {
    return fail(FailureKind::Refused, "add the contact", id, "its card is not of a person");
  }
  records_[id] = std::move(record);
  added_[id] = ++asked_;
  unsaved_.push_back({CardWrite::Kind::Add, id, std::move(text), {}});
  return id;
}

Result<> CardBook::removePerson(const std::string& personId) {
  if (const auto isRead = checkIsRead(); !isRead) return tl::unexpected(isRead.error());
  const Record* known = person(personId);
  if (!known) return fail(FailureKind::Absent, "find the contact", personId);
  if (!known->card.isWritable) {
    return fail(FailureKind::Refused, "remove the contact", personId,
                "its file holds several contacts");
  }
  records_.erase(personId);
  removed_[personId] = ++asked_;
  unsaved_.push_back({CardWrite::Kind::Remove, personId, {}, {}});
  return {};
}

Result<> CardBook::save() {
  if (!unsaved_.empty()) source_->write(std::exchange(unsaved_, {}));
  return {};
}

bool CardBook::isWritten(const std::string& personId) const {
  const Record* record = person(personId);
  return record && record->isKept;
}

// What the source tells

CardBook::Record CardBook::recordOf(const std::string& id, KeptCard card) {
  Record record;
  record.isPerson = isPersonsCard(linesOfCard(card.text));
  record.person = personOfCard(card.text);
  record.person.uniqueId = id;
  record.categories = categoriesOfCard(card.text);
  record.card = std::move(card);
  return record;
}

/// Whether they say the same of the person: how a card is written, and when, does not matter.
bool CardBook::isSame(const Record& one, const Record& other) {
  const auto hasAllOf = [](const ABPerson& person, const ABPerson& of) {
    return std::all_of(of.values.begin(), of.values.end(), [&](const auto& value) {
      if (value.first == ABProperty::Modification) return true;
      const ABValue* own = person.value(value.first);
      return own && hasEqualABValue(*own, value.second);
    });
  };
  return one.isPerson == other.isPerson && one.categories == other.categories &&
         hasAllOf(one.person, other.person) && hasAllOf(other.person, one.person);
}

std::optional<CardBook::Record> CardBook::expected(const std::string& id, Record record) const {
  if (removed_.contains(id)) return std::nullopt;
  const auto found = edits_.find(id);
  if (found == edits_.end()) return record;
  KeptCard card = std::move(record.card);
  for (const auto& edit : found->second) card.text = edit.edit(card.text);
  return recordOf(id, std::move(card));
}

void CardBook::put(const std::string& id, Record told, AddressBookDidChange& changes) {
  const auto known = records_.find(id);
  if (known != records_.end() && known->second.card.text == told.card.text) {
    known->second.card = std::move(told.card);
    known->second.isKept = true;
    return;
  }
  auto record = expected(id, std::move(told));
  if (!record) return;
  record->isKept = true;
  if (known == records_.end()) {
    if (record->isPerson) changes.inserted.push_back(id);
    records_.emplace(id, std::move(*record));
    return;
  }
  if (!isSame(known->second, *record)) changes.updated.push_back(id);
  known->second = std::move(*record);
}

void CardBook::drop(const std::string& id, AddressBookDidChange& told) {
  const auto known = records_.find(id);
  if (known == records_.end() || added_.contains(id)) return;
  if (known->second.isPerson) told.deleted.push_back(id);
  records_.erase(known);
}

void CardBook::takeAll(Records& records) {
  const auto groupsBefore = groupNames();
  AddressBookDidChange told;
  std::vector<std::string> gone;
  for (const auto& [id, record] : records_) {
    if (!records.contains(id)) gone.push_back(id);
  }
  for (const auto& id : gone) drop(id, told);
  for (auto& [id, record] : records) put(id, std::move(record), told);
  const bool isNews = unknown_.has_value();
  unknown_.reset();
  if (isNews) {  // whoever waited is told even that there is nothing
    for (const auto& name : groupNames()) told.inserted.push_back(groupNamed(name).uniqueId);
    center_.post(told);
    return;
  }
  tell(std::move(told), groupsBefore);
}

void CardBook::takeChanges(Records& changed, const std::vector<std::string>& removed) {
  const auto groupsBefore = groupNames();
  AddressBookDidChange told;
  for (const auto& id : removed) drop(id, told);
  for (auto& [id, record] : changed) put(id, std::move(record), told);
  if (!unknown_) tell(std::move(told), groupsBefore);
}

void CardBook::tell(AddressBookDidChange told, const std::set<std::string>& groupsBefore) {
  const auto groupsNow = groupNames();
  const auto addMissing = [](const auto& names, const auto& others, auto& list) {
    for (const auto& name : names) {
      if (!others.contains(name)) list.push_back(groupNamed(name).uniqueId);
    }
  };
  addMissing(groupsNow, groupsBefore, told.inserted);
  addMissing(groupsBefore, groupsNow, told.deleted);
  if (!told.updated.empty() || !told.inserted.empty() || !told.deleted.empty()) center_.post(told);
}

void CardBook::lose(const Failure& failure) {
  unknown_ = failure;
  unknown_->kind = FailureKind::Transient;
}

void CardBook::forgetWritten(std::size_t count) {
  written_ += count;
  const auto isWritten = [this](const auto& entry) { return entry.second <= written_; };
  std::erase_if(added_, isWritten);
  std::erase_if(removed_, isWritten);
  for (auto it = edits_.begin(); it != edits_.end();) {
    std::erase_if(it->second, [this](const Edit& edit) { return edit.number <= written_; });
    it = it->second.empty() ? edits_.erase(it) : std::next(it);
  }
}

}  // namespace zolvar
