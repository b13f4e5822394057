#include <gtest/gtest.h>

#include <algorithm>

#include "addressbook/BookUnderTest.h"
#include "addressbook/PersonProperties.h"
#include "addressbook/VCardPerson.h"
#include "platform/UserDefaults.h"

// What every address book does, whoever keeps its cards.

namespace zolvar {
namespace {

constexpr const char* AnnsCard =
    "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:ann-1\r\nN:Lee;Ann;;;\r\nFN:Ann Lee\r\n"
    "TEL;TYPE=CELL:555\r\nX-SHOE-SIZE:39\r\nCATEGORIES:Elsewhere\r\nEND:VCARD\r\n";

std::string cardOf(const std::string& uid, const std::string& name) {
  return "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:" + uid + "\r\nN:" + name + ";;;;\r\nFN:" + name +
         "\r\nEND:VCARD\r\n";
}

/// An opened book, and what it told.
struct OpenBook {
  explicit OpenBook(BookUnderTest& under)
      : book(under.open(center)),
        observation(center.observe<AddressBookDidChange>([this](const auto& change) {
          const auto append = [](auto& list, const auto& more) {
            list.insert(list.end(), more.begin(), more.end());
          };
          append(told.updated, change.updated);
          append(told.inserted, change.inserted);
          append(told.deleted, change.deleted);
          ++count;
        })) {
    const auto groups = book->groups();

    EXPECT_TRUE(!groups && groups.error().kind == FailureKind::Transient);
    EXPECT_TRUE(under.runUntil([&] { return book->groups().has_value(); }));
    EXPECT_GE(count, 1);  // that it can be read now
    told = {};
    count = 0;
  }

  NotificationCenter center;
  AddressBookDidChange told;
  int count = 0;
  std::unique_ptr<AddressBook> book;
  NotificationCenter::Observation observation;
};

bool holds(const std::vector<std::string>& list, const std::string& text) {
  return std::find(list.begin(), list.end(), text) != list.end();
}

class AddressBookTest : public testing::TestWithParam<BookKind> {
 protected:
  void SetUp() override {
    std::string whyNot;
    under_ = GetParam().make(whyNot);
    if (!under_) GTEST_SKIP() << whyNot;
    own_ = std::make_unique<OpenBook>(*under_);
  }
  [[nodiscard]] AddressBook& book() const { return *own_->book; }

  std::string add(const std::string& card) {
    const auto person = book().personWithVCardData(card);
    EXPECT_TRUE(person);
    const auto id = book().addPerson(*person);
    EXPECT_TRUE(id);
    return *id;
  }
  std::string group(const std::string& name) { return book().addGroup(name)->uniqueId; }
  static std::string text(AddressBook& of, const std::string& id, const char* property) {
    const auto person = of.recordForUniqueId(id);
    const ABValue* value = person && *person ? (*person)->value(property) : nullptr;
    const auto* plain = value ? std::get_if<std::string>(value) : nullptr;
    return plain ? *plain : "";
  }
  static std::vector<std::string> names(const Result<std::vector<ABGroup>>& groups) {
    std::vector<std::string> found;
    for (const auto& one : *groups) found.push_back(one.name);
    return found;
  }
  /// Waits until another program sees what was saved here.
  OpenBook& other(const std::function<bool(AddressBook&)>& seen) {
    if (!other_) other_ = std::make_unique<OpenBook>(*under_);
    EXPECT_TRUE(under_->runUntil([&] { return seen(*other_->book); }));
    return *other_;
  }
  static bool has(AddressBook& book, const std::string& id) {
    return book.recordForUniqueId(id)->has_value();
  }

