#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace zolvar {

/// The user's settings. No defaults are registered: an unset key is none, and reads as false, 0 or
/// nothing. Main thread.
class UserDefaults {
 public:
  class Observation {
   public:
    virtual ~Observation() = default;
  };

  virtual ~UserDefaults() = default;
  [[nodiscard]] virtual std::optional<std::string> string(const std::string& key) const = 0;
  virtual void setString(const std::string& key, const std::string& value) = 0;
  [[nodiscard]] virtual std::map<std::string, std::string> dictionary(
      const std::string& key) const = 0;
  virtual void setDictionary(const std::string& key,
                             const std::map<std::string, std::string>& value) = 0;
  virtual void remove(const std::string& key) = 0;
  /// All keys that begin with `prefix`, sorted.
  [[nodiscard]] virtual std::vector<std::string> keys(const std::string& prefix) const = 0;
  /// Calls `changed` after the key's value has changed, also when another process changed it.
  [[nodiscard]] virtual std::unique_ptr<Observation> observe(const std::string& key,
                                                             std::function<void()> changed) = 0;

  /// "1", "true" and "yes" in any case are true.
  [[nodiscard]] bool boolean(const std::string& key) const;
  /// 0 when unset or no whole number ≥ 0.
  [[nodiscard]] unsigned long number(const std::string& key) const;
};

}  // namespace zolvar
