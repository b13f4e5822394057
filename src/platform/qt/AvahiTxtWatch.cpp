#include "platform/qt/AvahiTxtWatch.h"

#include <avahi-client/client.h>
#include <avahi-common/defs.h>
#include <avahi-common/error.h>

#include <algorithm>
#include <utility>

#include "platform/qt/AvahiTxt.h"

namespace zolvar {

AvahiTxtWatch::AvahiTxtWatch(AvahiClient* client, std::string fullName, Log& log, Changed changed)
    : client_(client), fullName_(std::move(fullName)), log_(log), changed_(std::move(changed)) {
  start();
}

AvahiTxtWatch::~AvahiTxtWatch() {
  if (browser_ != nullptr) avahi_record_browser_free(browser_);
}

void AvahiTxtWatch::restart() {
  if (client_ == nullptr) return;
  if (browser_ != nullptr) avahi_record_browser_free(std::exchange(browser_, nullptr));
  alive_.clear();
  start();
}

void AvahiTxtWatch::forget() {
  client_ = nullptr;
  browser_ = nullptr;
}

void AvahiTxtWatch::start() {
  browser_ = avahi_record_browser_new(client_, AVAHI_IF_UNSPEC, AVAHI_PROTO_UNSPEC,
                                      fullName_.c_str(), AVAHI_DNS_CLASS_IN, AVAHI_DNS_TYPE_TXT,
                                      static_cast<AvahiLookupFlags>(0), recordChanged, this);
  if (browser_ == nullptr) {
    log_.debug("{} cannot be followed now: {}", fullName_,
               avahi_strerror(avahi_client_errno(client_)));
  }
}

void AvahiTxtWatch::recordChanged(AvahiRecordBrowser*, AvahiIfIndex interface,
                                  AvahiProtocol protocol, AvahiBrowserEvent event, const char*,
                                  std::uint16_t, std::uint16_t, const void* bytes, std::size_t size,
                                  AvahiLookupResultFlags, void* self) {
  auto& watch = *static_cast<AvahiTxtWatch*>(self);
  if (event != AVAHI_BROWSER_NEW && event != AVAHI_BROWSER_REMOVE) return;
  const Record record{interface, protocol, std::string(static_cast<const char*>(bytes), size)};
  std::erase(watch.alive_, record);
  if (event == AVAHI_BROWSER_NEW) watch.alive_.push_back(record);
  watch.report();
}

void AvahiTxtWatch::report() {
  if (alive_.empty()) return;
  const std::string& bytes = alive_.back().bytes;
  if (bytes == reported_) return;
  reported_ = bytes;
  if (const auto txt = decodeTxt(bytes.data(), bytes.size())) {
    changed_(*txt);
  } else {
    log_.warning("The announcement of {} cannot be read and is ignored.", fullName_);
  }
}

}  // namespace zolvar
