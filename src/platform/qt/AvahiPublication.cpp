#include "platform/qt/AvahiPublication.h"

#include <avahi-common/error.h>

#include <utility>

#include "platform/qt/AvahiServiceDirectory.h"
#include "platform/qt/AvahiTxt.h"

namespace zolvar {

namespace {
constexpr double RetryAfter = 30;  // seconds
}

AvahiPublication::AvahiPublication(AvahiServiceDirectory& directory, RunLoop& runLoop, Log& log,
                                   Service service, PublicationEvents events)
    : directory_(directory),
      runLoop_(runLoop),
      log_(log),
      service_(std::move(service)),
      events_(std::make_shared<PublicationEvents>(std::move(events))) {
  directory_.add(*this);
}

AvahiPublication::~AvahiPublication() {
  withdraw();
  directory_.remove(*this);
}

Result<> AvahiPublication::updateTxt(const TxtRecord& txt) {
  auto list = encodeTxt(txt);
  if (!list) return tl::unexpected(list.error());
  const bool isSame = txt == service_.txt;
  service_.txt = txt;
  if (group_ == nullptr || isSame) return {};
  const int error = avahi_entry_group_update_service_txt_strlst(
      group_, AVAHI_IF_UNSPEC, AVAHI_PROTO_UNSPEC, static_cast<AvahiPublishFlags>(0),
      service_.name.c_str(), service_.type.c_str(), nullptr, list->get());
  if (error < 0) {
    log_.debug("The announcement of {} could not be updated ({}) and is made anew.", service_.name,
               avahi_strerror(error));
    publish();
  }
  return {};
}

void AvahiPublication::attach(AvahiClient* client) {
  client_ = client;
  publish();
}

void AvahiPublication::forget() {
  cancelTimer();
  client_ = nullptr;
  group_ = nullptr;
}

void AvahiPublication::withdraw() {
  cancelTimer();
  if (group_ != nullptr) avahi_entry_group_free(std::exchange(group_, nullptr));
}

void AvahiPublication::publish() {
  withdraw();
  if (client_ == nullptr) return;
  const auto list = encodeTxt(service_.txt);
  group_ = avahi_entry_group_new(client_, groupChanged, this);
  if (group_ == nullptr) return failed(avahi_client_errno(client_));
  int error = avahi_entry_group_add_service_strlst(
      group_, AVAHI_IF_UNSPEC, AVAHI_PROTO_UNSPEC, static_cast<AvahiPublishFlags>(0),
      service_.name.c_str(), service_.type.c_str(), nullptr, nullptr, service_.port,
      list ? list->get() : nullptr);
  if (error >= 0) error = avahi_entry_group_commit(group_);
  if (error < 0) failed(error);
}

void AvahiPublication::groupChanged(AvahiEntryGroup* group, AvahiEntryGroupState state,
                                    void* self) {
  auto& publication = *static_cast<AvahiPublication*>(self);
  // The first report comes from inside the making of the group and says nothing.
  if (group != publication.group_ || state == AVAHI_ENTRY_GROUP_UNCOMMITED ||
      state == AVAHI_ENTRY_GROUP_REGISTERING) {
    return;
  }
  publication.cancelTimer();
  publication.timer_ = publication.runLoop_.after(0, [&publication, state] {
    publication.timer_ = 0;
    publication.applyGroupState(state);
  });
}

void AvahiPublication::applyGroupState(AvahiEntryGroupState state) {
  if (group_ == nullptr) return;
  if (state == AVAHI_ENTRY_GROUP_ESTABLISHED) {
    saidFailed_ = false;
    log_.debug("{} is announced.", service_.name);
    runLoop_.post([events = std::weak_ptr(events_)] {
      if (const auto alive = events.lock(); alive && alive->established) alive->established();
    });
    return;
  }
  failed(state == AVAHI_ENTRY_GROUP_COLLISION ? AVAHI_ERR_COLLISION : avahi_client_errno(client_));
}

void AvahiPublication::failed(int avahiError) {
  withdraw();
  scheduleRetry();
  if (avahiError == AVAHI_ERR_DISCONNECTED || avahiError == AVAHI_ERR_BAD_STATE) return;
  if (std::exchange(saidFailed_, true)) return;
  const bool isTaken = avahiError == AVAHI_ERR_COLLISION;
  Failure failure{FailureKind::Refused, "announce", service_.name,
                  isTaken ? "another computer uses this name" : avahi_strerror(avahiError)};
  runLoop_.post([events = std::weak_ptr(events_), failure = std::move(failure)] {
    if (const auto alive = events.lock(); alive && alive->failed) alive->failed(failure);
  });
}

void AvahiPublication::scheduleRetry() {
  cancelTimer();
  timer_ = runLoop_.after(RetryAfter, [this] {
    timer_ = 0;
    publish();
  });
}

void AvahiPublication::cancelTimer() {
  if (timer_ != 0) runLoop_.cancel(std::exchange(timer_, 0));
}

}  // namespace zolvar
