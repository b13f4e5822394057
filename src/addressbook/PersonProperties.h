#pragma once

#include <string>
#include <vector>

#include "addressbook/AddressBook.h"

namespace zolvar {

// What of a person is kept in step, compared and shown. Pure.

/// Every property that a person of the book can have, but for its unique id, "Modification",
/// "Creation", "Note" and "HomePage": bookkeeping and what people keep to themselves.
std::vector<std::string> checkedProperties(const AddressBook& book);

/// Equal values; of multi-values equal values and equal labels, entry by entry in order.
/// Identifiers and the primary mark do not count.
[[nodiscard]] bool hasEqualABValue(const ABValue& value, const ABValue& other);
/// Whether all the properties are equal; one that both lack is.
[[nodiscard]] bool hasEqualProperties(const ABPerson& person, const ABPerson& other,
                                      const std::vector<std::string>& checked);
/// Whether nothing of the other one but the first and the last name would be missing: the same
/// single values, and all entries of the multi-values, whatever their labels.
[[nodiscard]] bool hasAllOf(const ABPerson& person, const ABPerson& other,
                            const std::vector<std::string>& checked);
/// What to change in `person` so that the properties are those of `other`.
[[nodiscard]] ABChanges copyPropertiesFromPerson(const ABPerson& person, const ABPerson& other,
                                                 const std::vector<std::string>& checked);
/// The same for persons whose properties are equal, and in practice for no others: 32 hexadecimal
/// digits.
[[nodiscard]] std::string digestOfProperties(const ABPerson& person,
                                             const std::vector<std::string>& checked);

// Each empty when it is missing.
std::string firstname(const ABPerson& person);
std::string lastname(const ABPerson& person);
std::string organization(const ABPerson& person);
std::string honorprefix(const ABPerson& person);
std::string honorpostfix(const ABPerson& person);
/// The picture's bytes.
std::string image(const ABPerson& person);

/// "Dr Ann Lee, Jr"; the first name alone when there is no last name.
std::string fullname(const ABPerson& person);
/// The full name, "ORGANISATION", or "FULL NAME, ORGANISATION".
std::string fullnameOrOrganization(const ABPerson& person);

}  // namespace zolvar
