#pragma once

#include <atomic>
#include <string>

#include "platform/Log.h"
#include "platform/SecretStore.h"
#include "platform/qt/SecretFile.h"

namespace zolvar {

/// Passwords in the desktop's Secret Service, and in a file of the support folder where no such
/// service answers. Any thread but the main one.
///
/// A password in the file is always newer than one in the service: the file is written only while
/// there is no service, and storing in the service removes it from the file. So the file is asked
/// first, and what it holds moves to the service as soon as there is one. A service that is there
/// and locked is Refused; then nothing goes to the file.
class SecretServiceStore final : public SecretStore {
 public:
  SecretServiceStore(const std::string& supportFolder, Log& log);

  Result<std::optional<std::string>> find(const std::string& service,
                                          const std::string& account) override;
  Result<> set(const std::string& service, const std::string& account,
               const std::string& password) override;
  Result<> remove(const std::string& service, const std::string& account) override;

 private:
  /// Whether a Secret Service runs or can be started; Transient when that cannot be told.
  Result<bool> isServiceThere();

  Log& log_;
  SecretFile file_;
  std::atomic<bool> saidFile_{false};  ///< the use of the file is said once
};

}  // namespace zolvar
