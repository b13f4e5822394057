#pragma once

#include "platform/Clock.h"

namespace zolvar {

/// Virtual time. Differs from the real clock: it stands still until someone moves it, and sleeping
/// moves it at once instead of blocking. A host's clock can be a view of the network's clock that
/// is off by some seconds. One thread.
class SimulatedClock : public Clock {
 public:
  explicit SimulatedClock(double start = 1'750'000'000) : time_(start) {}
  SimulatedClock(SimulatedClock& network, double skew) : network_(&network), skew_(skew) {}

  [[nodiscard]] double now() const override {
    return (network_ != nullptr ? network_->now() : time_) + skew_;
  }
  bool sleepUntil(double time) override {
    if (isShutDown_) return false;
    if (time > now()) {
      slept_ += time - now();
      advance(time - now());
    }
    return true;
  }
  void shutDown() override { isShutDown_ = true; }

  /// Moves the time, of the whole network when this is a view, without running anything.
  void advance(double seconds) {
    if (network_ != nullptr) {
      network_->advance(seconds);
    } else {
      time_ += seconds;
    }
  }
  void advanceTo(double time) {
    if (time > now()) advance(time - now());
  }
  /// Steps this clock alone, also backwards, as a person or a time server does.
  void step(double seconds) { skew_ += seconds; }
  [[nodiscard]] double slept() const { return slept_; }  ///< seconds spent in sleepUntil
  void restart() { isShutDown_ = false; }

 private:
  SimulatedClock* network_ = nullptr;
  double time_ = 0;
  double skew_ = 0;
  double slept_ = 0;
  bool isShutDown_ = false;
};

}  // namespace zolvar
