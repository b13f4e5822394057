#include <gtest/gtest.h>

#include "net/ServiceName.h"
#include "net/TxtCodec.h"
#include "support/RecordingLog.h"
#include "util/hexHash.h"

namespace zolvar {
namespace {

using namespace std::string_literals;

TEST(TxtCodec, fixesTheBytesOfEachValue) {
  RecordingLog log;
  TxtRecord record;
  encodeUnsignedIntValue(record, "v", 2);
  encodeUnsignedIntValue(record, "big", 0xfedcba98U);
  encodeStringValue(record, "fsn", "Zürich", log);
  EXPECT_EQ(record,
            (TxtRecord{{"v", "\0\0\0\2"s}, {"big", "\xfe\xdc\xba\x98"}, {"fsn", "Zürich"}}));
  EXPECT_EQ(decodedUnsignedIntValue(record, "v"), 2U);
  EXPECT_EQ(decodedUnsignedIntValue(record, "big"), 0xfedcba98U);
  EXPECT_EQ(decodedUnsignedIntValue({{"v", "\0\0\2"s}}, "v"), 0U);
  EXPECT_EQ(decodedUnsignedIntValue({{"v", "\0\0\0\2\7"s}}, "v"), 2U);
  EXPECT_EQ(decodedUnsignedIntValue({}, "v"), 0U);
  EXPECT_EQ(decodedStringValue(record, "fsn"), "Zürich");
  EXPECT_EQ(decodedStringValue({{"fsn", "\xff\xfe"}}, "fsn"), std::nullopt);
  EXPECT_EQ(fullServiceName({}), "");
  EXPECT_EQ(txtDescription({{"a", "x\0"s}}), "{a=x\\x00}");
}

TEST(TxtCodec, warnsOfAPairThatIsTooLongAndStoresIt) {
  RecordingLog log;
  TxtRecord record;
  encodeStringValue(record, "fsn", std::string(251, 'a'), log);
  EXPECT_TRUE(log.lines().empty());
  std::string umlauts;
  for (int i = 0; i < 251; ++i) umlauts += "ü";  // characters count, not bytes
  encodeStringValue(record, "fsn", umlauts, log);
  EXPECT_TRUE(log.lines().empty());
  const std::string longName(252, 'b');
  encodeStringValue(record, "fsn", longName, log);
  EXPECT_EQ(log.count("Warning: TXT record pair too long: fsn=" + longName), 1U);
  EXPECT_EQ(record["fsn"], longName);
}

TEST(ServiceName, readsWhatItWrites) {
  const std::string name = makeServiceName("anna@alpha.local", 49999, "1a2b3c4d");
  EXPECT_EQ(name, "anna@alpha.local:49999/1a2b3c4d");
  struct Row {
    const char* name;
    const char* user;  // null: malformed
    const char* host;
    std::uint32_t port;
    const char* pool;
  };
  const Row rows[] = {
      {"anna@alpha.local:49999/1a2b3c4d", "anna", "alpha.local", 49999, "1a2b3c4d"},
      {"anna@alpha.local/1a2b3c4d", "anna", "alpha.local", 0, "1a2b3c4d"},
      {"anna@al:pha:49999/1a2b3c4d", "anna", "al:pha", 49999, "1a2b3c4d"},
      {"anna@b@c:5000/x", "anna", "b@c", 5000, "x"},
      {"anna@b:5o00/x", "anna", "b", 0, "x"},
      {"anna@b:99999999999/x", "anna", "b", 0, "x"},
      {"@alpha.local:49999/1a2b3c4d", nullptr, "", 0, ""},
      {"/anna@alpha:49999", nullptr, "", 0, ""},
      {":anna@alpha/1", nullptr, "", 0, ""},
      {"alpha:49999/1a2b3c4d", nullptr, "", 0, ""},
      {"anna@alpha:49999", nullptr, "", 0, ""},
      {"anna/x@y:1", nullptr, "", 0, ""},
      {"anna@alpha:1/x:2", nullptr, "", 0, ""},
      {"", nullptr, "", 0, ""},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const auto parts = parseServiceName(row.name);
    ASSERT_EQ(parts.has_value(), row.user != nullptr);
    if (!parts) continue;
    EXPECT_EQ(parts->user, row.user);
    EXPECT_EQ(parts->hostName, row.host);
    EXPECT_EQ(parts->port, row.port);
    EXPECT_EQ(parts->poolName, row.pool);
  }
}

TEST(AnnouncementProblem, refusesWhatAStrangerMayNotSay) {
  const std::string folder = "Docs";
  const TxtRecord good{{"v", "\0\0\0\2"s}, {"fsn", folder}, {"logcs", std::string(16, 'x')}};
  const auto named = [](const std::string& user, const std::string& host, unsigned port,
                        const std::string& pool) {
    return user + "@" + host + ":" + std::to_string(port) + "/" + hexHash(pool);
  };
  const auto with = [&good](const std::string& key, const std::string& value) {
    TxtRecord record = good;
    record[key] = value;
    return record;
  };
  EXPECT_EQ(announcementProblem(named("anna", "alpha.local", 49999, folder), good), std::nullopt);
  EXPECT_EQ(announcementProblem(named("DOM\\anna b", "alpha", 1024, folder), good), std::nullopt);

  const std::string injection = "x]\npost-xfer exec = id\n[y";
  const std::pair<std::string, TxtRecord> refused[] = {
      {named("an\nna", "alpha.local", 49999, folder), good},
      {named(".anna", "alpha.local", 49999, folder), good},
      {named("an:na", "alpha.local", 49999, folder), good},
      {named("an\xffna", "alpha.local", 49999, folder), good},
      {named("anna", "evil.example.com", 49999, folder), good},
      {named("anna", "alpha.local -e sh", 49999, folder), good},
      {named("anna", "", 49999, folder), good},
      {named("anna", "alpha.local", 22, folder), good},
      {named("anna", "alpha.local", 65536, folder), good},
      {"anna@alpha.local/" + hexHash(folder), good},
      {named("anna", "alpha.local", 49999, "Other"), good},
      {named("anna", "alpha.local", 49999, injection), with("fsn", injection)},
      {named("anna", "alpha.local", 49999, "-x"), with("fsn", "-x")},
      {named("anna", "alpha.local", 49999, "#list"), with("fsn", "#list")},
      {named("anna", "alpha.local", 49999, "GLOBAL"), with("fsn", "GLOBAL")},
      {named("anna", "alpha.local", 49999, "../x"), with("fsn", "../x")},
      {named("anna", "alpha.local", 49999, folder), with("v", "\0\0\2"s)},
      {named("anna", "alpha.local", 49999, folder), with("logcs", "short")},
  };
  for (const auto& [name, record] : refused) {
    EXPECT_NE(announcementProblem(name, record), std::nullopt) << name << txtDescription(record);
  }
}

}  // namespace
}  // namespace zolvar
