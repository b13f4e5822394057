#include <avahi-common/timeval.h>
#include <fcntl.h>

#include <array>

#include "ServiceTest.h"
#include "platform/qt/AvahiPollAdapter.h"

namespace zolvar {
namespace {

class AvahiPollAdapterTest : public AdapterTest {
 protected:
  void SetUp() override { ASSERT_EQ(::pipe2(pipe_.data(), O_NONBLOCK | O_CLOEXEC), 0); }
  void TearDown() override {
    ::close(pipe_[0]);
    if (pipe_[1] >= 0) ::close(pipe_[1]);
  }
  AvahiPollAdapter adapter_{loop_};
  const AvahiPoll& api_ = *adapter_.api();
  std::array<int, 2> pipe_{};
};

struct Seen {
  const AvahiPoll* api;
  int calls = 0;
  int events = 0;
  bool endsItself = false;
};

void watchCalled(AvahiWatch* watch, int, AvahiWatchEvent event, void* data) {
  auto& seen = *static_cast<Seen*>(data);
  ++seen.calls;
  seen.events = event;
  EXPECT_EQ(seen.api->watch_get_events(watch), event);
  if (seen.endsItself) seen.api->watch_free(watch);
}

TEST_F(AvahiPollAdapterTest, watchesBothDirectionsAndTellsHangUps) {
  Seen reading{&api_};
  Seen writing{&api_};
  AvahiWatch* reader = api_.watch_new(&api_, pipe_[0], AVAHI_WATCH_IN, watchCalled, &reading);
  AvahiWatch* writer = api_.watch_new(&api_, pipe_[1], AVAHI_WATCH_OUT, watchCalled, &writing);
  EXPECT_TRUE(runUntil([&] { return writing.calls > 2; }));
  EXPECT_EQ(writing.events, AVAHI_WATCH_OUT);
  EXPECT_EQ(reading.calls, 0);
  api_.watch_update(writer, static_cast<AvahiWatchEvent>(0));
  const int before = writing.calls;
  ASSERT_EQ(::write(pipe_[1], "x", 1), 1);
  EXPECT_TRUE(runUntil([&] { return reading.calls > 0; }));
  EXPECT_EQ(reading.events, AVAHI_WATCH_IN);
  EXPECT_EQ(writing.calls, before);
  EXPECT_EQ(api_.watch_get_events(reader), 0);  // valid in the callback only
  api_.watch_free(writer);
  ::close(pipe_[1]);
  pipe_[1] = -1;
  reading.endsItself = true;
  EXPECT_TRUE(runUntil([&] { return (reading.events & AVAHI_WATCH_HUP) != 0; }));
  const int last = reading.calls;
  runFor(0.02);
  EXPECT_EQ(reading.calls, last);
}

TEST_F(AvahiPollAdapterTest, timesFireOnceAreMovedAndDisabled) {
  struct Timer {
    const AvahiPoll* api;
    int calls = 0;
    int again = 0;
    bool endsItself = false;
  };
  const auto called = [](AvahiTimeout* timeout, void* data) {
    auto& timer = *static_cast<Timer*>(data);
    ++timer.calls;
    timeval now{};
    if (timer.again-- > 0) {
      timer.api->timeout_update(timeout, avahi_elapse_time(&now, 1, 0));
    } else if (timer.endsItself) {
      timer.api->timeout_free(timeout);
    }
  };
  timeval past{1, 0};
  timeval soon{};
  avahi_elapse_time(&soon, 5, 0);
  Timer never{&api_}, overdue{&api_, 0, 2}, ends{&api_, 0, 0, true}, disabled{&api_};
  api_.timeout_new(&api_, nullptr, called, &never);
  api_.timeout_new(&api_, &past, called, &overdue);
  api_.timeout_new(&api_, &soon, called, &ends);
  api_.timeout_update(api_.timeout_new(&api_, &soon, called, &disabled), nullptr);
  EXPECT_EQ(overdue.calls, 0);  // never from inside the call
  runFor(0.05);
  EXPECT_EQ(overdue.calls, 3);
  EXPECT_EQ(ends.calls, 1);
  EXPECT_EQ(never.calls + disabled.calls, 0);
}

}  // namespace
}  // namespace zolvar
