#include "addressbook/VCardPerson.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <iterator>
#include <set>

namespace zolvar {
namespace {

struct LabelRule {
  std::string_view property;  ///< "" stands for all other ones
  std::string_view label;
  std::array<std::string_view, 2> types;
};

/// The first rule of a property whose types a line has says its label.
constexpr LabelRule LabelRules[] = {
    {ABProperty::Phones, ABLabel::PhoneWorkFax, {"WORK", "FAX"}},
    {ABProperty::Phones, ABLabel::PhoneHomeFax, {"HOME", "FAX"}},
    {ABProperty::Phones, ABLabel::PhoneHomeFax, {"FAX", ""}},
    {ABProperty::Phones, ABLabel::PhonePager, {"PAGER", ""}},
    {ABProperty::Phones, ABLabel::PhoneMobile, {"CELL", ""}},
    {ABProperty::Phones, ABLabel::PhoneWork, {"WORK", ""}},
    {ABProperty::Phones, ABLabel::PhoneHome, {"HOME", ""}},
    {ABProperty::Phones, ABLabel::PhoneMain, {"VOICE", ""}},
    {ABProperty::Phones, ABLabel::PhoneMain, {"MAIN", ""}},
    {ABProperty::Emails, ABLabel::EmailWork, {"WORK", ""}},
    {ABProperty::Emails, ABLabel::EmailHome, {"HOME", ""}},
    {ABProperty::Addresses, ABLabel::AddressWork, {"WORK", ""}},
    {ABProperty::Addresses, ABLabel::AddressHome, {"HOME", ""}},
    {ABProperty::AIMNames, ABLabel::AIMWork, {"WORK", ""}},
    {ABProperty::AIMNames, ABLabel::AIMHome, {"HOME", ""}},
    {ABProperty::JabberNames, ABLabel::JabberWork, {"WORK", ""}},
    {ABProperty::JabberNames, ABLabel::JabberHome, {"HOME", ""}},
    {ABProperty::URLs, ABLabel::HomePage, {"HOMEPAGE", ""}},
    {ABProperty::URLs, ABLabel::Work, {"WORK", ""}},
    {ABProperty::URLs, ABLabel::Home, {"HOME", ""}},
};

/// Types that tell nothing of what a number or an address is for.
constexpr std::string_view MeaninglessTypes[] = {"PREF", "INTERNET", "VOICE", "MSG",    "TEXT",
                                                 "URI",  "POSTAL",   "INTL",  "PARCEL", "DOM"};

constexpr std::string_view LabelName = "X-ABLABEL";

std::string text(const VCardLine& line) {
  std::string plain = unescapedValue(line.value);
  std::erase(plain, '\r');
  return plain;
}

/// What follows the scheme of a URI.
std::string withoutScheme(std::string value, std::string_view scheme) {
  if (value.size() > scheme.size() &&
      isSameInAnyCase(std::string_view(value).substr(0, scheme.size()), scheme)) {
    value.erase(0, scheme.size());
  }
  return value;
}

bool hasScheme(const VCardLine& line, std::string_view scheme) {
  return isSameInAnyCase(std::string_view(line.value).substr(0, scheme.size()), scheme);
}

std::string labelOfGroup(const VCardLine& line, const std::vector<VCardLine>& lines) {
  if (line.group.empty()) return {};
  const auto found = std::find_if(lines.begin(), lines.end(), [&](const VCardLine& other) {
    return other.name == LabelName && isSameInAnyCase(other.group, line.group);
  });
  return found == lines.end() ? std::string() : text(*found);
}

std::string labelOf(std::string_view property, const VCardLine& line,
                    const std::vector<VCardLine>& lines) {
  std::vector<std::string> types;
  std::string custom = labelOfGroup(line, lines);
  if (custom.starts_with("_$!<") && custom.ends_with(">!$_")) {  // a known label, written out
    custom = custom.substr(4, custom.size() - 8);
    types = {custom};
  } else if (!custom.empty()) {
    return custom;
  }
  for (const auto& parameter : line.parameters) {
    if (parameter.name == "TYPE") types.push_back(parameter.value);
  }
  const auto has = [&](std::string_view wanted) {
    return wanted.empty() || std::any_of(types.begin(), types.end(), [&](const auto& type) {
             return isSameInAnyCase(type, wanted);
           });
  };
  for (const auto& rule : LabelRules) {
    if (rule.property == property && has(rule.types[0]) && has(rule.types[1])) {
      return std::string(rule.label);
    }
  }
  for (const auto& type : types) {
    if (std::none_of(std::begin(MeaninglessTypes), std::end(MeaninglessTypes),
                     [&](std::string_view known) { return isSameInAnyCase(type, known); })) {
      return type;
    }
  }
  return {};
}

/// The seven parts of an address, blanks at their ends and line ends of any kind made alike.
std::string addressOf(const VCardLine& line) {
  constexpr std::size_t Parts = 7;
  auto parts = partsOfValue(line.value, ';');
  parts.resize(Parts);
  std::string address;
  bool isEmpty = true;
  for (auto& part : parts) {
    std::erase(part, '\r');
    isEmpty = isEmpty && part.empty();
    if (&part != &parts.front()) address += ';';
    for (const char character : part) {
      if (character == ';' || character == '\\') address += '\\';
      address += character;
    }
  }
  return isEmpty ? std::string() : address;
}

std::string pictureOf(const VCardLine& line) {
  if (line.isBase64) return decodeBase64(line.value);
  constexpr std::string_view Mark = ";base64,";
  const std::string value = unescapedValue(line.value);
  const std::size_t place = value.find(Mark);
  if (!hasScheme(line, "data:") || place == std::string::npos) return {};  // it lies elsewhere
  return decodeBase64(std::string_view(value).substr(place + Mark.size()));
}

void set(ABPerson& person, const char* property, const std::string& value) {
  if (!value.empty()) person.values.try_emplace(property, ABValue(value));
}

struct PlainProperty {
  std::string_view name;
  const char* property;
};
constexpr PlainProperty PlainProperties[] = {{"NICKNAME", ABProperty::Nickname},
                                             {"X-MAIDENNAME", ABProperty::MaidenName},
                                             {"TITLE", ABProperty::JobTitle},
                                             {"NOTE", ABProperty::Note}};

void readLine(const VCardLine& line, ABPerson& person) {
  for (const auto& plain : PlainProperties) {
    if (line.name == plain.name) return set(person, plain.property, text(line));
  }
  if (line.name == "N") {
    auto parts = partsOfValue(line.value, ';');
    parts.resize(5);
    set(person, ABProperty::LastName, parts[0]);
    set(person, ABProperty::FirstName, parts[1]);
    set(person, ABProperty::MiddleName, parts[2]);
    set(person, ABProperty::Title, parts[3]);
    set(person, ABProperty::Suffix, parts[4]);
  } else if (line.name == "ORG") {
    auto parts = partsOfValue(line.value, ';');
    parts.resize(2);
    set(person, ABProperty::Organization, parts[0]);
    set(person, ABProperty::Department, parts[1]);
  } else if (line.name == "BDAY") {
    const auto date = line.parameter("X-APPLE-OMIT-YEAR").empty() ? dateOfText(line.value)
                                                                  : std::optional<ABDate>();
    if (date) {
      person.values.try_emplace(ABProperty::Birthday, *date);
    } else {
      set(person, ABProperty::Birthday, text(line));
    }
  } else if (line.name == "REV") {
    if (const auto date = dateOfText(line.value)) {
      person.values.try_emplace(ABProperty::Modification, *date);
    }
  } else if (line.name == "PHOTO") {
    set(person, ABProperty::Image, pictureOf(line));
  } else if (line.name == "UID" && person.uniqueId.empty()) {
    person.uniqueId = text(line);
  }
}

bool readNumber(std::string_view digits, int& number) {
  const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  return result.ec == std::errc() && result.ptr == digits.data() + digits.size();
}

}  // namespace

std::optional<ABDate> dateOfText(std::string_view text) {
  namespace ch = std::chrono;
  std::string digits;  // the form without separators
  std::copy_if(text.begin(), text.end(), std::back_inserter(digits),
               [](char character) { return character != '-' && character != ':'; });
  int year = 0;
  int month = 0;
  int day = 0;
  const std::string_view all = digits;
  if (all.size() < 8 || text.starts_with('-') || !readNumber(all.substr(0, 4), year) ||
      !readNumber(all.substr(4, 2), month) || !readNumber(all.substr(6, 2), day)) {
    return std::nullopt;
  }
  const ch::year_month_day date{ch::year(year), ch::month(static_cast<unsigned>(month)),
                                ch::day(static_cast<unsigned>(day))};
  if (!date.ok()) return std::nullopt;
  const ABDate midnight{ch::sys_days(date)};
  if (all.size() == 8) return midnight;
  int hour = 0;
  int minute = 0;
  int second = 0;
  if (all[8] != 'T' || all.size() < 15 || !readNumber(all.substr(9, 2), hour) ||
      !readNumber(all.substr(11, 2), minute) || !readNumber(all.substr(13, 2), second)) {
    return std::nullopt;
  }
  return midnight + ch::hours(hour) + ch::minutes(minute) + ch::seconds(second);
}

std::string textOfDate(ABDate date) {
  namespace ch = std::chrono;
  const auto days = ch::floor<ch::days>(date);
  const ch::year_month_day day(days);
  std::string written =
      fmt::format("{:04}-{:02}-{:02}", static_cast<int>(day.year()),
                  static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()));
  const ch::hh_mm_ss time(date - days);
  if (date != days) {
    written += fmt::format("T{:02}:{:02}:{:02}Z", time.hours().count(), time.minutes().count(),
                           time.seconds().count());
  }
  return written;
}

