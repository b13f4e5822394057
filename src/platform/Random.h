#pragma once

namespace zolvar {

/// Uniform random numbers from a seed. Main thread.
class Random {
 public:
  virtual ~Random() = default;
  /// Uniform in [0, 1).
  virtual double uniform() = 0;
};

}  // namespace zolvar
