#pragma once

#include <avahi-common/watch.h>

#include <cstdint>
#include <map>
#include <memory>
#include <utility>

#include "platform/RunLoop.h"

namespace zolvar {

/// Lets Avahi's client library wait on our run loop: its descriptors become watches, its absolute
/// times become timers. Owned by whoever owns the client, which it must outlive. Main thread.
/// Watches and timeouts may be freed or changed inside their own callbacks.
class AvahiPollAdapter {
 public:
  explicit AvahiPollAdapter(RunLoop& runLoop);
  ~AvahiPollAdapter();
  AvahiPollAdapter(const AvahiPollAdapter&) = delete;
  AvahiPollAdapter& operator=(const AvahiPollAdapter&) = delete;

  /// What avahi_client_new wants.
  [[nodiscard]] const AvahiPoll* api() const { return &api_; }

  AvahiWatch* addWatch(int descriptor, AvahiWatchEvent wanted, AvahiWatchCallback callback,
                       void* userData);
  void setWanted(AvahiWatch& watch, AvahiWatchEvent wanted);
  void removeWatch(AvahiWatch& watch);

  AvahiTimeout* addTimeout(const timeval* time, AvahiTimeoutCallback callback, void* userData);
  /// A null time disables the timeout; one in the past fires on the next turn of the loop.
  void setTime(AvahiTimeout& timeout, const timeval* time);
  void removeTimeout(AvahiTimeout& timeout);

 private:
  void watchReady(std::uint64_t key);
  void timeoutDue(std::uint64_t key);

  RunLoop& runLoop_;
  AvahiPoll api_;
  std::uint64_t lastKey_ = 0;
  std::map<std::uint64_t, std::unique_ptr<AvahiWatch>> watches_;
  std::map<std::uint64_t, std::unique_ptr<AvahiTimeout>> timeouts_;
};

}  // namespace zolvar
