#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/Lanes.h"
#include "support/SimulatedRunLoop.h"

namespace zolvar {

/// Lanes that pass one baton: a job begins at a later turn of the run loop, at the same virtual
/// time and in order within its lane, and runs until it is done, pauses, or waits for a job of
/// another lane; meanwhile everything else goes on. Differs from the real ones: nothing runs at the
/// same time, so the same run is the same each time. Waiting for a lane on the main thread inside
/// a turn, and a lane that waits for itself, throw InconsistencyError: the real lanes would block.
class SimulatedLanes : public Lanes {
 public:
  explicit SimulatedLanes(SimulatedRunLoop& loop) : loop_(loop) {}
  std::shared_ptr<Lane> start(const std::string& name) override;

  /// Lets time pass for everybody, in a lane's job; on other threads it only moves the clock.
  void pause(double seconds);
  /// Nothing waits or is paused on any lane.
  [[nodiscard]] bool areIdle() const;
  /// Ends all jobs where they paused, and forgets those that wait: their process has died.
  void abandonAll();

 private:
  struct Jobs;
  class SimulatedLane;
  SimulatedRunLoop& loop_;
  std::vector<std::weak_ptr<Jobs>> all_;
};

}  // namespace zolvar
