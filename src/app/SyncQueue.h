#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace zolvar {

class KDParticipant;

/// What the choice of the next sync looks at.
struct QueuedSync {
  bool isLocal = false;     ///< this machine's own announcement: never synced with
  double lastSyncDate = 0;  ///< seconds since 1970; 0 when never synced
  bool isReady = true;      ///< its pool can sync now
};

/// What is to become of the queue.
struct QueueChoice {
  std::optional<std::size_t> next;     ///< the participant to sync with
  std::vector<std::size_t> dropped;    ///< local ones passed on the way
  std::vector<std::size_t> postponed;  ///< passed because they were synced a moment ago
};

/// Chooses the first remote, ready participant whose last sync is more than `pause` seconds ago. A
/// last sync in the future (the clock was set back) counts as long ago. Nothing behind the chosen
/// one is looked at. Pure.
QueueChoice chooseNext(std::span<const QueuedSync> queue, double now, double pause);

/// Participants that wait for a sync, over all pools; one may wait several times. Caller
/// synchronises (main thread).
class SyncQueue {
 public:
  using Participant = std::shared_ptr<KDParticipant>;

  void append(Participant participant) { queue_.push_back(std::move(participant)); }
  void removeFirst(const Participant& participant);
  void removeAll(const Participant& participant);
  void removePool(const std::string& poolName);
  /// Sorts by last sync, oldest first, and chooses. The chosen one goes to the end of the queue, in
  /// one occurrence; local ones passed are dropped. Null when nobody is due. `postponed` is told of
  /// those passed because they were synced a moment ago.
  Participant takeNext(double now, double pause,
                       const std::function<bool(const KDParticipant&)>& isReady,
                       const std::function<void(const KDParticipant&)>& postponed);

  [[nodiscard]] const std::vector<Participant>& participants() const { return queue_; }
  [[nodiscard]] bool contains(const Participant& participant) const;

 private:
  std::vector<Participant> queue_;
};

}  // namespace zolvar
