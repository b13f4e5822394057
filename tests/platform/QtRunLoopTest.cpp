#include <gmock/gmock.h>
#include <unistd.h>

#include <atomic>
#include <stdexcept>
#include <thread>
#include <vector>

#include "PlatformFixture.h"
#include "platform/qt/InlineLanes.h"
#include "platform/qt/SystemClock.h"
#include "platform/qt/ThreadLanes.h"
#include "util/InconsistencyError.h"

namespace zolvar {
namespace {

using testing::ElementsAre;

class QtRunLoopTest : public LoopTest {};

TEST_F(QtRunLoopTest, runsPostedTasksInOrderFromAnyThread) {
  constexpr int Each = 2000;
  std::vector<std::vector<int>> seen(3);
  {
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < 3; ++thread) {
      threads.emplace_back([this, thread, &seen] {
        EXPECT_FALSE(loop_.isMainThread());
        for (int index = 0; index < Each; ++index) {
          loop_.post([&seen, thread, index] { seen[thread].push_back(index); });
        }
      });
    }
  }
  ASSERT_TRUE(runUntil(
      [&] { return seen[0].size() + seen[1].size() + seen[2].size() == std::size_t{3} * Each; }));
  for (const auto& one : seen) EXPECT_TRUE(std::is_sorted(one.begin(), one.end()));
  EXPECT_TRUE(loop_.isMainThread());
}

TEST_F(QtRunLoopTest, keepsServingWhileATaskRunsALoopOfItsOwn) {
  std::vector<int> order;
  loop_.post([&] {
    order.push_back(1);
    loop_.post([&] { order.push_back(3); });
    EXPECT_TRUE(runUntil([&] { return order.size() == 3; }));  // as a dialog would
    order.push_back(4);
  });
  loop_.post([&] { order.push_back(2); });
  EXPECT_TRUE(runUntil([&] { return order.size() == 4; }));
  EXPECT_THAT(order, ElementsAre(1, 2, 3, 4));
}

TEST_F(QtRunLoopTest, timersComeInTimeAndCanBeCancelledInside) {
  std::vector<std::string> order;
  RunLoop::Id repeated = 0;
  int times = 0;
  const auto never = loop_.after(0.001, [&] { order.push_back("never"); });
  loop_.after(0.05, [&] { order.push_back("late"); });
  loop_.after(0, [&] { order.push_back("soon"); });
  repeated = loop_.every(0.002, [&] {
    if (++times < 3) return;
    order.push_back("third");
    loop_.cancel(repeated);
  });
  EXPECT_TRUE(order.empty()) << "not from inside the call";
  loop_.cancel(never);
  loop_.cancel(never);
  loop_.cancel(4711);
  ASSERT_TRUE(runUntil([&] { return order.size() == 3; }));
  EXPECT_THAT(order, ElementsAre("soon", "third", "late"));
  EXPECT_EQ(3, times);
}

TEST_F(QtRunLoopTest, watchesDescriptorsAndSurvivesFailures) {
  int ends[2];
  ASSERT_EQ(0, pipe(ends));
  int calls = 0;
  RunLoop::Id reading = 0;
  reading = loop_.watch(ends[0], RunLoop::Events::Readable, [&] {
    loop_.cancel(reading);  // inside its own callback, with bytes still unread
    ++calls;
    throw std::runtime_error("not my day");
  });
  bool isWritable = false;
  const auto writing = loop_.watch(ends[1], RunLoop::Events::Writable, [&] { isWritable = true; });
  ASSERT_TRUE(runUntil([&] { return isWritable; }));
  EXPECT_EQ(0, calls);
  loop_.cancel(writing);
  ASSERT_EQ(1, write(ends[1], "x", 1));
  ASSERT_TRUE(runUntil([&] { return calls == 1; }));
  turn();
  EXPECT_EQ(1, calls);
  EXPECT_TRUE(log_.contains("A task of the main thread failed: not my day"));
  close(ends[0]);
  close(ends[1]);
}

// Lanes
// --------------------------------------------------------------------------------------------

class LanesTest : public testing::Test {
 protected:
  RecordingLog log_;
  ThreadLanes lanes_{log_};
};

TEST_F(LanesTest, runsJobsInOrderOnAThreadOfItsOwn) {
  const auto lane = lanes_.start("order");
  std::vector<int> order;
  std::thread::id thread;
  for (int index = 0; index < 1000; ++index)
    lane->post([&order, index] { order.push_back(index); });
  lane->run([&] { thread = std::this_thread::get_id(); });
  EXPECT_EQ(1000U, order.size());
  EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
  EXPECT_NE(std::this_thread::get_id(), thread);
}

TEST_F(LanesTest, aFailedJobCostsOnlyItself) {
  const auto lane = lanes_.start("faulty");
  lane->post([] { throw std::runtime_error("posted"); });
  try {
    lane->run([] { throw InconsistencyError("waited for"); });
    ADD_FAILURE() << "it reaches the caller";
  } catch (const InconsistencyError& error) {
    EXPECT_STREQ("waited for", error.what());
  }
  EXPECT_TRUE(log_.contains("A job of the lane faulty failed: posted"));
  EXPECT_FALSE(log_.contains("waited for"));
  bool hasRefused = false;
  lane->run([&] {
    try {
      lane->run([] {});
    } catch (const InconsistencyError&) {
      hasRefused = true;  // it would wait for ever
    }
  });
  EXPECT_TRUE(hasRefused);
}

TEST_F(LanesTest, aDroppedLaneFinishesOnItsOwn) {
  std::atomic<int> done = 0;
  std::atomic<bool> mayGoOn = false;
  auto lane = lanes_.start("dropped");
  auto other = lanes_.start("other");
  lane->post([&] {
    while (!mayGoOn) std::this_thread::yield();
    other->run([&] { ++done; });
  });
  lane->post([&done, keep = lane] { ++done; });  // the last reference goes on its own thread
  lane.reset();
  EXPECT_FALSE(lanes_.finishAll(0.02));
  EXPECT_EQ(0, done);
  mayGoOn = true;
  EXPECT_TRUE(lanes_.finishAll(5));
  EXPECT_EQ(2, done);
}

TEST_F(LanesTest, inlineLanesKeepTheOrderOfALane) {
  InlineLanes inlineLanes;
  const auto lane = inlineLanes.start("inline");
  std::vector<int> order;
  lane->post([&] {
    lane->post([&] { order.push_back(2); });
    lane->run([&] { order.push_back(1); });
  });
  EXPECT_THAT(order, ElementsAre(1, 2));
  EXPECT_THROW(lane->post([] { throw std::runtime_error("told"); }), std::runtime_error);
  lane->post([&] { order.push_back(3); });
  EXPECT_THAT(order, ElementsAre(1, 2, 3));
}

TEST(SystemClockTest, sleepsUntilTheTimeOrTheEnd) {
  SystemClock clock;
  const double begin = clock.now();
  EXPECT_TRUE(clock.sleepUntil(begin - 100));
  EXPECT_TRUE(clock.sleepUntil(begin + 0.02));
  EXPECT_GE(clock.now(), begin + 0.015);
  std::jthread waker([&] { clock.shutDown(); });
  EXPECT_FALSE(clock.sleepUntil(begin + 1e12));
  EXPECT_FALSE(clock.sleepUntil(begin + 1e12)) << "and from now on";
}

}  // namespace
}  // namespace zolvar
