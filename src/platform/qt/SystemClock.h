#pragma once

#include <condition_variable>
#include <mutex>

#include "platform/Clock.h"

namespace zolvar {

/// The machine's clock. Any thread. A sleep lasts as long as the clock promised when it began, so a
/// clock that is set back meanwhile does not prolong it.
class SystemClock : public Clock {
 public:
  [[nodiscard]] double now() const override;
  bool sleepUntil(double time) override;
  void shutDown() override;

 private:
  std::mutex mutex_;  ///< guards isShutDown_
  std::condition_variable wake_;
  bool isShutDown_ = false;
};

}  // namespace zolvar
