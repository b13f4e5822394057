#include <gtest/gtest.h>
#include <libebook-contacts/libebook-contacts.h>

#include <algorithm>
#include <set>
#include <sstream>

#include "addressbook/PlainCard.h"
#include "addressbook/VCardReader.h"

// Our reader of cards and the desktop's understand the same, on every kind of writing; where the
// desktop's is poorer, it is given the card in other words.

namespace zolvar {
namespace {

/// What both know of a property, as one line: "group.NAME TYPES: first|second".
std::string line(std::string_view group, std::string_view name, const std::set<std::string>& types,
                 const std::vector<std::string>& values) {
  std::string text(group);
  if (!group.empty()) text += '.';
  text += upperCase(name);
  for (const auto& type : types) text += " " + upperCase(type);
  text += ":";
  // Empty parts at the end are kept by one and left out by the other.
  auto end = values.end();
  while (end != values.begin() && (end - 1)->empty()) --end;
  for (auto value = values.begin(); value != end; ++value) {
    text += (value == values.begin() ? "" : "|") + *value;
  }
  return text + "\n";
}

bool isFrame(std::string_view name) {
  const std::string upper = upperCase(name);
  return upper == "BEGIN" || upper == "END" || upper == "VERSION";
}

/// Line ends of any kind are alike.
std::vector<std::string> withoutReturns(std::vector<std::string> values) {
  for (std::string& value : values) std::erase(value, '\r');
  return values;
}

std::string readByUs(const std::string& card) {
  std::string text;
  for (const VCardLine& property : linesOfCard(card)) {
    if (isFrame(property.name)) continue;
    std::set<std::string> types;
    for (const auto& parameter : property.parameters) {
      if (parameter.name == "TYPE") types.insert(upperCase(parameter.value));
    }
    const char separator = property.name == "CATEGORIES" ? ',' : ';';
    text += line(property.group, property.name, types,
                 property.isBase64 ? std::vector{decodeBase64(property.value)}
                                   : withoutReturns(partsOfValue(property.value, separator)));
  }
  return text;
}

std::string readByTheDesktop(const std::string& card) {
  EVCard* const read = e_vcard_new_from_string(card.c_str());
  std::string text;
  for (GList* at = e_vcard_get_attributes(read); at; at = at->next) {
    auto* property = static_cast<EVCardAttribute*>(at->data);
    const char* name = e_vcard_attribute_get_name(property);
    if (isFrame(name)) continue;
    std::set<std::string> types;
    for (GList* type = e_vcard_attribute_get_param(property, EVC_TYPE); type; type = type->next) {
      types.insert(upperCase(static_cast<const char*>(type->data)));
    }
    std::vector<std::string> values;
    for (GList* v = e_vcard_attribute_get_values_decoded(property); v; v = v->next) {
      const auto* value = static_cast<const GString*>(v->data);
      values.emplace_back(value->str, value->len);
    }
    const char* group = e_vcard_attribute_get_group(property);
    text += line(group ? group : "", name, types, withoutReturns(values));
  }
  g_object_unref(read);
  return text;
}

TEST(EVCard, readsWhatOurReaderReads) {
  const struct {
    const char* version;
    const char* lines;
    bool isOursOnly = false;  ///< unless the card is made plain
  } cases[] = {
      {"3.0", "N:Lee;Ann;M.;Dr;Jr\nFN:Dr Ann\n"},
      {"3.0", "n:O\\;Neil\\, sons;;;;\n"},
      {"4.0", "FN:Only Whole\nORG:Acme;Lab;Floor 2\n"},
      {"3.0", "NOTE:one\\ntwo\n  thr\n\tee\\\\ end\n"},
      {"3.0", "TEL;TYPE=WORK,FAX:1\nTEL;type=CELL;type=pref:3\nTEL:4\n"},
      {"2.1", "TEL;HOME;VOICE:1\nTEL;PAGER:2\n"},
      {"4.0", "TEL;VALUE=uri;PREF=1;TYPE=work:tel:+1-5\nIMPP:xmpp:a@b\n"},
      {"3.0", "item1.URL:http://a/\nitem1.X-ABLabel:_$!<HomePage>!$_\n"},
      {"3.0", "ADR;TYPE=HOME:;;Main\\; St 1;Town;;1\\,2;\n"},
      {"2.1", "N;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:M=C3=BCl=\nler;J=C3=B6rg\n", true},
      {"2.1", "N;CHARSET=ISO-8859-1;ENCODING=QUOTED-PRINTABLE:M=FCller;J=F6rg\n"},
      {"2.1", "NOTE;ENCODING=QUOTED-PRINTABLE:a=0D=0Ab=3Dc\n"},
      {"3.0", "PHOTO;ENCODING=b;TYPE=JPEG:aGVs\n bG8=\n"},
      {"2.1", "PHOTO;ENCODING=BASE64;JPEG:\n aGVs\n bG8=\n\nTITLE:Boss\n"},
      {"3.0", "BDAY:1980-02-03\nREV:20200101T101112Z\nCATEGORIES:a\\,b,c\n"},
      {"2.1", "PHOTO;BASE64:aGVs\nbG8=\n\nTITLE:x\n", true},
      {"3.0", "TEL;TYPE=\"home,voice\":2\nTITLE:x\n", true},
      {"2.1", "AGENT:\nBEGIN:VCARD\nN:Inner\nEND:VCARD\nN:Outer\n", true},
      {"2.1", "N:M\xFCller\n", true},
      {"2.1", "BEGIN;X:VCARD\nN:Outer\n", true},
      {"2.1", "NOTE;ENCODING=QUOTED-PRINTABLE:a=\n b=\nc=0D=0Ad\n", true},
      {"3.0", "X-OWN;X-PARAMETER=\"a;b:c\":Zo\u00EB\nNICKNAME:Al\n"},
  };
  for (const auto& one : cases) {
    for (const std::string lineEnd : {"\r\n", "\n"}) {
      std::istringstream lines("BEGIN:VCARD\nVERSION:" + std::string(one.version) + "\n" +
                               one.lines + "END:VCARD\n");
      std::string card;
      for (std::string each; std::getline(lines, each);) card += each + lineEnd;
      const std::string expected = readByUs(card);
      if (!one.isOursOnly) {
        EXPECT_EQ(readByTheDesktop(card), expected) << card;
      }
      const std::string plain = plainCard(card);
      EXPECT_EQ(readByTheDesktop(plain), expected) << card << plain;
      EXPECT_EQ(readByUs(plain), expected) << plain;
    }
  }
}

}  // namespace
}  // namespace zolvar
