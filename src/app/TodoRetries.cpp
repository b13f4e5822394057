#include "app/TodoRetries.h"

#include <algorithm>
#include <utility>

namespace zolvar {

double retryMinutes(unsigned attempt) {
  return attempt < 4 ? static_cast<double>(1U << attempt) : 15;
}

TodoRetries::TodoRetries(RunLoop& runLoop, std::function<void(const std::string&)> retry)
    : runLoop_(runLoop), retry_(std::move(retry)) {}

TodoRetries::~TodoRetries() {
  for (const auto& [name, waiting] : waiting_) runLoop_.cancel(waiting.timer);
}

void TodoRetries::note(const std::string& poolName, bool hasMissingFiles) {
  if (!hasMissingFiles) {
    forget(poolName);
  } else if (const auto [found, isNew] = waiting_.try_emplace(poolName); isNew) {
    schedule(poolName, found->second);
  }
}

void TodoRetries::noteProgress(const std::string& poolName) {
  const auto found = waiting_.find(poolName);
  if (found == waiting_.end()) return;
  runLoop_.cancel(found->second.timer);
  found->second.attempt = 0;
  schedule(poolName, found->second);
}

void TodoRetries::forget(const std::string& poolName) {
  const auto found = waiting_.find(poolName);
  if (found == waiting_.end()) return;
  runLoop_.cancel(found->second.timer);
  waiting_.erase(found);
}

void TodoRetries::schedule(const std::string& poolName, Waiting& waiting) {
  waiting.timer = runLoop_.after(retryMinutes(waiting.attempt) * 60, [this, poolName] {
    const auto found = waiting_.find(poolName);
    if (found == waiting_.end()) return;
    found->second.attempt = std::min(found->second.attempt + 1, 4U);
    schedule(poolName, found->second);
    retry_(poolName);
  });
}

}  // namespace zolvar
