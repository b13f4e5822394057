#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <typeindex>
#include <unordered_map>
#include <utility>
#include <vector>

namespace zolvar {

/// Delivers typed notifications to whoever observes their type. Main thread only; a lane that has
/// something to tell posts a task to the run loop, and the task posts the notification.
/// Observers are called in order of registration, synchronously. An observation ends when its
/// Observation handle is destroyed; that may happen inside a callback, and the centre may be
/// destroyed before its observations.
class NotificationCenter {
  struct Entry {
    std::function<void(const void*)> call;
    bool alive = true;
  };
  using Entries = std::vector<std::shared_ptr<Entry>>;

 public:
  /// Keeps one observation alive; move-only.
  class Observation {
   public:
    Observation() = default;
    Observation(Observation&& other) noexcept : entry_(std::move(other.entry_)) {}
    Observation& operator=(Observation&& other) noexcept {
      if (this != &other) {
        end();
        entry_ = std::move(other.entry_);
      }
      return *this;
    }
    ~Observation() { end(); }

   private:
    friend class NotificationCenter;
    explicit Observation(std::shared_ptr<Entry> entry) : entry_(std::move(entry)) {}
    void end() {
      if (entry_) entry_->alive = false;
      entry_.reset();
    }
    std::shared_ptr<Entry> entry_;
  };

  template <class Notification>
  [[nodiscard]] Observation observe(std::function<void(const Notification&)> handler) {
    auto entry = std::make_shared<Entry>();
    entry->call = [handler = std::move(handler)](const void* notification) {
      handler(*static_cast<const Notification*>(notification));
    };
    auto& entries = entriesByType_[std::type_index(typeid(Notification))];
    std::erase_if(entries, [](const auto& known) { return !known->alive; });
    entries.push_back(entry);
    return Observation(std::move(entry));
  }

  template <class Notification>
  void post(const Notification& notification) {
    const auto found = entriesByType_.find(std::type_index(typeid(Notification)));
    if (found == entriesByType_.end()) return;
    const Entries current = found->second;  // a callback may add or end observations
    for (const auto& entry : current) {
      if (entry->alive) entry->call(&notification);
    }
  }

 private:
  std::unordered_map<std::type_index, Entries> entriesByType_;
};

}  // namespace zolvar
