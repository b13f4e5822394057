#include "addressbook/PortableVCard.h"

#include <fmt/chrono.h>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <string_view>
#include <utility>

#include "addressbook/Base64.h"
#include "addressbook/PersonProperties.h"
#include "platform/Log.h"

namespace zolvar {

namespace {

constexpr std::pair<std::string_view, std::string_view> TypeStrings[] = {
    {ABLabel::Work, ";type=WORK"},
    {ABLabel::Home, ";type=HOME"},
    {ABLabel::AddressHome, ";type=HOME"},
    {ABLabel::PhoneWork, ";type=WORK"},
    {ABLabel::PhoneHome, ";type=HOME"},
    {ABLabel::PhoneHomeFax, ";type=HOME;type=FAX"},
    {ABLabel::PhoneWorkFax, ";type=WORK;type=FAX"},
    {ABLabel::PhoneMobile, ";type=CELL"},
    {ABLabel::PhoneMain, ";type=VOICE"},
    {ABLabel::PhonePager, ";type=PAGER"},
    {ABLabel::EmailHome, ";type=INTERNET;type=HOME"},
    {ABLabel::EmailWork, ";type=INTERNET;type=WORK"},
    {ABLabel::AIMHome, ";type=HOME"},
    {ABLabel::AIMWork, ";type=WORK"},
    {ABLabel::JabberHome, ";type=HOME"},
    {ABLabel::JabberWork, ";type=WORK"},
    {ABLabel::HomePage, ";type=HOMEPAGE"},
};

/// The lines between the head and the picture; the second without a key continues the first.
constexpr std::pair<const char*, const char*> Lines[] = {
    {"NICKNAME", ABProperty::Nickname},
    {"X-MAIDENNAME", ABProperty::MaidenName},
    {"ORG", ABProperty::Organization},
    {nullptr, ABProperty::Department},
    {"TITLE", ABProperty::JobTitle},
    {"BDAY", ABProperty::Birthday},
    {"TEL", ABProperty::Phones},
    {"X-AIM", ABProperty::AIMNames},
    {"X-JABBER", ABProperty::JabberNames},
    {"EMAIL", ABProperty::Emails},
    {"URL", ABProperty::URLs},
};

std::string plainText(const ABValue& value) {
  if (const auto* string = std::get_if<std::string>(&value)) return *string;
  return fmt::format("{:%Y-%m-%d %H:%M:%S} +0000", std::get<ABDate>(value));
}

}  // namespace

std::string vCardLabelString(const std::string& label, Log& log) {
  const auto* const found =
      std::find_if(std::begin(TypeStrings), std::end(TypeStrings),
                   [&label](const auto& known) { return known.first == label; });
  if (found != std::end(TypeStrings)) return std::string(found->second);
  log.warning("Warning! No type string known for label '{}'", label);
  return {};
}

std::string vCardQuotedString(const std::string& text) {
  std::string quoted;
  for (const char character : text) {
    if (character == ';') quoted += '\\';
    quoted += character;
  }
  return quoted;
}

void appendValueToString(std::string& text, const ABValue* value,
                         const std::optional<std::string>& vCardKey, Log& log) {
  if (!value) return;
  if (const auto* entries = std::get_if<ABMultiValue>(value)) {
    if (!vCardKey) return;
    for (const ABMultiValueEntry& entry : *entries) {
      text += fmt::format("\r\n{}{}{}:{}", *vCardKey, vCardLabelString(entry.label, log),
                          entry.isPrimary ? ";type=pref" : "", vCardQuotedString(entry.value));
    }
    return;
  }
  const std::string plain = plainText(*value);
  if (plain.empty()) return;
  text += vCardKey ? fmt::format("\r\n{}:{}", *vCardKey, vCardQuotedString(plain))
                   : fmt::format(";{}", vCardQuotedString(plain));
}

std::string vCardRepresentationPortable(const ABPerson& person, const AddressBook& book, Log& log) {
  log.warning("Available Properties: ({})", fmt::join(book.allPersonProperties(), ", "));
  log.warning("Apple vCardRepresentation:\n{}\n", person.vCardData);
  std::string text = "BEGIN:VCARD\r\nVERSION:3.0";
  const ABValue name = fullname(person);
  appendValueToString(text, &name, "FN", log);
  for (const auto& [key, property] : Lines) {
    appendValueToString(text, person.value(property),
                        key ? std::optional<std::string>(key) : std::nullopt, log);
  }
  if (const std::string picture = image(person); !picture.empty()) {
    text += "\r\nPHOTO;BASE64:";
    appendBase64ToString(text, picture, "\n  ");
  }
  text += "\r\nEND:VCARD\r\n";
  log.warning("Portable vCardRepresentation:\n{}", text);
  return text;
}

}  // namespace zolvar
