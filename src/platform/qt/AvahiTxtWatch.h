#pragma once

#include <avahi-client/lookup.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/Log.h"
#include "platform/ServiceDirectory.h"

namespace zolvar {

/// Follows the TXT record of one service. Owned by a browser. Main thread.
///
/// The daemon reports each record for each interface and protocol, a new one at once and the end of
/// its predecessor about a second later. The latest arrival among the records still alive is the
/// service's; when none is left the last one stands, since only the browser decides that a service
/// is gone.
class AvahiTxtWatch {
 public:
  using Changed = std::function<void(const TxtRecord& txt)>;

  /// `fullName` is the joined name of the service. `changed` is called with each record whose bytes
  /// differ from the one before, from inside Avahi's own calls.
  AvahiTxtWatch(AvahiClient* client, std::string fullName, Log& log, Changed changed);
  ~AvahiTxtWatch();
  AvahiTxtWatch(const AvahiTxtWatch&) = delete;
  AvahiTxtWatch& operator=(const AvahiTxtWatch&) = delete;

  /// Asks the network again. An announcement that was lost on the way would otherwise be missing
  /// for up to an hour.
  void restart();
  /// The client is unusable and takes the record browser with it.
  void forget();

 private:
  struct Record {
    AvahiIfIndex interface;
    AvahiProtocol protocol;
    std::string bytes;
    bool operator==(const Record&) const = default;
  };

  static void recordChanged(AvahiRecordBrowser* browser, AvahiIfIndex interface,
                            AvahiProtocol protocol, AvahiBrowserEvent event, const char* name,
                            std::uint16_t recordClass, std::uint16_t type, const void* bytes,
                            std::size_t size, AvahiLookupResultFlags flags, void* self);
  void start();
  void report();

  AvahiClient* client_;
  const std::string fullName_;
  Log& log_;
  Changed changed_;
  AvahiRecordBrowser* browser_ = nullptr;
  std::vector<Record> alive_;  ///< in order of arrival
  std::optional<std::string> reported_;
};

}  // namespace zolvar
