#include <gtest/gtest.h>

#include <optional>

#include "util/NotificationCenter.h"

namespace zolvar {
namespace {

struct Ping {
  int number;
};
struct Pong {};

TEST(NotificationCenter, deliversByTypeUntilTheObservationEnds) {
  NotificationCenter center;
  std::vector<int> seen;
  {
    const auto observation =
        center.observe<Ping>([&](const Ping& ping) { seen.push_back(ping.number); });
    center.post(Ping{1});
    center.post(Pong{});
  }
  center.post(Ping{2});
  EXPECT_EQ(seen, std::vector<int>{1});
}

TEST(NotificationCenter, letsCallbacksEndAndBeginObservations) {
  NotificationCenter center;
  std::vector<std::string> calls;
  std::optional<NotificationCenter::Observation> second;
  NotificationCenter::Observation third;
  const auto first = center.observe<Ping>([&](const Ping&) {
    calls.emplace_back("first");
    second.reset();
    third = center.observe<Ping>([&](const Ping&) { calls.emplace_back("third"); });
  });
  second = center.observe<Ping>([&](const Ping&) { calls.emplace_back("second"); });
  center.post(Ping{1});
  EXPECT_EQ(calls, std::vector<std::string>{"first"});
  calls.clear();
  center.post(Ping{2});
  EXPECT_EQ(calls, std::vector<std::string>{"first"});  // the third was replaced meanwhile
}

TEST(NotificationCenter, mayGoBeforeItsObservations) {
  NotificationCenter::Observation left;
  {
    NotificationCenter center;
    left = center.observe<Ping>([](const Ping&) {});
  }
  left = {};
}

}  // namespace
}  // namespace zolvar
