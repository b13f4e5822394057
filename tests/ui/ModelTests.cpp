#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QApplication>
#include <QElapsedTimer>
#include <QListView>
#include <QTableView>
#include <QTreeView>
#include <algorithm>
#include <random>

#include "app/OutcomeTexts.h"
#include "ui/ConflictsModel.h"
#include "ui/MissingModel.h"
#include "ui/PersonColors.h"
#include "ui/Selections.h"
#include "ui/Texts.h"
#include "ui/sheets/DeletionSheet.h"

namespace zolvar {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr qint64 Slower = 40;  // what a sanitizer adds tells nothing about the program
#else
constexpr qint64 Slower = 2;  // other tests run beside this one
#endif
constexpr qint64 Budget = 50 * Slower;  // milliseconds for whatever a person does

using Shared = std::shared_ptr<const PoolSnapshot>;

Shared snapshotOf(std::vector<std::string> missing, std::vector<Conflict> conflicts = {}) {
  auto snapshot = std::make_shared<PoolSnapshot>();
  std::sort(missing.begin(), missing.end());
  snapshot->missing = std::make_shared<const std::vector<std::string>>(std::move(missing));
  snapshot->conflicts = std::make_shared<const std::vector<Conflict>>(std::move(conflicts));
  snapshot->seen = std::make_shared<const SeenFiles>();
  return snapshot;
}

Conflict conflictOf(const std::string& path, int versions) {
  Conflict conflict;
  conflict.path = path;
  for (int each = 0; each < versions; ++each) {
    ConflictVersion version;
    version.id = {each % 2 == 0 ? "ann@alpha.local" : "bob@beta.local", 2000.0 - each};
    version.modTime = 1000 + each;
    version.isLocal = each == 0;
    conflict.versions.push_back(version);
  }
  return conflict;
}

std::string pathOf(int number) {
  std::string digits = std::to_string(number);
  return "folder/of/some/depth/file-" + std::string(7 - digits.size(), '0') + digits + ".txt";
}

/// The quickest of a few tries counts: what else runs on the machine does not.
template <class Act>
void expectQuick(const char* what, const Act& act) {
  qint64 best = 1'000'000;
  for (int each = 0; each < 5; ++each) {
    QElapsedTimer timer;
    timer.start();
    act(each);
    QApplication::processEvents();
    best = std::min(best, timer.elapsed());
  }
  EXPECT_LT(best, Budget) << what;
}

TEST(MissingModel, followsAnyChangeAndKeepsTheSelection) {
  MissingModel model;
  const QAbstractItemModelTester tester(&model,
                                        QAbstractItemModelTester::FailureReportingMode::Fatal);
  QItemSelectionModel selection(&model);
  std::mt19937 random(7);
  for (int round = 0; round < 200; ++round) {
    std::vector<std::string> paths{"kept"};
    for (int number = 0; number < 30; ++number) {
      if (random() % 2 == 0) paths.push_back(pathOf(number));
    }
    model.setSnapshot(snapshotOf(paths));
    std::sort(paths.begin(), paths.end());
    ASSERT_EQ(model.rowCount(), static_cast<int>(paths.size()));
    for (int row = 0; row < model.rowCount(); ++row) ASSERT_EQ(model.path(row), paths[row]);
    if (round == 0) {
      selection.select(model.index(model.rowOf("kept"), 0),
                       QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }
    ASSERT_EQ(selectedRows(selection), std::vector<int>{model.rowOf("kept")}) << round;
  }
  model.setSnapshot(nullptr);
  EXPECT_EQ(model.rowCount(), 0);
}

TEST(MissingModel, tellsSizesAndHoldersOnceAListingHas) {
  MissingModel model;
  const auto text = [&model](int column) {
    return model.index(0, column).data().toString().toStdString();
  };
  model.setSnapshot(snapshotOf({"report"}));
  EXPECT_EQ(text(MissingModel::Size), "");
  const auto listed = std::make_shared<PoolSnapshot>(*snapshotOf({"report"}));
  listed->seen = std::make_shared<const SeenFiles>(SeenFiles{{"report", {{"ann@alpha"}, 2048}}});
  model.setSnapshot(listed);
  EXPECT_EQ(text(MissingModel::Size), bytesText(2048).toStdString());
  EXPECT_NE(text(MissingModel::Holders).find("ann@alpha"), std::string::npos);
}

TEST(ConflictsModel, followsAnyChangeAndKeepsTheSelectedVersion) {
  PersonColors colors;
  ConflictsModel model("ann@alpha.local", colors);
  const QAbstractItemModelTester tester(&model,
                                        QAbstractItemModelTester::FailureReportingMode::Fatal);
  QItemSelectionModel selection(&model);
  const VersionId chosen{"bob@beta.local", 1999};
  std::mt19937 random(11);
  for (int round = 0; round < 200; ++round) {
    std::vector<Conflict> conflicts;
    for (int number = 0; number < 12; ++number) {
      if (random() % 2 == 0) {
        conflicts.push_back(conflictOf(pathOf(number), 2 + static_cast<int>(random() % 3)));
      }
    }
    conflicts.push_back(conflictOf("kept", 2 + round % 3));
    model.setSnapshot(snapshotOf({}, conflicts));
    ASSERT_EQ(model.rowCount(), static_cast<int>(conflicts.size()));
    for (const auto& conflict : conflicts) {
      const QModelIndex file = model.indexOf(conflict.path);
      ASSERT_EQ(model.rowCount(file), static_cast<int>(conflict.versions.size()));
    }
    const QModelIndex version = model.indexOf("kept", chosen);
    if (round == 0) selection.select(version, QItemSelectionModel::Select);
    ASSERT_TRUE(selection.isSelected(version)) << round;
  }
}

TEST(ConflictsModel, tellsWhoAndWhichOneIsHere) {
  PersonColors colors;
  ConflictsModel model("ann@alpha.local", colors);
  Conflict conflict = conflictOf("letter", 2);
  conflict.versions[0].selectedBy = {"ann@alpha.local", "carol@gamma.local"};
  model.setSnapshot(snapshotOf({}, {conflict}));
  model.noteSize("letter", conflict.versions[0].id, 2048);
  const QModelIndex here = model.indexOf("letter", conflict.versions[0].id);
  const auto text = [&](int column) {
    QString shown = here.siblingAtColumn(column).data().toString();
    return shown.remove(QChar(0x2068)).remove(QChar(0x2069)).toStdString();
  };
  EXPECT_EQ(text(ConflictsModel::Name), "You (this one is here)");
  EXPECT_EQ(text(ConflictsModel::ChosenBy), "you, carol@gamma");
  EXPECT_EQ(text(ConflictsModel::Size), "2.0 kB");
  EXPECT_TRUE(here.data(Qt::ForegroundRole).isValid());
  const QModelIndex other = model.indexOf("letter", conflict.versions[1].id);
  EXPECT_FALSE(other.data(Qt::ForegroundRole).isValid());
}

TEST(Budget, holdsForAHundredThousandMissingFiles) {
  std::vector<std::string> paths;
  for (int number = 0; number < 100'000; ++number) paths.push_back(pathOf(number));
  const Shared all = snapshotOf(paths);
  paths.erase(paths.begin() + 500, paths.begin() + 600);  // some have come
  const Shared fewer = snapshotOf(paths);
  std::vector<std::string> scattered;
  for (int number = 0; number < 100'000; number += 3) scattered.push_back(pathOf(number));
  const Shared few = snapshotOf(scattered);

  MissingModel model;
  QTableView view;
  view.setModel(&model);
  view.resize(600, 400);
  view.show();
  QApplication::processEvents();
  expectQuick("to open the tab", [&](int) {
    model.setSnapshot(nullptr);
    model.setSnapshot(all);
  });
  expectQuick("to follow a fetch",
              [&](int round) { model.setSnapshot(round % 2 == 0 ? fewer : all); });
  expectQuick("to follow a great change",
              [&](int round) { model.setSnapshot(round % 2 == 0 ? few : all); });
  expectQuick("to select all", [&](int) {
    view.clearSelection();
    view.selectAll();
    EXPECT_GE(selectedRows(*view.selectionModel()).size(), scattered.size());
  });
  expectQuick("to click a row", [&](int round) {
    view.setCurrentIndex(model.index(model.rowCount() - 1 - round, 0));
  });
}

TEST(Budget, holdsForAQuestionAboutAHundredThousandFiles) {
  auto question = std::make_shared<DeleteQuestion>();
  for (int number = 0; number < 100'000; ++number) question->paths.push_back(pathOf(number));
  int described = 0;
  const auto describe = [&](const std::string& path) {
    ++described;
    return path;
  };
  QWidget window;
  window.show();
  expectQuick("to ask", [&](int) {
    const Alert alert = deletionAlert("Docs", question->paths);
    DeletionSheet sheet(alert, {}, describe, &window);
    sheet.showFiles(question);
    sheet.show();
    QApplication::processEvents();
    EXPECT_EQ(sheet.findChild<QListView*>()->model()->rowCount(), 100'000);
  });
  EXPECT_LT(described, 1000) << "only what is seen";
}

TEST(Budget, holdsForFiveThousandConflicts) {
  std::vector<Conflict> conflicts;
  for (int number = 0; number < 5'000; ++number) conflicts.push_back(conflictOf(pathOf(number), 2));
  const Shared all = snapshotOf({}, conflicts);
  conflicts.erase(conflicts.begin() + 100);
  const Shared fewer = snapshotOf({}, conflicts);
  PersonColors colors;
  ConflictsModel model("ann@alpha.local", colors);
  QTreeView view;
  view.setUniformRowHeights(true);
  view.setSelectionMode(QAbstractItemView::ExtendedSelection);
  view.setModel(&model);
  view.resize(600, 400);
  view.show();
  QApplication::processEvents();
  expectQuick("to open the tab", [&](int) {
    model.setSnapshot(nullptr);
    model.setSnapshot(all);
  });
  expectQuick("to follow a settled one",
              [&](int round) { model.setSnapshot(round % 2 == 0 ? fewer : all); });
  expectQuick("to select all", [&](int) { view.selectAll(); });
}

}  // namespace
}  // namespace zolvar
