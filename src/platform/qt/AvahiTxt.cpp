#include "platform/qt/AvahiTxt.h"

#include <algorithm>
#include <string_view>

namespace zolvar {

namespace {

constexpr std::size_t LongestPair = 255;     // bytes, what one length byte can tell
constexpr std::size_t LargestRecord = 8000;  // bytes; Avahi's packets end at 9000

bool isKey(std::string_view key) {
  return !key.empty() && std::all_of(key.begin(), key.end(), [](char character) {
    return character >= 0x20 && character < 0x7f && character != '=';
  });
}

}  // namespace

Result<AvahiStringListPointer> encodeTxt(const TxtRecord& txt) {
  AvahiStringListPointer list;
  std::size_t total = 0;
  for (const auto& [key, value] : txt) {
    if (!isKey(key)) return fail(FailureKind::Refused, "announce the key", key, "not a valid key");
    const std::string pair = key + "=" + value;
    total += pair.size() + 1;
    if (pair.size() > LongestPair || total > LargestRecord) {
      return fail(FailureKind::Refused, "announce the key", key, "its value is too long");
    }
    list.reset(avahi_string_list_add_arbitrary(
        list.release(), reinterpret_cast<const std::uint8_t*>(pair.data()), pair.size()));
  }
  return list;
}

std::optional<TxtRecord> decodeTxt(const void* bytes, std::size_t size) {
  AvahiStringList* parsed = nullptr;
  if (avahi_string_list_parse(bytes, size, &parsed) < 0) return std::nullopt;
  // The parser gives the last string first.
  const AvahiStringListPointer list(avahi_string_list_reverse(parsed));
  TxtRecord txt;
  for (AvahiStringList* item = list.get(); item != nullptr; item = item->next) {
    const std::string_view pair(reinterpret_cast<const char*>(item->text), item->size);
    const std::size_t equals = pair.find('=');
    const std::string_view key = pair.substr(0, equals);
    if (!isKey(key)) continue;
    txt.emplace(key, equals == pair.npos ? std::string_view() : pair.substr(equals + 1));
  }
  return txt;
}

}  // namespace zolvar
