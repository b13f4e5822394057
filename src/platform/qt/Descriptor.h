#pragma once

#include <unistd.h>

#include <utility>

namespace zolvar {

/// Owns one file descriptor and closes it. Move-only; -1 is none.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    if (this != &other) reset(std::exchange(other.number_, -1));
    return *this;
  }
  ~Descriptor() { reset(); }

  [[nodiscard]] int get() const { return number_; }
  explicit operator bool() const { return number_ >= 0; }
  /// Gives the descriptor away.
  [[nodiscard]] int release() { return std::exchange(number_, -1); }
  void reset(int number = -1) {
    if (number_ >= 0) ::close(number_);
    number_ = number;
  }

 private:
  int number_ = -1;
};

}  // namespace zolvar
