#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

#include "pool/ListingLine.h"

namespace zolvar {
namespace {

using Times = std::vector<std::int64_t>;

class ListingLineTest : public testing::Test {
 protected:
  void SetUp() override { setZone("UTC0"); }
  void TearDown() override { setZone("UTC0"); }
  static void setZone(const char* zone) {
    setenv("TZ", zone, 1);
    tzset();
  }
};

TEST_F(ListingLineTest, readsLinesByTheirFields) {
  const struct {
    const char* what;
    std::string line;
    char kind;
    std::uint64_t size;
    const char* path;
  } rows[] = {
      {"separators", "-rw-r--r--      1,234,567 2026/11/22 19:33:47 sub/big", '-', 1234567,
       "sub/big"},
      {"points", "-rw-r--r--      1.234.567 2026/11/22 19:33:47 a", '-', 1234567, "a"},
      {"a size beyond its column", "-rw------- 12,345,678,901,234,567 2026/11/22 19:33:47 huge",
       '-', 12345678901234567, "huge"},
      {"directory", "drwxr-xr-x          4,096 2026/11/22 19:33:47 sub", 'd', 4096, "sub"},
      {"link", "lrwxrwxrwx              5 2026/11/22 19:33:47 lnk", 'l', 5, "lnk"},
      {"a mode with a mark", "-rw-r--r--+             1 2026/11/22 19:33:47 acl", '-', 1, "acl"},
      {"blanks", "-rw-r--r--              1 2026/11/22 19:33:47   two words ", '-', 1,
       "  two words "},
      {"another locale's name", R"(-rw-r--r--              1 2026/11/22 19:33:47 \#303\#251)", '-',
       1, "é"},
      {"an escaped backslash", R"(-rw-r--r--              1 2026/11/22 19:33:47 b\#134#123x)", '-',
       1, "b\\#123x"},
      {"no escapes at all", R"(-rw-r--r--              1 2026/11/22 19:33:47 \#12 \#999 \#400 \n)",
       '-', 1, R"(\#12 \#999 \#400 \n)"},
  };
  for (const auto& row : rows) {
    const auto parsed = parseListingLine(row.line);
    ASSERT_TRUE(parsed) << row.what;
    EXPECT_EQ(row.kind, parsed->kind()) << row.what;
    EXPECT_EQ(row.size, parsed->size) << row.what;
    EXPECT_EQ(row.path, parsed->path) << row.what;
    EXPECT_EQ(Times{1795376027}, parsed->modTimes()) << row.what;
  }
}

TEST_F(ListingLineTest, passesOverWhatIsNoFile) {
  for (const char* line :
       {"", " ", "drwxr-xr-x          4,096 2026/11/22 19:33:47 .", "receiving file list ... done",
        "-rw-r--r--", "-rw-r--r--              1 2026/11/22 19:33:47",
        "-rw-r--r--              1 2026/11/22 19:33:47 ",
        "-rw-r--r--              x 2026/11/22 19:33:47 a",
        "-rw-r--r--              1 2026-11-22 19:33:47 a",
        "-rw-r--r--              1 2026/11/22 19:33 a",
        "-rw-r--r-- 99999999999999999999 2026/11/22 19:33:47 a",
        "Welcome to my server, a 2026/11/22 19:33:47 b", "             1 2026/11/22 19:33:47 a"}) {
    EXPECT_FALSE(parseListingLine(line)) << line;
  }
  EXPECT_TRUE(parseListingLine("-rw-r--r-- 1 2026/13/45 19:33:47 a")->modTimes().empty());
}

TEST_F(ListingLineTest, triesEveryTimeThatALocalTimeMayMean) {
  const struct {
    const char* zone;
    const char* time;
    Times times;
  } rows[] = {
      {"CET-1CEST,M3.5.0,M10.5.0/3", "2026/07/01 12:00:00", {1782900000}},
      {"CET-1CEST,M3.5.0,M10.5.0/3", "2026/01/01 12:00:00", {1767265200}},
      {"CET-1CEST,M3.5.0,M10.5.0/3", "2026/10/25 02:30:00", {1792888200, 1792891800}},
      {"CET-1CEST,M3.5.0,M10.5.0/3", "2026/10/25 03:30:00", {1792895400}},
      {"CET-1CEST,M3.5.0,M10.5.0/3", "2026/03/29 02:30:00", {1774747800}},  // skipped: an hour on
      {"LHST-10:30LHDT-11,M10.1.0,M4.1.0", "2026/04/05 01:45:00", {1775313900, 1775315700}},
      {"PST8PDT,M3.2.0,M11.1.0", "2026/11/01 01:30:00", {1793521800, 1793525400}},
      {"UTC0", "1970/01/01 00:00:00", {1}},  // a time of 0 would mean deleted
      {"UTC0", "1969/12/31 23:00:00", {1}},
      {"UTC0", "2100/02/28 23:59:59", {4107542399}},
  };
  for (const auto& row : rows) {
    setZone(row.zone);
    const std::string line = std::string("-rw-r--r--              1 ") + row.time + " a";
    EXPECT_EQ(row.times, parseListingLine(line)->modTimes()) << row.zone << " " << row.time;
  }
}

}  // namespace
}  // namespace zolvar
