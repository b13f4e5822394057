#include <QAbstractItemModelTester>
#include <QAction>
#include <QDropEvent>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QTableView>
#include <QTest>
#include <QTreeView>
#include <QUrl>

#include "app/OutcomeTexts.h"
#include "ui/ConflictsTab.h"
#include "ui/DetailsPane.h"
#include "ui/FolderList.h"
#include "ui/FolderListModel.h"
#include "ui/FolderView.h"
#include "ui/MessageBar.h"
#include "ui/MissingTab.h"
#include "ui/PersonColors.h"
#include "ui/StateTexts.h"
#include "ui/TrayIcon.h"
#include "ui/UsersTab.h"
#include "ui/VersionTreeView.h"
#include "ui/WindowFrontEnd.h"
#include "ui/WindowStage.h"

namespace zolvar {
namespace {

using testing::HasSubstr;

/// The action whose text, without mnemonics, begins so.
QAction* actionOf(const QObject& owner, const QString& text) {
  for (QAction* action : owner.findChildren<QAction*>()) {
    if (action->text().remove('&').startsWith(text)) return action;
  }
  throw std::runtime_error("no action " + text.toStdString());
}

class WindowTest : public WindowStage {
 protected:
  /// Ann and Bob have both changed these files.
  void openWithConflicts(const std::vector<std::string>& paths) {
    shareAmongAll("Recipes", {"bread.txt", "cake.txt", "leek.txt"});
    makeConflicts("Recipes", paths, bob);
    openWindow();
    window->folderView().showTab(FolderView::Conflicts);
    settle(1);
  }
  std::size_t conflictsOf(AppHost& host) { return host.operations->conflicts("Recipes")->size(); }
  std::string content(AppHost& host, const std::string& path) {
    return host.platform.files.readAll("/home/user/Recipes/" + path).value_or("(none)");
  }
  void select(const std::string& path, bool isTheirs) {
    auto& tab = window->folderView().conflicts();
    const Conflict* conflict = tab.model().conflict(tab.model().indexOf(path));
    ASSERT_NE(conflict, nullptr) << path;
    for (const auto& version : conflict->versions) {
      if (version.isLocal != isTheirs) {
        ASSERT_TRUE(tab.selectVersion(path, version.id));
      }
    }
  }
  ConflictsTab& tab() { return window->folderView().conflicts(); }
};

TEST_F(WindowTest, listsFoldersByWhetherTheyAreMine) {
  shareAmongAll("Recipes", {"bread.txt"});
  bob.platform.files.write("/home/user/Photos/sea.jpg", "sea");
  ASSERT_EQ(bob.share("/home/user/Photos"), "");
  openWindow();
  const QAbstractItemModelTester tester(&window->folders(),
                                        QAbstractItemModelTester::FailureReportingMode::Fatal);
  ASSERT_TRUE(until([&] { return window->folders().row("Photos") != nullptr; }));
  EXPECT_EQ(window->selectedFolder(), "Recipes");
  EXPECT_EQ(window->folders().indexOf("Photos").parent().row(), FolderListModel::Network);
  EXPECT_EQ(window->folderView().users().model().rowCount(), 2);

  window->selectFolder("Photos");
  ASSERT_EQ(ann.subscribe("Photos", "/home/user/Photos"), "");
  settle(5);
  EXPECT_EQ(window->folders().indexOf("Photos").parent().row(), FolderListModel::Mine);
  EXPECT_EQ(window->selectedFolder(), "Photos") << "stays selected in the other section";

  actionOf(*window, "Show Unsubscribed")->trigger();
  ASSERT_TRUE(ann.operations->unsubscribe("Photos"));
  settle(5);
  EXPECT_EQ(window->selectedFolder(), "Recipes") << "the selected one is hidden";
  actionOf(*window, "Show Unsubscribed")->trigger();
}

TEST_F(WindowTest, showsTheFirstFolderThatComes) {
  openWindow();
  EXPECT_EQ(window->selectedFolder(), "");
  shareAmongAll("Recipes", {"bread.txt"});
  settle(1);
  EXPECT_EQ(window->selectedFolder(), "Recipes") << "its section came with it";
}

TEST_F(WindowTest, tellsWhatIsWrongWithTheProgramWithoutAnyFolder) {
  openWindow();
  const auto words = [&] {
    std::string all;
    for (const auto* bar : window->findChildren<MessageBar*>()) {
      if (bar->isVisible()) all += bar->text().toStdString() + "\n";
    }
    return all;
  };
  EXPECT_EQ(words(), "");
  ann.app->tell([](auto& observer) { observer.serverDidChange(false, "No port is free."); });
  ann.app->warn("", "The tool is old.");
  EXPECT_EQ(words(), "Nobody can fetch from this computer. No port is free.\nThe tool is old.\n");
  ann.app->tell([](auto& observer) { observer.serverDidChange(true, ""); });
  EXPECT_EQ(words(), "The tool is old.\n");
}

TEST_F(WindowTest, opensSheetsForWhatIsAsked) {
  shareAmongAll("Recipes", {"bread.txt"});
  openWindow();
  for (const char* action : {"Share Folder", "Unsubscribe", "Settings", "Remove", "Open",
                             "Preferences", "About", "First Steps", "Release Notes"}) {
    actionOf(*window, action)->trigger();
  }
  EXPECT_THAT(
      sheets.opened,
      testing::ElementsAre("share", "unsubscribe Recipes", "settings Recipes", "remove Recipes",
                           "open Recipes", "preferences", "about", "quickStart", "releaseNotes"));
  QMimeData dropped;
  ann.platform.files.write("/home/user/Music/song", "la");
  dropped.setUrls({QUrl::fromLocalFile("/home/user/Music")});
  QDragEnterEvent enter({10, 10}, Qt::CopyAction, &dropped, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(window.get(), &enter);
  QDropEvent drop({10, 10}, Qt::CopyAction, &dropped, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(window.get(), &drop);
  EXPECT_EQ(sheets.opened.back(), "share /home/user/Music");
}

TEST_F(WindowTest, showsAConflictAndItsTree) {
  openWithConflicts({"bread.txt", "cake.txt"});
  EXPECT_EQ(window->folders().row("Recipes")->info.conflicts, 2U);
  WindowFrontEnd frontEnd(*window, sheets);
  frontEnd.showConflict("Recipes", "cake.txt");
  settle(2);
  const auto& view = tab().view();
  EXPECT_EQ(view.currentIndex().data().toString(), "cake.txt");
  EXPECT_EQ(window->folderView().tab(), FolderView::Conflicts);
  const auto& history = window->folderView().details().tree().history();
  ASSERT_EQ(history.versions.size(), 3U);
  EXPECT_EQ(std::count_if(history.versions.begin(), history.versions.end(),
                          [](const auto& version) { return version.isHere; }),
            1);
  select("bread.txt", true);
  settle(2);
  ASSERT_NE(window->folderView().details().tree().current(), nullptr);
  EXPECT_EQ(window->folderView().details().tree().current()->id.userId, "bob@beta.local");
}

TEST_F(WindowTest, settlesManyConflictsWithOneConfirmation) {
  openWithConflicts({"bread.txt", "cake.txt"});
  sheets.agrees = false;
  tab().view().selectAll();
  actionOf(tab(), "Keep Mine")->trigger();
  settle(2);
  EXPECT_EQ(conflictsOf(ann), 2U) << "not without a yes";
  sheets.agrees = true;
  actionOf(tab(), "Keep Mine")->trigger();
  EXPECT_EQ(sheets.opened.size(), 2U) << "asked once for both files";
  ASSERT_TRUE(until([&] { return conflictsOf(ann) == 0; }));
  ASSERT_TRUE(until([&] { return conflictsOf(bob) == 0; }, 600));
  EXPECT_TRUE(until([&] { return content(bob, "cake.txt") == content(ann, "cake.txt"); }, 600));
  EXPECT_THAT(content(bob, "cake.txt"), HasSubstr("alpha"));
  EXPECT_TRUE(bob.platform.files.wasTrashed("line one\nfrom beta\nend\n"));
}

TEST_F(WindowTest, usesTheirsAndBringsMineBack) {
  openWithConflicts({"bread.txt"});
  const std::string mine = content(ann, "bread.txt");
  tab().view().selectAll();
  actionOf(tab(), "Use Theirs")->trigger();
  ASSERT_TRUE(
      until([&] { return content(ann, "bread.txt").find("beta") != std::string::npos; }, 600))
      << ann.platform.log.text();
  EXPECT_EQ(conflictsOf(ann), 0U);
  ASSERT_TRUE(tab().undoAction().isEnabled());
  tab().undoAction().trigger();
  ASSERT_TRUE(until([&] { return content(ann, "bread.txt") == mine; }));
  EXPECT_FALSE(tab().undoAction().isEnabled());
  EXPECT_TRUE(until([&] { return content(bob, "bread.txt") == mine; }, 900))
      << "what is brought back goes to everybody";
}

TEST_F(WindowTest, decidesAboutOneVersion) {
  openWithConflicts({"bread.txt", "cake.txt"});
  select("bread.txt", true);
  actionOf(tab(), "Use This Version")->trigger();
  EXPECT_TRUE(sheets.has("switch bread.txt bob@beta.local"));
  ASSERT_TRUE(
      until([&] { return content(ann, "bread.txt").find("beta") != std::string::npos; }, 600));
  EXPECT_EQ(conflictsOf(ann), 2U) << "others may still choose";
  select("cake.txt", false);
  EXPECT_FALSE(actionOf(tab(), "Use This Version")->isEnabled()) << "it is here already";
  select("cake.txt", true);
  actionOf(tab(), "Delete This Version")->trigger();
  ASSERT_TRUE(until([&] { return conflictsOf(ann) == 1; }));
  EXPECT_THAT(content(ann, "cake.txt"), HasSubstr("alpha"));
}

TEST_F(WindowTest, comparesTwoVersions) {
  openWithConflicts({"bread.txt"});
  select("bread.txt", true);
  actionOf(tab(), "Compare")->trigger();
  auto& opened = ann.platform.workspace.opened;
  ASSERT_TRUE(until([&] { return opened.size() == 2; })) << ann.platform.log.text();
  EXPECT_THAT(opened, testing::Contains("/home/user/Recipes/bread.txt"));
  std::erase(opened, "/home/user/Recipes/bread.txt");
  EXPECT_THAT(opened.at(0), testing::EndsWith("/bread.txt")) << "keeps its name";
  EXPECT_THAT(ann.platform.files.readAll(opened[0]).value_or("(none)"), HasSubstr("from beta"));
  EXPECT_EQ(conflictsOf(ann), 1U) << "looking decides nothing";
}

TEST_F(WindowTest, deletesEverywhereWhatNobodyHas) {
  shareAmongAll("Recipes", {"bread.txt"});
  openWindow();
  auto& view = window->folderView();
  EXPECT_FALSE(view.details().isVisible()) << "users have no versions";
  view.showTab(FolderView::Missing);
  bob.platform.files.write("/home/user/Recipes/lost", "x");
  ASSERT_TRUE(until([&] { return bob.pool("Recipes").snapshot()->fileCount == 2; }));
  bob.platform.files.remove("/home/user/Recipes/lost");
  ASSERT_TRUE(until([&] { return ann.operations->missing("Recipes")->size() == 1; }))
      << ann.platform.log.text();
  settle(2);
  QAction* const everywhere = actionOf(view.missing(), "Delete Everywhere");
  EXPECT_FALSE(everywhere->isEnabled()) << "nothing is selected";
  view.missing().view().selectRow(0);
  settle(1);
  EXPECT_TRUE(view.details().isVisible());
  everywhere->trigger();
  settle(2);
  ASSERT_EQ(ann.operations->questions().size(), 1U);
  EXPECT_EQ(ann.operations->missing("Recipes")->size(), 1U) << "not without a yes";
  Q_EMIT view.questionWanted("Recipes");
  ASSERT_TRUE(sheets.has("deletion Recipes"));
  sheets.answerDeletion(SecondButton);
  EXPECT_TRUE(until([&] { return ann.operations->missing("Recipes")->empty(); }));
}

TEST_F(WindowTest, staysWithATrayAndSaysSoOnce) {
  openWindow();
  int quits = 0;
  QObject::connect(window.get(), &MainWindow::quitWanted, [&] { ++quits; });
  window->setHasTray(true);
  for (int each = 0; each < 2; ++each) {
    window->comeToFront();
    window->close();
  }
  EXPECT_EQ(quits, 0);
  EXPECT_EQ(ann.platform.workspace.count("keeps running"), 1U);
  window->setHasTray(false);
  window->comeToFront();
  window->close();
  EXPECT_EQ(quits, 1);
}

TEST_F(WindowTest, remembersHowItWasLeft) {
  shareAmongAll("Recipes", {"bread.txt"});
  ann.platform.files.write("/home/user/Plans/garden", "beans");
  ASSERT_EQ(ann.share("/home/user/Plans"), "");
  openWindow();
  window->selectFolder("Recipes");
  window->folderView().showTab(FolderView::Missing);
  window->folderView().detailsAction().setChecked(false);
  window->folderView().users().view().setColumnWidth(0, 77);
  closeWindow();
  openWindow();
  EXPECT_EQ(window->selectedFolder(), "Recipes");
  EXPECT_EQ(window->folderView().tab(), FolderView::Missing);
  EXPECT_FALSE(window->folderView().details().isVisible());
  EXPECT_EQ(window->folderView().users().view().columnWidth(0), 77);
}

TEST_F(WindowTest, filtersTheFolders) {
  shareAmongAll("Recipes", {"bread.txt"});
  shareAmongAll("Plans", {"garden.txt"});
  openWindow();
  auto* field = window->folderList().findChild<QLineEdit*>();
  const auto shown = [this] {
    const auto* rows = window->folderList().view().model();
    QStringList names;
    for (int row = 0; row < rows->rowCount(rows->index(0, 0)); ++row) {
      names += rows->index(row, 0, rows->index(0, 0)).data().toString();
    }
    return names.join(" ").toStdString();
  };
  EXPECT_EQ(shown(), "Plans Recipes");
  QTest::keyClicks(field, "reci");
  EXPECT_EQ(shown(), "Recipes");
  QTest::keyClick(field, Qt::Key_A, Qt::ControlModifier);
  QTest::keyClick(field, Qt::Key_Delete);
  EXPECT_EQ(shown(), "Plans Recipes");
}

TEST_F(WindowTest, hasAllInTheTraysMenu) {
  shareAmongAll("Recipes", {"bread.txt"});
  openWindow();
  TrayIcon tray(*context, *window);
  const auto texts = [&] {
    Q_EMIT tray.menu().aboutToShow();
    QStringList words;
    for (const QAction* action : tray.menu().actions()) words += action->text().remove('&');
    return words.join("|").toStdString();
  };
  EXPECT_EQ(texts(), "Open Zolvar||Recipes — In step||Pause||Quit Zolvar");
  actionOf(tray.menu(), "Pause")->menu()->actions().front()->trigger();
  settle(1);
  EXPECT_THAT(texts(), HasSubstr("Recipes — Paused"));
  EXPECT_THAT(texts(), HasSubstr("|Resume (paused until "));
  actionOf(tray.menu(), "Resume")->trigger();
  settle(1);
  EXPECT_THAT(texts(), HasSubstr("|Pause|"));
  int quits = 0;
  QObject::connect(window.get(), &MainWindow::quitWanted, [&] { ++quits; });
  tray.menu().actions().back()->trigger();
  EXPECT_EQ(quits, 1);
}

TEST(PersonColors, differWithinAFolder) {
  PersonColors colors;
  std::set<QRgb> seen;
  for (const char* person : {"ann@alpha.local", "bob@beta.local", "carol@gamma.local", "d@e.local",
                             "f@g.local", "h@i.local", "j@k.local", "l@m.local"}) {
    seen.insert(colors.of(person).rgb());
  }
  EXPECT_EQ(seen.size(), 8U);
  EXPECT_EQ(colors.of("bob@beta.local"), colors.of("bob@beta.local"));
}

TEST(StateTexts, sayTheStateInAFewWords) {
  PoolInfo info;
  info.participants = 3;
  const auto both = [&](FolderStateKind kind) {
    info.state.kind = kind;
    return (stateText(info, {}) + " / " + summaryText(info, {})).toStdString();
  };
  EXPECT_EQ(both(FolderStateKind::InStep), "In step / In step with 3 users");
  info.missing = 2;
  EXPECT_EQ(both(FolderStateKind::Missing), "2 files missing / 3 users, 2 missing");
  info.conflicts = 1;
  EXPECT_EQ(both(FolderStateKind::Conflict), "Conflict in 1 file / Conflict in 1 file");
  TransferProgress progress;
  progress.filesWanted = 7;
  progress.filesDone = 3;
  info.state.kind = FolderStateKind::Fetching;
  EXPECT_EQ(stateText(info, progress).toStdString(), "Fetching 3 of 7");
  EXPECT_EQ(progressPermille(progress), 428);
  using enum FolderStateKind;
  const auto of = [](const std::vector<FolderStateKind>& kinds) {
    std::vector<FolderState> states;
    for (const auto kind : kinds) states.push_back({kind, ""});
    return overallState(states);
  };
  EXPECT_EQ(of({}), NotSubscribed);
  EXPECT_EQ(of({InStep, Alone}), InStep);
  EXPECT_EQ(of({InStep, Fetching, Paused}), Fetching);
  EXPECT_EQ(of({Fetching, Conflict, InStep}), Conflict);
  EXPECT_EQ(of({Conflict, WaitingForDrive}), WaitingForDrive);
}

}  // namespace
}  // namespace zolvar
