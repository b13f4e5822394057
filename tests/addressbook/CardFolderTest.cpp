#include <gtest/gtest.h>

#include "addressbook/CardBook.h"
#include "addressbook/CardFolder.h"
#include "support/SimulatedPlatform.h"
#include "util/hexHash.h"

namespace zolvar {
namespace {

constexpr const char* Place = "/home/user/cards";

std::string card(const std::string& lines) {
  return "BEGIN:VCARD\nVERSION:3.0\n" + lines + "END:VCARD\n";
}

/// A book over a folder of cards in which a person and other programs work as well.
class CardFolderTest : public testing::Test {
 protected:
  CardFolderTest() { platform_.defaults.setString("AddressBookFolder", "~/cards/"); }

  AddressBook& open() {
    told_ = {};
    book_.reset();
    book_ = std::make_unique<CardBook>(
        std::make_unique<CardFolder>(platform_, CardFolder::pathFor(platform_)), platform_,
        center_);
    (void)book_->groups();
    platform_.loop.advance(2);
    told_ = {};
    return *book_;
  }
  void write(const std::string& name, const std::string& content) {
    platform_.files.write(std::string(Place) + "/" + name, content);
  }
  [[nodiscard]] std::string content(const std::string& name) const {
    return platform_.files.readAll(std::string(Place) + "/" + name).value_or("none");
  }
  /// "id=NAME …", in the order of ids.
  [[nodiscard]] std::string people() {
    const auto people = book_->people();
    if (!people) return people.error().reason;
    std::string text;
    for (const auto& person : *people) {
      const ABValue* name = person.value(ABProperty::LastName);
      text += (text.empty() ? "" : " ") + person.uniqueId + "=" +
              (name ? std::get<std::string>(*name) : "");
    }
    return text;
  }
  [[nodiscard]] std::string told() {
    std::string text;
    for (const auto& id : told_.inserted) text += "+" + id;
    for (const auto& id : told_.updated) text += "*" + id;
    for (const auto& id : told_.deleted) text += "-" + id;
    told_ = {};
    return text;
  }

