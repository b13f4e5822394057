#include "platform/qt/AvahiPollAdapter.h"

#include <avahi-common/timeval.h>
#include <poll.h>

#include <algorithm>

// The client library knows these two only by name: what they hold is the poll implementation's.

struct AvahiWatch {
  zolvar::AvahiPollAdapter* owner;
  std::uint64_t key;
  int descriptor;
  AvahiWatchEvent wanted;
  AvahiWatchCallback callback;
  void* userData;
  AvahiWatchEvent happened;  ///< 0 outside of the callback
  zolvar::RunLoop::Id reading;
  zolvar::RunLoop::Id writing;
};

struct AvahiTimeout {
  zolvar::AvahiPollAdapter* owner;
  std::uint64_t key;
  AvahiTimeoutCallback callback;
  void* userData;
  zolvar::RunLoop::Id timer;
};

namespace zolvar {

namespace {

AvahiPollAdapter& adapterOf(const AvahiPoll* api) {
  return *static_cast<AvahiPollAdapter*>(api->userdata);
}

AvahiWatch* watchNew(const AvahiPoll* api, int descriptor, AvahiWatchEvent wanted,
                     AvahiWatchCallback callback, void* userData) {
  return adapterOf(api).addWatch(descriptor, wanted, callback, userData);
}

void watchUpdate(AvahiWatch* watch, AvahiWatchEvent wanted) {
  watch->owner->setWanted(*watch, wanted);
}

AvahiWatchEvent watchGetEvents(AvahiWatch* watch) { return watch->happened; }

void watchFree(AvahiWatch* watch) { watch->owner->removeWatch(*watch); }

AvahiTimeout* timeoutNew(const AvahiPoll* api, const timeval* time, AvahiTimeoutCallback callback,
                         void* userData) {
  return adapterOf(api).addTimeout(time, callback, userData);
}

void timeoutUpdate(AvahiTimeout* timeout, const timeval* time) {
  timeout->owner->setTime(*timeout, time);
}

void timeoutFree(AvahiTimeout* timeout) { timeout->owner->removeTimeout(*timeout); }

}  // namespace

AvahiPollAdapter::AvahiPollAdapter(RunLoop& runLoop)
    : runLoop_(runLoop), api_{this,      watchNew,   watchUpdate,   watchGetEvents,
                              watchFree, timeoutNew, timeoutUpdate, timeoutFree} {}

AvahiPollAdapter::~AvahiPollAdapter() {
  while (!watches_.empty()) removeWatch(*watches_.begin()->second);
  while (!timeouts_.empty()) removeTimeout(*timeouts_.begin()->second);
}

AvahiWatch* AvahiPollAdapter::addWatch(int descriptor, AvahiWatchEvent wanted,
                                       AvahiWatchCallback callback, void* userData) {
  const auto none = static_cast<AvahiWatchEvent>(0);
  const std::uint64_t key = ++lastKey_;
  auto& watch = watches_[key];
  watch.reset(new AvahiWatch{this, key, descriptor, none, callback, userData, none, 0, 0});
  setWanted(*watch, wanted);
  return watch.get();
}

void AvahiPollAdapter::setWanted(AvahiWatch& watch, AvahiWatchEvent wanted) {
  watch.wanted = wanted;
  const auto adjust = [this, &watch](RunLoop::Id& id, bool isWanted, RunLoop::Events events) {
    if (isWanted && id == 0) {
      id = runLoop_.watch(watch.descriptor, events, [this, key = watch.key] { watchReady(key); });
    } else if (!isWanted && id != 0) {
      runLoop_.cancel(std::exchange(id, 0));
    }
  };
  adjust(watch.reading, (wanted & AVAHI_WATCH_IN) != 0, RunLoop::Events::Readable);
  adjust(watch.writing, (wanted & AVAHI_WATCH_OUT) != 0, RunLoop::Events::Writable);
}

void AvahiPollAdapter::removeWatch(AvahiWatch& watch) {
  setWanted(watch, static_cast<AvahiWatchEvent>(0));
  watches_.erase(watch.key);
}

/// The run loop tells only readable and writable; the system is asked for the rest (errors and
/// hang-ups), and whether the news still holds.
void AvahiPollAdapter::watchReady(std::uint64_t key) {
  const auto found = watches_.find(key);
  if (found == watches_.end()) return;
  AvahiWatch& watch = *found->second;
  pollfd state{watch.descriptor, static_cast<short>(watch.wanted), 0};
  if (::poll(&state, 1, 0) <= 0) return;
  watch.happened = static_cast<AvahiWatchEvent>(state.revents);
  watch.callback(&watch, watch.descriptor, watch.happened, watch.userData);
  if (const auto still = watches_.find(key); still != watches_.end()) {
    still->second->happened = static_cast<AvahiWatchEvent>(0);
  }
}

AvahiTimeout* AvahiPollAdapter::addTimeout(const timeval* time, AvahiTimeoutCallback callback,
                                           void* userData) {
  const std::uint64_t key = ++lastKey_;
  auto& timeout = timeouts_[key];
  timeout.reset(new AvahiTimeout{this, key, callback, userData, 0});
  setTime(*timeout, time);
  return timeout.get();
}

void AvahiPollAdapter::setTime(AvahiTimeout& timeout, const timeval* time) {
  if (timeout.timer != 0) runLoop_.cancel(std::exchange(timeout.timer, 0));
  if (time == nullptr) return;
  const double seconds = -static_cast<double>(avahi_age(time)) / 1e6;
  timeout.timer =
      runLoop_.after(std::max(0.0, seconds), [this, key = timeout.key] { timeoutDue(key); });
}

void AvahiPollAdapter::removeTimeout(AvahiTimeout& timeout) {
  setTime(timeout, nullptr);
  timeouts_.erase(timeout.key);
}

void AvahiPollAdapter::timeoutDue(std::uint64_t key) {
  const auto found = timeouts_.find(key);
  if (found == timeouts_.end()) return;
  AvahiTimeout& timeout = *found->second;
  timeout.timer = 0;
  timeout.callback(&timeout, timeout.userData);
}

}  // namespace zolvar
