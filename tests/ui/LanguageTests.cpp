#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QTemporaryDir>
#include <atomic>
#include <thread>

#include "app/OutcomeTexts.h"
#include "ui/FolderList.h"
#include "ui/FolderView.h"
#include "ui/Languages.h"
#include "ui/SingleInstance.h"
#include "ui/Texts.h"
#include "ui/WindowStage.h"

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
          "Der Übertragungsdienst kann den Pfad des Ordners nicht anbieten. Der Name ist "
          "leer.",
          "What nobody ever wrote down."));
}

class SpokenWindow : public WindowStage {};

TEST_F(SpokenWindow, isDrawnFromRightToLeft) {
  const SpokenLanguage hebrew("he");
  openWindow();
  EXPECT_TRUE(window->isRightToLeft());
  EXPECT_GT(window->folderList().x(), window->folderView().x()) << "the list is at the right";
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
