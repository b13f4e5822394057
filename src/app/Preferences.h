#pragma once

#include <map>
#include <string>

#include "util/Failure.h"

namespace zolvar {

class Application;
class Operations;
class UserDefaults;

/// The setting "StartAtLogin": true unless it is set to something else.
[[nodiscard]] bool startsAtLogin(const UserDefaults& defaults);

/// What a person sets for the whole program, in one place for a preferences panel. Read it, change
/// the copy, save it. Main thread.
struct Preferences {
  std::string language;  ///< empty: the system's
  bool startsAtLogin = true;
  bool syncsByItself = true;   ///< false while everything is paused
  bool isQuick = false;        ///< takes effect at the next start
  unsigned long limitOut = 0;  ///< KB/s; 0: none
  unsigned long limitIn = 0;   ///< KB/s; 0: none
  unsigned long versionsDays = 0;
  unsigned long versionsMegabytes = 0;  ///< for each folder
  std::map<std::string, bool> notices;  ///< of the folders subscribed to, by name
  bool warnsAlways = true;  ///< none of the warnings before a person's doing is switched off

  static Preferences read(Application& application, const Operations& operations);
  /// Writes what differs from `before`, all that can be written; fails as the first that cannot.
  Result<> save(const Preferences& before, Application& application, Operations& operations) const;

  bool operator==(const Preferences&) const = default;
};

}  // namespace zolvar
