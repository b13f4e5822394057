#include "net/TxtCodec.h"

#include <fmt/format.h>

#include "platform/Log.h"
#include "util/PathRules.h"

namespace zolvar {

namespace {

constexpr std::size_t LongestPair = 254;  // characters of key and value

/// Number of characters of valid UTF-8: its bytes less the continuation bytes.
std::size_t characterCount(std::string_view text) {
  std::size_t count = 0;
  for (const char byte : text) count += (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
  return count;
}

}  // namespace

void encodeStringValue(TxtRecord& record, const std::string& key, const std::string& value,
                       Log& log) {
  if (characterCount(key) + characterCount(value) > LongestPair) {
    log.warning("Warning: TXT record pair too long: {}={}", key, value);
  }
  record[key] = value;
}

void encodeUnsignedIntValue(TxtRecord& record, const std::string& key, std::uint32_t value) {
  std::string bytes;
  for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(value >> shift & 0xFF);
  record[key] = bytes;
}

std::optional<std::string> decodedStringValue(const TxtRecord& record, const std::string& key) {
  const auto found = record.find(key);
  if (found == record.end() || !isValidUtf8(found->second)) return std::nullopt;
  return found->second;
}

std::uint32_t decodedUnsignedIntValue(const TxtRecord& record, const std::string& key) {
  const auto found = record.find(key);
  if (found == record.end() || found->second.size() < 4) return 0;
  std::uint32_t value = 0;
  for (int i = 0; i < 4; ++i) value = value << 8 | static_cast<unsigned char>(found->second[i]);
  return value;
}

std::string fullServiceName(const TxtRecord& record) {
  return decodedStringValue(record, txt::FullName).value_or("");
}

std::string txtDescription(const TxtRecord& record) {
  std::string text = "{";
  for (const auto& [key, value] : record) {
    if (text.size() > 1) text += ", ";
    for (const std::string& part : {key, std::string("="), value}) {
      for (const char byte : part) {
        const bool printable = byte >= ' ' && byte <= '~' && byte != '\\';
        text += printable ? std::string(1, byte)
                          : fmt::format("\\x{:02x}", static_cast<unsigned char>(byte));
      }
    }
  }
  return text + "}";
}

}  // namespace zolvar
