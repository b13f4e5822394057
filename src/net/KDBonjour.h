#pragma once

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>

#include "net/NetNotifications.h"
#include "net/ServiceName.h"
#include "net/TxtCodec.h"
#include "platform/ServiceDirectory.h"
#include "util/Failure.h"

namespace zolvar {

class Log;
class NotificationCenter;
class Workspace;
struct Platform;

inline constexpr const char* ServiceType = "_zolvar._tcp";

/// A published service of ours; destroying it withdraws the service. Main thread.
class KDNetService {
 public:
  [[nodiscard]] const std::string& name() const { return name_; }
  [[nodiscard]] std::uint32_t port() const { return port_; }
  [[nodiscard]] const TxtRecord& announcementInfo() const { return info_; }
  void setAnnouncementInfo(TxtRecord info) { info_ = std::move(info); }
  /// Publishes the announcement info as the service's TXT record; false, with a log line and a
  /// beep, when it is refused.
  bool announceInfo();

 private:
  friend class KDBonjour;
  explicit KDNetService(Platform& platform) : platform_(platform) {}
  Platform& platform_;
  std::string name_;
  std::uint32_t port_ = 0;
  TxtRecord info_;
  std::unique_ptr<Publication> publication_;
};

/// Publishing and discovery of services, told as the notifications of NetNotifications.h. Keeps the
/// announcement of every service seen. What a stranger announces against the rules is refused with
/// one warning a service. Owned by the application; the platform and the centre outlive it. Main
/// thread.
class KDBonjour {
 public:
  KDBonjour(Platform& platform, NotificationCenter& center);
  ~KDBonjour();

  /// Browses from the first call on; later ones do nothing.
  void startNetServiceBrowser();
  /// Publishes a service. Its add is posted once it is established, NetServiceErrorNotification
  /// when that fails later. Fails: Refused (the name is longer than 63 bytes).
  Result<std::shared_ptr<KDNetService>> startNetService(const std::string& uniqueName,
                                                        std::uint32_t port, TxtRecord info);

  /// The announcement of a known service, null when there is none.
  [[nodiscard]] const TxtRecord* announcementInfo(const std::string& serviceName) const;
  [[nodiscard]] const std::map<std::string, TxtRecord>& announcements() const {
    return announcements_;
  }
  /// Whether this run has published a service of that name, withdrawn ones included (their removal
  /// may still be on its way).
  [[nodiscard]] bool isOwnService(const std::string& serviceName) const {
    return ownNames_.contains(serviceName);
  }

 private:
  void didReceiveTxt(const std::string& serviceName, const TxtRecord& txt);
  void didLose(const std::string& serviceName);
  void warnOnce(const std::string& serviceName, const std::string& line);

  Platform& platform_;
  NotificationCenter& center_;
  std::map<std::string, TxtRecord> announcements_;
  std::set<std::string> ownNames_;
  std::set<std::string> refused_;  ///< services that were warned about
  std::unique_ptr<ServiceBrowser> browser_;
};

}  // namespace zolvar
