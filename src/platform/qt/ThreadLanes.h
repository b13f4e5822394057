#pragma once

#include <memory>

#include "platform/Lanes.h"

namespace zolvar {

class Log;

/// Lanes on threads, one thread a lane. Any thread. A lane whose last reference goes finishes its
/// queue on its own and ends; nobody joins it. A std::exception that leaves a posted job is logged
/// as an error and the lane goes on. The log outlives all lanes.
class ThreadLanes : public Lanes {
 public:
  explicit ThreadLanes(Log& log);
  ~ThreadLanes() override;

  std::shared_ptr<Lane> start(const std::string& name) override;
  /// Waits until no job is queued or running on any lane and every lane that nobody refers to has
  /// ended; false when `seconds` passed first. For the end of the program.
  bool finishAll(double seconds);

 private:
  class Worker;
  class ThreadLane;
  struct Census;

  Log& log_;
  std::shared_ptr<Census> census_;
};

}  // namespace zolvar
