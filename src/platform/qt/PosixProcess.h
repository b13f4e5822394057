#pragma once

#include <memory>
#include <string>

#include "platform/ProcessLauncher.h"
#include "platform/qt/ChildKeeper.h"

namespace zolvar {

/// How often a waiting process is looked at, and how long an asked one may take to end, in seconds.
struct ProcessPace {
  double tick = 0.5;
  double patience = 5;
};

/// A running child with our ends of its pipes. `terminate` and `pid` from any thread, `wait` from
/// one. While nobody waits, a child that writes more than a pipe holds stands still.
class PosixProcess : public Process {
 public:
  /// Our ends of the pipes; none where the child has /dev/null.
  struct Pipes {
    Descriptor input;
    Descriptor output;
    Descriptor errors;
  };

  PosixProcess(std::shared_ptr<ChildKeeper> keeper, std::shared_ptr<Child> child, Pipes pipes,
               std::string input, const ProcessPace& pace);
  ~PosixProcess() override;

  [[nodiscard]] int pid() const override { return child_->pid(); }
  void terminate() override;
  ProcessEnd wait(const SilenceLimits& limits, const ProcessSinks& sinks) override;

 private:
  class SilenceWatch;

  bool feed();
  static bool drain(Descriptor& pipe, const std::function<void(std::string_view)>& sink);
  bool pollOnce(int timeout, const ProcessSinks& sinks, bool& hasEnded);

  const std::shared_ptr<ChildKeeper> keeper_;
  const std::shared_ptr<Child> child_;
  Pipes pipes_;
  std::string input_;
  const double tick_;    ///< seconds
  std::size_t fed_ = 0;  ///< bytes of input_ already written
};

}  // namespace zolvar
