// Contacts of two people's address books on a simulated network.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "addressbook/KDAddressPool.h"
#include "addressbook/PersonProperties.h"
#include "app/AppHost.h"
#include "support/MemoryAddressBook.h"

namespace zolvar {
namespace {

using testing::HasSubstr;

constexpr const char* Pool = "Friends.zolvaraddresses";

/// A machine with an address book, and another program that changes it.
struct Contacts {
  Contacts(SimulatedWorld& world, const std::string& host, const std::string& user)
      : content(user), host(world, host, user) {
    this->host.addressBook = [this](Platform&, NotificationCenter& center) {
      auto made = std::make_unique<MemoryAddressBook>(content, center);
      book = made.get();
      return made;
    };
    this->host.platform.defaults.setString("AutosyncingEnabled", "1");
  }
  std::string add(const std::string& first, const std::string& last,
                  const std::string& group = "Friends") {
    const std::string id = *book->addPerson(MemoryAddressBook::person(first, last));
    if (!group.empty()) content.groups[group].insert(id);
    return id;
  }
  void set(const std::string& id, const std::string& property, const std::string& value) {
    (void)book->setValues(id, {{property, value}});
    book->tell({id});
  }
  void removeFromGroup(const std::string& id) {
    content.groups["Friends"].erase(id);
    if (content.groups["Friends"].empty()) content.groups.erase("Friends");
    book->tell({id});
  }
  /// "Ann Lee (Acme)", sorted.
  [[nodiscard]] std::vector<std::string> members() const {
    std::vector<std::string> names;
    const auto group = content.groups.find("Friends");
    if (group == content.groups.end()) return names;
    for (const std::string& id : group->second) {
      const ABPerson& person = content.people.at(id);
      const std::string organisation = organization(person);
      names.push_back(fullname(person) + (organisation.empty() ? "" : " (" + organisation + ")"));
    }
    std::sort(names.begin(), names.end());
    return names;
  }
  [[nodiscard]] std::string idOf(const std::string& name) const {
    for (const auto& [id, person] : content.people) {
      if (fullname(person) == name) return id;
    }
    return "(nobody)";
  }
  [[nodiscard]] std::optional<std::string> file(const std::string& name) const {
    return host.platform.files.readAll(folder() + "/" + name);
  }
  [[nodiscard]] static std::string folder() {
    return std::string("/home/user/Public/Zolvar/") + Pool;
  }
  [[nodiscard]] std::uint64_t logLines() {
    std::uint64_t bytes = 0;
    for (const auto& [name, size] : host.pool(Pool).snapshot()->logSizes) bytes += size;
    return bytes;
  }
  KDAddressPool& pool() { return dynamic_cast<KDAddressPool&>(host.pool(Pool)); }

  AddressBookContent content;
  MemoryAddressBook* book = nullptr;
  AppHost host;
};

class KDAddressPoolTest : public testing::Test {
 protected:
  KDAddressPoolTest() {
    ann.host.start();
    bob.host.start();
    world.loop.advance(20);
  }
  bool until(const std::function<bool()>& done, double limit = 200) {
    return world.loop.runUntil(done, limit);
  }
  testing::AssertionResult untilMembers(const Contacts& who,
                                        const std::vector<std::string>& names) {
    if (until([&] { return who.members() == names; })) return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << testing::PrintToString(who.members()) << who.host.platform.log.text();
  }
  std::string share(Contacts& who) {
    return who.host.outcome(
        [&](auto done) { who.host.operations->shareAddresses("Friends", {}, done); });
  }
  /// Ann shares her friends, bob subscribes, and all have come: these are his friends then.
  void pair(const std::vector<std::string>& friends) {
    ASSERT_EQ(share(ann), "");
    subscribe();
    ASSERT_TRUE(until([&] { return bob.host.pool(Pool).snapshot()->missing->empty(); }));
    world.loop.advance(5);
    ASSERT_TRUE(untilMembers(bob, friends));
  }
  void subscribe() {
    ASSERT_TRUE(until([&] { return bob.host.app->peer().presence(Pool) != nullptr; }));
    ASSERT_EQ(bob.host.subscribe(Pool), "");
    ASSERT_TRUE(until([&] { return bob.host.isActive(Pool); })) << bob.host.platform.log.text();
  }

