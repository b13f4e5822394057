#include "app/SyncQueue.h"

#include <algorithm>

#include "net/KDParticipant.h"

namespace zolvar {

QueueChoice chooseNext(std::span<const QueuedSync> queue, double now, double pause) {
  QueueChoice choice;
  for (std::size_t i = 0; i < queue.size(); ++i) {
    if (queue[i].isLocal) {
      choice.dropped.push_back(i);
    } else if (!queue[i].isReady) {
      continue;
    } else if (queue[i].lastSyncDate < now - pause || queue[i].lastSyncDate > now) {
      choice.next = i;
      break;
    } else {
      choice.postponed.push_back(i);
    }
  }
  return choice;
}

void SyncQueue::removeFirst(const Participant& participant) {
  const auto found = std::find(queue_.begin(), queue_.end(), participant);
  if (found != queue_.end()) queue_.erase(found);
}

void SyncQueue::removeAll(const Participant& participant) { std::erase(queue_, participant); }

void SyncQueue::removePool(const std::string& poolName) {
  std::erase_if(queue_, [&](const auto& waiting) { return waiting->poolName() == poolName; });
}

SyncQueue::Participant SyncQueue::takeNext(
    double now, double pause, const std::function<bool(const KDParticipant&)>& isReady,
    const std::function<void(const KDParticipant&)>& postponed) {
  std::stable_sort(queue_.begin(), queue_.end(), [](const auto& a, const auto& b) {
    return a->lastSyncDate() < b->lastSyncDate();
  });
  std::vector<QueuedSync> facts;
  facts.reserve(queue_.size());
  for (const auto& waiting : queue_) {
    facts.push_back({waiting->isLocalParticipant(), waiting->lastSyncDate(), isReady(*waiting)});
  }
  const QueueChoice choice = chooseNext(facts, now, pause);
  for (const std::size_t index : choice.postponed) postponed(*queue_[index]);
  const Participant next = choice.next ? queue_[*choice.next] : nullptr;
  for (auto index = choice.dropped.rbegin(); index != choice.dropped.rend(); ++index) {
    queue_.erase(queue_.begin() + static_cast<std::ptrdiff_t>(*index));
  }
  if (next) {
    removeAll(next);
    append(next);
  }
  return next;
}

bool SyncQueue::contains(const Participant& participant) const {
  return std::find(queue_.begin(), queue_.end(), participant) != queue_.end();
}

}  // namespace zolvar
