#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "PlatformFixture.h"

namespace zolvar {

/// A test over the real run loop that takes its time, with a folder of its own.
class AdapterTest : public LoopTest {
 protected:
  static void runFor(double seconds) {
    runUntil([] { return false; }, seconds);
  }

  const TemporaryFolder folder_;
};

/// A test that talks to services which with-services.sh starts for it.
class ServiceTest : public AdapterTest {
 protected:
  void SetUp() override {
    if (std::getenv("ZOLVAR_TEST_SERVICES") == nullptr) {
      GTEST_SKIP() << "needs the services of tests/platform/with-services.sh";
    }
  }
  static bool run(const std::string& command) {
    return std::system((command + " > /dev/null 2>&1").c_str()) == 0;
  }
};

}  // namespace zolvar
