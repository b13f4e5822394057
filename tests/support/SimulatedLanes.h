#pragma once

#include <deque>
#include <memory>
#include <string>

#include "platform/Lanes.h"
#include "support/SimulatedRunLoop.h"

namespace zolvar {

/// Lanes without threads. Differs from the real ones: a posted job runs whole at a later turn of
/// the run loop, at the same virtual time and in order within its lane (or at once, in Inline
/// mode); `run` does the lane's waiting jobs and then the job on the caller. Waiting on the main
/// thread inside a turn and a lane that waits for itself throw InconsistencyError: the real lanes
/// would block there.
class SimulatedLanes : public Lanes {
 public:
  enum class Mode { AtLoopTurn, Inline };

  explicit SimulatedLanes(SimulatedRunLoop& loop, Mode mode = Mode::AtLoopTurn)
      : loop_(loop), mode_(mode) {}
  std::shared_ptr<Lane> start(const std::string& name) override;
  void setMode(Mode mode) { mode_ = mode; }

 private:
  class SimulatedLane;
  SimulatedRunLoop& loop_;
  Mode mode_;
};

}  // namespace zolvar
