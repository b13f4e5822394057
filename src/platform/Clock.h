#pragma once

namespace zolvar {

/// The time of day. Any thread.
class Clock {
 public:
  virtual ~Clock() = default;
  /// Seconds since 1970-01-01 00:00 UTC, with fraction.
  [[nodiscard]] virtual double now() const = 0;
  /// Blocks the calling lane until `time`; false when shutdown woke it earlier. Never on the main
  /// thread.
  virtual bool sleepUntil(double time) = 0;
  /// Wakes every sleeper, now and from now on.
  virtual void shutDown() = 0;
};

/// `now` cut to whole seconds, the grain of log times.
inline double wholeSeconds(double time) {
  return static_cast<double>(static_cast<long long>(time));
}

}  // namespace zolvar
