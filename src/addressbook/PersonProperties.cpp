#include "addressbook/PersonProperties.h"

#include <fmt/format.h>

#include <algorithm>

#include "util/QMDigest.h"

namespace zolvar {

namespace {

constexpr const char* Unchecked[] = {ABProperty::UniqueId, ABProperty::Modification,
                                     ABProperty::Creation, ABProperty::Note, ABProperty::HomePage};

std::string text(const ABPerson& person, const char* property) {
  const ABValue* value = person.value(property);
  const auto* string = value ? std::get_if<std::string>(value) : nullptr;
  return string ? *string : std::string();
}

/// Pieces that cannot run into each other.
void feed(QMDigest& digest, std::string_view piece) {
  digest.updateLittleEndian(static_cast<std::uint32_t>(piece.size()));
  digest.update(piece);
}

void feedValue(QMDigest& digest, const ABValue& value) {
  digest.updateLittleEndian(static_cast<std::uint32_t>(value.index()));
  if (const auto* string = std::get_if<std::string>(&value)) {
    feed(digest, *string);
  } else if (const auto* date = std::get_if<ABDate>(&value)) {
    feed(digest, std::to_string(date->time_since_epoch().count()));
  } else {
    const auto& entries = std::get<ABMultiValue>(value);
    digest.updateLittleEndian(static_cast<std::uint32_t>(entries.size()));
    for (const ABMultiValueEntry& entry : entries) {
      feed(digest, entry.value);
      feed(digest, entry.label);
    }
  }
}

}  // namespace

std::vector<std::string> checkedProperties(const AddressBook& book) {
  std::vector<std::string> checked = book.allPersonProperties();
  std::erase_if(checked, [](const std::string& property) {
    return std::find(std::begin(Unchecked), std::end(Unchecked), property) != std::end(Unchecked);
  });
  return checked;
}

bool hasEqualABValue(const ABValue& value, const ABValue& other) {
  const auto* entries = std::get_if<ABMultiValue>(&value);
  const auto* others = std::get_if<ABMultiValue>(&other);
  if (entries && others) {
    return std::equal(entries->begin(), entries->end(), others->begin(), others->end(),
                      [](const auto& left, const auto& right) {
                        return left.value == right.value && left.label == right.label;
                      });
  }
  if (entries || others) return false;
  if (const auto* string = std::get_if<std::string>(&value)) {
    const auto* otherString = std::get_if<std::string>(&other);
    return otherString && *string == *otherString;
  }
  const auto* otherDate = std::get_if<ABDate>(&other);
  return otherDate && std::get<ABDate>(value) == *otherDate;
}

bool hasEqualProperties(const ABPerson& person, const ABPerson& other,
                        const std::vector<std::string>& checked) {
  return copyPropertiesFromPerson(person, other, checked).empty();
}

bool hasAllOf(const ABPerson& person, const ABPerson& other,
              const std::vector<std::string>& checked) {
  return std::all_of(checked.begin(), checked.end(), [&](const std::string& property) {
    const ABValue* theirs = other.value(property);
    if (!theirs || property == ABProperty::FirstName || property == ABProperty::LastName) {
      return true;
    }
    const ABValue* mine = person.value(property);
    if (!mine) return false;
    const auto* entries = std::get_if<ABMultiValue>(theirs);
    const auto* own = std::get_if<ABMultiValue>(mine);
    if (!entries || !own) return hasEqualABValue(*mine, *theirs);
    return std::all_of(entries->begin(), entries->end(), [&](const ABMultiValueEntry& entry) {
      return std::any_of(own->begin(), own->end(),
                         [&](const auto& each) { return each.value == entry.value; });
    });
  });
}

ABChanges copyPropertiesFromPerson(const ABPerson& person, const ABPerson& other,
                                   const std::vector<std::string>& checked) {
  ABChanges changes;
  for (const std::string& property : checked) {
    const ABValue* mine = person.value(property);
    const ABValue* theirs = other.value(property);
    if (!mine && !theirs) continue;
    if (mine && theirs && hasEqualABValue(*mine, *theirs)) continue;
    changes[property] = theirs ? std::optional(*theirs) : std::nullopt;
  }
  return changes;
}

std::string digestOfProperties(const ABPerson& person, const std::vector<std::string>& checked) {
  QMDigest digest(QMDigest::Algorithm::MD5);
  for (const std::string& property : checked) {
    const ABValue* value = person.value(property);
    if (!value) continue;
    feed(digest, property);
    feedValue(digest, *value);
  }
  std::string text;
  for (const char byte : digest.finish()) {
    text += fmt::format("{:02x}", static_cast<unsigned char>(byte));
  }
  return text;
}

std::string firstname(const ABPerson& person) { return text(person, ABProperty::FirstName); }
std::string lastname(const ABPerson& person) { return text(person, ABProperty::LastName); }
std::string organization(const ABPerson& person) { return text(person, ABProperty::Organization); }
std::string honorprefix(const ABPerson& person) { return text(person, ABProperty::Title); }
std::string honorpostfix(const ABPerson& person) { return text(person, ABProperty::Suffix); }
std::string image(const ABPerson& person) { return text(person, ABProperty::Image); }

std::string fullname(const ABPerson& person) {
  std::string name = lastname(person);
  const std::string first = firstname(person);
  if (name.empty()) return first;
  if (!first.empty()) name.insert(0, first + " ");
  if (const std::string prefix = honorprefix(person); !prefix.empty()) {
    name.insert(0, prefix + " ");
  }
  if (const std::string suffix = honorpostfix(person); !suffix.empty()) name += ", " + suffix;
  return name;
}

std::string fullnameOrOrganization(const ABPerson& person) {
  const std::string name = fullname(person);
  const std::string organisation = organization(person);
  if (name.empty()) return organisation;
  return organisation.empty() ? name : fmt::format("{}, {}", name, organisation);
}

}  // namespace zolvar