std::vector<std::string> typesOfLabel(std::string_view property, std::string_view label) {
  for (const auto& rule : LabelRules) {
    if (rule.property != property || rule.label != label) continue;
    std::vector<std::string> types;
    for (const auto type : rule.types) {
      if (!type.empty()) types.emplace_back(type);
    }
    return types;
  }
  return {};
}

const char* multiPropertyOfLine(const VCardLine& line) {
  if (line.name == "TEL") return ABProperty::Phones;
  if (line.name == "EMAIL") return ABProperty::Emails;
  if (line.name == "ADR") return ABProperty::Addresses;
  if (line.name == "URL") return ABProperty::URLs;
  if (line.name == "X-AIM" || (line.name == "IMPP" && hasScheme(line, "aim:"))) {
    return ABProperty::AIMNames;
  }
  if (line.name == "X-JABBER" || (line.name == "IMPP" && hasScheme(line, "xmpp:"))) {
    return ABProperty::JabberNames;
  }
  return nullptr;
}

std::optional<ABMultiValueEntry> entryOfLine(const VCardLine& line,
                                             const std::vector<VCardLine>& lines) {
  const std::string_view property = multiPropertyOfLine(line);
  ABMultiValueEntry entry;
  if (property == ABProperty::Addresses) {
    entry.value = addressOf(line);
  } else if (property == ABProperty::Phones) {
    entry.value = withoutScheme(text(line), "tel:");
  } else if (line.name == "IMPP") {
    entry.value = withoutScheme(text(line), property == ABProperty::AIMNames ? "aim:" : "xmpp:");
  } else {
    entry.value = text(line);
  }
  if (entry.value.empty()) return std::nullopt;
  entry.label = labelOf(property, line, lines);
  entry.isPrimary = line.hasType("PREF") || !line.parameter("PREF").empty();
  return entry;
}

