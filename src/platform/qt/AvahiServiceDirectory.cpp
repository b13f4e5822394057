#include "platform/qt/AvahiServiceDirectory.h"

#include <avahi-common/domain.h>
#include <avahi-common/error.h>

#include <utility>

#include "platform/qt/AvahiBrowser.h"
#include "platform/qt/AvahiPublication.h"
#include "platform/qt/AvahiTxt.h"
#include "util/PathRules.h"

namespace zolvar {

namespace {
constexpr double RetryAfter = 5;      // seconds, while there is no system bus
constexpr double ReconnectAfter = 1;  // seconds, after a connection has failed
}  // namespace

AvahiServiceDirectory::AvahiServiceDirectory(RunLoop& runLoop, Log& log)
    : runLoop_(runLoop), log_(log), poll_(runLoop) {
  scheduleConnect(0);
}

AvahiServiceDirectory::~AvahiServiceDirectory() {
  dropConnection();
  if (connectTimer_ != 0) runLoop_.cancel(connectTimer_);
}

Result<> AvahiServiceDirectory::check(const std::string& name, const std::string& type,
                                      const TxtRecord& txt) {
  if (name.find('\0') != name.npos || !avahi_is_valid_service_name(name.c_str()) ||
      !isValidUtf8(name)) {
    return fail(FailureKind::Refused, "announce", name,
                "a name on the network has 1 to 63 bytes of UTF-8");
  }
  if (!avahi_is_valid_service_type_strict(type.c_str())) {
    return fail(FailureKind::Refused, "announce", name, "'" + type + "' is no service type");
  }
  if (const auto list = encodeTxt(txt); !list) return tl::unexpected(list.error());
  return {};
}

Result<std::unique_ptr<Publication>> AvahiServiceDirectory::publish(const std::string& name,
                                                                    const std::string& type,
                                                                    std::uint16_t port,
                                                                    const TxtRecord& txt,
                                                                    PublicationEvents events) {
  if (auto allowed = check(name, type, txt); !allowed) return tl::unexpected(allowed.error());
  auto publication = std::make_unique<AvahiPublication>(
      *this, runLoop_, log_, AvahiPublication::Service{name, type, port, txt}, std::move(events));
  if (isRunning_) publication->attach(client_);
  return publication;
}

std::unique_ptr<ServiceBrowser> AvahiServiceDirectory::browse(const std::string& type,
                                                              ServiceEvents events) {
  auto browser = std::make_unique<AvahiBrowser>(*this, runLoop_, log_, type, std::move(events));
  if (isRunning_) browser->attach(client_);
  return browser;
}

std::string AvahiServiceDirectory::hostNameFqdn() const {
  const std::lock_guard lock(hostNameMutex_);
  return hostName_;
}

void AvahiServiceDirectory::add(AvahiPublication& publication) {
  publications_.insert(&publication);
}
void AvahiServiceDirectory::remove(AvahiPublication& publication) {
  publications_.erase(&publication);
}
void AvahiServiceDirectory::add(AvahiBrowser& browser) { browsers_.insert(&browser); }
void AvahiServiceDirectory::remove(AvahiBrowser& browser) { browsers_.erase(&browser); }

void AvahiServiceDirectory::scheduleConnect(double seconds) {
  if (connectTimer_ != 0) return;
  connectTimer_ = runLoop_.after(seconds, [this] {
    connectTimer_ = 0;
    connect();
  });
}

void AvahiServiceDirectory::connect() {
  int error = 0;
  state_ = AVAHI_CLIENT_CONNECTING;
  client_ = avahi_client_new(poll_.api(), AVAHI_CLIENT_NO_FAIL, clientChanged, this, &error);
  if (client_ == nullptr) {
    if (!std::exchange(saidMissing_, true)) {
      log_.warning("The network's service directory cannot be reached ({}); trying again.",
                   avahi_strerror(error));
    }
    scheduleConnect(RetryAfter);
  }
}

void AvahiServiceDirectory::clientChanged(AvahiClient*, AvahiClientState state, void* self) {
  auto& directory = *static_cast<AvahiServiceDirectory*>(self);
  directory.state_ = state;
  if (state != AVAHI_CLIENT_S_RUNNING) directory.groupsAreStale_ = true;
  directory.scheduleApplyState();
}

void AvahiServiceDirectory::scheduleApplyState() {
  if (applyTimer_ != 0) return;
  applyTimer_ = runLoop_.after(0, [this] {
    applyTimer_ = 0;
    applyState();
  });
}

void AvahiServiceDirectory::applyState() {
  if (client_ == nullptr) return;
  switch (state_) {
    case AVAHI_CLIENT_S_RUNNING: {
      readHostName();
      saidMissing_ = false;
      const bool isNew = !std::exchange(isRunning_, true);
      if (isNew) {
        for (AvahiBrowser* browser : browsers_) browser->attach(client_);
      }
      if (std::exchange(groupsAreStale_, false) || isNew) {
        for (AvahiPublication* publication : publications_) publication->attach(client_);
      }
      break;
    }
    case AVAHI_CLIENT_S_COLLISION:
    case AVAHI_CLIENT_S_REGISTERING:
      // The host is about to get its name, or another one: our services would point to the old one.
      if (isRunning_) {
        for (AvahiPublication* publication : publications_) publication->withdraw();
      }
      break;
    case AVAHI_CLIENT_FAILURE:
      log_.warning("The connection to the network's service directory was lost: {}",
                   avahi_strerror(avahi_client_errno(client_)));
      dropConnection();
      scheduleConnect(ReconnectAfter);
      break;
    case AVAHI_CLIENT_CONNECTING:
      if (!std::exchange(saidMissing_, true)) {
        log_.warning(
            "The network's service directory (avahi-daemon) does not run; waiting for it.");
      }
      break;
  }
}

void AvahiServiceDirectory::dropConnection() {
  isRunning_ = false;
  if (applyTimer_ != 0) runLoop_.cancel(std::exchange(applyTimer_, 0));
  for (AvahiPublication* publication : publications_) publication->forget();
  for (AvahiBrowser* browser : browsers_) browser->forget();
  if (client_ != nullptr) avahi_client_free(std::exchange(client_, nullptr));
  const std::lock_guard lock(hostNameMutex_);
  hostName_.clear();
}

void AvahiServiceDirectory::readHostName() {
  const char* const name = avahi_client_get_host_name_fqdn(client_);
  const std::lock_guard lock(hostNameMutex_);
  hostName_ = name != nullptr ? name : "";
}

}  // namespace zolvar
