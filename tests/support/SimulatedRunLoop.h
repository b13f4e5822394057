#pragma once

#include <map>
#include <memory>
#include <optional>

#include "platform/RunLoop.h"
#include "support/SimulatedClock.h"

namespace zolvar {

/// An event loop in virtual time. Differs from the real one: it runs only inside runUntilIdle,
/// runUntil and advance, and stands still while a lane's job runs; watches are stored and never
/// fire. Several hosts can share one queue, each with a front of its own.
class SimulatedRunLoop : public RunLoop {
 public:
  explicit SimulatedRunLoop(SimulatedClock& clock);
  /// Another host's front of the same queue.
  explicit SimulatedRunLoop(SimulatedRunLoop& shared);
  ~SimulatedRunLoop() override;
  SimulatedRunLoop(const SimulatedRunLoop&) = delete;
  SimulatedRunLoop& operator=(const SimulatedRunLoop&) = delete;

  Id after(double seconds, Task task) override;
  Id every(double seconds, Task task) override;
  void cancel(Id id) override;
  void post(Task task) override;
  [[nodiscard]] bool isMainThread() const override;
  Id watch(int descriptor, Events events, Task ready) override;

  /// Runs everything that is due now and what that brings about at once; the time stands still.
  void runUntilIdle();
  /// Runs everything that falls due within the next seconds, in order of time.
  void advance(double seconds);
  /// Runs one due thing after the other until `done` or until `limit` seconds have passed; true
  /// when done.
  bool runUntil(const std::function<bool()>& done, double limit);
  /// Forgets everything that this front asked for: its process has died.
  void dropAll();
  [[nodiscard]] std::optional<double> nextDue() const;
  [[nodiscard]] std::size_t watchCount() const;
  /// True while a task of the loop runs on the main thread.
  [[nodiscard]] bool isInTurn() const;
  [[nodiscard]] SimulatedClock& clock();

 private:
  struct Queue;
  Id add(double seconds, double interval, Task task);
  bool runFirst(double until);

  std::shared_ptr<Queue> queue_;
};

}  // namespace zolvar
