#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/RunLoop.h"

namespace zolvar {

class UserDefaults;
struct Platform;

/// Which folders are paused: all, by "PausedUntil", or single ones, by "pausedFolders". While a
/// folder is paused nothing is fetched for it and nothing is served; what changes here is noted and
/// travels afterwards. Kept across restarts; a pause for some time ends by itself. Owned by the
/// application; the platform outlives it. Main thread.
class Pauses {
 public:
  /// `changed` is told the pool's name, or "" when all are concerned.
  Pauses(Platform& platform, std::function<void(const std::string& poolName)> changed);
  ~Pauses();

  /// `seconds`: none until resumed. "" stands for all folders.
  void pause(const std::string& poolName, std::optional<double> seconds);
  /// "" ends every pause, single ones too.
  void resume(const std::string& poolName);

  [[nodiscard]] bool isPaused(const std::string& poolName) const;
  [[nodiscard]] bool isEverythingPaused() const;
  /// Seconds since 1970; none while it is not paused, 0 while it is until resumed.
  [[nodiscard]] std::optional<double> pausedUntil(const std::string& poolName) const;

  /// "90", "90s", "15m", "1h", "1h30m", "2d"; none when it is no such time or not above 0.
  static std::optional<double> parseDuration(const std::string& text);

 private:
  [[nodiscard]] std::optional<double> own(const std::string& poolName) const;
  void schedule();
  void endExpired();

  Platform& platform_;
  std::function<void(const std::string&)> changed_;
  RunLoop::Id timer_ = 0;
};

}  // namespace zolvar
