#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "util/Failure.h"

namespace zolvar {

/// A TXT record as key → raw bytes.
using TxtRecord = std::map<std::string, std::string>;

/// A service of ours on the network. Destroying it withdraws the service.
class Publication {
 public:
  virtual ~Publication() = default;
  /// Replaces the TXT record; before the service is established it is kept for then. Fails: Refused
  /// when the record cannot be encoded.
  virtual Result<> updateTxt(const TxtRecord& txt) = 0;
};

struct PublicationEvents {
  std::function<void()> established;           ///< also after the service daemon has come back
  std::function<void(const Failure&)> failed;  ///< name taken by another host, or refused
};

/// Browses one service type until destroyed.
class ServiceBrowser {
 public:
  virtual ~ServiceBrowser() = default;
};

struct ServiceEvents {
  /// The service's TXT record arrived or changed.
  std::function<void(const std::string& name, const TxtRecord& txt)> txt;
  /// The service's last sighting is gone (or the service daemon is).
  std::function<void(const std::string& name)> lost;
};

/// DNS Service Discovery on the local network. Main thread; events come on the main thread, never
/// from inside the call that asked for them.
class ServiceDirectory {
 public:
  virtual ~ServiceDirectory() = default;
  /// `type` is "_zolvar._tcp" (no trailing dot). Fails: Refused when the name is no valid label (at
  /// most 63 bytes). The service survives restarts of the service daemon.
  virtual Result<std::unique_ptr<Publication>> publish(const std::string& name,
                                                       const std::string& type, std::uint16_t port,
                                                       const TxtRecord& txt,
                                                       PublicationEvents events) = 0;
  virtual std::unique_ptr<ServiceBrowser> browse(const std::string& type, ServiceEvents events) = 0;
};

}  // namespace zolvar
