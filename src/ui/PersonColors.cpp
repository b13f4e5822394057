#include "ui/PersonColors.h"

#include <algorithm>

#include "util/hexHash.h"

namespace zolvar {
namespace {

// Hues that lie well apart, and far from the green that marks what is here.
constexpr int Hues[] = {212, 28, 268, 340, 188, 48, 300, 8, 236, 318};

}  // namespace

QColor PersonColors::of(const std::string& userId) {
  const auto color = [](std::size_t number) { return QColor::fromHsl(Hues[number], 130, 125); };
  if (const auto given = given_.find(userId); given != given_.end()) return color(given->second);
  const auto isTaken = [this](std::size_t number) {
    return std::any_of(given_.begin(), given_.end(),
                       [number](const auto& each) { return each.second == number; });
  };
  const std::size_t wanted = std::stoul(hexHash(userId), nullptr, 16) % std::size(Hues);
  std::size_t number = wanted;
  for (std::size_t step = 0; isTaken(number) && step < std::size(Hues); ++step) {
    number = (number + 1) % std::size(Hues);
  }
  given_[userId] = number;
  return color(number);
}

}  // namespace zolvar
