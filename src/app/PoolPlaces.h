#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/FileSystem.h"

namespace zolvar {

class UserDefaults;

/// Where the user's settings say that a pool lies.
struct StoredPlace {
  std::string name;
  std::string path;                      ///< absolute
  std::optional<FileIdentity> identity;  ///< of the folder when it was last there
  bool isSubscribed = false;
};

/// What the settings remember of pools from one run to the next: the folder of each ("QMPool-NAME",
/// beside it "QMPoolIdentity-NAME", which finds the folder again when it was moved meanwhile) and
/// which are subscribed to ("activePools"). Owned by the application; what is handed in outlives
/// it. Main thread.
class PoolPlaces {
 public:
  PoolPlaces(UserDefaults& defaults, FileSystem& fileSystem, std::string syncFolderDirectory);

  /// The stored path; without one, a folder of that name in the sync folder directory, which is
  /// stored then.
  std::string trackedPathForPoolName(const std::string& name);
  /// Stores the path, and the identity of the folder there if there is one.
  void setPath(const std::string& name, const std::string& path);
  void forget(const std::string& name);
  [[nodiscard]] bool isStored(const std::string& name) const;

  [[nodiscard]] bool isSubscribed(const std::string& name) const;
  void setSubscribed(const std::string& name, bool subscribed);

  /// All pools that have a stored path, by name.
  [[nodiscard]] std::vector<StoredPlace> storedPlaces() const;

  /// `identity` as "device:inode", and back; none when it cannot be read.
  static std::string identityText(const FileIdentity& identity);
  static std::optional<FileIdentity> parseIdentity(const std::string& text);

 private:
  UserDefaults& defaults_;
  FileSystem& fileSystem_;
  std::string syncFolderDirectory_;
};

}  // namespace zolvar