  std::unique_ptr<BookUnderTest> under_;
  std::unique_ptr<OpenBook> own_;
  std::unique_ptr<OpenBook> other_;
};

INSTANTIATE_TEST_SUITE_P(Books, AddressBookTest, testing::ValuesIn(bookKinds()),
                         [](const auto& test) { return test.param.name; });

TEST_P(AddressBookTest, keepsPeopleAndGroups) {
  EXPECT_EQ(book().people()->size(), 0U);
  const std::string friends = group("Friends, old");
  EXPECT_EQ(group("Friends, old"), friends);
  const std::string ann = add(AnnsCard);
  EXPECT_EQ(ann, "ann-1");
  EXPECT_EQ(names(book().parentGroups(ann)), std::vector<std::string>());
  EXPECT_TRUE(book().addMember(friends, ann));
  EXPECT_TRUE(book().addMember(friends, ann));
  EXPECT_TRUE(book().addMember(group("B"), ann));
  const std::string again = add(AnnsCard);  // its UID is taken
  EXPECT_NE(again, ann);
  ASSERT_TRUE(book().save());

  AddressBook& later = *other([&](AddressBook& b) { return has(b, ann) && has(b, again); }).book;
  EXPECT_EQ(names(later.groups()), (std::vector<std::string>{"B", "Friends, old"}));
  const auto members = later.members(friends);
  ASSERT_EQ(members->size(), 1U);
  const ABPerson& person = members->front();
  EXPECT_EQ(person.uniqueId, ann);
  EXPECT_EQ(text(later, ann, ABProperty::LastName), "Lee");
  const auto phones = std::get<ABMultiValue>(*person.value(ABProperty::Phones));
  ASSERT_EQ(phones.size(), 1U);
  EXPECT_EQ(phones[0].value, "555");
  EXPECT_EQ(phones[0].label, ABLabel::PhoneMobile);
  EXPECT_NE(person.vCardData.find("X-SHOE-SIZE:39"), std::string::npos) << person.vCardData;
  EXPECT_EQ(later.personWithVCardData((*later.recordForUniqueId(again))->vCardData)->uniqueId,
            again);
  EXPECT_EQ(own_->count, 0);  // nobody else did anything
  EXPECT_NE(later.addressToOpen(ann), "");
}

TEST_P(AddressBookTest, takesOldCardsAsTheyAreMeant) {
  const auto card = book().personWithVCardData(
      "BEGIN:VCARD\r\nVERSION:2.1\r\nUID:old\r\nTEL;CELL;PREF:1\r\nN;CHARSET=UTF-8;ENCODING="
      "QUOTED-PRINTABLE:M=C3=BCl=\r\nler;J=C3=B6rg\r\nPHOTO;JPEG;ENCODING=BASE64:/9j/4AAQSkZJ\r\n"
      "RgABAQ==\r\n\r\nEND:VCARD\r\n");
  const auto old = book().addPerson(*card);
  ASSERT_TRUE(book().save());
  AddressBook& later = *other([&](AddressBook& b) { return has(b, *old); }).book;
  const auto checked = checkedProperties(book());
  EXPECT_TRUE(hasEqualProperties(**later.recordForUniqueId(*old), *card, checked))
      << (*later.recordForUniqueId(*old))->vCardData;
  EXPECT_EQ(text(later, *old, ABProperty::LastName), "M\u00FCller");
}

TEST_P(AddressBookTest, changesAndRemoves) {
  const std::string ann = add(AnnsCard);
  const std::string bob = add(cardOf("bob", "Bob"));
  const std::string friends = group("Friends");
  const std::string work = group("Work");
  for (const auto& person : {ann, bob}) ASSERT_TRUE(book().addMember(friends, person));
  ASSERT_TRUE(book().addMember(work, ann));
  ASSERT_TRUE(book().save());
  const std::string picture = "\x89PNG\r\n\x1a\n" + std::string("no real one\0\xFF", 13);
  const ABDate birthday = *dateOfText("1980-02-03");
  ABChanges changes = {{ABProperty::FirstName, "Zo\u00EB; a,b"},
                       {ABProperty::Phones, std::nullopt},
                       {ABProperty::Note, "two\nlines"},
                       {ABProperty::Birthday, birthday},
                       {ABProperty::Image, picture},
                       {ABProperty::Emails, ABMultiValue{{"a@b", ABLabel::EmailWork, "", true},
                                                         {"c@d", "", "", false}}}};
  ASSERT_TRUE(book().setValues(ann, changes));
  ASSERT_TRUE(book().removeMember(work, ann));
  ASSERT_TRUE(book().removePerson(bob));
  EXPECT_FALSE(has(book(), bob));
  EXPECT_EQ(names(book().groups()), (std::vector<std::string>{"Friends", "Work"}));
  ASSERT_TRUE(book().save());

  AddressBook& later =
      *other([&](AddressBook& b) {
         // A server tells one change at a time.
         return !has(b, bob) && text(b, ann, "Note") != "" && b.parentGroups(ann)->size() == 1;
       }).book;
  const auto person = **later.recordForUniqueId(ann);
  EXPECT_EQ(text(later, ann, ABProperty::FirstName), "Zo\u00EB; a,b");
  EXPECT_EQ(text(later, ann, ABProperty::LastName), "Lee");
  EXPECT_EQ(text(later, ann, ABProperty::Note), "two\nlines");
  EXPECT_EQ(text(later, ann, ABProperty::Image), picture);
  EXPECT_EQ(std::get<ABDate>(*person.value(ABProperty::Birthday)), birthday);
  EXPECT_EQ(person.value(ABProperty::Phones), nullptr);
  const auto emails = std::get<ABMultiValue>(*person.value(ABProperty::Emails));
  ASSERT_EQ(emails.size(), 2U);
  EXPECT_EQ(emails[0].value + emails[0].label + emails[1].value, "a@be-mail workc@d");
  EXPECT_TRUE(emails[0].isPrimary);
  EXPECT_NE(person.vCardData.find("X-SHOE-SIZE:39"), std::string::npos) << person.vCardData;
  EXPECT_EQ(names(later.parentGroups(ann)), std::vector<std::string>{"Friends"});
  EXPECT_EQ(later.members(friends)->size(), 1U);
}

TEST_P(AddressBookTest, tellsWhatOthersDid) {
  const std::string ann = add(AnnsCard);
  const std::string bob = add(cardOf("bob", "Bob"));
  ASSERT_TRUE(book().save());
  OpenBook& else_ = other([&](AddressBook& b) { return has(b, ann) && has(b, bob); });
  AddressBook& theirs = *else_.book;
  else_.count = 0;  // it may have been opened in the midst of our writing
  const auto group = *theirs.addGroup("Theirs");
  const auto cat = *theirs.addPerson(*theirs.personWithVCardData(cardOf("cat", "Cat")));
  ASSERT_TRUE(theirs.addMember(group.uniqueId, cat));
  ASSERT_TRUE(theirs.setValues(ann, {{ABProperty::Nickname, "Annie"}}));
  ASSERT_TRUE(theirs.removePerson(bob));
  ASSERT_TRUE(theirs.save());
  const auto& told = own_->told;
  EXPECT_TRUE(under_->runUntil([&] {
    return holds(told.inserted, cat) && holds(told.updated, ann) && holds(told.deleted, bob);
  }));
  EXPECT_TRUE(under_->runUntil([&] { return holds(told.inserted, group.uniqueId); }));
  EXPECT_EQ(text(book(), ann, ABProperty::Nickname), "Annie");
  EXPECT_EQ(book().members(group.uniqueId)->size(), 1U);
  EXPECT_EQ(else_.count, 0);
}

TEST_P(AddressBookTest, losesNobodysChange) {
  const std::string ann = add(AnnsCard);
  ASSERT_TRUE(book().save());
  AddressBook& theirs = *other([&](AddressBook& b) { return has(b, ann); }).book;
  // Each changes it without having seen the other's.
  ASSERT_TRUE(theirs.setValues(ann, {{ABProperty::Nickname, "Annie"}}));
  ASSERT_TRUE(book().setValues(ann, {{ABProperty::JobTitle, "Boss"}}));
  ASSERT_TRUE(book().addMember(group("Ours"), ann));
  ASSERT_TRUE(theirs.save());
  const OpenBook third(*under_);
  EXPECT_TRUE(under_->runUntil([&] { return text(*third.book, ann, "Nickname") == "Annie"; }));
  ASSERT_TRUE(book().save());
  for (AddressBook* one : {&book(), &theirs}) {
    EXPECT_TRUE(under_->runUntil([&] {
      return text(*one, ann, ABProperty::Nickname) == "Annie" &&
             text(*one, ann, ABProperty::JobTitle) == "Boss" &&
             names(one->parentGroups(ann)) == std::vector<std::string>{"Ours"};
    }));
  }
}

TEST_P(AddressBookTest, refusesWhatIsNotThere) {
  const std::string friends = group("Friends");
  const std::string ann = add(AnnsCard);
  const FailureKind absent = FailureKind::Absent;
  EXPECT_EQ(book().members("group:Nobody").error().kind, absent);
  EXPECT_EQ(book().addMember("group:Nobody", ann).error().kind, absent);
  EXPECT_EQ(book().addMember(friends, "nobody").error().kind, absent);
  EXPECT_EQ(book().removeMember(friends, "nobody").error().kind, absent);
  EXPECT_EQ(book().parentGroups("nobody").error().kind, absent);
  EXPECT_EQ(book().removePerson("nobody").error().kind, absent);
  EXPECT_EQ(book().setValues("nobody", {}).error().kind, absent);
  EXPECT_FALSE(book().recordForUniqueId("nobody")->has_value());
  EXPECT_EQ(book().personWithVCardData("nothing").error().kind, FailureKind::Damaged);
  EXPECT_EQ(book().personWithVCardData("").error().kind, FailureKind::Damaged);
  EXPECT_FALSE(book().personWithVCardData(cardOf("1", "One") + cardOf("2", "Two")));
  EXPECT_EQ(book()
                .personWithVCardData("BEGIN:VCARD\r\nVERSION:4.0\r\nKIND:group\r\nEND:VCARD\r\n")
                .error()
                .reason,
            "it is not of a person");
  const auto canRead = [this](const std::string& lines) {
    std::string card = cardOf("1", "One");
    return book().personWithVCardData(card.insert(card.find("END:"), lines)).has_value();
  };
  const std::string large(70'000, 'A');
  EXPECT_TRUE(canRead("PHOTO;ENCODING=b;TYPE=JPEG:" + large + "\r\n"));
  EXPECT_FALSE(canRead("NOTE:" + large + "\r\n"));
  std::string many;
  for (int count = 0; count < 2000; ++count) many += "TEL:1\r\n";
  EXPECT_FALSE(canRead(many));
}

TEST_P(AddressBookTest, knowsTheOwnCard) {
  EXPECT_FALSE(book().me()->has_value());
  const std::string ann = add(AnnsCard);
  EXPECT_FALSE(book().me()->has_value());
  under_->platform().defaults.setString("OwnCard", ann);
  ASSERT_TRUE(book().me()->has_value());
  EXPECT_EQ((*book().me())->uniqueId, ann);
}

}  // namespace
}  // namespace zolvar
