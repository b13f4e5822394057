#pragma once

#include <string>

#include "util/Failure.h"

namespace zolvar {

/// What the desktop starts at login, by the XDG autostart rules: one file of a fixed name, so that
/// there is never more than one entry. Immutable; any thread. Fails: as the file system does.
class AutostartEntry {
 public:
  /// `configFolder` is the user's XDG configuration folder.
  explicit AutostartEntry(const std::string& configFolder);

  /// Makes the entry start `program` without its window; an entry that does so already is not
  /// touched, any other is replaced.
  [[nodiscard]] Result<> enable(const std::string& program) const;
  /// Absent is success.
  [[nodiscard]] Result<> disable() const;
  /// Whether the desktop starts us at login: the entry is there and nobody has switched it off.
  [[nodiscard]] bool isEnabled() const;

  [[nodiscard]] const std::string& path() const { return path_; }

 private:
  std::string path_;
};

}  // namespace zolvar
