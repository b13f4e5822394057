#include <QCheckBox>
#include <QComboBox>
#include <QListWidget>
#include <QSpinBox>

#include "ui/sheets/AboutPanel.h"
#include "ui/sheets/AmountEdit.h"
#include "ui/sheets/PreferencesPanel.h"
#include "ui/sheets/QuickStartPanel.h"
#include "ui/sheets/ReleaseNotesPanel.h"
#include "ui/sheets/ShareSheet.h"
#include "ui/sheets/SheetStage.h"

namespace zolvar {
namespace {

using testing::HasSubstr;

class PanelTest : public SheetStage {
 protected:
  QSpinBox& number(const QString& name) {
    for (auto* box : sheet<PreferencesPanel>()->findChildren<QSpinBox*>()) {
      if (box->accessibleName() == name) return *box;
    }
    throw std::runtime_error("no number " + name.toStdString());
  }
  /// Closes the window and opens it as a program of another version would.
  void openAsUpdated() {
    ann.app->outcomes().setFrontEnd(nullptr);
    real.reset();
    closeWindow();
    ann.platform.defaults.setString("KnownVersion", "1.1");
    openSheets();
    ann.platform.defaults.setString("KnownVersion", ann.app->settings().version);
    window->hide();
    window->show();
    settle(1);
  }
};

TEST_F(PanelTest, savesWhatWasChanged) {
  shareAmongAll("Recipes", {"bread.txt"});
  ann.platform.defaults.setString("SuppressSwitchBranchWarning", "1");
  ann.platform.defaults.setString("BWLimitIn", "2048");
  openSheets();
  real->preferences();
  for (int page = 0; page < 3; ++page) sheet<PreferencesPanel>()->showPage(page);
  EXPECT_EQ(number("Most that is fetched").value(), 2) << "in MB/s";
  EXPECT_EQ(number("Most that is kept").value(), 1) << "GB unless set";
  press<PreferencesPanel>("Save");
  EXPECT_EQ(setting("VersionsDays"), "(unset)") << "what was not changed is not written";

  real->preferences();
  for (auto* choice : sheet<PreferencesPanel>()->findChildren<QComboBox*>()) {
    if (choice->findData("en") >= 0) choice->setCurrentIndex(choice->findData("en"));
  }
  button<PreferencesPanel>("Start Zolvar at login")->click();
  button<PreferencesPanel>("Keep folders in step by themselves")->click();
  button<PreferencesPanel>("Quick pace")->click();
  button<PreferencesPanel>("Show all warnings again")->click();
  number("Most that is sent").setValue(3);
  number("Most that is kept").setValue(0);
  sheet<PreferencesPanel>()->findChild<QListWidget*>()->item(0)->setCheckState(Qt::Unchecked);
  press<PreferencesPanel>("Save");
  EXPECT_EQ(sheet<PreferencesPanel>(), nullptr);
  const std::map<std::string, std::string> expected = {{"Language", "en"},
                                                       {"StartAtLogin", "no"},
                                                       {"Pace", "quick"},
                                                       {"AutosyncingEnabled", "0"},
                                                       {"BWLimitOut", "10"},
                                                       {"BWLimitIn", "2048"},
                                                       {"VersionsDays", "(unset)"},
                                                       {"VersionsMegabytes", "0"},
                                                       {"SuppressSwitchBranchWarning", "(unset)"}};
  for (const auto& [key, value] : expected) EXPECT_EQ(setting(key), value) << key;
  EXPECT_EQ(ann.operations->info(*ann.app->peer().presence("Recipes")).state.kind,
            FolderStateKind::Paused);
  EXPECT_FALSE(ann.app->outcomes().usesNotices("Recipes"));

  real->preferences();
  button<PreferencesPanel>("Start Zolvar at login")->click();
  button<PreferencesPanel>("Keep folders in step by themselves")->click();
  ann.platform.workspace.faults.failAt(1, "setAutostart", FailureKind::Refused);
  press<PreferencesPanel>("Save");
  ASSERT_NE(sheet<PreferencesPanel>(), nullptr) << "what failed is told here";
  EXPECT_EQ(setting("AutosyncingEnabled"), "1") << "and the rest is done";
  press<PreferencesPanel>("Cancel");
}

TEST_F(PanelTest, convertsAmounts) {
  AmountEdit edit({"Limit", "KB/s", "MB/s", "No limit", 10, 1000000}, nullptr);
  const struct {
    unsigned long given;
    unsigned long value;
    const char* unit;
  } rows[] = {{0, 0, "KB/s"},       {3, 10, "KB/s"},      {100, 100, "KB/s"},
              {1024, 1024, "MB/s"}, {1025, 1025, "KB/s"}, {9999999, 1000000, "KB/s"}};
  for (const auto& row : rows) {
    edit.setValue(row.given);
    EXPECT_EQ(edit.value(), row.value) << row.given;
    EXPECT_EQ(edit.findChild<QComboBox*>()->currentText(), row.unit) << row.given;
  }
}

TEST_F(PanelTest, beginsWithTheFirstSteps) {
  openSheets();
  window->hide();
  window->show();
  settle(1);
  ASSERT_NE(sheet<QuickStartPanel>(), nullptr);
  press<QuickStartPanel>("Share a Folder…");
  EXPECT_NE(sheet<ShareSheet>(), nullptr);
  press<ShareSheet>("Cancel");
  window->hide();
  window->show();
  settle(1);
  EXPECT_EQ(sheet<QuickStartPanel>(), nullptr) << "once is enough";
  real->about();
  EXPECT_THAT(text<AboutPanel>(), HasSubstr("ann@alpha"));
}

TEST_F(PanelTest, tellsOnceWhatIsNew) {
  shareAmongAll("Recipes", {"bread.txt"});
  openAsUpdated();
  ASSERT_NE(sheet<ReleaseNotesPanel>(), nullptr);
  EXPECT_EQ(sheet<QuickStartPanel>(), nullptr);
  press<ReleaseNotesPanel>("Close");
  real.reset();
  ann.app->outcomes().setFrontEnd(nullptr);
  closeWindow();
  openSheets();
  window->hide();
  window->show();
  settle(1);
  EXPECT_EQ(sheet<ReleaseNotesPanel>(), nullptr);
}

}  // namespace
}  // namespace zolvar
