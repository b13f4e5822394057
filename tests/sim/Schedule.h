#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace zolvar {

/// One thing that happens in a simulated network: `wait` seconds after the one before, to the named
/// computer ("-" for the network). As text: "12.5 beta write d/x".
struct Operation {
  double wait = 0;
  std::string peer;
  std::vector<std::string> words;  ///< the verb and its arguments; see docs/reliability.md
  bool operator==(const Operation&) const = default;
};

/// What happens in a simulated network, in order. A value: the same schedule always runs the same.
struct Schedule {
  std::vector<Operation> operations;

  [[nodiscard]] std::string text() const;
  /// One operation a line; "#" begins a comment. Throws std::invalid_argument.
  static Schedule parse(const std::string& text);
  /// At least 40 operations, 2 partitions and 1 crash among 2 to 6 computers.
  static Schedule random(std::uint64_t seed);
  /// The smallest part found for which `fails` still holds: pieces of halving size are left out
  /// first, then waits and arguments made simpler.
  [[nodiscard]] Schedule shrunk(const std::function<bool(const Schedule&)>& fails) const;
};

}  // namespace zolvar
