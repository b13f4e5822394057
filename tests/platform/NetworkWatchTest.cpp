#include "ServiceTest.h"
#include "platform/qt/NetlinkNetworkWatch.h"

namespace zolvar {
namespace {

class NetworkWatchTest : public ServiceTest {};

TEST_F(NetworkWatchTest, reportsEachRealChangeOnce) {
  NetlinkNetworkWatch watch(loop_, log_);
  int changes = 0;
  watch.observe([&] { ++changes; });
  for (const char* address : {"10.78.1.1", "10.78.1.2", "10.78.1.3"}) {
    ASSERT_TRUE(run(std::string("ip addr add ") + address + "/24 dev zv0"));
  }
  EXPECT_TRUE(runUntil([&] { return changes == 1; }));
  // Renewed, and gone and back within the burst: nothing has changed.
  ASSERT_TRUE(run("ip addr change 10.78.1.1/24 dev zv0 valid_lft 900 preferred_lft 900"));
  ASSERT_TRUE(run("ip addr del 10.78.1.3/24 dev zv0 && ip addr add 10.78.1.3/24 dev zv0"));
  runFor(0.4);
  EXPECT_EQ(changes, 1);
  ASSERT_TRUE(run("ip addr del 10.78.1.2/24 dev zv0"));
  EXPECT_TRUE(runUntil([&] { return changes == 2; }));
  watch.observe(nullptr);
  ASSERT_TRUE(run("ip addr del 10.78.1.3/24 dev zv0"));
  runFor(0.4);
  EXPECT_EQ(changes, 2);
}

}  // namespace
}  // namespace zolvar
