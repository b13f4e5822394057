// The TXT record of an announcement, in the bytes of the wire.

#include "fuzz/Fuzz.h"
#include "net/DaemonConfiguration.h"
#include "net/ServiceName.h"
#include "net/TxtCodec.h"
#include "platform/qt/AvahiTxt.h"
#include "util/PathRules.h"
#include "util/hexHash.h"

namespace zolvar::fuzz {
namespace {

void checkCodec(const TxtRecord& record) {
  expect(!hasControl(txtDescription(record)), "a log line shows no control character");
  for (const auto& [key, value] : record) {
    const auto text = decodedStringValue(record, key);
    expect(text.has_value() == isValidUtf8(value), "a text is valid UTF-8");
    expect(!text || *text == value, "a text is what was sent");
    TxtRecord copy;
    encodeUnsignedIntValue(copy, key, decodedUnsignedIntValue(record, key));
    expect(value.size() < 4 || copy[key] == value.substr(0, 4), "numbers survive");
  }
  const auto list = encodeTxt(record);
  if (!list) return;
  std::string wire(avahi_string_list_serialize(list->get(), nullptr, 0), '\0');
  avahi_string_list_serialize(list->get(), wire.data(), wire.size());
  expect(decodeTxt(wire.data(), wire.size()) == record, "a record survives the wire");
}

void checkAnnouncement(const TxtRecord& record) {
  const std::string folder = fullServiceName(record);
  const std::string name = makeServiceName("bob@beta.local", 49999, hexHash(folder));
  if (announcementProblem(name, record)) return;
  expect(!poolNameProblem(folder) && !hasControl(folder), "only usable names are believed");
  expect(folder.find('/') == std::string::npos && isSafeRelativePath(folder),
         "a believed name is one component of a path");
  expect(decodedUnsignedIntValue(record, txt::Version) != 0, "a version is told");
  expect(announcementProblem(name + "0", record).has_value(), "another folder's name is refused");
}

}  // namespace
}  // namespace zolvar::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto record = zolvar::decodeTxt(data, size);
  if (!record) return 0;
  zolvar::fuzz::checkCodec(*record);
  zolvar::fuzz::checkAnnouncement(*record);
  return 0;
}
