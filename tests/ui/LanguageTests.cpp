#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QTemporaryDir>
#include <QTreeView>
#include <atomic>
#include <thread>

#include "app/EnvironmentChecks.h"
#include "app/OutcomeTexts.h"
#include "ui/ConflictsTab.h"
#include "ui/FolderList.h"
#include "ui/FolderView.h"
#include "ui/Languages.h"
#include "ui/SingleInstance.h"
#include "ui/SpokenWindow.h"
#include "ui/Texts.h"
#include "ui/WindowStage.h"
#include "ui/sheets/DeletionSheet.h"
#include "ui/sheets/WindowSheets.h"

namespace zolvar {
namespace {

TEST(Languages, chooseTheSettingThenTheSystems) {
  struct Row {
    const char* setting;
    std::vector<std::string> system;
    const char* spoken;
  };
  const Row rows[] = {{"de", {"en-US"}, "de"},
                      {"", {"de-AT", "en"}, "de"},
                      {"", {"fr-FR", "he_IL", "de"}, "he"},
                      {"tlh", {"fr"}, "en"},
                      {"", {}, "en"}};
  for (const Row& row : rows) EXPECT_EQ(chosenLanguage(row.setting, row.system), row.spoken);
}

TEST(Languages, sayPluralsInTheirOwnWay) {
  {
    const SpokenLanguage german("de");
    EXPECT_EQ(Zolvar::tr("%n file(s) missing", nullptr, 1), "1 Datei fehlt");
    EXPECT_EQ(Zolvar::tr("%n file(s) missing", nullptr, 3), "3 Dateien fehlen");
    EXPECT_EQ(QGuiApplication::layoutDirection(), Qt::LeftToRight);
  }
  const SpokenLanguage english("en");
  EXPECT_EQ(Zolvar::tr("%n file(s) missing", nullptr, 1), "1 file missing");
}

TEST(Languages, sayTheEnginesSentences) {
  const auto refused =
      fail(FailureKind::Refused, "make the folder", "/a 'b': c", "a file has this name");
  const PoolText plans{"Plans", "Plans", false, {}};
  const std::string sentences[] = {
      removePoolWarning("Plans"),
      successNotice(plans, {"a", "b"}).title,
      deletionNotice(plans, {"a", "b"}).description,
      refused.value().message(),
      deletionAlert("Plans", {"x.txt"}).text,
      clockAlert(-42.5).text,
      "The folder's path cannot be served by the transfer daemon. The name is empty.",
      "What nobody ever wrote down.",
  };
  std::vector<std::string> spoken;
  const SpokenLanguage german("de");
  for (const auto& sentence : sentences) {
    spoken.push_back(said(sentence).remove(QChar(0x2068)).remove(QChar(0x2069)).toStdString());
  }
  EXPECT_THAT(
      spoken,
      testing::ElementsAre(
          "Der synchronisierte Ordner „Plans“ mit allem, was darin ist, wird in den "
          "Papierkorb gelegt.",
          "2 Dateien in „Plans“ erhalten:",
          "2 Dateien in „Plans“ in den Papierkorb gelegt:\n\na\nb",
          "Der Ordner „/a 'b': c“ konnte nicht angelegt werden: eine Datei hat diesen Namen.",
          testing::StartsWith("Aus dem synchronisierten Ordner „Plans“ wurden Dateien "
                              "verschoben oder gelöscht (1): x.txt.\n"),
          testing::HasSubstr("Uhr geht zurzeit um 42,5 Sekunden falsch."),
          "Der Übertragungsdienst kann den Pfad des Ordners nicht anbieten. Der Name ist "
          "leer.",
          "What nobody ever wrote down."));
}

class SpokenWindowTest : public WindowStage {};

TEST_F(SpokenWindowTest, takesAnotherLanguageWhenItIsChosen) {
  shareAmongAll("Recipes", {"bread.txt", "cake.txt"});
  shareAmongAll("Travel", {"oslo.txt"});
  makeConflicts("Recipes", {"bread.txt"}, bob);
  SpokenWindow spoken(*ann.app, *ann.operations);
  spoken.window().comeToFront();
  spoken.window().selectFolder("Recipes");
  spoken.window().folderView().openTab(FolderView::Conflicts);
  settle(1);
  auto& conflicts = spoken.window().folderView().conflicts();
  conflicts.view().selectAll();
  conflicts.tabActions()[4]->trigger();  // use theirs
  settle(0.5);
  const auto press = [&](const QString& text) {
    for (auto* button : spoken.window().findChildren<QAbstractButton*>()) {
      if (button->window() != &spoken.window() && button->text() == text) return button->click();
    }
    ADD_FAILURE() << "no button " << text.toStdString();
  };
  press("Use &Theirs");
  ann.platform.files.remove("/home/user/Travel/oslo.txt");
  ASSERT_TRUE(until([&] { return ann.pool("Travel").snapshot()->question != nullptr; }));
  settle(1);
  EXPECT_TRUE(conflicts.undoAction().isEnabled());

  spoken.sheets().preferences();
  for (auto* choice : spoken.window().findChildren<QComboBox*>()) {
    if (choice->findData("he") >= 0) choice->setCurrentIndex(choice->findData("he"));
  }
  press("&Save");
  settle(2);
  EXPECT_FALSE(spoken.window().isRightToLeft()) << "the question is still open";
  press("&Later");
  settle(2);
  MainWindow& anew = spoken.window();
  ASSERT_TRUE(anew.isRightToLeft());
  EXPECT_TRUE(anew.isVisible());
  EXPECT_GT(anew.folderList().x(), anew.folderView().x()) << "the list is at the right";
  EXPECT_EQ(anew.selectedFolder(), "Recipes");
  EXPECT_EQ(anew.folderView().tab(), FolderView::Conflicts);
  EXPECT_TRUE(anew.folderView().conflicts().undoAction().isEnabled());
  const auto* question = anew.findChild<DeletionSheet*>();
  ASSERT_NE(question, nullptr) << "what the engine asks is asked by the new window";
  EXPECT_TRUE(question->isVisible());
  ann.platform.defaults.remove("Language");
}

TEST(SingleInstance, showsTheFirstOnesWindow) {
  const QTemporaryDir folder;
  const std::string path = folder.filePath("window.sock").toStdString();
  EXPECT_FALSE(SingleInstance(path).showOther()) << "nobody is there";
  int shown = 0;
  SingleInstance first(path);
  first.listen([&] { ++shown; });
  std::atomic<int> answer = -1;
  std::thread second([&] { answer = SingleInstance(path).showOther() ? 1 : 0; });
  while (answer < 0) QApplication::processEvents(QEventLoop::AllEvents, 20);
  second.join();
  EXPECT_EQ(answer, 1);
  EXPECT_EQ(shown, 1);
}

}  // namespace
}  // namespace zolvar
