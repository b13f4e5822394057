#pragma once

#include <random>

#include "platform/Random.h"

namespace zolvar {

/// Like the real generator, but its seed is always given, so that runs repeat.
class SimulatedRandom : public Random {
 public:
  explicit SimulatedRandom(std::uint64_t seed = 1) : generator_(seed) {}
  double uniform() override { return static_cast<double>(generator_() >> 11U) * 0x1.0p-53; }

 private:
  std::mt19937_64 generator_;
};

}  // namespace zolvar
