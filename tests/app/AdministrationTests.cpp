#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

#include "app/KDFilePoolNameFormatter.h"
#include "app/Outcomes.h"
#include "app/PoolListOrder.h"
#include "app/SheetsController.h"
#include "app/TwoHosts.h"
#include "util/InconsistencyError.h"
#include "util/PropertyList.h"

namespace zolvar {
namespace {

using testing::HasSubstr;

FolderBlacklist shippedBlacklist() {
  std::ifstream file(RESOURCES "/FolderBlacklist.plist");
  const std::string bytes(std::istreambuf_iterator<char>(file), {});
  return FolderBlacklist(stringsFromPropertyList(bytes).value());
}

TEST(FolderBlacklist, keepsApplicationsDatabasesApart) {
  const FolderBlacklist blacklist = shippedBlacklist();
  const auto found = [&](const std::string& path) {
    return blacklist.blacklistedComponentOfPath(path, "/home/ann").value_or("");
  };
  for (const char* path :
       {"/home/ann", "/home/ann/.config", "/home/ann/.config/x", "/home/ann/.local",
        "/home/ann/.local/share/keyrings", "/home/ann/.mozilla/firefox", "/home/ann/.thunderbird",
        "/home/ann/.ssh", "/home/ann/.gnupg/private-keys-v1.d", "/home/ann/.var/app/x",
        "/home/ann/snap", "/home/ann/VirtualBox VMs/win", "/home/ann/.cache", "/"}) {
    EXPECT_NE(found(path), "") << path;
  }
  for (const char* path : {"/home/ann/Docs", "/home/ann/Public/Zolvar/Docs", "/home/ann/snapshots",
                           "/home/ann/.configs", "/data/Music", "/home/bob/.config/x"}) {
    EXPECT_EQ(found(path), "") << path;
  }
  EXPECT_EQ(FolderBlacklist({"~/Mail"}).blacklistedComponentOfPath("/h/M", "/h"), "~/Mail")
      << "a part of an entry counts";
}

TEST(Formatters, cleanWhatIsTypedAndKeepTheCursor) {
  const QMCharFilterFormatter lines;
  const KDFilePoolNameFormatter names;
  struct Row {
    const char* description;
    const QMCharFilterFormatter& formatter;
    TypedText proposed;
    std::optional<TypedText> corrected;
  };
  const Row rows[] = {
      {"nothing to do", names, {"Docs 2~", 3, 1}, {}},
      {"a tab before the cursor", names, {"Do\tcs", 3, 0}, {{"Docs", 2, 0}}},
      {"a letter of two bytes",
       names,
       {"D\xc3\xb6"
        "cs",
        3, 0},
       {{"Dcs", 1, 0}}},
      {"behind the cursor", names, {"Docs\n", 4, 0}, {{"Docs", 4, 0}}},
      {"inside the selection", names, {"a\tb\tc", 2, 2}, {{"abc", 1, 1}}},
      {"broken bytes", names, {"a\xff\xc3", 3, 0}, {{"a", 1, 0}}},
      {"letters stay, lines go", lines, {"ö\r\nx", 4, 0}, {{"öx", 2, 0}}},
  };
  for (const auto& row : rows) {
    const auto verdict = row.formatter.check(row.proposed);
    EXPECT_EQ(verdict.isValid, !row.corrected) << row.description;
    EXPECT_EQ(verdict.corrected, row.corrected) << row.description;
  }
  EXPECT_TRUE(names.check({std::string(120, 'x'), 0, 0}).isValid);
  const auto tooLong = names.check({std::string(121, 'x'), 0, 0});
  EXPECT_FALSE(tooLong.isValid || tooLong.corrected);
}

TEST(PoolListOrder, putsActiveFoldersFirst) {
  std::vector<PoolInfo> pools(3);
  pools[0].name = "B";
  pools[1].name = "C";
  pools[1].phase = PoolPhase::Active;
  pools[2].name = "A";
  sortPools(pools);
  EXPECT_EQ(pools[0].name + pools[1].name + pools[2].name, "CAB");
  EXPECT_TRUE(isShown(pools[0], true) && !isShown(pools[1], true) && isShown(pools[1], false));
}

class AdministrationTest : public TwoHosts {
 protected:
  AdministrationTest() {
    for (const char* folder : {"Docs", "Workshop", "Shared", "Shared/Photos", "Repo/.git"}) {
      EXPECT_TRUE(ann.platform.files.makeFolder("/home/user/" + std::string(folder)));
    }
    ann.platform.files.write("/home/user/Photos/picture", "sea");
    ann.platform.files.makeLink("/home/user/Link", "/home/user/.config");
    EXPECT_TRUE(ann.platform.files.makeFolder("/home/user/.config/Photos"));
    ann.platform.files.write("/res/FolderBlacklist.plist",
                             propertyListFromStrings({"~/.config/", "~/.local/share/", "*/.git"}));
    ann.resourceFolder = "/res";
    start();
  }
};

TEST_F(AdministrationTest, judgesAChosenPathWhileItIsChosen) {
  bob.platform.files.write("/home/user/Photos/picture", "sea");
  ASSERT_EQ(bob.share("/home/user/Photos"), "");
  ASSERT_TRUE(until([&] { return ann.app->peer().presence("Photos") != nullptr; }));
  ASSERT_EQ(ann.share("/home/user/Workshop"), "");
  int changes = 0;
  SheetsController sheets(*ann.app, *ann.operations, [&] { ++changes; });
  sheets.addPool();
  EXPECT_EQ(sheets.errorText(), "");
  EXPECT_FALSE(sheets.isAcceptable()) << "nothing is chosen";
  EXPECT_EQ(sheets.startOfChoosing(), "/home/user/Public/Zolvar");
  struct Row {
    const char* path;
    const char* text;  // "" for none
    bool isAcceptable;
  };
  const Row shared[] = {
      {"/home/user/Docs", "", true},
      {"/home/user/.config/x", "database files (in '~/.config/')", false},
      {"/home/user/Work", "overlaps with the existing shared folder '~/Workshop'", false},
      {"/home/user/Workshop/inner", "overlaps with", false},
      {"/home/user/Link", "in '~/.config/'", false},
  };
  for (const auto& row : shared) {
    sheets.chooseAddPath(row.path);
    EXPECT_EQ(sheets.isAcceptable(), row.isAcceptable) << row.path;
    EXPECT_THAT(sheets.errorText(), HasSubstr(row.text));
  }
  EXPECT_EQ(changes, 6);
  sheets.chooseAddPath("/home/user/Repo");
  EXPECT_TRUE(sheets.isAcceptable());
  EXPECT_THAT(sheets.warningText(), HasSubstr("'/home/user/Repo/.git'"));
  EXPECT_EQ(sheets.poolPathForDisplay(), "home ▸ user ▸ Repo");
  EXPECT_TRUE(sheets.isValidNewFilePoolName());
  sheets.setPoolPath("/home/user/none");
  EXPECT_FALSE(sheets.isValidNewFilePoolName());

  sheets.subscribeToPool("Photos");
  EXPECT_EQ(sheets.completedPoolPath(), "/home/user/Public/Zolvar/Photos");
  EXPECT_EQ(sheets.errorText(),
            "Zolvar will try to create a folder named 'Photos' in the folder above.");
  EXPECT_TRUE(sheets.isAcceptable());
  sheets.chooseAddPath("/home/user/Shared");
  EXPECT_EQ(sheets.poolPath(), "/home/user/Shared/Photos") << "it is there already";
  EXPECT_EQ(sheets.errorText(), "");
  sheets.chooseAddPath("/home/user/Link");
  EXPECT_FALSE(sheets.isAcceptable());
  sheets.chooseAddPath("/home/user/Shared/Photos");
  std::string outcome = "(no answer)";
  sheets.doSubscribe({}, [&](const Result<>& done) { outcome = done ? "" : "refused"; });
  ASSERT_TRUE(until([&] { return ann.isActive("Photos"); }));
  EXPECT_TRUE(until(
      [&] { return ann.platform.files.readAll("/home/user/Shared/Photos/picture") == "sea"; }));
  // The same rules guard every other way in.
  EXPECT_THAT(ann.share("/home/user/Work"), HasSubstr("overlaps"));
  EXPECT_THAT(ann.share("/home/user/.config/Photos"), HasSubstr("touble. Please select"));
  EXPECT_FALSE(ann.operations->set("QMPool-Photos", "/home/user/Docs/Photos")) << "in use";
}

TEST_F(AdministrationTest, warnsOpensAndSavesAsTheSettingsSay) {
  ASSERT_EQ(ann.share("/home/user/Docs"), "");
  SheetsController sheets(*ann.app, *ann.operations);
  EXPECT_EQ(sheets.removePool("Docs"),
            "The Synced Folder 'Docs' and all contained data will be put in the trash.");
  EXPECT_TRUE(sheets.warningBeforeSwitching("a", "bob@b", "now") &&
              sheets.warnsBeforeDeactivating());
  for (const char* key : {"SuppressPoolDeletionWarning", "SuppressSwitchBranchWarning",
                          "SuppressPoolDeactivationWarning"}) {
    ASSERT_TRUE(ann.operations->set(key, "yes"));
  }
  EXPECT_FALSE(sheets.removePool("Docs") || sheets.warningBeforeSwitching("a", "bob@b", "now") ||
               sheets.warnsBeforeDeactivating());
  EXPECT_FALSE(sheets.openPoolInFinder("Docs"));
  EXPECT_EQ(ann.platform.workspace.opened, std::vector<std::string>{"/home/user/Docs"});
  EXPECT_EQ(ann.operations->setting("activePools"), "[\"Docs\"]");
  ASSERT_TRUE(ann.operations->set("activePools", ""));
  EXPECT_FALSE(ann.isActive("Docs"));
  const auto alert = sheets.openPoolInFinder("Docs");
  ASSERT_TRUE(alert && alert->buttons.size() == 3U);
  EXPECT_FALSE(sheets.answerOpening("Docs", *alert, FirstButton));
  EXPECT_EQ(ann.platform.workspace.opened.size(), 2U);
  EXPECT_TRUE(sheets.answerOpening("Docs", *alert, SecondButton));
  const Alert shifted{"", "", {"Subscribe", "Cancel"}};
  EXPECT_TRUE(sheets.answerOpening("Docs", shifted, FirstButton));
  EXPECT_FALSE(sheets.answerOpening("Docs", shifted, SecondButton));

  sheets.showPoolSettingsAndActivate("Docs", true);
  sheets.savePoolSettingsSheet({"secret", false}, [](const Result<>&) {});
  ASSERT_TRUE(until([&] { return ann.isActive("Docs"); }));
  EXPECT_EQ(ann.pool("Docs").password(), "secret");
  EXPECT_FALSE(ann.app->outcomes().usesNotices("Docs"));
  EXPECT_THROW(sheets.showPoolSettings("Nope"), InconsistencyError);
  sheets.toggleHideUnsubscribed();
  EXPECT_EQ(ann.operations->setting("ShowOnlyActivePools"), "1");
  sheets.toggleHideUnsubscribed();
  EXPECT_FALSE(sheets.showsOnlyActivePools());
}

}  // namespace
}  // namespace zolvar
