// What people are compared by and how the portable writer writes them.

#include <gtest/gtest.h>

#include "addressbook/AddressBookSearch.h"
#include "addressbook/Base64.h"
#include "addressbook/PersonProperties.h"
#include "addressbook/PortableVCard.h"
#include "support/MemoryAddressBook.h"
#include "support/RecordingLog.h"

namespace zolvar {
namespace {

ABMultiValueEntry entry(const char* value, const char* label, bool isPrimary = false) {
  return {value, label, "", isPrimary};
}

class PersonTest : public testing::Test {
 protected:
  std::string written(const ABPerson& person) {
    return vCardRepresentationPortable(person, book, log);
  }
  AddressBookContent content{"A"};
  NotificationCenter center;
  MemoryAddressBook book{content, center};
  RecordingLog log;
};

TEST_F(PersonTest, namesPeople) {
  struct Row {
    const char *prefix, *first, *last, *suffix, *organization, *fullname, *both;
  };
  const Row rows[] = {
      {"Dr", "Ann", "Lee", "Jr", "", "Dr Ann Lee, Jr", "Dr Ann Lee, Jr"},
      {"Dr", "Ann", "", "Jr", "Acme", "Ann", "Ann, Acme"},
      {"", "", "Lee", "", "", "Lee", "Lee"},
      {"Dr", "", "", "Jr", "Acme", "", "Acme"},
      {"", "", "", "", "", "", ""},
  };
  for (const Row& row : rows) {
    ABPerson person;
    person.values = {{ABProperty::Title, row.prefix},
                     {ABProperty::FirstName, row.first},
                     {ABProperty::LastName, row.last},
                     {ABProperty::Suffix, row.suffix},
                     {ABProperty::Organization, row.organization}};
    EXPECT_EQ(fullname(person), row.fullname);
    EXPECT_EQ(fullnameOrOrganization(person), row.both);
  }
}

TEST_F(PersonTest, comparesValues) {
  const ABMultiValue work{entry("1", ABLabel::PhoneWork, true), entry("2", ABLabel::PhoneHome)};
  ABMultiValue other = work;
  other[0].identifier = "z";
  other[0].isPrimary = false;
  EXPECT_TRUE(hasEqualABValue(work, other)) << "identifiers and the primary mark do not count";
  std::swap(other[0], other[1]);
  EXPECT_FALSE(hasEqualABValue(work, other)) << "the order does";
  EXPECT_FALSE(hasEqualABValue(work, ABMultiValue{work[0]}));
  EXPECT_FALSE(hasEqualABValue(work, ABMultiValue{work[0], entry("2", ABLabel::PhoneWork)}));
  EXPECT_FALSE(hasEqualABValue(work, std::string("1")));
  const ABDate day{std::chrono::seconds(86400)};
  EXPECT_TRUE(hasEqualABValue(day, ABDate{std::chrono::seconds(86400)}));
  EXPECT_FALSE(hasEqualABValue(day, std::string("1970-01-02")));
}

TEST_F(PersonTest, comparesAndCopiesWhatIsKeptInStep) {
  const auto checked = checkedProperties(book);
  ABPerson ann = MemoryAddressBook::person("Ann", "Lee");
  ABPerson other = ann;
  other.values[ABProperty::Note] = "met in Rome";
  EXPECT_TRUE(hasEqualProperties(ann, other, checked));
  EXPECT_EQ(digestOfProperties(ann, checked), digestOfProperties(other, checked));
  other.values[ABProperty::LastName] = "Leeds";
  other.values[ABProperty::Suffix] = "Jr";
  ann.values[ABProperty::Organization] = "Acme";
  const ABChanges changes = copyPropertiesFromPerson(ann, other, checked);
  EXPECT_EQ(changes.size(), 3U);
  EXPECT_EQ(std::get<std::string>(*changes.at(ABProperty::LastName)), "Leeds");
  EXPECT_EQ(std::get<std::string>(*changes.at(ABProperty::Suffix)), "Jr");
  EXPECT_FALSE(changes.at(ABProperty::Organization));
  EXPECT_NE(digestOfProperties(ann, checked), digestOfProperties(other, checked));
}

TEST_F(PersonTest, findsPeopleByPartsOfTheirNames) {
  content.people["A1"] = MemoryAddressBook::person("Anne", "Leeds");
  content.people["A2"] = MemoryAddressBook::person("Ann", "Smith");
  content.people["A3"] = MemoryAddressBook::person("Änne", "ÖZTÜRK");
  const PeopleByName people(*book.people());
  const auto count = [&](const char* first, const char* last) {
    return people.find(first, last).size();
  };
  EXPECT_EQ(count("ANN", "lee"), 1U);
  EXPECT_EQ(count("ann", ""), 2U);
  EXPECT_EQ(count("äNNE", "öztürk"), 1U);
  EXPECT_EQ(count("Anna", "Leeds"), 0U);
  content.groups = {{"Friends", {}}};
  EXPECT_TRUE(*groupWithName(book, "Friends"));
  EXPECT_FALSE(*groupWithName(book, "friends"));
}

TEST_F(PersonTest, writesBase64) {
  const std::string picture(100, 'x');
  EXPECT_EQ(encodeBase64("Zolvar"), "Wm9sdmFy\n");
  EXPECT_EQ(encodeBase64WithNewlines("", false), "");
  const std::string lines = encodeBase64(picture);
  EXPECT_EQ(lines.find('\n'), 64U);
  EXPECT_EQ(lines.size(), 136U + 3);
  std::string text = "PHOTO:";
  appendBase64ToString(text, picture, "\n  ");
  const std::string whole = encodeBase64WithNewlines(picture, false);
  EXPECT_EQ(text, "PHOTO:\n  " + whole.substr(0, 76) + "\n  " + whole.substr(76));
  EXPECT_EQ(whole.size(), 136U);
}

TEST_F(PersonTest, knowsTheTypesOfLabels) {
  EXPECT_EQ(vCardLabelString(ABLabel::PhoneHomeFax, log), ";type=HOME;type=FAX");
  EXPECT_EQ(vCardLabelString(ABLabel::PhoneMain, log), ";type=VOICE");
  EXPECT_EQ(vCardLabelString(ABLabel::EmailWork, log), ";type=INTERNET;type=WORK");
  EXPECT_EQ(vCardLabelString(ABLabel::HomePage, log), ";type=HOMEPAGE");
  EXPECT_EQ(vCardLabelString("boat", log), "");
  EXPECT_TRUE(log.contains("Warning! No type string known for label 'boat'"));
}

TEST_F(PersonTest, writesCardsByteForByte) {
  ABPerson ann = MemoryAddressBook::person("Ann", "Lee; Jones");
  ann.values[ABProperty::Nickname] = "A,n\\n";
  ann.values[ABProperty::MaidenName] = "Jones";
  ann.values[ABProperty::Organization] = "Acme";
  ann.values[ABProperty::Department] = "Lab;2";
  ann.values[ABProperty::JobTitle] = "";
  ann.values[ABProperty::Birthday] = ABDate{std::chrono::seconds(10627200)};
  ann.values[ABProperty::Phones] =
      ABMultiValue{entry("1;2", ABLabel::PhoneMobile, true), entry("3", ABLabel::PhoneWorkFax)};
  ann.values[ABProperty::AIMNames] = ABMultiValue{entry("aim", ABLabel::AIMHome)};
  ann.values[ABProperty::JabberNames] = ABMultiValue{entry("jab", "boat")};
  ann.values[ABProperty::Emails] = ABMultiValue{entry("a@b.c", ABLabel::EmailHome)};
  ann.values[ABProperty::URLs] = ABMultiValue{entry("http://b.c", ABLabel::HomePage)};
  ann.values[ABProperty::Note] = "never";
  ann.values[ABProperty::Image] = "xyz";
  EXPECT_EQ(written(ann),
            "BEGIN:VCARD\r\nVERSION:3.0\r\nFN:Ann Lee\\; Jones\r\nNICKNAME:A,n\\n\r\n"
            "X-MAIDENNAME:Jones\r\nORG:Acme;Lab\\;2\r\nBDAY:1970-05-04 00:00:00 +0000\r\n"
            "TEL;type=CELL;type=pref:1\\;2\r\nTEL;type=WORK;type=FAX:3\r\n"
            "X-AIM;type=HOME:aim\r\nX-JABBER:jab\r\nEMAIL;type=INTERNET;type=HOME:a@b.c\r\n"
            "URL;type=HOMEPAGE:http://b.c\r\nPHOTO;BASE64:\n  eHl6\r\nEND:VCARD\r\n");
  ABPerson lab;
  lab.values[ABProperty::Department] = "Lab";
  EXPECT_EQ(written(lab), "BEGIN:VCARD\r\nVERSION:3.0;Lab\r\nEND:VCARD\r\n");
}

}  // namespace
}  // namespace zolvar
