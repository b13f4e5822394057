#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QKeyEvent>

#include "log/KDEntryStore.h"
#include "pool/FileHistory.h"
#include "pool/KDVersionTree.h"
#include "ui/PersonColors.h"
#include "ui/TextDifference.h"
#include "ui/VersionTreeLayout.h"
#include "ui/VersionTreeView.h"

namespace zolvar {
namespace {

using testing::ElementsAre;

HistoryVersion version(const std::string& user, double logTime, int parent, bool isHere = false) {
  HistoryVersion result;
  result.id = {user, logTime};
  result.modTime = logTime;
  result.parent = parent;
  result.isHere = isHere;
  return result;
}

std::vector<int> lanes(const FileHistory& history) {
  std::vector<int> result;
  for (const auto& place : versionPlaces(history)) result.push_back(place.lane);
  return result;
}

TEST(VersionTree, putsBranchesSideBySide) {
  struct Row {
    const char* what;
    std::vector<HistoryVersion> versions;
    std::vector<int> lanes;
  };
  const Row rows[] = {
      {"none", {}, {}},
      {"a line", {version("a", 1, -1), version("a", 2, 0), version("b", 3, 1)}, {0, 0, 0}},
      {"two branches", {version("a", 1, -1), version("a", 2, 0), version("b", 3, 0)}, {0, 0, 1}},
      {"the branch that is here keeps its lane",
       {version("a", 1, -1), version("a", 2, 0), version("b", 3, 0, true)},
       {0, 1, 0}},
      {"a lane is used again when its branch has ended",
       {version("a", 1, -1), version("b", 2, 0), version("a", 3, 0, true), version("a", 4, 2),
        version("c", 5, 2, false)},
       {0, 1, 0, 0, 1}},
      {"two beginnings", {version("a", 1, -1), version("b", 2, -1), version("a", 3, 0)}, {0, 1, 0}},
  };
  for (const Row& row : rows) {
    FileHistory history;
    history.versions = row.versions;
    EXPECT_EQ(lanes(history), row.lanes) << row.what;
  }
}

TEST(VersionTree, isReadFromTheLogs) {
  KDEntryStore store;
  KDVersionTree tree(store, "ann");
  const auto add = [&](double time, double parentTime, double modTime, const char* user,
                       const char* parent) {
    tree.append(store.add({time, parentTime, "file", modTime, user, parent}));
  };
  add(10, 0, 9, "ann", "");
  add(20, 10, 19, "ann", "");
  add(30, 10, 29, "bob", "ann");
  add(35, 30, 29, "bob", "");  // chooses his own
  add(40, 30, 0, "carol", "bob");
  tree.repairAll();
  const auto* path = store.findPath("file");
  const FileHistory history = fileHistory(tree, *path, 100);
  std::string told;
  for (const auto& each : history.versions) {
    told += each.id.text() + "<" + std::to_string(each.parent) + (each.isContinued ? "+" : "") +
            (each.isDeletion() ? "x" : "") + (each.isCurrent() ? "!" : "") + " ";
  }
  EXPECT_EQ(told, "ann:10<-1+ ann:20<0! bob:30<0+ carol:40<2x ");
  const FileHistory newest = fileHistory(tree, *path, 2);
  EXPECT_EQ(newest.omitted, 1U) << "the current version of ann stays";
  EXPECT_EQ(newest.versions.size(), 3U);
}

TEST(VersionTree, isWalkedByKeysAndReadAloud) {
  PersonColors colors;
  VersionTreeView view("a@here.local", colors, nullptr);
  FileHistory history;
  history.path = "file";
  history.versions = {version("a@here.local", 1, -1), version("a@here.local", 2, 0, true),
                      version("b@there.local", 3, 0)};
  history.versions[0].isContinued = true;
  view.setHistory(history);
  view.resize(400, 200);
  std::vector<double> told;
  QObject::connect(&view, &VersionTreeView::currentChanged,
                   [&](const VersionId& id) { told.push_back(id.logTime); });
  for (const int key : {Qt::Key_Home, Qt::Key_Down, Qt::Key_End, Qt::Key_Down, Qt::Key_Up}) {
    QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
    QApplication::sendEvent(&view, &press);
  }
  EXPECT_THAT(told, ElementsAre(1, 2, 3, 3, 2));
  EXPECT_TRUE(view.accessibleDescription().contains("This one is here."));
  history.versions.push_back(version("b@there.local", 4, 2));
  view.setHistory(history);
  ASSERT_NE(view.current(), nullptr);
  EXPECT_EQ(view.current()->id.logTime, 2) << "kept over news";
}

std::string differenceOf(const std::string& left, const std::string& right) {
  const auto lines = textDifference(left, right);
  if (!lines) return "too many";
  std::string told;
  for (const auto& line : *lines) {
    told += std::string(1, " -+"[static_cast<int>(line.side)]) + line.text + "|";
  }
  return told;
}

TEST(TextDifference, findsWhatChanged) {
  const char* rows[][3] = {
      {"", "", ""},
      {"a\nb\nc\n", "a\nb\nc\n", " a| b| c|"},
      {"a\nb\nc\n", "a\nx\nc\n", " a|-b|+x| c|"},
      {"", "a\nb", "+a|+b|"},
      {"a\nb", "", "-a|-b|"},
      {"a\r\nb\r\n", "a\nb\n", " a| b|"},
      {"1\n2\n3\n4\n", "2\n3\n4\n5\n", "-1| 2| 3| 4|+5|"},
  };
  for (const auto& row : rows) EXPECT_EQ(differenceOf(row[0], row[1]), row[2]);
  std::string many;
  for (int line = 0; line < 2000; ++line) many += std::to_string(line) + "\n";
  EXPECT_EQ(differenceOf(many, "x"), "too many");
  EXPECT_TRUE(isText("grüße\n\t"));
  EXPECT_FALSE(isText(std::string_view("a\0b", 3)));
  EXPECT_FALSE(isText("\xff\xfe"));
  std::vector<DifferenceLine> lines(21, {DifferenceLine::Side::Both, "x"});
  lines[10].side = DifferenceLine::Side::Left;
  EXPECT_EQ(withoutFarLines(lines, 2).size(), 7U) << "five lines and two marks";
}

}  // namespace
}  // namespace zolvar
