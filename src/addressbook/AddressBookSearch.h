#pragma once

#include <optional>
#include <string>
#include <vector>

#include "addressbook/AddressBook.h"

namespace zolvar {

/// The first group of exactly this name; nothing when there is none.
Result<std::optional<ABGroup>> groupWithName(AddressBook& book, const std::string& name);

/// Everyone of one moment, to be searched for the people whose first name contains the one name and
/// whose last name contains the other, whatever the case of their letters (of the Latin, Greek and
/// Cyrillic alphabets). Immutable.
class PeopleByName {
 public:
  explicit PeopleByName(const std::vector<ABPerson>& people);
  /// Ids, in the order of the people.
  [[nodiscard]] std::vector<std::string> find(const std::string& first,
                                              const std::string& last) const;

 private:
  struct Named {
    std::string id;
    std::u32string first;
    std::u32string last;
  };
  static std::u32string searched(const std::string& name);

  std::vector<Named> people_;
};

/// Whether first and last names are the same, whatever the case of their letters.
[[nodiscard]] bool hasSameName(const ABPerson& person, const ABPerson& other);

}  // namespace zolvar
