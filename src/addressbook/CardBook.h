#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "addressbook/AddressBook.h"
#include "addressbook/CardSource.h"
#include "util/NotificationCenter.h"

namespace zolvar {

class Lane;
struct Platform;

/// An address book of cards that a CardSource keeps; its groups are the cards' categories. Reading
/// begins when the book is first asked something; then it answers from memory. What is changed here
/// is in memory at once and goes to the source with `save`; until it is written there, it is
/// applied again to whatever the source tells, so that nobody's change is lost. What the source
/// tells is understood on a lane, in the order of telling. Platform and centre outlive it. Main
/// thread.
///
/// A group without members is in no card: it lasts as long as the object.
class CardBook : public AddressBook {
 public:
  CardBook(std::unique_ptr<CardSource> source, Platform& platform, NotificationCenter& center);
  ~CardBook() override;
  CardBook(const CardBook&) = delete;
  CardBook& operator=(const CardBook&) = delete;

  [[nodiscard]] std::string identity() const override { return source_->identity(); }
  [[nodiscard]] std::vector<std::string> allPersonProperties() const override;
  [[nodiscard]] Result<std::vector<ABGroup>> groups() override;
  Result<ABGroup> addGroup(const std::string& name) override;
  [[nodiscard]] Result<std::vector<ABPerson>> members(const std::string& groupId) override;
  Result<> addMember(const std::string& groupId, const std::string& personId) override;
  Result<> removeMember(const std::string& groupId, const std::string& personId) override;
  [[nodiscard]] Result<std::vector<ABGroup>> parentGroups(const std::string& personId) override;
  [[nodiscard]] Result<std::vector<ABPerson>> people() override;
  [[nodiscard]] Result<std::optional<ABPerson>> recordForUniqueId(
      const std::string& personId) override;
  [[nodiscard]] CardReader cardReader() const override;
  Result<std::string> addPerson(const ABPerson& person) override;
  Result<> removePerson(const std::string& personId) override;
  Result<> setValues(const std::string& personId, const ABChanges& changes) override;
  Result<> save() override;
  [[nodiscard]] bool isWritten(const std::string& personId) const override;
  [[nodiscard]] Result<std::optional<ABPerson>> me() override;
  [[nodiscard]] std::string addressToOpen(const std::string& recordId) override;

 private:
  struct Edit {
    std::uint64_t number = 0;  ///< among all writes
    CardEdit edit;
  };
  struct Record {
    KeptCard card;
    ABPerson person;  ///< what the card says
    std::vector<std::string> categories;
    bool isKept = false;   ///< as the source told it; else it waits to be written
    bool isPerson = true;  ///< a card of a group or a list is nobody, but its id is taken
  };
  using Records = std::map<std::string, Record>;

  [[nodiscard]] static Record recordOf(const std::string& id, KeptCard card);
  [[nodiscard]] static bool isSame(const Record& one, const Record& other);
  [[nodiscard]] Result<> checkIsRead();
  [[nodiscard]] bool isGroup(const std::string& name) const;
  [[nodiscard]] Result<std::string> nameOfGroup(const std::string& groupId);
  [[nodiscard]] std::set<std::string> groupNames() const;
  [[nodiscard]] const Record* person(const std::string& personId) const;
  [[nodiscard]] bool isInUse(const std::string& id) const;
  [[nodiscard]] std::string newUid() const;
  Result<> change(const std::string& personId, CardEdit edit);

  void understand(KeptCards cards, std::function<void(Records&)> then);
  void takeAll(Records& records);
  void takeChanges(Records& changed, const std::vector<std::string>& removed);
  void lose(const Failure& failure);
  void forgetWritten(std::size_t count);
  /// A card as it will be when all that is asked for is written; nothing when it will be gone.
  [[nodiscard]] std::optional<Record> expected(const std::string& id, Record record) const;
  void put(const std::string& id, Record told, AddressBookDidChange& changes);
  void drop(const std::string& id, AddressBookDidChange& told);
  void tell(AddressBookDidChange told, const std::set<std::string>& groupsBefore);

  Platform& platform_;
  NotificationCenter& center_;
  bool isStarted_ = false;
  std::optional<Failure> unknown_;  ///< why it is not known what is in the book
  Records records_;
  std::set<std::string> newGroups_;                 ///< names of groups made here
  std::vector<CardWrite> unsaved_;                  ///< not given to the source yet
  std::uint64_t asked_ = 0;                         ///< writes, the unsaved ones included
  std::uint64_t written_ = 0;                       ///< of them
  std::map<std::string, std::vector<Edit>> edits_;  ///< not written yet, by record id
  std::map<std::string, std::uint64_t> added_;      ///< the write that adds the record
  std::map<std::string, std::uint64_t> removed_;    ///< the write that removes it
  const std::shared_ptr<Lane> lane_;
  const std::shared_ptr<bool> isAlive_ = std::make_shared<bool>(true);
  const std::unique_ptr<CardSource> source_;
};

}  // namespace zolvar
