#pragma once

#include <optional>
#include <string>
#include <vector>

#include "addressbook/AddressBook.h"

namespace zolvar {

/// The first group of exactly this name; nothing when there is none.
Result<std::optional<ABGroup>> groupWithName(AddressBook& book, const std::string& name);

/// The people whose first name contains the one name and whose last name contains the other,
/// whatever the case of their letters (of the Latin, Greek and Cyrillic alphabets).
Result<std::vector<ABPerson>> peopleWithFirstNameLastName(AddressBook& book,
                                                          const std::string& first,
                                                          const std::string& last);

/// Whether first and last names are the same, whatever the case of their letters.
[[nodiscard]] bool hasSameName(const ABPerson& person, const ABPerson& other);

}  // namespace zolvar
