#include "addressbook/AddressBookSearch.h"

#include <algorithm>

#include "addressbook/PersonProperties.h"

namespace zolvar {

namespace {

/// The lower-case form of one code point of the alphabets in which people's names have one.
/// Independent of the program's locale.
char32_t lowered(char32_t point) {
  const auto within = [point](char32_t first, char32_t last) {
    return point >= first && point <= last;
  };
  if (within('A', 'Z')) return point + 32;
  if (within(0xC0, 0xDE) && point != 0xD7) return point + 32;
  if (point == 0x178) return 0xFF;
  if (within(0x139, 0x148) || within(0x179, 0x17E)) return point + point % 2;
  if (within(0x100, 0x177) && !within(0x130, 0x131) && point != 0x138) return point | 1U;
  if (within(0x391, 0x3A9)) return point + 32;
  if (within(0x410, 0x42F)) return point + 32;
  if (within(0x400, 0x40F)) return point + 80;
  if (within(0x1E00, 0x1EFF) && !within(0x1E95, 0x1E9F)) return point | 1U;
  return point;
}

/// Damaged bytes stand for themselves.
std::u32string loweredText(const std::string& text) {
  std::u32string points;
  for (std::size_t at = 0; at < text.size();) {
    const auto byte = static_cast<unsigned char>(text[at]);
    const std::size_t length = byte < 0xC0 ? 1 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
    char32_t point = length == 1 ? byte : byte & (0x7FU >> length);
    for (std::size_t next = at + 1; next < std::min(at + length, text.size()); ++next) {
      point = point << 6U | (static_cast<unsigned char>(text[next]) & 0x3FU);
    }
    points += lowered(point);
    at += length;
  }
  return points;
}

}  // namespace

Result<std::optional<ABGroup>> groupWithName(AddressBook& book, const std::string& name) {
  const auto groups = book.groups();
  if (!groups) return tl::unexpected(groups.error());
  const auto found = std::find_if(groups->begin(), groups->end(),
                                  [&name](const ABGroup& group) { return group.name == name; });
  return found == groups->end() ? std::nullopt : std::optional(*found);
}

/// Longer names than people have would take time for ever to search.
std::u32string PeopleByName::searched(const std::string& name) {
  constexpr std::size_t Longest = 500;  // bytes
  return loweredText(name.substr(0, Longest));
}

PeopleByName::PeopleByName(const std::vector<ABPerson>& people) {
  people_.reserve(people.size());
  for (const ABPerson& person : people) {
    people_.push_back({person.uniqueId, searched(firstname(person)), searched(lastname(person))});
  }
}

std::vector<std::string> PeopleByName::find(const std::string& first,
                                            const std::string& last) const {
  const std::u32string soughtFirst = searched(first);
  const std::u32string soughtLast = searched(last);
  std::vector<std::string> ids;
  for (const Named& person : people_) {
    if (person.last.find(soughtLast) != std::u32string::npos &&
        person.first.find(soughtFirst) != std::u32string::npos) {
      ids.push_back(person.id);
    }
  }
  return ids;
}

bool hasSameName(const ABPerson& person, const ABPerson& other) {
  return loweredText(firstname(person)) == loweredText(firstname(other)) &&
         loweredText(lastname(person)) == loweredText(lastname(other));
}

}  // namespace zolvar
