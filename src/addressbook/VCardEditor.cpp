#include "addressbook/VCardEditor.h"

#include <algorithm>

#include "addressbook/Base64.h"
#include "addressbook/CardText.h"
#include "addressbook/VCardPerson.h"
#include "addressbook/VCardReader.h"

namespace zolvar {
namespace {

const std::string* textIn(const std::optional<ABValue>& value) {
  return value ? std::get_if<std::string>(&*value) : nullptr;
}

std::string plainText(const std::optional<ABValue>& value) {
  const std::string* text = textIn(value);
  return text ? *text : std::string();
}

/// A line with several parts, of which some change; the others stay as they are written.
void changeParts(CardText& card, const std::string& name, std::size_t leastParts,
                 const std::vector<const char*>& properties, const ABChanges& changes) {
  const VCardLine* line = card.first(name);
  std::vector<std::string> raw;
  const std::string_view before = line ? std::string_view(line->value) : std::string_view();
  for (const auto part : rawPartsOfValue(before, ';')) raw.emplace_back(part);
  raw.resize(std::max(raw.size(), leastParts));
  bool isChanged = false;
  for (std::size_t index = 0; index < properties.size(); ++index) {
    const auto change = changes.find(properties[index]);
    if (change == changes.end()) continue;
    raw.resize(std::max(raw.size(), index + 1));
    const std::string value = plainText(change->second);
    if (unescapedValue(raw[index]) == value) continue;
    raw[index] = card.escaped(value);
    isChanged = true;
  }
  if (!isChanged) return;
  if (name != "N" && std::all_of(raw.begin(), raw.end(), [](const auto& r) { return r.empty(); })) {
    if (line) card.remove(*line);
    return;
  }
  while (raw.size() > std::max<std::size_t>(leastParts, 1) && raw.back().empty()) raw.pop_back();
  std::string value = raw.front();
  for (std::size_t index = 1; index < raw.size(); ++index) value += ";" + raw[index];
  card.replace(line, name, "", value);
}

/// The whole name as programs show it, from the name's parts.
std::string wholeName(const ABPerson& person) {
  std::string name;
  const auto add = [&](const char* property, std::string_view between) {
    const ABValue* value = person.value(property);
    const auto* text = value ? std::get_if<std::string>(value) : nullptr;
    if (!text) return;
    if (!name.empty()) name += between;
    name += *text;
  };
  for (const char* part :
       {ABProperty::Title, ABProperty::FirstName, ABProperty::MiddleName, ABProperty::LastName}) {
    add(part, " ");
  }
  add(ABProperty::Suffix, ", ");
  if (name.empty()) add(ABProperty::Organization, "");
  return name;
}

void changeNames(CardText& card, std::string_view text, const ABChanges& changes) {
  const std::vector<const char*> parts = {ABProperty::LastName, ABProperty::FirstName,
                                          ABProperty::MiddleName, ABProperty::Title,
                                          ABProperty::Suffix};
  ABPerson person = personOfCard(text);
  const std::string before = wholeName(person);
  bool isRenamed = false;
  for (const auto& [property, value] : changes) {
    const ABValue* old = person.value(property);
    const bool isPart =
        std::find_if(parts.begin(), parts.end(),
                     [&name = property](const char* part) { return part == name; }) != parts.end();
    isRenamed = isRenamed ||
                (isPart && plainText(value) != plainText(old ? std::optional(*old) : std::nullopt));
    if (value) {
      person.values.insert_or_assign(property, *value);
    } else {
      person.values.erase(property);
    }
  }
  if (isRenamed) {
    ABChanges all;  // without the line, what stood in the whole name alone so far
    for (const char* part : parts) {
      const ABValue* value = person.value(part);
      all[part] = value ? std::optional(*value) : std::nullopt;
    }
    changeParts(card, "N", parts.size(), parts, all);
  }
  changeParts(card, "ORG", 1, {ABProperty::Organization, ABProperty::Department}, changes);
  const std::string after = wholeName(person);
  if (before != after) card.replace(card.first("FN"), "FN", "", card.escaped(after));
}

void changeText(CardText& card, const std::string& name, const std::optional<ABValue>& value) {
  const VCardLine* line = card.first(name);
  const std::string text = plainText(value);
  std::string here = line ? unescapedValue(line->value) : std::string();
  std::erase(here, '\r');  // as it is read
  if (line && here == text) return;
  card.removeAll(name);
  if (!text.empty()) card.replace(line, name, "", card.escaped(text));
}

void changeBirthday(CardText& card, const std::optional<ABValue>& value) {
  const VCardLine* line = card.first("BDAY");
  const auto* date = value ? std::get_if<ABDate>(&*value) : nullptr;
  if (line && date && dateOfText(line->value) == *date) return;
  if (!date) return changeText(card, "BDAY", value);
  card.removeAll("BDAY");
  card.replace(line, "BDAY", "", textOfDate(*date));
}

/// The picture's kind, as its first bytes tell.
std::string_view pictureKind(std::string_view bytes) {
  if (bytes.starts_with("\x89PNG")) return "PNG";
  if (bytes.starts_with("GIF8")) return "GIF";
  if (bytes.starts_with("II*") || bytes.starts_with("MM")) return "TIFF";
  return "JPEG";
}

void changePicture(CardText& card, const std::optional<ABValue>& value) {
  const VCardLine* line = card.first("PHOTO");
  card.removeAll("PHOTO");
  const std::string bytes = plainText(value);
  if (bytes.empty()) return;
  std::string kind(pictureKind(bytes));
  if (card.version() == CardText::Version::V40) {
    std::transform(kind.begin(), kind.end(), kind.begin(),
                   [](char letter) { return static_cast<char>(letter - 'A' + 'a'); });
    card.replace(line, "PHOTO", "",
                 "data:image/" + kind + ";base64," + encodeBase64WithNewlines(bytes, false));
  } else if (card.version() == CardText::Version::V21) {
    // An empty line ends the bytes in this version.
    card.replace(line, "PHOTO", ";ENCODING=BASE64;" + kind, encodeBase64WithNewlines(bytes, false));
  } else {
    card.replace(line, "PHOTO", ";ENCODING=b;TYPE=" + kind, encodeBase64WithNewlines(bytes, false));
  }
}

const char* nameOfMultiProperty(std::string_view property) {
  if (property == ABProperty::Phones) return "TEL";
  if (property == ABProperty::Emails) return "EMAIL";
  if (property == ABProperty::Addresses) return "ADR";
  if (property == ABProperty::URLs) return "URL";
  if (property == ABProperty::AIMNames) return "X-AIM";
  if (property == ABProperty::JabberNames) return "X-JABBER";
  return nullptr;
}

void insertEntry(CardText& card, std::size_t place, const std::string& property,
                 const ABMultiValueEntry& entry) {
  const bool isOld = card.version() == CardText::Version::V21;
  std::vector<std::string> types = typesOfLabel(property, entry.label);
  const bool isCustom = types.empty() && !entry.label.empty();
  if (property == ABProperty::Emails && card.version() != CardText::Version::V40) {
    types.insert(types.begin(), "INTERNET");
  }
  std::string parameters;
  for (const auto& type : types) parameters += (isOld ? ";" : ";TYPE=") + type;
  if (entry.isPrimary) {
    parameters += isOld                                      ? ";PREF"
                  : card.version() == CardText::Version::V40 ? ";PREF=1"
                                                             : ";TYPE=PREF";
  }
  std::string value = card.escaped(entry.value);
  if (property == ABProperty::Addresses) {
    value.clear();
    for (const auto& part : partsOfValue(entry.value, ';')) value += card.escaped(part) + ";";
    value.pop_back();
  }
  const std::string group = isCustom ? card.newGroup() + "." : "";
  card.insert(place, group + nameOfMultiProperty(property), parameters, value);
  if (isCustom) card.insert(place, group + "X-ABLabel", "", card.escaped(entry.label));
}

/// Writes the entries of one property. Lines that say what is wanted stay as they are; where
/// anything differs, all stand in the wanted order where the first one was.
void changeEntries(CardText& card, const std::string& property,
                   const std::optional<ABValue>& value) {
  struct Known {
    const VCardLine* line;
    ABMultiValueEntry entry;
    bool isUsed = false;
  };
  std::vector<Known> known;
  for (const auto& line : card.lines()) {
    const char* ofLine = multiPropertyOfLine(line);
    if (!ofLine || ofLine != std::string_view(property)) continue;
    auto entry = entryOfLine(line, card.lines());
    if (!entry) continue;
    entry->isPrimary =
        entry->isPrimary && std::none_of(known.begin(), known.end(), [](const Known& k) {
          return k.entry.isPrimary;  // there is one
        });
    known.push_back({&line, std::move(*entry)});
  }
  const auto* list = value ? std::get_if<ABMultiValue>(&*value) : nullptr;
  const ABMultiValue wanted = list ? *list : ABMultiValue();
  const auto isSame = [](const ABMultiValueEntry& one, const ABMultiValueEntry& other) {
    return one.value == other.value && one.label == other.label && one.isPrimary == other.isPrimary;
  };
  if (std::equal(known.begin(), known.end(), wanted.begin(), wanted.end(),
                 [&](const Known& one, const auto& other) { return isSame(one.entry, other); })) {
    return;
  }
  const std::size_t place = known.empty() ? card.end() : known.front().line->begin;
  for (const auto& entry : wanted) {
    if (entry.value.empty()) continue;
    const auto match = std::find_if(known.begin(), known.end(), [&](const Known& one) {
      return !one.isUsed && isSame(one.entry, entry);
    });
    if (match == known.end()) {
      insertEntry(card, place, property, entry);
    } else {
      match->isUsed = true;
      card.move(*match->line, place);
    }
  }
  for (const auto& one : known) {
    if (one.isUsed) continue;
    card.remove(*one.line);
    if (one.line->group.empty()) continue;
    for (const auto& line : card.lines()) {  // the label goes with what it is about
      if (isSameInAnyCase(line.group, one.line->group) && line.name.starts_with("X-AB")) {
        card.remove(line);
      }
    }
  }
}

bool isName(std::string_view property) {
  const std::string_view names[] = {
      ABProperty::FirstName, ABProperty::LastName,     ABProperty::MiddleName, ABProperty::Title,
      ABProperty::Suffix,    ABProperty::Organization, ABProperty::Department};
  return std::find(std::begin(names), std::end(names), property) != std::end(names);
}

std::string trimmedCategory(std::string_view raw) {
  std::string name = unescapedValue(raw);
  const std::size_t begin = name.find_first_not_of(" \t\r\n");
  if (begin == std::string::npos) return {};
  return name.substr(begin, name.find_last_not_of(" \t\r\n") - begin + 1);
}

}  // namespace

std::string cardWithChanges(std::string_view text, const ABChanges& changes) {
  CardText card(text);
  if (!card.isCard()) return std::string(text);
  if (std::any_of(changes.begin(), changes.end(),
                  [](const auto& change) { return isName(change.first); })) {
    changeNames(card, text, changes);
  }
  for (const auto& [property, value] : changes) {
    if (nameOfMultiProperty(property)) {
      changeEntries(card, property, value);
    } else if (property == ABProperty::Nickname) {
      changeText(card, "NICKNAME", value);
    } else if (property == ABProperty::MaidenName) {
      changeText(card, "X-MAIDENNAME", value);
    } else if (property == ABProperty::JobTitle) {
      changeText(card, "TITLE", value);
    } else if (property == ABProperty::Note) {
      changeText(card, "NOTE", value);
    } else if (property == ABProperty::Birthday) {
      changeBirthday(card, value);
    } else if (property == ABProperty::Image) {
      changePicture(card, value);
    }
  }
  return card.written();
}

std::string cardInCategory(std::string_view text, std::string_view category) {
  const auto known = categoriesOfCard(text);
  CardText card(text);
  if (!card.isCard() || std::find(known.begin(), known.end(), category) != known.end()) {
    return std::string(text);
  }
  const VCardLine* line = card.first("CATEGORIES");
  std::string value;
  for (const auto part : rawPartsOfValue(line ? std::string_view(line->value) : "", ',')) {
    if (!part.empty()) value.append(part).append(",");
  }
  card.replace(line, "CATEGORIES", "", value + escapedValue(category));
  return card.written();
}

std::string cardNotInCategory(std::string_view text, std::string_view category) {
  CardText card(text);
  if (!card.isCard()) return std::string(text);
  for (const auto& line : card.lines()) {
    if (line.name != "CATEGORIES") continue;
    const auto parts = rawPartsOfValue(line.value, ',');
    std::string left;
    std::size_t count = 0;
    for (const auto part : parts) {
      if (trimmedCategory(part) == category) continue;
      left += (count++ > 0 ? "," : "") + std::string(part);
    }
    if (count == parts.size()) continue;
    if (left.empty()) {
      card.remove(line);
    } else {
      card.replace(&line, "CATEGORIES", "", left);
    }
  }
  return card.written();
}

std::string cardInNoCategory(std::string_view text) {
  CardText card(text);
  if (card.isCard()) card.removeAll("CATEGORIES");
  return card.isCard() ? card.written() : std::string(text);
}

std::string cardWithUid(std::string_view text, std::string_view uid) {
  CardText card(text);
  if (!card.isCard()) return std::string(text);
  changeText(card, "UID", std::string(uid));
  return card.written();
}

std::string emptyCard() { return "BEGIN:VCARD\r\nVERSION:3.0\r\nN:;;;;\r\nFN:\r\nEND:VCARD\r\n"; }

}  // namespace zolvar
