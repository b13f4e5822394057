#include <QFileDialog>

#include "ui/sheets/FolderPlaceEdit.h"
#include "ui/sheets/SettingsSheet.h"
#include "ui/sheets/ShareSheet.h"
#include "ui/sheets/SheetStage.h"
#include "ui/sheets/SubscribeSheet.h"

namespace zolvar {
namespace {

using testing::HasSubstr;

class FolderSheetTest : public SheetStage {
 protected:
  PasswordState passwordOf(const std::string& name) { return ann.pool(name).passwordState(); }
  std::string secretOf(const std::string& name) {
    for (const auto& [key, password] : ann.platform.secrets.items) {
      if ((key.first + key.second).find(name) != std::string::npos) return password;
    }
    return "(none)";
  }
};

TEST_F(FolderSheetTest, sharesAFolderAndSaysLiveWhatIsWrong) {
  shareAmongAll("Recipes", {"bread.txt"});
  openSheets();
  real->shareFolder("");
  ASSERT_NE(sheet<ShareSheet>(), nullptr);
  const auto typePath = [&](const char* path) { type<ShareSheet>("Folder", path); };
  EXPECT_FALSE(button<ShareSheet>("Share")->isEnabled()) << "nothing is chosen";

  typePath("~/Recipes/Cakes");
  EXPECT_THAT(text<ShareSheet>(),
              HasSubstr("The folder you selected is not suitable for sharing. It overlaps with the "
                        "existing shared folder '~/Recipes'.\n\nPlease select or create another "
                        "folder to share."));
  EXPECT_FALSE(button<ShareSheet>("Share")->isEnabled());
  QTest::keyClick(sheet<ShareSheet>(), Qt::Key_Return);
  EXPECT_NE(sheet<ShareSheet>(), nullptr) << "the default button is off";

  typePath("~/Music");
  EXPECT_TRUE(button<ShareSheet>("Share")->isEnabled());
  press<ShareSheet>("Share");
  ASSERT_NE(sheet<ShareSheet>(), nullptr) << "a refusal is told where it arose";
  EXPECT_THAT(text<ShareSheet>(), HasSubstr("There is no folder at '/home/user/Music'."));

  ann.platform.files.write("/home/user/Music/song", "la");
  type<ShareSheet>("Password", "sesame");
  QTest::keyClick(sheet<ShareSheet>(), Qt::Key_Return);
  ASSERT_TRUE(until([&] { return ann.isActive("Music"); }));
  EXPECT_EQ(sheet<ShareSheet>(), nullptr);
  EXPECT_EQ(secretOf("Music"), "sesame");
  ASSERT_TRUE(until([&] { return window->selectedFolder() == "Music"; }));
}

TEST_F(FolderSheetTest, subscribesWithThePassword) {
  bob.platform.files.write("/home/user/Photos/sea.jpg", "sea");
  ASSERT_EQ(bob.share("/home/user/Photos", "sesame"), "");
  openSheets();
  ASSERT_TRUE(until([&] { return ann.app->peer().poolNamed("Photos") != nullptr; }));
  settle(60);
  real->openFolder("Photos");
  ASSERT_NE(sheet<SubscribeSheet>(), nullptr) << "without a folder here that is what opening does";
  real->subscribe("Photos");
  EXPECT_EQ(window->findChildren<SubscribeSheet*>().size(), 1) << "one of a kind";
  EXPECT_THAT(text<SubscribeSheet>(), HasSubstr("Shared by \u2068bob@beta\u2069."));
  EXPECT_THAT(text<SubscribeSheet>(), HasSubstr("Zolvar will try to create a folder named 'Photos' "
                                                "in the folder above."));
  type<SubscribeSheet>("Folder", "/home/user/Pictures\n");
  type<SubscribeSheet>("Password", "sesame");
  press<SubscribeSheet>("Subscribe");
  ASSERT_TRUE(
      until([&] { return ann.platform.files.exists("/home/user/Pictures/Photos/sea.jpg"); }, 300));
  EXPECT_EQ(sheet<SubscribeSheet>(), nullptr);

  real->subscribe("Photos");
  press<SubscribeSheet>("Subscribe");
  EXPECT_THAT(text<SubscribeSheet>(), HasSubstr("You are subscribed to 'Photos' already."));
  real->subscribe("Nowhere");
  EXPECT_THAT(text<QuestionSheet>(), HasSubstr("There is no folder named 'Nowhere'."));
}

TEST_F(FolderSheetTest, takesTheFolderFromTheChooser) {
  bob.platform.files.write("/home/user/Photos/sea.jpg", "sea");
  ASSERT_EQ(bob.share("/home/user/Photos"), "");
  ann.platform.files.write("/home/user/Music/song", "la");
  ann.platform.files.write("/home/user/Pictures/Photos/old.jpg", "old");
  openSheets();
  ASSERT_TRUE(until([&] { return ann.app->peer().presence("Photos") != nullptr; }));
  // The chooser shows the machine's own folders; what it returns is what counts here.
  const auto choose = [&](Sheet& on, const QString& folder) {
    for (auto* button : on.findChildren<QAbstractButton*>()) {
      if (button->accessibleName() == "Choose the folder") button->click();
    }
    settle(0.5);
    auto* chooser = on.findChild<QFileDialog*>();
    ASSERT_NE(chooser, nullptr);
    EXPECT_EQ(chooser->fileMode(), QFileDialog::Directory);
    EXPECT_EQ(chooser->labelText(QFileDialog::Accept), "Select Folder");
    if (!folder.isEmpty()) Q_EMIT chooser->fileSelected(folder);
    chooser->reject();
    settle(0.5);
    EXPECT_EQ(on.findChild<QFileDialog*>(), nullptr) << "it is gone";
  };
  real->shareFolder("");
  choose(*sheet<ShareSheet>(), "");
  EXPECT_FALSE(button<ShareSheet>("Share")->isEnabled()) << "nothing was chosen";
  choose(*sheet<ShareSheet>(), "/home/user/Music");
  EXPECT_EQ(sheet<ShareSheet>()->findChild<FolderPlaceEdit*>()->edit().text(), "~/Music");
  press<ShareSheet>("Share");
  ASSERT_TRUE(until([&] { return ann.isActive("Music"); }));

  real->subscribe("Photos");
  choose(*sheet<SubscribeSheet>(), "/home/user/Pictures");
  EXPECT_EQ(sheet<SubscribeSheet>()->findChild<FolderPlaceEdit*>()->edit().text(),
            "~/Pictures/Photos")
      << "a folder of its name lies there";
  press<SubscribeSheet>("Subscribe");
  ASSERT_TRUE(
      until([&] { return ann.platform.files.exists("/home/user/Pictures/Photos/sea.jpg"); }, 300));
}

TEST_F(FolderSheetTest, changesSettings) {
  shareAmongAll("Recipes", {"bread.txt"});
  openSheets();
  const struct {
    const char* description;
    bool hasPassword;
    const char* typed;
    PasswordState state;
    const char* secret;
  } rows[] = {{"nothing is wanted", false, "", PasswordState::None, "(none)"},
              {"a first one", true, "one", PasswordState::Set, "one"},
              {"left alone", true, "", PasswordState::Set, "one"},
              {"another one", true, "two", PasswordState::Set, "two"},
              {"removed", false, "", PasswordState::None, "(none)"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.description);
    real->settings("Recipes");
    if (button<SettingsSheet>("Password:")->isChecked() != row.hasPassword) {
      button<SettingsSheet>("Password:")->click();
    }
    if (*row.typed != 0) type<SettingsSheet>("Password", row.typed);
    press<SettingsSheet>("Save");
    ASSERT_TRUE(until([&] { return sheet<SettingsSheet>() == nullptr; }));
    EXPECT_EQ(passwordOf("Recipes"), row.state);
    EXPECT_EQ(secretOf("Recipes"), row.secret);
  }
  real->settings("Recipes");
  button<SettingsSheet>("Show notices about this folder")->click();
  press<SettingsSheet>("Cancel");
  EXPECT_TRUE(ann.app->outcomes().usesNotices("Recipes"));
  real->settings("Recipes");
  button<SettingsSheet>("Show notices about this folder")->click();
  press<SettingsSheet>("Save");
  EXPECT_FALSE(ann.app->outcomes().usesNotices("Recipes"));

  ann.platform.secrets.isLocked = true;
  real->settings("Recipes");
  button<SettingsSheet>("Password:")->click();
  type<SettingsSheet>("Password", "three");
  press<SettingsSheet>("Save");
  ASSERT_NE(sheet<SettingsSheet>(), nullptr);
  EXPECT_THAT(text<SettingsSheet>(), HasSubstr("locked"));
}

TEST_F(FolderSheetTest, warnsBeforeAFolderGoes) {
  shareAmongAll("Recipes", {"bread.txt"});
  openSheets();
  real->unsubscribe("Recipes");
  press<QuestionSheet>("Cancel");
  EXPECT_TRUE(ann.isActive("Recipes"));
  real->unsubscribe("Recipes");
  button<QuestionSheet>("Do not ask again")->click();
  press<QuestionSheet>("Unsubscribe");
  ASSERT_TRUE(until([&] { return !ann.isActive("Recipes"); }));
  EXPECT_FALSE(controller->warnsBeforeDeactivating());

  real->openFolder("Recipes");
  EXPECT_THAT(text<QuestionSheet>(), HasSubstr("The Finder will therefore not necessarily show the "
                                               "current state."));
  press<QuestionSheet>("Subscribe");
  press<SubscribeSheet>("Subscribe");
  ASSERT_TRUE(until([&] { return ann.isActive("Recipes"); }));
  settle(20);
  real->unsubscribe("Recipes");
  EXPECT_EQ(sheet<QuestionSheet>(), nullptr);
  ASSERT_TRUE(until([&] { return !ann.isActive("Recipes"); }));

  real->remove("Recipes");
  EXPECT_THAT(text<QuestionSheet>(), HasSubstr("The Synced Folder 'Recipes' and all contained data "
                                               "will be put in the trash."));
  QTest::keyClick(sheet<QuestionSheet>(), Qt::Key_Escape);
  settle(5);
  EXPECT_TRUE(ann.platform.files.exists("/home/user/Recipes/bread.txt"));
  real->remove("Recipes");
  press<QuestionSheet>("Move to Trash");
  ASSERT_TRUE(until([&] { return ann.platform.files.wasTrashed("from ann"); }));
  EXPECT_TRUE(bob.platform.files.exists("/home/user/Recipes/bread.txt"));
}

}  // namespace
}  // namespace zolvar
