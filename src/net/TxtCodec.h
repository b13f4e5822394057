#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/ServiceDirectory.h"

namespace zolvar {

class Log;

/// The version of what peers say to each other; a participant with another one is not synced with.
inline constexpr std::uint32_t ProtocolVersion = 2;

/// Keys of an announcement; docs/file-formats.md has the record.
namespace txt {
inline constexpr const char* Version = "v";        ///< unsigned
inline constexpr const char* FullName = "fsn";     ///< the folder's name, UTF-8
inline constexpr const char* Password = "pw";      ///< unsigned, there when a password is needed
inline constexpr const char* LogDigest = "logcs";  ///< 16 raw bytes
}  // namespace txt

/// Stores the text's bytes. Key and value together over 254 characters: one warning, stored all the
/// same (the service daemon may refuse the record).
void encodeStringValue(TxtRecord& record, const std::string& key, const std::string& value,
                       Log& log);

/// Stores four bytes, big-endian.
void encodeUnsignedIntValue(TxtRecord& record, const std::string& key, std::uint32_t value);

/// None when the key is absent or the bytes are no valid UTF-8.
[[nodiscard]] std::optional<std::string> decodedStringValue(const TxtRecord& record,
                                                            const std::string& key);

/// The first four bytes, big-endian; 0 when absent or shorter.
[[nodiscard]] std::uint32_t decodedUnsignedIntValue(const TxtRecord& record,
                                                    const std::string& key);

/// The folder's name that the record announces, "" without a valid one.
[[nodiscard]] std::string fullServiceName(const TxtRecord& record);

/// The record as text for a log line; bytes that are not printable as \xNN.
[[nodiscard]] std::string txtDescription(const TxtRecord& record);

}  // namespace zolvar
