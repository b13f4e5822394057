#pragma once

#include <optional>
#include <string>

#include "util/Failure.h"

namespace zolvar {

/// Generic passwords by service and account. Blocks (a locked keyring may ask its user): lanes
/// only.
class SecretStore {
 public:
  virtual ~SecretStore() = default;
  /// None when there is no such item. Fails: Refused (locked), Transient.
  virtual Result<std::optional<std::string>> find(const std::string& service,
                                                  const std::string& account) = 0;
  /// Adds the item or changes its data.
  virtual Result<> set(const std::string& service, const std::string& account,
                       const std::string& password) = 0;
  /// Deletes the item; absent is success.
  virtual Result<> remove(const std::string& service, const std::string& account) = 0;
};

}  // namespace zolvar