  SimulatedPlatform platform_;
  NotificationCenter center_;
  AddressBookDidChange told_;
  NotificationCenter::Observation observation_ =
      center_.observe<AddressBookDidChange>([this](const auto& change) {
        const auto append = [](auto& list, const auto& more) {
          list.insert(list.end(), more.begin(), more.end());
        };
        append(told_.updated, change.updated);
        append(told_.inserted, change.inserted);
        append(told_.deleted, change.deleted);
      });
  std::unique_ptr<AddressBook> book_;
};

TEST_F(CardFolderTest, takesForeignFilesAsTheyAre) {
  write("z.vcf", card("UID:a/b\nN:One\n"));
  write("copy.vcf", card("UID:a/b\nN:Copy\n"));  // the first by name has the id
  write("Jo.VCF", card("N:NoUid\n"));
  write("two.vcf", card("UID:x\nN:X\n") + card("UID:y\nN:Y\n"));
  write("group.vcf", card("UID:g\nX-ADDRESSBOOKSERVER-KIND:group\nN:Group\n"));
  write(".hidden.vcf", card("UID:h\nN:H\n"));
  write("a.vcf.tmp", card("UID:t\nN:T\n"));
  write("color", "#ff0000");
  write("broken.vcf", "BEGIN:VCARD\nN:Broken\n");
  write("below/b.vcf", card("UID:below\nN:Below\n"));
  const auto before = platform_.files.contents(Place);
  AddressBook& book = open();
  EXPECT_EQ(people(), "Jo=NoUid a%2Fb=Copy a%2Fb-" + hexHash("z.vcf") + "=One x=X y=Y");
  EXPECT_EQ(book.setValues("x", {{ABProperty::LastName, "Z"}}).error().kind, FailureKind::Refused);
  EXPECT_EQ(book.removePerson("y").error().kind, FailureKind::Refused);
  EXPECT_TRUE(book.save());
  platform_.loop.advance(120);
  EXPECT_EQ(platform_.files.contents(Place), before);
}

TEST_F(CardFolderTest, followsWhatOthersDo) {
  write("a.vcf", card("UID:a\nN:A\n"));
  write("b.vcf", card("UID:b\nN:B\n"));
  open();
  const auto step = [this](const char* told, const char* people) {
    platform_.loop.advance(1);
    EXPECT_EQ(this->told(), told);
    EXPECT_EQ(this->people(), people);
  };
  step("", "a=A b=B");
  platform_.files.move(std::string(Place) + "/a.vcf", std::string(Place) + "/c.vcf");
  step("", "a=A b=B");
  write("c.vcf", card("UID:a\nN:C\n"));  // in the same second
  step("*a", "a=C b=B");
  write("c.vcf", "");  // a writer that has only begun
  step("", "a=C b=B");
  write("c.vcf", card("UID:a\nN:C\nREV:20200101T000000Z\nX-NEW:1\n"));  // says nothing new
  step("", "a=C b=B");
  platform_.files.save(std::string(Place) + "/b.vcf", card("UID:b\nN:B\nCATEGORIES:G\n"));
  step("+group:G*b", "a=C b=B");
  platform_.files.remove(std::string(Place) + "/b.vcf");
  step("-b-group:G", "a=C");
  write("d.vcf", card("UID:a\nN:Double\n"));  // who has the id keeps it
  platform_.loop.advance(1);
  EXPECT_EQ(people().substr(0, 4), "a=C ");
}

TEST_F(CardFolderTest, writesOneCardAFileAndAsLittleAsPossible) {
  write("odd name.vcf", "\xEF\xBB\xBF" + card("UID:a\nN:A\nX-ODD;Z=1:  kept\n") + "rubbish\n");
  platform_.files.setMode(std::string(Place) + "/odd name.vcf", 0640);
  write("new.vcf", "no card");
  AddressBook& book = open();
  ASSERT_TRUE(book.setValues("a", {{ABProperty::Nickname, "Al"}}));
  ASSERT_TRUE(book.addMember(book.addGroup("G")->uniqueId, "a"));
  ASSERT_TRUE(book.addPerson(*book.personWithVCardData(card("UID:new\nN:New\n"))));
  ASSERT_TRUE(book.save());
  platform_.loop.advance(2);
  EXPECT_EQ(content("odd name.vcf"),
            "\xEF\xBB\xBF" + card("UID:a\nN:A\nX-ODD;Z=1:  kept\nNICKNAME:Al\nCATEGORIES:G\n") +
                "rubbish\n");
  EXPECT_EQ(platform_.files.attributesOf(std::string(Place) + "/odd name.vcf")->mode, 0640U);
  EXPECT_EQ(content("new.vcf"), "no card");
  EXPECT_EQ(content("new-2.vcf"), card("UID:new\nN:New\n"));
  EXPECT_EQ(platform_.files.attributesOf(std::string(Place) + "/new-2.vcf")->mode, 0600U);
  EXPECT_EQ(book.addressToOpen("new"), std::string(Place) + "/new-2.vcf");
  EXPECT_EQ(told(), "");
  ASSERT_TRUE(book.removePerson("new"));
  ASSERT_TRUE(book.save());
  platform_.loop.advance(2);
  EXPECT_EQ(content("new-2.vcf"), "none");
  EXPECT_TRUE(platform_.files.wasTrashed(card("UID:new\nN:New\n")));
}

TEST_F(CardFolderTest, triesAgainWhatTheDiskRefused) {
  write("a.vcf", card("UID:a\nN:A\n"));
  AddressBook& book = open();
  platform_.files.faults.failAlways("replace", FailureKind::Transient);
  ASSERT_TRUE(book.setValues("a", {{ABProperty::Nickname, "Al"}}));
  ASSERT_TRUE(book.save());
  platform_.loop.advance(2);
  write("a.vcf", card("UID:a\nN:B\n"));
  platform_.loop.advance(2);
  EXPECT_EQ(people(), "a=B");
  EXPECT_EQ(content("a.vcf"), card("UID:a\nN:B\n"));
  platform_.files.faults.clear();
  platform_.loop.advance(60);
  EXPECT_EQ(content("a.vcf"), card("UID:a\nN:B\nNICKNAME:Al\n"));
}

TEST_F(CardFolderTest, replacesNothingThatIsSavedMeanwhile) {
  write("a.vcf", card("UID:a\nN:A\n"));
  AddressBook& book = open();
  const auto saveMeanwhile = [this](const std::string& lines) {
    platform_.files.faults.beforeCall = [this, lines](std::string_view operation,
                                                      std::string_view name) {
      if (operation != "replace" || !name.ends_with(".vcf")) return;
      platform_.files.faults.beforeCall = {};
      write(std::string(name), card(lines));
    };
  };
  saveMeanwhile("UID:a\nN:B\n");  // of the same second and size
  ASSERT_TRUE(book.setValues("a", {{ABProperty::Nickname, "Al"}}));
  write("a.vcf", card("UID:a\nN:C\n"));
  write("b.vcf", card("UID:b\nN:B\n"));
  ASSERT_TRUE(book.save());
  platform_.loop.advance(2);
  EXPECT_EQ(people(), "a=B b=B");
  platform_.loop.advance(60);
  EXPECT_EQ(content("a.vcf"), card("UID:a\nN:B\nNICKNAME:Al\n"));

  saveMeanwhile("UID:other\nN:Other\n");
  ASSERT_TRUE(book.addPerson(*book.personWithVCardData(card("UID:new\nN:New\n"))));
  ASSERT_TRUE(book.save());
  platform_.loop.advance(60);
  EXPECT_EQ(content("new.vcf"), card("UID:other\nN:Other\n"));
  EXPECT_EQ(content("new-2.vcf"), card("UID:new\nN:New\n"));
}

TEST_F(CardFolderTest, aMissingFolderIsNotAnEmptyOne) {
  AddressBook& book = open();
  EXPECT_EQ(people(), "");
  EXPECT_FALSE(platform_.files.exists(Place));  // nobody needs it yet
  ASSERT_TRUE(book.addPerson(*book.personWithVCardData(card("UID:a\nN:A\n"))));
  ASSERT_TRUE(book.save());
  platform_.loop.advance(2);
  EXPECT_EQ(content("a.vcf"), card("UID:a\nN:A\n"));
  EXPECT_EQ(told(), "");

  platform_.files.move(Place, "/home/user/away");
  platform_.loop.advance(120);
  EXPECT_EQ(book.people().error().kind, FailureKind::Transient);
  EXPECT_EQ(open().people().error().kind, FailureKind::Transient);  // at the next start, too
  EXPECT_FALSE(platform_.files.exists(Place));
  platform_.files.move("/home/user/away", Place);
  platform_.loop.advance(40);
  EXPECT_EQ(people(), "a=A");

  platform_.files.mount(Place, 77);  // somebody's empty disk
  EXPECT_EQ(open().people().error().kind, FailureKind::Transient);
  platform_.files.unmount(Place);
  platform_.loop.advance(40);
  EXPECT_EQ(people(), "a=A");
}

TEST_F(CardFolderTest, looksAgainWhereNothingIsReported) {
  platform_.files.isObservable = false;
  write("a.vcf", card("UID:a\nN:A\n"));
  open();
  write("b.vcf", card("UID:b\nN:B\n"));
  platform_.loop.advance(70);
  EXPECT_EQ(told(), "+b");
}

TEST_F(CardFolderTest, findsTheOwnCard) {
  write("me.vcf", card("UID:m\nN:Me\n"));
  write("other.vcf", card("UID:o\nN:Other\n"));
  AddressBook& book = open();
  EXPECT_EQ((*book.me())->uniqueId, "m");
  platform_.defaults.setString("OwnCard", "other.vcf");
  EXPECT_EQ((*book.me())->uniqueId, "o");
  platform_.defaults.setString("OwnCard", "m");
  EXPECT_EQ((*book.me())->uniqueId, "m");
}

}  // namespace
}  // namespace zolvar