  SimulatedWorld world;
  Contacts ann{world, "alpha", "ann"};
  Contacts bob{world, "beta", "bob"};
};

TEST_F(KDAddressPoolTest, carriesContactsChangesAndDeletionsBothWays) {
  const std::string lee = ann.add("Lee", "Young");
  ann.add("Max", "Old");
  pair({"Lee Young", "Max Old"});
  EXPECT_TRUE(ann.file(lee + ".vcf"));
  EXPECT_EQ(bob.file(lee + ".vcf"), ann.file(lee + ".vcf"));
  EXPECT_TRUE(ann.host.platform.log.contains("Writing vcard file for Lee Young as " + lee));

  ann.set(lee, ABProperty::Organization, "Acme");
  ASSERT_TRUE(untilMembers(bob, {"Lee Young (Acme)", "Max Old"}));
  const std::string there = bob.idOf("Lee Young");
  EXPECT_NE(there, lee);
  bob.set(there, ABProperty::LastName, "Younger");
  ASSERT_TRUE(untilMembers(ann, {"Lee Younger (Acme)", "Max Old"}));
  EXPECT_FALSE(bob.file(there + ".vcf")) << "exported under the name it came by";

  bob.content.groups["Work"].insert(bob.idOf("Max Old"));
  ann.removeFromGroup(lee);
  ASSERT_TRUE(untilMembers(bob, {"Max Old"}));
  EXPECT_EQ(bob.idOf("Lee Younger"), "(nobody)") << "in no group any more";
  EXPECT_TRUE(bob.host.platform.workspace.count("Deleted 1 address in 'Friends':"));
  EXPECT_TRUE(bob.host.platform.workspace.count("Lee Younger, Acme"));
  ann.removeFromGroup(ann.idOf("Max Old"));
  ASSERT_TRUE(untilMembers(bob, {}));
  EXPECT_NE(bob.idOf("Max Old"), "(nobody)") << "still in another group";
  EXPECT_TRUE(bob.host.platform.workspace.count("Got 2 addresses in 'Friends':"));
}

TEST_F(KDAddressPoolTest, writesNothingWhenNothingChanged) {
  bob.content.losesSuffixes = true;  // takes nothing over quite as it came
  const std::string lee = ann.add("Lee", "Young");
  ann.set(lee, ABProperty::Suffix, "Jr");
  pair({"Lee Young"});
  world.loop.advance(120);
  EXPECT_EQ(ann.members(), std::vector<std::string>{"Lee Young, Jr"}) << "written back";
  const auto before = std::make_pair(ann.logLines(), bob.logLines());
  for (int minute = 0; minute < 60; ++minute) {
    world.loop.advance(60);
    ann.book->tell({lee});
    bob.book->tell({bob.idOf("Lee Young")});
  }
  ann.set(lee, ABProperty::Note, "only for ann");
  world.loop.advance(60);
  bob.host.restart();
  world.loop.advance(120);
  EXPECT_EQ(std::make_pair(ann.logLines(), bob.logLines()), before);

  bob.set(bob.idOf("Lee Young"), ABProperty::Organization, "Acme");
  EXPECT_TRUE(untilMembers(ann, {"Lee Young (Acme)"})) << "a change of bob's own counts";
}

TEST_F(KDAddressPoolTest, queuesAnAlikeNameForMergingAndLosesNeither) {
  const std::string leeds = bob.add("Anne", "Leeds", "");
  const std::string lee = ann.add("Ann", "Lee");
  pair({"Anne Leeds"});
  EXPECT_EQ(bob.content.people.size(), 1U);
  EXPECT_TRUE(bob.pool().mergePaths().empty());
  ASSERT_TRUE(bob.host.platform.workspace.click("Merge Contacts in 'Friends'?"));
  EXPECT_EQ(bob.host.platform.workspace.opened,
            (std::vector<std::string>{bob.folder() + "/" + lee + ".vcf", "contact:" + leeds}));

  // Bob goes on with Anne, ann with Ann: they are two people as long as nobody merges them.
  const auto card = bob.file(lee + ".vcf");
  bob.set(leeds, ABProperty::Organization, "Acme");
  ASSERT_TRUE(untilMembers(ann, {"Ann Lee", "Anne Leeds (Acme)"}));
  EXPECT_EQ(bob.file(lee + ".vcf"), card);
  ann.set(lee, ABProperty::Organization, "Lab");
  ASSERT_TRUE(until([&] { return bob.file(lee + ".vcf") != card; }));
  world.loop.advance(60);
  EXPECT_EQ(bob.members(), std::vector<std::string>{"Anne Leeds (Acme)"});
  EXPECT_EQ(bob.host.platform.workspace.count("Merge Contacts"), 2U);
  ann.removeFromGroup(lee);
  world.loop.advance(120);
  EXPECT_EQ(bob.members(), std::vector<std::string>{"Anne Leeds (Acme)"});
  EXPECT_EQ(ann.members(), std::vector<std::string>{"Anne Leeds (Acme)"});
}

TEST_F(KDAddressPoolTest, keepsACardWhoseNamesakeLeavesTheGroup) {
  const std::string leeds = bob.add("Anne", "Leeds", "");
  ann.add("Ann", "Lee");
  pair({"Anne Leeds"});
  ASSERT_TRUE(untilMembers(ann, {"Ann Lee", "Anne Leeds"}));
  bob.removeFromGroup(leeds);
  ASSERT_TRUE(untilMembers(ann, {"Ann Lee"}));
  world.loop.advance(120);
  EXPECT_EQ(ann.members(), std::vector<std::string>{"Ann Lee"});
  bob.content.people.erase(leeds);
  bob.book->tell();
  EXPECT_TRUE(untilMembers(bob, {"Ann Lee"})) << "nobody is in the way any more";
  EXPECT_EQ(ann.members(), std::vector<std::string>{"Ann Lee"});
}

TEST_F(KDAddressPoolTest, writesAMergedPersonUnderTheNameThatEveryoneKnows) {
  const std::string here = bob.add("Ann", "Lee", "");
  const std::string lee = ann.add("Ann", "Lee");
  pair({"Ann Lee"});
  bob.set(here, ABProperty::Organization, "Acme");
  ASSERT_TRUE(untilMembers(ann, {"Ann Lee (Acme)"}));
  ann.set(lee, ABProperty::Organization, "Lab");
  EXPECT_TRUE(untilMembers(bob, {"Ann Lee (Lab)"}));
}

TEST_F(KDAddressPoolTest, keepsTheRicherOfTwoCardsOfOneNameUntilTheyAreMerged) {
  const std::string here = bob.add("Ann", "Lee", "");
  const std::string lee = ann.add("Ann", "Lee");
  ann.set(lee, ABProperty::Organization, "Acme");
  pair({"Ann Lee"});
  const auto card = ann.file(lee + ".vcf");
  bob.set(here, ABProperty::Suffix, "Jr");
  ASSERT_TRUE(until([&] { return ann.file(here + ".vcf").has_value(); }));
  world.loop.advance(60);
  EXPECT_EQ(bob.file(lee + ".vcf"), card) << "poorer by a company";
  EXPECT_EQ(ann.members(), std::vector<std::string>{"Ann Lee (Acme)"});

  bob.set(here, ABProperty::Organization, "Acme");
  ASSERT_TRUE(untilMembers(ann, {"Ann Lee, Jr (Acme)"}));
  world.loop.advance(60);
  ann.set(lee, ABProperty::Organization, "Lab");
  ASSERT_TRUE(untilMembers(bob, {"Ann Lee, Jr (Lab)"}));
  bob.set(here, ABProperty::Suffix, "Sr");
  ASSERT_TRUE(untilMembers(ann, {"Ann Lee, Sr (Lab)"}));
  world.loop.advance(120);
  EXPECT_EQ(bob.members(), ann.members());
  EXPECT_TRUE(bob.host.pool(Pool).snapshot()->conflicts->empty());
  ann.removeFromGroup(lee);
  EXPECT_TRUE(untilMembers(bob, {}));
}

TEST_F(KDAddressPoolTest, takesTwinsInBothGroupsForOne) {
  const std::string here = bob.add("Ann", "Lee");
  const std::string lee = ann.add("Ann", "Lee");
  pair({"Ann Lee"});
  world.loop.advance(120);
  for (const char* text : {"a", "b"}) {
    bob.set(here, ABProperty::Organization, text);
    ASSERT_TRUE(until([&] { return organization(ann.content.people.at(lee)) == text; }));
    ann.set(lee, ABProperty::Suffix, text);
    ASSERT_TRUE(until([&] { return honorpostfix(bob.content.people.at(here)) == text; }));
    world.loop.advance(60);
  }
  EXPECT_EQ(ann.content.people.size() + bob.content.people.size(), 2U);
  const auto before = ann.logLines();
  world.loop.advance(300);
  EXPECT_EQ(ann.logLines(), before);
}

TEST_F(KDAddressPoolTest, replacesNothingByACardOfTheSameIdAndName) {
  ann.content.prefix = bob.content.prefix = "";  // two copies of one card, each with more than once
  const std::string lee = ann.add("Ann", "Lee");
  ASSERT_EQ(bob.add("Ann", "Lee", ""), lee);
  ann.set(lee, ABProperty::Organization, "Acme");
  bob.set(lee, ABProperty::Suffix, "Jr");
  pair({"Ann Lee, Jr"});
  world.loop.advance(60);
  EXPECT_EQ(ann.members(), std::vector<std::string>{"Ann Lee (Acme)"});
  bob.set(lee, ABProperty::Organization, "Acme");
  EXPECT_TRUE(untilMembers(ann, {"Ann Lee, Jr (Acme)"}));
}

TEST_F(KDAddressPoolTest, findsFilesAgainWithoutTheMappingOrUnderOtherIds) {
  ann.add("Lee", "Young");
  ann.set(ann.add("Max", "Old"), ABProperty::Suffix, "Jr");
  bob.content.losesSuffixes = true;
  pair({"Lee Young", "Max Old"});
  world.loop.advance(60);
  const auto before = std::make_pair(ann.logLines(), bob.logLines());
  const auto restart = [&](const std::function<void()>& meanwhile) {
    bob.host.stop();
    meanwhile();
    bob.host.restart();
    world.loop.advance(120);
    EXPECT_EQ(std::make_pair(ann.logLines(), bob.logLines()), before);
    EXPECT_EQ(bob.host.platform.workspace.count("Merge Contacts"), 0U);
    EXPECT_EQ(bob.members(), (std::vector<std::string>{"Lee Young", "Max Old"}));
  };
  restart([&] {
    const auto path = AddressMemory::uidMappingsPath(bob.host.platform.files);
    ASSERT_TRUE(bob.host.platform.files.readAll(*path));
    bob.host.platform.files.remove(*path);
  });
  restart([&] {  // a server gave ids of its own
    AddressBookContent& content = bob.content;
    for (auto& [id, person] : std::exchange(content.people, {})) {
      person.uniqueId = "server-" + id;
      content.people["server-" + id] = person;
      content.groups["Friends"].erase(id);
      content.groups["Friends"].insert("server-" + id);
    }
  });
  bob.set(bob.idOf("Lee Young"), ABProperty::Organization, "Acme");
  EXPECT_TRUE(untilMembers(ann, {"Lee Young (Acme)", "Max Old, Jr"}));
}

TEST_F(KDAddressPoolTest, tellsOnceOfACardThatNobodyCanRead) {
  ann.add("Lee", "Young");
  pair({"Lee Young"});
  ann.host.platform.files.write(ann.folder() + "/odd.vcf", "no card");
  ann.add("Max", "Old");
  ann.book->tell();
  ASSERT_TRUE(untilMembers(bob, {"Lee Young", "Max Old"}));
  ann.add("Eve", "New");
  ann.book->tell();
  ASSERT_TRUE(untilMembers(bob, {"Eve New", "Lee Young", "Max Old"}));
  EXPECT_EQ(ann.host.platform.log.count("nobody is read in from 'odd.vcf': it is no card."), 1U)
      << ann.host.platform.log.text();
  EXPECT_TRUE(ann.file("odd.vcf"));
}

TEST_F(KDAddressPoolTest, tellsPeopleOfTheSameNameApart) {
  ann.add("John", "Smith");
  ann.set(ann.add("John", "Smith"), ABProperty::Organization, "Acme");
  ann.set(ann.add("", ""), ABProperty::Organization, "Lab");
  pair({" (Lab)", "John Smith", "John Smith (Acme)"});
}

TEST_F(KDAddressPoolTest, tellsIdsOfTwoBooksApart) {
  ann.content.prefix = bob.content.prefix = "";  // cards without UIDs, called 1.vcf in both books
  const std::string anna = ann.add("Anna", "Lee");
  const std::string other = bob.add("Bob", "Old", "");
  ASSERT_EQ(anna, other);
  pair({"Anna Lee"});
  bob.content.groups["Friends"].insert(other);
  bob.book->tell({other});
  ASSERT_TRUE(untilMembers(ann, {"Anna Lee", "Bob Old"}));
  ann.removeFromGroup(anna);
  EXPECT_TRUE(untilMembers(bob, {"Bob Old"}));
  EXPECT_EQ(fullname(bob.content.people.at(other)), "Bob Old");
  EXPECT_EQ(ann.members(), std::vector<std::string>{"Bob Old"});
}

TEST_F(KDAddressPoolTest, catchesUpWithWhatCameAndWentWhileTheBookCouldNotBeRead) {
  const std::string lee = ann.add("Lee", "Young");
  ann.add("Max", "Old");
  pair({"Lee Young", "Max Old"});
  bob.content.isUnreachable = true;
  const std::string eve = ann.add("Eve", "New");
  ann.removeFromGroup(lee);
  ASSERT_TRUE(until([&] { return bob.file(eve + ".vcf") && !bob.file(lee + ".vcf"); }));
  world.loop.advance(60);
  bob.host.restart();
  world.loop.advance(60);
  EXPECT_TRUE(bob.file(eve + ".vcf")) << "unknown is not the same as gone";
  bob.content.isUnreachable = false;
  bob.book->tell();
  EXPECT_TRUE(untilMembers(bob, {"Eve New", "Max Old"}));
  world.loop.advance(60);
  EXPECT_EQ(ann.members(), (std::vector<std::string>{"Eve New", "Max Old"}));
}

TEST_F(KDAddressPoolTest, deletesNothingForAnotherBookOrAGroupThatIsGone) {
  ann.add("Lee", "Young");
  pair({"Lee Young"});
  const auto allComeBack = [&] {
    EXPECT_TRUE(untilMembers(bob, {"Lee Young"}));
    world.loop.advance(60);
    EXPECT_EQ(ann.members(), std::vector<std::string>{"Lee Young"});
  };
  bob.host.stop();
  bob.content.groups.clear();
  bob.host.restart();
  allComeBack();
  bob.host.stop();
  bob.content = AddressBookContent("other");
  bob.content.groups["Friends"];
  bob.host.restart();
  allComeBack();
  bob.content = AddressBookContent("third");  // while all is running
  bob.book->tell();
  allComeBack();
}

TEST_F(KDAddressPoolTest, waitsBeforeItDeletesMostOfAGroup) {
  std::vector<std::string> names;
  for (char letter = 'a'; letter < 'm'; ++letter) {
    ann.add(std::string(1, letter), "Young");
    names.push_back(std::string(1, letter) + " Young");
  }
  pair(names);
  const auto everybody = ann.content.groups["Friends"];
  ann.content.groups.erase("Friends");
  ann.book->tell();
  world.loop.advance(300);
  EXPECT_TRUE(ann.host.platform.log.contains("12 of 12 contacts have left the group at once."));
  for (const std::string& id : everybody) {  // one by one, which leaves few at some time
    ann.content.groups["Friends"].insert(id);
    ann.book->tell({id});
    world.loop.advance(10);
  }
  world.loop.advance(600);
  EXPECT_EQ(bob.members().size(), 12U);
  ann.content.groups.erase("Friends");
  ann.book->tell();
  world.loop.advance(500);
  EXPECT_EQ(bob.members().size(), 12U);
  EXPECT_TRUE(untilMembers(bob, {}));
}

TEST_F(KDAddressPoolTest, readsInCardsThatNoSyncHasBrought) {
  ann.add("Lee", "Young");
  pair({"Lee Young"});
  world.loop.advance(60);
  bob.host.platform.files.write(
      bob.folder() + "/eve.vcf",
      MemoryAddressBook::card(bob.content, MemoryAddressBook::person("Eve", "New")));
  bob.host.pool(Pool).noteFullSyncNeeded();
  EXPECT_TRUE(untilMembers(bob, {"Eve New", "Lee Young"}));
}

TEST_F(KDAddressPoolTest, putsBackCardsThatVanishFromTheFolder) {
  const std::string lee = ann.add("Lee", "Young");
  const std::string max = ann.add("Max", "Old");
  pair({"Lee Young", "Max Old"});
  bob.set(bob.idOf("Lee Young"), ABProperty::Note, "only for bob");
  ann.host.platform.files.remove(ann.folder() + "/" + lee + ".vcf");
  ann.host.platform.files.remove(ann.folder() + "/" + max + ".vcf");
  bob.set(bob.idOf("Max Old"), ABProperty::Organization, "Acme");  // a sync, which looks
  ASSERT_TRUE(untilMembers(ann, {"Lee Young", "Max Old (Acme)"}));
  ASSERT_TRUE(until([&] { return ann.file(lee + ".vcf") && ann.file(max + ".vcf"); }));
  world.loop.advance(120);
  EXPECT_EQ(bob.members(), ann.members());
  EXPECT_TRUE(bob.content.people.at(bob.idOf("Lee Young")).value(ABProperty::Note));
  EXPECT_TRUE(ann.host.pool(Pool).snapshot()->missing->empty());
}

TEST_F(KDAddressPoolTest, readsInNobodyWhoseCardCouldNotBeDeleted) {
  const std::string lee = ann.add("Lee", "Young");
  ann.add("Max", "Old");
  pair({"Lee Young", "Max Old"});
  ann.host.platform.files.faults.failAlways("trash");
  ann.removeFromGroup(lee);
  world.loop.advance(30);
  EXPECT_TRUE(ann.file(lee + ".vcf"));
  ann.book->tell();
  world.loop.advance(30);
  EXPECT_EQ(ann.members(), std::vector<std::string>{"Max Old"});
  ann.host.platform.files.faults.clear();
  ann.book->tell();
  EXPECT_TRUE(untilMembers(bob, {"Max Old"}));
}

TEST_F(KDAddressPoolTest, readsInAgainWhatTheBookLostBeforeItWasWritten) {
  bob.content.isSlow = true;
  ann.add("Lee", "Young");
  pair({"Lee Young"});
  world.loop.advance(60);
  bob.host.stop();
  bob.content.people.clear();
  bob.content.groups["Friends"].clear();
  bob.content.isSlow = false;
  bob.host.restart();
  EXPECT_TRUE(untilMembers(bob, {"Lee Young"}));
  world.loop.advance(60);
  EXPECT_EQ(ann.members().size(), 1U);
  bob.removeFromGroup(bob.idOf("Lee Young"));
  EXPECT_TRUE(untilMembers(ann, {})) << "once written, gone is gone";
}

TEST_F(KDAddressPoolTest, comesBackWithoutConflicts) {
  ann.add("Lee", "Young");
  pair({"Lee Young"});
  EXPECT_EQ(bob.host.outcome([&](auto done) { bob.host.operations->remove(Pool, done); }), "");
  EXPECT_EQ(bob.members().size(), 1U) << "the contacts stay";
  ann.set(ann.idOf("Lee Young"), ABProperty::Organization, "Acme");
  world.loop.advance(60);
  subscribe();
  EXPECT_TRUE(untilMembers(bob, {"Lee Young (Acme)"}));
  world.loop.advance(60);
  EXPECT_TRUE(bob.host.pool(Pool).snapshot()->conflicts->empty());
  EXPECT_EQ(bob.content.people.size(), 1U);
}

TEST_F(KDAddressPoolTest, keepsAChangeThatADeletionMeets) {
  const std::string lee = ann.add("Lee", "Young");
  pair({"Lee Young"});
  world.network.setUp("beta", false);
  bob.set(bob.idOf("Lee Young"), ABProperty::Organization, "Acme");
  world.loop.advance(30);
  ann.removeFromGroup(lee);
  world.loop.advance(300);
  world.network.setUp("beta", true);
  EXPECT_TRUE(untilMembers(ann, {"Lee Young (Acme)"}));
  EXPECT_EQ(bob.members().size(), 1U);
}

TEST_F(KDAddressPoolTest, showsPeopleInsteadOfFiles) {
  const std::string lee = ann.add("Lee", "Young");
  EXPECT_THAT(
      ann.host.outcome([&](auto done) { ann.host.operations->shareAddresses("Fiends", {}, done); }),
      HasSubstr("There are: Friends."));
  ASSERT_EQ(share(ann), "");
  const PoolInfo info = ann.host.operations->list().at(0);
  EXPECT_EQ(info.displayName, "Friends");
  EXPECT_TRUE(info.isAddressFolder);
  EXPECT_EQ(ann.host.operations->describe(Pool, lee + ".vcf"), "Lee Young");
  EXPECT_EQ(ann.host.operations->describe(Pool, "x.vcf"), "New Person");
  EXPECT_EQ(ann.pool().url(), "addressbook://group Friends");
}

TEST_F(KDAddressPoolTest, carriesTheOwnCardsPictureElseTheAccounts) {
  const std::string me = ann.add("Ann", "Self");
  ann.content.me = me;
  ann.set(me, ABProperty::Image, "own picture");
  bob.host.platform.files.write("/home/user/.face", "account picture");
  pair({"Ann Self"});
  const std::string logs = ann.folder() + "/.Zolvar/";
  EXPECT_EQ(ann.host.platform.files.readAll(logs + "ann@alpha.local.tiff"), "own picture");
  EXPECT_EQ(bob.host.platform.files.readAll(logs + "bob@beta.local.tiff"), "account picture");
  EXPECT_EQ(bob.host.platform.files.readAll(logs + "ann@alpha.local.tiff"), "own picture");
}

}  // namespace
}  // namespace zolvar
