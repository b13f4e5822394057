#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>

#include "app/AppHost.h"

namespace zolvar {

/// Two machines of a simulated network; ann's has a folder with a letter.
class TwoHosts : public testing::Test {
 protected:
  TwoHosts() { ann.platform.files.write("/home/user/Docs/letter", "dear bob"); }

  /// Starts both, and waits until what is asked of a clock or a network at the start is over.
  void start(double seconds = 22) {
    ann.start();
    bob.start();
    world.loop.advance(seconds);
  }
  bool until(const std::function<bool()>& done, double limit = 200) {
    return world.loop.runUntil(done, limit);
  }
  bool sees(AppHost& host, const std::string& pool) {
    return until([&] { return host.app->peer().presence(pool) != nullptr; });
  }
  /// What lies in bob's folder.
  std::optional<std::string> arrived(const std::string& path) {
    return bob.platform.files.readAll("/home/user/Docs/" + path);
  }

  SimulatedWorld world;
  AppHost ann{world, "alpha", "ann"};
  AppHost bob{world, "beta", "bob"};
};

}  // namespace zolvar
