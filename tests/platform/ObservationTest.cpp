#include <fmt/format.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <set>

#include "PlatformFixture.h"
#include "platform/qt/PosixFileSystem.h"

namespace zolvar {
namespace {

namespace fs = std::filesystem;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

class ObservationTest : public LoopTest {
 protected:
  /// Begins to observe root/ and waits until all of it is.
  void observe() {
    auto observation = fileSystem_.observe(
        root_,
        [this](const FileEvent& event) {
          events_.push_back(textOf(event));
          if (afterEach_) afterEach_();
        },
        [this](const Failure& failure) { losses_.push_back(failure); });
    ASSERT_TRUE(observation) << observation.error().message();
    observation_ = std::move(*observation);
    ASSERT_TRUE(runUntil([this] { return observation_->isComplete() || !losses_.empty(); }));
  }
  /// "kind path" below the root, with the new path of a rename and "*" for closed.
  std::string textOf(const FileEvent& event) const {
    static constexpr const char* Names[] = {"file", "delete", "stat", "rename", "modify", "dir"};
    const auto relative = [this](const std::string& path) {
      return path.starts_with(root_ + "/") ? path.substr(root_.size() + 1) : path;
    };
    return fmt::format("{}{} {}{}", Names[static_cast<int>(event.type)], event.closed ? "*" : "",
                       relative(event.path1),
                       event.path2.empty() ? "" : " -> " + relative(event.path2));
  }
  /// What an action causes, told completely once an end mark has come.
  std::vector<std::string> eventsOf(const std::function<void()>& action) {
    events_.clear();
    action();
    runUntil([&, end = fmt::format("end{}", ++marks_), isMade = false]() mutable {
      if (!isMade) fs::create_directory(root_ + "/" + end);
      isMade = true;
      return std::find(events_.begin(), events_.end(), "dir " + end) != events_.end() &&
             observation_->isComplete();
    });
    std::erase_if(events_, [](const auto& text) { return text.starts_with("dir end"); });
    return events_;
  }