bool isPersonsCard(const std::vector<VCardLine>& lines) {
  return std::none_of(lines.begin(), lines.end(), [](const VCardLine& line) {
    return ((line.name == "KIND" || line.name == "X-ADDRESSBOOKSERVER-KIND") &&
            isSameInAnyCase(line.value, "group")) ||
           (line.name == "X-EVOLUTION-LIST" && isSameInAnyCase(line.value, "TRUE"));
  });
}

ABPerson personOfCard(std::string_view card) {
  constexpr std::size_t MostLabels = 1000;  // each is looked for among them
  const auto lines = linesOfCard(card);
  std::vector<VCardLine> labels;
  for (const auto& line : lines) {
    if (line.name == LabelName && labels.size() < MostLabels) labels.push_back(line);
  }
  ABPerson person;
  std::set<std::string> seen;
  person.vCardData = card;
  for (const auto& line : lines) {
    if (const char* property = multiPropertyOfLine(line)) {
      auto entry = entryOfLine(line, labels);
      if (!entry) continue;
      auto& value = person.values.try_emplace(property, ABMultiValue()).first->second;
      auto& entries = std::get<ABMultiValue>(value);
      entry->isPrimary =
          entry->isPrimary &&
          std::none_of(entries.begin(), entries.end(), [](const auto& e) { return e.isPrimary; });
      entries.push_back(std::move(*entry));
    } else if (seen.insert(line.name).second ||
               line.name == "PHOTO") {  // a second one is a mistake
      readLine(line, person);
    }
  }
  // A card without a name in parts still has the whole name.
  if (!person.value(ABProperty::FirstName) && !person.value(ABProperty::LastName)) {
    for (const auto& line : lines) {
      const ABValue* organization = person.value(ABProperty::Organization);
      const auto* name = organization ? std::get_if<std::string>(organization) : nullptr;
      if (line.name != "FN" || (name && *name == text(line))) continue;
      set(person, ABProperty::FirstName, text(line));
    }
  }
  return person;
}

std::vector<std::string> categoriesOfCard(std::string_view card) {
  std::vector<std::string> categories;
  std::set<std::string> known;
  for (const auto& line : linesOfCard(card)) {
    if (line.name != "CATEGORIES") continue;
    for (const auto& part : partsOfValue(line.value, ',')) {
      const std::size_t begin = part.find_first_not_of(" \t\r\n");
      if (begin == std::string::npos) continue;
      std::string name = part.substr(begin, part.find_last_not_of(" \t\r\n") - begin + 1);
      if (known.insert(name).second) categories.push_back(std::move(name));
    }
  }
  return categories;
}

}  // namespace zolvar
