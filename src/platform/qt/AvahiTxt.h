#pragma once

#include <avahi-common/strlst.h>

#include <memory>
#include <optional>

#include "platform/ServiceDirectory.h"

namespace zolvar {

struct AvahiStringListDeleter {
  void operator()(AvahiStringList* list) const { avahi_string_list_free(list); }
};
using AvahiStringListPointer = std::unique_ptr<AvahiStringList, AvahiStringListDeleter>;

/// Avahi's form of a TXT record. Values may hold any bytes. Fails: Refused when a key is empty or
/// is not printable ASCII without "=", when key and value with the "=" between pass 255 bytes, or
/// when the whole passes what fits one packet.
Result<AvahiStringListPointer> encodeTxt(const TxtRecord& txt);

/// The record in the bytes as they came from the network; of a key that occurs twice the first
/// counts, what has no key is left out. None when the bytes are no TXT record.
std::optional<TxtRecord> decodeTxt(const void* bytes, std::size_t size);

}  // namespace zolvar
