#pragma once

#include <variant>

#include "platform/UserDefaults.h"

namespace zolvar {

/// Settings in memory. Differs from the real ones: no file, and an observer is called at once from
/// inside the change.
class MemoryDefaults : public UserDefaults {
 public:
  using Dictionary = std::map<std::string, std::string>;

  [[nodiscard]] std::optional<std::string> string(const std::string& key) const override {
    const auto found = values_.find(key);
    if (found == values_.end()) return std::nullopt;
    const auto* text = std::get_if<std::string>(&found->second);
    return text != nullptr ? std::optional(*text) : std::nullopt;
  }
  void setString(const std::string& key, const std::string& value) override { set(key, value); }
  [[nodiscard]] Dictionary dictionary(const std::string& key) const override {
    const auto found = values_.find(key);
    if (found == values_.end()) return {};
    const auto* entries = std::get_if<Dictionary>(&found->second);
    return entries != nullptr ? *entries : Dictionary{};
  }
  void setDictionary(const std::string& key, const Dictionary& value) override { set(key, value); }
  void remove(const std::string& key) override {
    if (values_.erase(key) > 0) tell(key);
  }
  [[nodiscard]] std::vector<std::string> keys(const std::string& prefix) const override {
    std::vector<std::string> found;
    for (const auto& [key, value] : values_) {
      if (key.starts_with(prefix)) found.push_back(key);
    }
    return found;
  }
  [[nodiscard]] std::unique_ptr<Observation> observe(const std::string& key,
                                                     std::function<void()> changed) override {
    struct Handle : Observation {
      std::shared_ptr<std::function<void()>> call;
    };
    auto handle = std::make_unique<Handle>();
    handle->call = std::make_shared<std::function<void()>>(std::move(changed));
    observers_.emplace(key, handle->call);
    return handle;
  }

 private:
  using Value = std::variant<std::string, Dictionary>;
  void set(const std::string& key, Value value) {
    const auto found = values_.find(key);
    if (found != values_.end() && found->second == value) return;
    values_[key] = std::move(value);
    tell(key);
  }
  void tell(const std::string& key) {
    const auto [begin, end] = observers_.equal_range(key);
    std::vector<std::weak_ptr<std::function<void()>>> told;
    for (auto it = begin; it != end; ++it) told.push_back(it->second);
    for (const auto& weak : told) {
      if (const auto call = weak.lock()) (*call)();
    }
  }
  std::map<std::string, Value> values_;
  std::multimap<std::string, std::weak_ptr<std::function<void()>>> observers_;
};

}  // namespace zolvar
