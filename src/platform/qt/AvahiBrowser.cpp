#include "platform/qt/AvahiBrowser.h"

#include <avahi-client/client.h>
#include <avahi-common/defs.h>
#include <avahi-common/domain.h>
#include <avahi-common/error.h>

#include "platform/qt/AvahiServiceDirectory.h"

namespace zolvar {

namespace {
constexpr double RefreshTurn = 10;       // seconds
constexpr int TurnsBetweenRefresh = 12;  // two minutes
constexpr int RefreshesPerTurn = 10;     // each costs two calls of the daemon
constexpr double RetryAfter = 5;         // seconds
}  // namespace

AvahiBrowser::AvahiBrowser(AvahiServiceDirectory& directory, RunLoop& runLoop, Log& log,
                           std::string type, ServiceEvents events)
    : directory_(directory),
      runLoop_(runLoop),
      log_(log),
      type_(std::move(type)),
      events_(std::make_shared<ServiceEvents>(std::move(events))) {
  directory_.add(*this);
  refreshTimer_ = runLoop_.every(RefreshTurn, [this] { refresh(); });
}

AvahiBrowser::~AvahiBrowser() {
  runLoop_.cancel(refreshTimer_);
  if (retryTimer_ != 0) runLoop_.cancel(retryTimer_);
  services_.clear();
  if (browser_ != nullptr) avahi_service_browser_free(browser_);
  directory_.remove(*this);
}

void AvahiBrowser::attach(AvahiClient* client) {
  client_ = client;
  start();
}

void AvahiBrowser::forget() {
  client_ = nullptr;
  browser_ = nullptr;
  if (retryTimer_ != 0) runLoop_.cancel(std::exchange(retryTimer_, 0));
  for (auto& [name, service] : services_) {
    service.txt->forget();
    if (service.wasReported) reportLost(name);
  }
  services_.clear();
}

void AvahiBrowser::start() {
  browser_ =
      avahi_service_browser_new(client_, AVAHI_IF_UNSPEC, AVAHI_PROTO_UNSPEC, type_.c_str(),
                                nullptr, static_cast<AvahiLookupFlags>(0), serviceChanged, this);
  if (browser_ != nullptr) return;
  log_.warning("Services of the type {} cannot be looked for now: {}", type_,
               avahi_strerror(avahi_client_errno(client_)));
  scheduleRetry();
}

void AvahiBrowser::scheduleRetry() {
  if (retryTimer_ != 0) return;
  retryTimer_ = runLoop_.after(RetryAfter, [this] {
    retryTimer_ = 0;
    AvahiClient* const client = client_;
    if (client == nullptr) return;
    if (browser_ != nullptr) avahi_service_browser_free(browser_);
    for (auto& [name, service] : services_) {
      if (service.wasReported) reportLost(name);
    }
    services_.clear();
    start();
  });
}

void AvahiBrowser::serviceChanged(AvahiServiceBrowser*, AvahiIfIndex interface,
                                  AvahiProtocol protocol, AvahiBrowserEvent event, const char* name,
                                  const char*, const char* domain, AvahiLookupResultFlags,
                                  void* self) {
  auto& browser = *static_cast<AvahiBrowser*>(self);
  switch (event) {
    case AVAHI_BROWSER_NEW:
      browser.found(name, domain, interface, protocol);
      break;
    case AVAHI_BROWSER_REMOVE:
      browser.gone(name, interface, protocol);
      break;
    case AVAHI_BROWSER_FAILURE:
      browser.scheduleRetry();
      break;
    case AVAHI_BROWSER_ALL_FOR_NOW:
    case AVAHI_BROWSER_CACHE_EXHAUSTED:
      break;
  }
}

void AvahiBrowser::found(const std::string& name, const char* domain, AvahiIfIndex interface,
                         AvahiProtocol protocol) {
  Service& service = services_[name];
  service.sightings.emplace(interface, protocol);
  if (service.txt) return;
  char fullName[AVAHI_DOMAIN_NAME_MAX];
  if (avahi_service_name_join(fullName, sizeof fullName, name.c_str(), type_.c_str(), domain) < 0) {
    log_.warning("The service name '{}' cannot be used and is ignored.", name);
    services_.erase(name);
    return;
  }
  service.txt = std::make_unique<AvahiTxtWatch>(
      client_, fullName, log_, [this, name](const TxtRecord& txt) { reportTxt(name, txt); });
}

void AvahiBrowser::gone(const std::string& name, AvahiIfIndex interface, AvahiProtocol protocol) {
  const auto found = services_.find(name);
  if (found == services_.end()) return;
  found->second.sightings.erase({interface, protocol});
  if (!found->second.sightings.empty()) return;
  if (found->second.wasReported) reportLost(name);
  services_.erase(found);
}

void AvahiBrowser::reportTxt(const std::string& name, const TxtRecord& txt) {
  const auto found = services_.find(name);
  if (found != services_.end()) found->second.wasReported = true;
  runLoop_.post([events = std::weak_ptr(events_), name, txt] {
    if (const auto alive = events.lock(); alive && alive->txt) alive->txt(name, txt);
  });
}

void AvahiBrowser::reportLost(const std::string& name) {
  runLoop_.post([events = std::weak_ptr(events_), name] {
    if (const auto alive = events.lock(); alive && alive->lost) alive->lost(name);
  });
}

void AvahiBrowser::refresh() {
  if (client_ == nullptr) return;
  int refreshed = 0;
  for (auto& [name, service] : services_) {
    if (++service.age < TurnsBetweenRefresh || refreshed == RefreshesPerTurn) continue;
    service.age = 0;
    ++refreshed;
    service.txt->restart();
  }
}

}  // namespace zolvar
