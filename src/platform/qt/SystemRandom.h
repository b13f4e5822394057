#pragma once

#include <cstdint>
#include <random>

#include "platform/Random.h"

namespace zolvar {

/// Random numbers of a Mersenne twister. Main thread.
class SystemRandom : public Random {
 public:
  /// Seeds from the system's entropy.
  SystemRandom();
  explicit SystemRandom(std::uint64_t seed) : engine_(seed) {}

  double uniform() override;

 private:
  std::mt19937_64 engine_;
};

}  // namespace zolvar
