#pragma once

#include <functional>
#include <memory>
#include <string>

namespace zolvar {

/// A serial worker: its jobs run one after the other, in order of posting, never on the main
/// thread. Destroying a lane lets the jobs already posted finish on their own and blocks nobody.
class Lane {
 public:
  using Job = std::function<void()>;
  virtual ~Lane() = default;
  /// Any thread.
  virtual void post(Job job) = 0;
  /// Posts and waits for the job. For jobs of another lane; never for the main thread and never
  /// from the lane itself. An exception of the job is thrown again at the caller.
  virtual void run(const Job& job) = 0;
};

/// Starts lanes. Any thread.
class Lanes {
 public:
  virtual ~Lanes() = default;
  virtual std::shared_ptr<Lane> start(const std::string& name) = 0;
};

}  // namespace zolvar
