#include "net/KDBonjour.h"

#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/Workspace.h"
#include "util/NotificationCenter.h"

namespace zolvar {

namespace {
/// Bounds on what strangers can make us remember.
constexpr std::size_t MostAnnouncements = 4096;
constexpr std::size_t MostWarnings = 256;
}  // namespace

bool KDNetService::announceInfo() {
  if (info_.empty() || !publication_) return false;
  platform_.log.debug("Announcing TXT record for {} with {} keys.", name_, info_.size());
  const auto updated = publication_->updateTxt(info_);
  if (updated) return true;
  platform_.log.error("*** Invalid TXT record set: {} ({})", txtDescription(info_),
                      updated.error().message());
  platform_.workspace.beep();
  return false;
}

KDBonjour::KDBonjour(Platform& platform, NotificationCenter& center)
    : platform_(platform), center_(center) {}

KDBonjour::~KDBonjour() = default;

void KDBonjour::startNetServiceBrowser() {
  if (browser_) return;
  ServiceEvents events;
  events.txt = [this](const std::string& name, const TxtRecord& txt) { didReceiveTxt(name, txt); };
  events.lost = [this](const std::string& name) { didLose(name); };
  browser_ = platform_.services.browse(ServiceType, std::move(events));
}

Result<std::shared_ptr<KDNetService>> KDBonjour::startNetService(const std::string& uniqueName,
                                                                 std::uint32_t port,
                                                                 TxtRecord info) {
  std::shared_ptr<KDNetService> service(new KDNetService(platform_));
  service->name_ = uniqueName;
  service->port_ = port;
  service->info_ = std::move(info);
  ownNames_.insert(uniqueName);

  PublicationEvents events;
  events.established = [this, weak = std::weak_ptr(service)] {
    const auto published = weak.lock();
    if (!published) return;
    announcements_[published->name_] = published->info_;
    center_.post(NetServiceDidAddNotification{published->name_, published->info_});
  };
  events.failed = [this, weak = std::weak_ptr(service)](const Failure& failure) {
    const auto refused = weak.lock();
    if (!refused) return;
    platform_.log.debug("netServiceDidNotPublish {}: {}", refused->name_, failure.message());
    announcements_.erase(refused->name_);
    center_.post(NetServiceErrorNotification{refused->name_, failure});
  };
  auto publication = platform_.services.publish(
      uniqueName, ServiceType, static_cast<std::uint16_t>(port), service->info_, std::move(events));
  if (!publication) return tl::unexpected(publication.error());
  service->publication_ = std::move(*publication);
  announcements_[uniqueName] = service->info_;
  return service;
}

const TxtRecord* KDBonjour::announcementInfo(const std::string& serviceName) const {
  const auto found = announcements_.find(serviceName);
  return found == announcements_.end() ? nullptr : &found->second;
}

void KDBonjour::didReceiveTxt(const std::string& serviceName, const TxtRecord& record) {
  if (record.empty()) return;
  if (fullServiceName(record).empty()) {
    warnOnce(serviceName, "Warning, no full service name found. Ignoring announcement " +
                              txtDescription(record));
    return;
  }
  if (const auto problem = announcementProblem(serviceName, record)) {
    warnOnce(serviceName, "Warning, announcement of '" + serviceName + "' refused. " + *problem);
    return;
  }
  const bool isNew = !announcements_.contains(serviceName);
  if (isNew && announcements_.size() >= MostAnnouncements) {
    warnOnce(serviceName, "Warning, too many announcements. Ignoring '" + serviceName + "'");
    return;
  }
  announcements_[serviceName] = record;
  refused_.erase(serviceName);
  if (isNew) {
    platform_.log.debug("Got first txt record for pool {}", fullServiceName(record));
    center_.post(NetServiceDidAddNotification{serviceName, record});
  }
  center_.post(NetServicesDidUpdateTXTRecordDataNotification{serviceName, record});
}

void KDBonjour::didLose(const std::string& serviceName) {
  const auto found = announcements_.find(serviceName);
  if (found == announcements_.end()) return;
  const NetServiceDidRemoveNotification removal{serviceName, found->second};
  announcements_.erase(found);
  center_.post(removal);
}

void KDBonjour::warnOnce(const std::string& serviceName, const std::string& line) {
  if (refused_.size() >= MostWarnings || !refused_.insert(serviceName).second) return;
  platform_.log.write(Log::Level::Warning, line);
}

}  // namespace zolvar
