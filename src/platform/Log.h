#pragma once

#include <fmt/format.h>

#include <atomic>
#include <string_view>
#include <utility>

namespace zolvar {

/// One-line messages for whoever looks after this machine. Any thread. Warnings and errors are
/// always written, debug lines only while the debug switch is on.
class Log {
 public:
  enum class Level { Debug, Warning, Error };

  virtual ~Log() = default;
  virtual void write(Level level, std::string_view line) = 0;

  [[nodiscard]] bool isDebug() const { return debug_.load(std::memory_order_relaxed); }
  void setDebug(bool on) { debug_.store(on, std::memory_order_relaxed); }

  template <class... Arguments>
  void debug(fmt::format_string<Arguments...> format, Arguments&&... arguments) {
    if (isDebug()) write(Level::Debug, fmt::format(format, std::forward<Arguments>(arguments)...));
  }
  template <class... Arguments>
  void warning(fmt::format_string<Arguments...> format, Arguments&&... arguments) {
    write(Level::Warning, fmt::format(format, std::forward<Arguments>(arguments)...));
  }
  template <class... Arguments>
  void error(fmt::format_string<Arguments...> format, Arguments&&... arguments) {
    write(Level::Error, fmt::format(format, std::forward<Arguments>(arguments)...));
  }

 private:
  std::atomic<bool> debug_{false};
};

}  // namespace zolvar
