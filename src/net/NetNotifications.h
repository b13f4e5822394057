#pragma once

#include <string>

#include "platform/ServiceDirectory.h"
#include "util/Failure.h"

namespace zolvar {

class KDFilePool;

// Posted on the main thread.

/// A service was seen for the first time (its TXT record has arrived and is in order), or one of
/// our own was established.
struct NetServiceDidAddNotification {
  std::string serviceName;
  TxtRecord txt;
};

/// A service's TXT record arrived or changed; the first one follows the add.
struct NetServicesDidUpdateTXTRecordDataNotification {
  std::string serviceName;
  TxtRecord txt;
};

/// A service that had been added is gone.
struct NetServiceDidRemoveNotification {
  std::string serviceName;
  TxtRecord txt;  ///< the last one known
};

/// A service of ours could not be published.
struct NetServiceErrorNotification {
  std::string serviceName;
  Failure failure;
};

/// Somebody else announces an active pool of ours under our own user id: two machines that write
/// one log. The application deactivates the pool; the sentence was posted as KDPoolWarning.
struct KDOwnIdElsewhere {
  KDFilePool* pool = nullptr;
  std::string serviceName;
  std::string text;
};

/// The transfer daemon was started, stopped or failed: `running` is what holds from now on.
struct KDServerDidChangeNotification {
  bool running = false;
  std::string trouble;  ///< one sentence while it should run and does not, else empty
};

}  // namespace zolvar
