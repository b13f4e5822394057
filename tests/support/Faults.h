#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "util/Failure.h"

namespace zolvar {

/// Thrown where a simulated process dies. No std::exception on purpose: nothing may catch it but
/// the test that asked for it.
struct SimulatedCrash {
  std::string where;
};

/// Makes calls of a stand-in fail. Every stand-in that can fail owns one and asks it once a call.
class Faults {
 public:
  /// The `nth` matching call from now on (1 is the next) fails; "" matches every operation.
  void failAt(std::size_t nth, std::string operation = {},
              FailureKind kind = FailureKind::Transient) {
    plans_.push_back({nth, std::move(operation), kind, Plan::Once});
  }
  /// Every matching call fails until clear().
  void failAlways(std::string operation, FailureKind kind = FailureKind::Transient) {
    plans_.push_back({1, std::move(operation), kind, Plan::Always});
  }
  /// The `nth` matching call throws SimulatedCrash instead of doing anything, and the stand-in
  /// stays frozen.
  void crashAt(std::size_t nth, std::string operation = {}) {
    plans_.push_back({nth, std::move(operation), FailureKind::Cancelled, Plan::Crash});
  }
  /// While frozen every call fails and changes nothing: what a dead process can still do.
  void freeze() { isFrozen_ = true; }
  void clear() {
    plans_.clear();
    isFrozen_ = false;
  }
  [[nodiscard]] bool isFrozen() const { return isFrozen_; }
  [[nodiscard]] std::size_t calls() const { return calls_; }

  /// Called before everything else, to let others work in between.
  std::function<void()> inBetween;
  /// Called before each operation, also to change the world in the middle of something.
  std::function<void(std::string_view operation, std::string_view subject)> beforeCall;

  /// The stand-in's question: does this call fail?
  std::optional<Failure> next(std::string_view operation, std::string_view subject) {
    const auto failure = [&](FailureKind kind) {
      return Failure{kind, std::string(operation), std::string(subject), "simulated failure"};
    };
    if (inBetween) inBetween();
    if (isFrozen_) return failure(FailureKind::Cancelled);
    ++calls_;
    if (beforeCall) {
      const auto hook = beforeCall;
      hook(operation, subject);
    }
    for (auto plan = plans_.begin(); plan != plans_.end(); ++plan) {
      if (!plan->operation.empty() && plan->operation != operation) continue;
      if (plan->what == Plan::Always) return failure(plan->kind);
      if (--plan->countdown > 0) continue;
      const Plan reached = *plan;
      plans_.erase(plan);
      if (reached.what == Plan::Crash) {
        isFrozen_ = true;
        throw SimulatedCrash{std::string(operation) + " " + std::string(subject)};
      }
      return failure(reached.kind);
    }
    return std::nullopt;
  }

 private:
  struct Plan {
    std::size_t countdown;
    std::string operation;
    FailureKind kind;
    enum What { Once, Always, Crash } what;
  };
  std::vector<Plan> plans_;
  std::size_t calls_ = 0;
  bool isFrozen_ = false;
};

}  // namespace zolvar
