// Whole networks of two and three computers through ordinary days.

#include <gtest/gtest.h>

#include "sim/SimulatedPeer.h"

namespace zolvar {
namespace {

using Paths = std::vector<std::string>;

TEST(Scenario, sharedFilesReachASubscriber) {
  Net net;
  auto& a = net.peer("alpha");
  auto& b = net.peer("beta");
  a.write("Docs/x", "one");
  a.write("Docs/sub/y", "two");
  net.advance(60);
  a.share("Docs");
  net.advance(60);
  b.subscribe("Docs");
  net.expectSame("Docs", {{"x", "one"}, {"sub", "/"}, {"sub/y", "two"}});
}

}  // namespace
}  // namespace zolvar
