#pragma once

#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>
#include <vector>

#include "platform/Log.h"

namespace zolvar {

/// Keeps every line. Differs from the real log: nothing is written anywhere, unless the variable
/// ZOLVAR_TEST_LOG is set, which also shows the lines on standard error. Debug lines are kept while
/// the switch is on, as in the real one.
class RecordingLog : public Log {
 public:
  struct Line {
    Level level;
    std::string text;
  };

  explicit RecordingLog(std::string name = {}) : name_(std::move(name)) {
    if (std::getenv("ZOLVAR_TEST_LOG") != nullptr) setDebug(true);
  }
  void write(Level level, std::string_view line) override {
    const std::lock_guard guard(mutex_);
    if (std::getenv("ZOLVAR_TEST_LOG") != nullptr) {
      std::fprintf(stderr, "%s %c %.*s\n", name_.c_str(), "DWE"[static_cast<int>(level)],
                   static_cast<int>(line.size()), line.data());
    }
    lines_.push_back({level, std::string(line)});
  }

  /// How many lines contain the text.
  [[nodiscard]] std::size_t count(std::string_view text) const {
    const std::lock_guard guard(mutex_);
    std::size_t found = 0;
    for (const Line& line : lines_) found += line.text.find(text) != std::string::npos ? 1 : 0;
    return found;
  }
  [[nodiscard]] bool contains(std::string_view text) const { return count(text) > 0; }
  [[nodiscard]] std::vector<Line> lines() const {
    const std::lock_guard guard(mutex_);
    return lines_;
  }
  /// All lines joined, for the message of a failed expectation.
  [[nodiscard]] std::string text() const {
    std::string all;
    for (const Line& line : lines()) all += line.text + "\n";
    return all;
  }
  void clear() {
    const std::lock_guard guard(mutex_);
    lines_.clear();
  }

 private:
  std::string name_;
  mutable std::mutex mutex_;
  std::vector<Line> lines_;
};

}  // namespace zolvar