  PosixFileSystem fileSystem_{loop_};
  TemporaryFolder folder_{memoryFolder()};
  std::string root_ = (folder_.makeFolder("root"), folder_.path("root"));
  std::vector<std::string> events_;
  std::vector<Failure> losses_;
  std::function<void()> afterEach_;
  std::unique_ptr<FolderObservation> observation_;
  int marks_ = 0;
};

TEST_F(ObservationTest, tellsEachKindOfChange) {
  folder_.write("root/a/old", "x");
  folder_.write("root/a/deep/other", "x");
  folder_.write("outside/file", "x");
  folder_.makeFolder("outside/tree/sub");
  observe();
  struct Row {
    std::function<void()> action;
    std::vector<std::string> events;
  };
  const auto move = [this](const char* from, const char* to) {
    return [this, from, to] { fs::rename(folder_.path(from), folder_.path(to)); };
  };
  const Row rows[] = {
      {[this] { folder_.write("root/new", "text"); }, {"file new", "modify new", "modify* new"}},
      {[this] { std::ofstream(folder_.path("root/a/deep/other"), std::ios::app) << "more"; },
       {"modify a/deep/other", "modify* a/deep/other"}},
      {[this] { chmod(folder_.path("root/a/old").c_str(), 0600); }, {"stat a/old"}},
      {[this] { fs::remove(folder_.path("root/new")); }, {"delete new"}},
      {[this] { fs::create_symlink("nowhere", folder_.path("root/link")); }, {"file link"}},
      {move("root/a/old", "root/a/new"), {"rename a/old -> a/new"}},
      {move("outside/file", "root/file"), {"file* file"}},
      {move("root/file", "outside/file"), {"delete file"}},
      // What is in a renamed directory is told under its new path.
      {move("root/a", "root/b"), {"rename a -> b"}},
      {[this] { folder_.write("root/b/deep/third", ""); },
       {"file b/deep/third", "modify* b/deep/third"}},
      // And what has left is told no more.
      {move("root/b/deep", "outside/deep"), {"delete b/deep"}},
      {[this] { folder_.write("outside/deep/fourth", "x"); }, {}},
      {move("outside/deep", "root/back"),
       {"dir back", "file* back/fourth", "file* back/other", "file* back/third"}},
      {[this] { folder_.write("root/back/fifth", ""); }, {"file back/fifth", "modify* back/fifth"}},
      {[this] { fs::remove_all(folder_.path("root/back")); },
       {"delete back", "delete back/fifth", "delete back/fourth", "delete back/other",
        "delete back/third"}},
      // A new directory of an old name is another one.
      {[this] { folder_.makeFolder("root/back"); }, {"dir back"}},
      {[this] { folder_.write("root/back/x", ""); }, {"file back/x", "modify* back/x"}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(fmt::format("row {}", &row - rows));
    auto events = eventsOf(row.action);
    if (events.size() > 3) std::sort(events.begin(), events.end());  // their order is free
    EXPECT_EQ(row.events, events);
  }
  EXPECT_THAT(losses_, IsEmpty());
}

TEST_F(ObservationTest, missesNothingInDirectoriesThatAppear) {
  observe();
  std::set<std::string> expected;
  const auto events = eventsOf([&] {
    for (int index = 0; index < 300; ++index) {
      const std::string below = fmt::format("{}/{}/{}", index % 3, index % 20, index);
      folder_.write("root/" + below, "x");
      expected.insert(below);
    }
  });
  std::set<std::string> told;
  for (const auto& text : events) told.insert(text.substr(text.find(' ') + 1));
  for (const auto& path : expected) EXPECT_THAT(told, Contains(path));
  EXPECT_THAT(eventsOf([&] { folder_.write("root/2/17/late", ""); }),
              ElementsAre("file 2/17/late", "modify* 2/17/late"));
}

TEST_F(ObservationTest, observesALargeTreeInSlices) {
  for (int index = 0; index < 3000; ++index) {
    folder_.makeFolder(fmt::format("root/{}/{}", index % 50, index));
  }
  folder_.write("root/49/2999/file", "x");
  int turns = 0;
  const auto ticks = loop_.every(0, [&] { ++turns; });
  observe();
  loop_.cancel(ticks);
  EXPECT_GT(turns, 1) << "others had their turn in between";
  EXPECT_THAT(events_, IsEmpty()) << "what lay there before is no change";
  EXPECT_THAT(eventsOf([&] { fs::remove(root_ + "/49/2999/file"); }),
              ElementsAre("delete 49/2999/file"));
}

TEST_F(ObservationTest, tellsOnceThatItIsNoLongerWhole) {
  folder_.write("root/1", "x");
  folder_.write("root/2", "x");
  observe();
  for (int index = 0; index < 20'000; ++index) {  // more than the kernel queues by default
    chmod((root_ + (index % 2 == 0 ? "/1" : "/2")).c_str(), index % 3 == 0 ? 0600 : 0640);
  }
  ASSERT_TRUE(runUntil([this] { return !losses_.empty(); }));
  const auto count = events_.size();
  folder_.write("root/3", "x");
  turn();
  EXPECT_EQ(count, events_.size());
  EXPECT_EQ(1U, losses_.size());
  EXPECT_FALSE(observation_->isComplete());

  for (const bool isMoved : {true, false}) {
    losses_.clear();
    observe();
    if (isMoved) {
      fs::rename(root_, folder_.path("elsewhere"));
      folder_.makeFolder("root");
    } else {
      fs::remove_all(root_);
    }
    ASSERT_TRUE(runUntil([this] { return !losses_.empty(); }));
    EXPECT_EQ(FailureKind::Absent, losses_.front().kind);
  }
  const auto none = fileSystem_.observe(folder_.path("none"), {}, {});
  EXPECT_EQ(FailureKind::Absent, none.error().kind);
}

TEST_F(ObservationTest, endsInsideItsOwnCallbacks) {
  observe();
  afterEach_ = [this] { observation_.reset(); };
  folder_.write("root/1", "x");
  folder_.write("root/2", "x");
  ASSERT_TRUE(runUntil([this] { return !events_.empty(); }));
  turn();
  EXPECT_THAT(events_, ElementsAre("file 1"));
}

}  // namespace
}  // namespace zolvar
