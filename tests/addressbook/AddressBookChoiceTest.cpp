#include <gtest/gtest.h>

#include "addressbook/AddressBookChoice.h"
#include "addressbook/BookUnderTest.h"
#include "platform/UserDefaults.h"
#include "support/SimulatedPlatform.h"

namespace zolvar {
namespace {

TEST(AddressBookChoice, isTheFolderWithoutTheModuleUnlessTheServerIsWanted) {
  const struct {
    const char* choice;
    const char* inUse;
    const char* identity;  ///< empty: it stays unknown what is in the book
    const char* inUseThen;
  } cases[] = {
      {"", "", "folder /home/user/.local/share/contacts", "folder"},
      {"auto", "folder", "folder /home/user/.local/share/contacts", "folder"},
      {"folder", "eds", "folder /home/user/.local/share/contacts", "folder"},
      {"auto", "eds", "", "eds"},  // where it was once, everybody would look deleted elsewhere
      {"eds", "", "", ""},
  };
  for (const auto& one : cases) {
    SimulatedPlatform platform;
    platform.defaults.setString("AddressBook", one.choice);
    platform.defaults.setString("AddressBookInUse", one.inUse);
    NotificationCenter center;
    const auto book = makeAddressBook(platform, center, "/nowhere");
    EXPECT_FALSE(book->groups());
    platform.loop.advance(5);
    const auto groups = book->groups();
    EXPECT_EQ(groups.has_value(), *one.identity != '\0');
    EXPECT_TRUE(groups ? book->identity() == one.identity
                       : groups.error().kind == FailureKind::Transient);
    EXPECT_EQ(platform.defaults.string("AddressBookInUse").value_or(""), one.inUseThen);
  }
}

// Runs under with-eds.sh.
TEST(ServerChoice, isTheServerWhereItAnswers) {
  for (const auto& kind : bookKinds()) {
    if (kind.name != "Server") continue;
    std::string whyNot;
    const auto under = kind.make(whyNot);
    if (!under) GTEST_SKIP() << whyNot;
    NotificationCenter center;
    const auto book = makeAddressBook(under->platform(), center, serverModuleFolder());
    (void)book->groups();
    EXPECT_TRUE(under->runUntil([&] { return book->groups().has_value(); }));
    EXPECT_TRUE(book->identity().starts_with("eds ")) << book->identity();
    EXPECT_EQ(under->platform().defaults.string("AddressBookInUse"), "eds");
  }
}

}  // namespace
}  // namespace zolvar
