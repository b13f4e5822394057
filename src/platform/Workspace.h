#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "util/Failure.h"

namespace zolvar {

struct Notice {
  std::string title;
  std::string text;
  bool urgent = false;
  std::uint32_t replaces = 0;  ///< id of an earlier notice to replace; 0 for none
};

/// The desktop around us. Main thread; nothing here waits for an answer.
class Workspace {
 public:
  virtual ~Workspace() = default;
  virtual void open(const std::string& path) = 0;
  /// Shows a notice; `clicked` is called when the user clicks it. Quietly nothing where no
  /// notification service answers.
  virtual void show(const Notice& notice, std::function<void()> clicked) = 0;
  virtual Result<> setAutostart(bool enabled) = 0;
  virtual void beep() = 0;
};

}  // namespace zolvar
