// The name of an announced service, which is one label: at most 63 bytes of anything.

#include "fuzz/Fuzz.h"
#include "net/ServiceName.h"
#include "net/TxtCodec.h"
#include "util/PathRules.h"
#include "util/hexHash.h"

namespace zolvar::fuzz {
namespace {

constexpr std::size_t LongestLabel = 63;
constexpr const char* Folder = "Docs";

void checkBelieved(const std::string& name, const TxtRecord& record) {
  if (announcementProblem(name, record)) return;
  const auto parts = parseServiceName(name);
  expect(parts.has_value(), "a believed name can be taken apart");
  expect(parts->port >= 1024 && parts->port <= 65535, "no privileged port is contacted");
  expect(isLocalHostName(parts->hostName), "no host elsewhere is contacted");
  expect(!hasControl(parts->userId()), "no user id holds a control character");
  expect(parts->userId().find_first_of("/:") == std::string::npos, "a user id is one piece");
  const std::string log = parts->userId() + std::string(LogFileExtension);
  expect(isLogFileName(log) && isSafeRelativePath(log), "a user id can name a log");
  expect(parts->poolName == hexHash(Folder), "the folder is the announced one");
}

void check(std::string_view name) {
  const auto parts = parseServiceName(name);
  if (parts) {
    expect(!parts->user.empty() && parts->user.find('@') == std::string::npos,
           "the user ends at the first @");
    const auto again =
        parseServiceName(makeServiceName(parts->userId(), parts->port, parts->poolName));
    if (parts->poolName.find(':') == std::string::npos) {
      expect(again && again->user == parts->user && again->hostName == parts->hostName &&
                 again->port == parts->port && again->poolName == parts->poolName,
             "a name survives being made again");
    }
  }
  TxtRecord record;
  SilentLog log;
  encodeStringValue(record, txt::FullName, Folder, log);
  encodeUnsignedIntValue(record, txt::Version, ProtocolVersion);
  checkBelieved(std::string(name), record);
  // The fuzzer cannot guess the hash: whatever stands before it is tried with the right one.
  if (parts) {
    checkBelieved(makeServiceName(parts->userId(), parts->port, hexHash(Folder)), record);
    checkBelieved(makeServiceName(parts->userId(), 49999, hexHash(Folder)), record);
  }
  checkBelieved(std::string(name.substr(0, name.find('/'))) + "/" + hexHash(Folder), record);
  checkBelieved(std::string(name) + "@beta.local:49999/" + hexHash(Folder), record);
}

}  // namespace
}  // namespace zolvar::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > zolvar::fuzz::LongestLabel) return -1;
  zolvar::fuzz::check(zolvar::fuzz::textOf(data, size));
  return 0;
}
