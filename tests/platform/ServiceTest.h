#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <string>

#include "PlatformFixture.h"

namespace zolvar {

/// A test over the real run loop that takes its time, with a folder of its own.
class AdapterTest : public LoopTest {
 protected:
  /// Runs the loop until `isDone`, at most so many seconds.
  static bool waitFor(const std::function<bool()>& isDone, double seconds = 10) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    while (!isDone()) {
      if (std::chrono::steady_clock::now() >= end) return false;
      QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
      ::usleep(1000);
    }
    return true;
  }
  static void runFor(double seconds) {
    waitFor([] { return false; }, seconds);
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
