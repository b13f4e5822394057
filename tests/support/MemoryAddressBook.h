#pragma once

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "addressbook/AddressBook.h"
#include "util/NotificationCenter.h"

namespace zolvar {

/// What an address book holds; outlives the programs that open it.
struct AddressBookContent {
  explicit AddressBookContent(const std::string& prefix)
      : identity("book " + prefix), prefix(prefix) {}

  std::string identity;
  std::string prefix;  ///< of record ids, and a line of each card's text
  std::map<std::string, ABPerson> people;
  std::map<std::string, std::set<std::string>> groups;
  std::optional<std::string> me;
  bool isUnreachable = false;
  bool isSlow = false;         ///< writes nothing by itself: what was added can be lost
  bool losesSuffixes = false;  ///< takes persons over without their suffix
  int lastId = 0;
  int saves = 0;
};

/// An address book in memory. Its cards are lines "PROPERTY:VALUE" between BEGIN and END, only
/// single values, and a line that names the book, so that two books never write one text for one
/// person. Changes made by the test count as another program's once it calls tell().
class MemoryAddressBook : public AddressBook {
 public:
  MemoryAddressBook(AddressBookContent& content, NotificationCenter& center)
      : content_(content), center_(center) {}

  static std::string card(const AddressBookContent& content, const ABPerson& person);
  static ABPerson person(const std::string& first, const std::string& last);
  void tell(const std::vector<std::string>& updated = {}) {
    center_.post(AddressBookDidChange{updated, {}, {}});
  }

  [[nodiscard]] std::string identity() const override { return content_.identity; }
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
  [[nodiscard]] bool isWritten(const std::string& /*personId*/) const override {
    return !content_.isSlow;
  }
  [[nodiscard]] Result<std::optional<ABPerson>> me() override;
  [[nodiscard]] std::string addressToOpen(const std::string& recordId) override {
    return "contact:" + recordId;
  }

 private:
  [[nodiscard]] Result<> check() const;
  void put(ABPerson person);

  AddressBookContent& content_;
  NotificationCenter& center_;
};

}  // namespace zolvar
