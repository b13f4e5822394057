#include "support/MemoryAddressBook.h"

#include <sstream>

namespace zolvar {

std::string MemoryAddressBook::card(const AddressBookContent& content, const ABPerson& person) {
  std::string text = "BEGIN:VCARD\nBook:" + content.prefix + "\n";
  for (const auto& [property, value] : person.values) {
    text += property + ":" + std::get<std::string>(value) + "\n";
  }
  return text + "END:VCARD\n";
}

ABPerson MemoryAddressBook::person(const std::string& first, const std::string& last) {
  ABPerson person;
  person.values = {{ABProperty::FirstName, first}, {ABProperty::LastName, last}};
  return person;
}

Result<> MemoryAddressBook::check() const {
  if (!content_.isUnreachable) return {};
  return fail(FailureKind::Transient, "read the address book");
}

std::vector<std::string> MemoryAddressBook::allPersonProperties() const {
  return {ABProperty::UniqueId,     ABProperty::FirstName, ABProperty::LastName,
          ABProperty::Organization, ABProperty::Suffix,    ABProperty::Note,
          ABProperty::Image};
}

Result<std::vector<ABGroup>> MemoryAddressBook::groups() {
  if (const auto here = check(); !here) return tl::unexpected(here.error());
  std::vector<ABGroup> groups;
  for (const auto& [name, members] : content_.groups) groups.push_back({"group " + name, name});
  return groups;
}

Result<ABGroup> MemoryAddressBook::addGroup(const std::string& name) {
  if (const auto here = check(); !here) return tl::unexpected(here.error());
  content_.groups[name];
  return ABGroup{"group " + name, name};
}

Result<std::vector<ABPerson>> MemoryAddressBook::members(const std::string& groupId) {
  if (const auto here = check(); !here) return tl::unexpected(here.error());
  const auto group = content_.groups.find(groupId.substr(6));
  if (group == content_.groups.end()) return fail(FailureKind::Absent, "find the group", groupId);
  std::vector<ABPerson> members;
  for (const std::string& id : group->second) members.push_back(content_.people.at(id));
  return members;
}

Result<> MemoryAddressBook::addMember(const std::string& groupId, const std::string& personId) {
  content_.groups.at(groupId.substr(6)).insert(personId);
  return check();
}

Result<> MemoryAddressBook::removeMember(const std::string& groupId, const std::string& personId) {
  content_.groups.at(groupId.substr(6)).erase(personId);
  return check();
}

Result<std::vector<ABGroup>> MemoryAddressBook::parentGroups(const std::string& personId) {
  std::vector<ABGroup> groups;
  for (const auto& [name, members] : content_.groups) {
    if (members.contains(personId)) groups.push_back({"group " + name, name});
  }
  return groups;
}

Result<std::vector<ABPerson>> MemoryAddressBook::people() {
  if (const auto here = check(); !here) return tl::unexpected(here.error());
  std::vector<ABPerson> people;
  for (const auto& [id, person] : content_.people) people.push_back(person);
  return people;
}

Result<std::optional<ABPerson>> MemoryAddressBook::recordForUniqueId(const std::string& personId) {
  if (const auto here = check(); !here) return tl::unexpected(here.error());
  const auto found = content_.people.find(personId);
  return found == content_.people.end() ? std::nullopt : std::optional(found->second);
}

AddressBook::CardReader MemoryAddressBook::cardReader() const {
  return [](const std::string& vCardData) -> Result<ABPerson> {
    if (!vCardData.starts_with("BEGIN:VCARD\n")) return fail(FailureKind::Damaged, "read a card");
    ABPerson person;
    person.vCardData = vCardData;
    std::istringstream lines(vCardData);
    for (std::string line; std::getline(lines, line);) {
      const std::size_t colon = line.find(':');
      const std::string property = line.substr(0, colon);
      if (property == "BEGIN" || property == "END" || property == "Book") continue;
      person.values[property] = line.substr(colon + 1);
    }
    return person;
  };
}

void MemoryAddressBook::put(ABPerson person) {
  if (content_.losesSuffixes) person.values.erase(ABProperty::Suffix);
  person.vCardData = card(content_, person);
  content_.people[person.uniqueId] = std::move(person);
}

Result<std::string> MemoryAddressBook::addPerson(const ABPerson& person) {
  if (const auto here = check(); !here) return tl::unexpected(here.error());
  ABPerson added = person;
  added.uniqueId = content_.prefix + std::to_string(++content_.lastId);
  put(added);
  return added.uniqueId;
}

Result<> MemoryAddressBook::removePerson(const std::string& personId) {
  content_.people.erase(personId);
  return check();
}

Result<> MemoryAddressBook::setValues(const std::string& personId, const ABChanges& changes) {
  ABPerson person = content_.people.at(personId);
  for (const auto& [property, value] : changes) {
    if (value) {
      person.values[property] = *value;
    } else {
      person.values.erase(property);
    }
  }
  put(std::move(person));
  return check();
}

Result<> MemoryAddressBook::save() {
  ++content_.saves;
  return check();
}

Result<std::optional<ABPerson>> MemoryAddressBook::me() {
  return content_.me ? recordForUniqueId(*content_.me) : std::optional<ABPerson>();
}

}  // namespace zolvar
