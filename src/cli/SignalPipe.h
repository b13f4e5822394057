#pragma once

#include <functional>

#include "platform/RunLoop.h"

namespace zolvar {

/// Brings SIGTERM and SIGINT to the run loop. Handlers, not a blocked mask: children must get these
/// signals as ever. One a program; the run loop outlives it. Main thread.
class SignalPipe {
 public:
  SignalPipe(RunLoop& runLoop, std::function<void()> stop);
  ~SignalPipe();
  SignalPipe(const SignalPipe&) = delete;
  SignalPipe& operator=(const SignalPipe&) = delete;

 private:
  RunLoop& runLoop_;
  int readEnd_ = -1;
  int writeEnd_ = -1;
  RunLoop::Id watch_ = 0;
};

}  // namespace zolvar
