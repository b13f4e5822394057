#include <QListView>

#include "app/EnvironmentChecks.h"
#include "ui/sheets/DeletionSheet.h"
#include "ui/sheets/PasswordFailureSheet.h"
#include "ui/sheets/SettingsSheet.h"
#include "ui/sheets/SheetStage.h"

namespace zolvar {
namespace {

using testing::HasSubstr;

class QuestionSheetTest : public SheetStage {
 protected:
  bool isAt(AppHost& host, const std::string& path) {
    return host.platform.files.exists("/home/user/Recipes/" + path);
  }
  bool lose(const std::vector<std::string>& paths) {
    for (const auto& path : paths) ann.platform.files.remove("/home/user/Recipes/" + path);
    const bool isAsked = until([&] { return sheet<DeletionSheet>() != nullptr; }, 600);
    QApplication::processEvents();
    return isAsked;
  }
};

TEST_F(QuestionSheetTest, asksAboutVanishedFiles) {
  const std::vector<std::string> many = {"apple.txt", "bread.txt", "cake.txt", "leek.txt"};
  shareAmongAll("Recipes", many);
  openSheets();
  ASSERT_TRUE(lose(many));
  EXPECT_THAT(text<DeletionSheet>(),
              HasSubstr("4 files have been (re-)moved from Synced Folder 'Recipes' (apple.txt, "
                        "bread.txt, cake.txt, leek.txt).\nDo you want Zolvar to delete them on the "
                        "network or try to re-get it?"));
  settle(5);
  EXPECT_EQ(sheet<DeletionSheet>()->findChild<QListView*>()->model()->rowCount(), 4);
  press<DeletionSheet>("Later");
  EXPECT_EQ(ann.operations->questions().size(), 1U) << "it stays open";
  EXPECT_EQ(sheet<DeletionSheet>(), nullptr);

  const auto question = *ann.app->outcomes().openQuestion(ann.pool("Recipes"));
  real->askAboutDeletion("Recipes", deletionAlert("Recipes", question.paths), [&](int code) {
    ann.operations->answer("Recipes", code == SecondButton, [](const Result<>&) {});
  });
  press<DeletionSheet>("Re-Get");
  ASSERT_TRUE(until([&] { return isAt(ann, "leek.txt") && isAt(ann, "apple.txt"); }, 600));
  settle(60);

  ASSERT_TRUE(lose({"bread.txt"}));
  press<DeletionSheet>("Delete Everywhere");
  ASSERT_TRUE(until([&] { return !isAt(bob, "bread.txt") && !isAt(carol, "bread.txt"); }, 600));
  EXPECT_TRUE(ann.operations->questions().empty());

  ASSERT_TRUE(lose({"cake.txt"}));
  ASSERT_EQ(ann.outcome([&](auto done) { ann.operations->answer("Recipes", false, done); }), "");
  ASSERT_TRUE(until([&] { return sheet<DeletionSheet>() == nullptr; })) << "answered elsewhere";
}

TEST_F(QuestionSheetTest, answersAPasswordFailure) {
  openSheets();
  const PasswordFailureText words = passwordFailureText("Recipes", "bob@beta.local");
  const struct {
    const char* choice;
    const char* button;
    PasswordAnswer answer;
  } rows[] = {{"Change My Password", "OK", PasswordAnswer::ChangePassword},
              {"Deactivate the Folder", "OK", PasswordAnswer::DeactivateFolder},
              {"Ignoring Subscriber 'bob@beta.local'", "OK", PasswordAnswer::IgnoreSubscriber},
              {"Deactivate the Folder", "Cancel", PasswordAnswer::Cancelled}};
  for (const auto& row : rows) {
    std::vector<PasswordAnswer> answers;
    real->askAboutPassword("Recipes", words, [&](PasswordAnswer one) { answers.push_back(one); });
    EXPECT_TRUE(button<PasswordFailureSheet>("Change My Password")->isChecked());
    button<PasswordFailureSheet>(row.choice)->click();
    press<PasswordFailureSheet>(row.button);
    EXPECT_THAT(answers, testing::ElementsAre(row.answer)) << row.choice << row.button;
  }

  // The engine's own question leads to the settings.
  shareAmongAll("Recipes", {"bread.txt"});
  real->settings("Recipes");
  press<SettingsSheet>("Cancel");
  const auto set = [&](AppHost& host, const std::string& password) {
    return host.outcome(
        [&](auto done) { host.operations->setPassword("Recipes", password, done); });
  };
  ASSERT_EQ(set(bob, "one"), "");
  ASSERT_EQ(set(ann, "two"), "");
  bob.platform.files.write("/home/user/Recipes/new.txt", "new");
  ASSERT_TRUE(until([&] { return sheet<PasswordFailureSheet>() != nullptr; }, 600));
  press<PasswordFailureSheet>("OK");
  EXPECT_NE(sheet<SettingsSheet>(), nullptr);
}

TEST_F(QuestionSheetTest, warnsBeforeAVersionIsSwitchedUntilSilenced) {
  openSheets();
  int switched = 0;
  const auto ask = [&] {
    real->confirmSwitch("bread.txt", "bob@beta.local", "1/2/26 10:00", [&] { ++switched; });
  };
  ask();
  EXPECT_THAT(text<QuestionSheet>(),
              HasSubstr("The file 'bread.txt' is about to be switched to the version from "
                        "'bob@beta.local' with date '1/2/26 10:00'."));
  press<QuestionSheet>("Cancel");
  EXPECT_EQ(switched, 0);
  ask();
  button<QuestionSheet>("Do not ask again")->click();
  QTest::keyClick(sheet<QuestionSheet>(), Qt::Key_Return);
  EXPECT_EQ(switched, 1);
  ask();
  EXPECT_EQ(switched, 2);
}

TEST_F(QuestionSheetTest, showsAlertsOnceEach) {
  openSheets();
  std::vector<int> codes;
  const auto answered = [&](int code) { codes.push_back(code); };
  real->showAlert(clockAlert(12), answered);
  real->showAlert(clockAlert(-33.25), answered);
  real->showAlert(firewallAlert(49999), answered);
  int shown = 0;
  for (const auto* one : window->findChildren<QuestionSheet*>()) shown += one->isVisible() ? 1 : 0;
  EXPECT_EQ(shown, 2) << "the newer takes the older one's place";
  EXPECT_THAT(text<QuestionSheet>(), HasSubstr("The clock is currently off by 33.2 seconds."));
  press<QuestionSheet>("Open Date and Time Preference Pane...");
  press<QuestionSheet>("Continue");
  EXPECT_THAT(codes, testing::ElementsAre(FirstButton, SecondButton));
  real->showAlert(firewallAlert(49999), answered);
  QTest::keyClick(sheet<QuestionSheet>(), Qt::Key_Escape);
  EXPECT_EQ(codes.size(), 2U) << "closing answers nothing";
}

}  // namespace
}  // namespace zolvar
