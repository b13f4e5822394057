#include <gmock/gmock.h>

#include "pool/QMFileNotifier.h"
#include "support/SimulatedPlatform.h"
#include "util/InconsistencyError.h"

namespace zolvar {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class QMFileNotifierTest : public testing::Test {
 protected:
  QMFileNotifierTest() {
    for (const auto* folder : {"/a/b/c", "/a/bc", "/z"}) (void)platform_.files.makeFolder(folder);
  }
  /// "Object: NAME path1 path2" of all that an action causes.
  std::vector<std::string> toldOf(const std::function<void()>& action) {
    told_.clear();
    action();
    platform_.loop.runUntilIdle();
    return told_;
  }

  SimulatedPlatform platform_;
  NotificationCenter center_;
  QMFileNotifier notifier_{platform_.files, center_};
  std::vector<std::string> told_;
  NotificationCenter::Observation all_ =
      center_.observe<QMFileSystemChanged>([this](const QMFileSystemChanged& change) {
        told_.push_back(change.Object + ": " + change.EventName + " " + change.Path1 +
                        (change.Path2.empty() ? "" : " " + change.Path2));
      });
  NotificationCenter::Observation losses_ = center_.observe<QMFileSystemObservationLost>(
      [this](const QMFileSystemObservationLost& loss) { told_.push_back(loss.Object + ": lost"); });
};

TEST_F(QMFileNotifierTest, tellsOncePerObservedPath) {
  for (const auto* path : {"/a/b", "/a//b/c/", "/a/./bc", "/z"}) notifier_.addObservedPath(path);
  const auto write = [this](const char* path) {
    return [this, path] { platform_.files.makeLink(path, "x"); };
  };
  EXPECT_THAT(toldOf(write("/a/b/file")), IsEmpty()) << "nobody has started it";
  EXPECT_FALSE(notifier_.isComplete("/a/b"));
  notifier_.startLogging();
  notifier_.startLogging();
  EXPECT_TRUE(notifier_.isComplete("/a/b/c"));
  EXPECT_FALSE(notifier_.isComplete("/a"));
  EXPECT_THAT(toldOf(write("/a/b/new")), ElementsAre("/a/b: CREATE FILE /a/b/new"));
  EXPECT_THAT(toldOf(write("/a/b/c/new")),
              ElementsAre("/a/b: CREATE FILE /a/b/c/new", "/a/b/c: CREATE FILE /a/b/c/new"));
  EXPECT_THAT(toldOf(write("/a/bc/new")), ElementsAre("/a/bc: CREATE FILE /a/bc/new"));
  EXPECT_THAT(toldOf(write("/a/other")), IsEmpty());
  EXPECT_THAT(toldOf([this] { platform_.files.move("/a/b/new", "/z/new"); }),
              UnorderedElementsAre("/a/b: RENAME /a/b/new /z/new", "/z: RENAME /a/b/new /z/new"));

  // The inner path goes on when the outer one, whose observation it shared, is removed.
  notifier_.removeObservedPath("/a/b/");
  EXPECT_THAT(toldOf(write("/a/b/again")), IsEmpty());
  EXPECT_THAT(toldOf(write("/a/b/c/again")), ElementsAre("/a/b/c: CREATE FILE /a/b/c/again"));
  notifier_.stopLogging();
  EXPECT_THAT(toldOf(write("/a/b/c/third")), IsEmpty());
}

TEST_F(QMFileNotifierTest, anObserverHearsOnlyOfItsPrefix) {
  notifier_.startLogging();
  int inner = 0;
  int outer = 0;
  auto first = notifier_.addObserver("/a/b/c/", [&](const QMFileSystemChanged& change) {
    EXPECT_EQ("/a/b/c", change.Object);
    ++inner;
    notifier_.stopLogging();  // an observer may do anything
  });
  const auto second = notifier_.addObserver("/a", [&](const auto&) { ++outer; });
  platform_.files.makeLink("/a/b/c/file", "x");
  platform_.loop.runUntilIdle();
  EXPECT_EQ(1, inner);
  EXPECT_EQ(1, outer);
  first = {};
  notifier_.startLogging();
  platform_.files.makeLink("/a/b/c/more", "x");
  platform_.loop.runUntilIdle();
  EXPECT_EQ(1, inner);
  EXPECT_EQ(2, outer);
  EXPECT_THAT(notifier_.observedPaths(), ElementsAre("/a", "/a/b/c"));
}

TEST_F(QMFileNotifierTest, tellsWhenItCannotTell) {
  notifier_.addObservedPath("/a/b");
  notifier_.addObservedPath("/a/b/c");
  notifier_.startLogging();
  EXPECT_THAT(toldOf([this] { platform_.files.loseEvents(); }),
              ElementsAre("/a/b: lost", "/a/b/c: lost"));
  EXPECT_FALSE(notifier_.isComplete("/a/b/c"));
  EXPECT_THAT(toldOf([this] { platform_.files.makeLink("/a/b/1", "x"); }), IsEmpty());
  EXPECT_THAT(toldOf([this] { notifier_.addObservedPath("/none"); }), ElementsAre("/none: lost"));
  EXPECT_THAT(toldOf([this] { notifier_.addObservedPath("/z"); }), IsEmpty());
  notifier_.addObservedPath("/a/b");  // once more
  EXPECT_TRUE(notifier_.isComplete("/a/b/c"));
  EXPECT_THAT(toldOf([this] { platform_.files.makeLink("/a/b/2", "x"); }),
              ElementsAre("/a/b: CREATE FILE /a/b/2"));
}

}  // namespace
}  // namespace zolvar
