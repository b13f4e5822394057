#pragma once

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <vector>

#include "platform/Log.h"

namespace zolvar::bench {

class NoLog : public Log {
 public:
  void write(Level, std::string_view) override {}
};

template <class Action>
double secondsOf(const Action& action) {
  const auto begin = std::chrono::steady_clock::now();
  action();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

inline double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

/// Runs both in turn, a warm-up and then `rounds`, and returns the medians.
template <class First, class Second>
std::pair<double, double> compare(int rounds, const First& first, const Second& second) {
  std::vector<double> firsts;
  std::vector<double> seconds;
  for (int round = -1; round < rounds; ++round) {
    const double one = secondsOf(first);
    const double two = secondsOf(second);
    if (round < 0) continue;
    firsts.push_back(one);
    seconds.push_back(two);
  }
  return {median(firsts), median(seconds)};
}

/// The line that `./dev bench` shows; `isAtLeast` says which side of the budget is good.
inline void printBudget(const std::string& what, double measured, double budget, const char* unit,
                        bool isAtLeast = false) {
  const bool holds = isAtLeast ? measured >= budget : measured <= budget;
  fmt::print("BUDGET {} | measured {:.2f}{} | budget {} {}{} | {}\n", what, measured, unit,
             isAtLeast ? "at least" : "at most", budget, unit, holds ? "ok" : "MISSED");
}

}  // namespace zolvar::bench
