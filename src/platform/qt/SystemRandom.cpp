#include "platform/qt/SystemRandom.h"

namespace zolvar {

namespace {

std::uint64_t entropy() {
  std::random_device device;
  return (static_cast<std::uint64_t>(device()) << 32) | device();
}

}  // namespace

SystemRandom::SystemRandom() : engine_(entropy()) {}

double SystemRandom::uniform() {
  return static_cast<double>(engine_() >> 11) * 0x1p-53;  // 53 bits: every value below 1 exactly
}

}  // namespace zolvar
