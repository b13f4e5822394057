#include "platform/qt/SystemClock.h"

#include <algorithm>
#include <chrono>

namespace zolvar {

double SystemClock::now() const {
  return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

bool SystemClock::sleepUntil(double time) {
  constexpr double LongestSleep = 1e9;  // seconds; keeps the arithmetic below in range
  const double seconds = std::clamp(time - now(), 0.0, LongestSleep);
  const auto end = std::chrono::steady_clock::now() +
                   std::chrono::duration_cast<std::chrono::steady_clock::duration>(
                       std::chrono::duration<double>(seconds));
  std::unique_lock lock(mutex_);
  return !wake_.wait_until(lock, end, [this] { return isShutDown_; });
}

void SystemClock::shutDown() {
  {
    std::lock_guard lock(mutex_);
    isShutDown_ = true;
  }
  wake_.notify_all();
}

}  // namespace zolvar
