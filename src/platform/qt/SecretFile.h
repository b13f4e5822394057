#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "platform/Log.h"
#include "util/Failure.h"

namespace zolvar {

/// Passwords in one file that only its user can read (mode 0600): a line each of service, account
/// and password, with tabs between and backslash escapes within. Any thread. A line that cannot be
/// read costs only itself. Fails: as the file system does.
class SecretFile {
 public:
  SecretFile(std::string path, Log& log);

  [[nodiscard]] Result<std::optional<std::string>> find(const std::string& service,
                                                        const std::string& account);
  [[nodiscard]] Result<> set(const std::string& service, const std::string& account,
                             const std::string& password);
  /// Absent is success.
  [[nodiscard]] Result<> remove(const std::string& service, const std::string& account);

 private:
  using Key = std::pair<std::string, std::string>;  ///< service, account
  using Entries = std::map<Key, std::string>;

  Result<Entries> read();
  Result<> write(const Entries& entries);

  const std::string path_;
  Log& log_;
  std::mutex mutex_;  ///< guards the file
};

}  // namespace zolvar
