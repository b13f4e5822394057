#pragma once

#include <functional>
#include <string>

#include "util/Failure.h"

namespace zolvar {

/// What a person is told outside of any window.
struct Notice {
  enum class Urgency : unsigned char { Low = 0, Normal = 1, Critical = 2 };

  std::string key;    ///< takes the place of the shown notice of the same key; empty: of none
  std::string title;  ///< one line, plain
  std::string text;   ///< plain, lines ended by "\n"
  Urgency urgency = Urgency::Normal;
  bool isSticky = false;  ///< stays until the person closes it
};

/// Pages of the system's own settings.
enum class SettingsPage { DateAndTime, Firewall };

/// The desktop around us. Main thread; nothing here waits for an answer.
class Workspace {
 public:
  virtual ~Workspace() = default;
  virtual void open(const std::string& path) = 0;
  /// Opens the page in whatever this desktop has for it.
  virtual void openSettings(SettingsPage page) = 0;
  /// Shows a notice; `onClick` is called, on the main thread, each time the person clicks it, until
  /// it is closed, withdrawn or replaced. Quietly nothing where no notification service answers.
  virtual void showNotice(const Notice& notice, std::function<void()> onClick) = 0;
  /// Takes the notice of that key off the screen; nothing when there is none.
  virtual void withdrawNotice(const std::string& key) = 0;
  virtual Result<> setAutostart(bool enabled) = 0;
  [[nodiscard]] virtual bool isAutostarted() const = 0;
  virtual void beep() = 0;
};

}  // namespace zolvar
