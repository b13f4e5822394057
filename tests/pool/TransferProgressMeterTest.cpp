#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "pool/ArrivingName.h"
#include "pool/TransferProgressMeter.h"
#include "support/SimulatedPlatform.h"

namespace zolvar {
namespace {

const std::string Pool = "/home/user/Docs/";

TEST(TransferOrder, putsFilesBeforeFoldersAndSortsByBytes) {
  const std::vector<std::string> order = {"B",     "a",     "z",     "\xc3\xa9", "A/x",  "A/y/a",
                                          "a b/c", "a-x/q", "a.d/q", "a/b",      "a/c/d"};
  std::vector<std::string> sorted = order;
  std::reverse(sorted.begin(), sorted.end());
  std::sort(sorted.begin(), sorted.end(), comesFirstInTransfer);
  EXPECT_EQ(order, sorted);
}

/// As the tool was seen to do it.
TEST(ArrivingName, isTheTargetsCutToMakeRoom) {
  const auto many = [](std::string_view text, int count) {
    std::string all;
    while (count-- > 0) all += text;
    return all;
  };
  const struct {
    std::string name, target;
  } rows[] = {{".plain.5veRjf", "plain"},
              {".dotted.UjosIK", ".dotted"},
              {"..two.zaxGkR", "..two"},
              {".tail.fqfJ0d", "tail."},
              {"." + many("x", 246) + ".ZIcnJr", many("x", 250)},
              {"." + many("y", 245) + ".xghbXS", many("y", 245) + many("\u00e9", 3)},
              {".Ut6yJm", many("\u00e9", 125) + "abcd"}};
  for (const auto& [name, target] : rows) {
    for (const auto& other : rows) {
      EXPECT_EQ(isArriving(name, other.target), target == other.target) << name << other.target;
    }
  }
  for (const char* name : {"plain.5veRjf", ".plain.5veRj", ".plain.5ve-jf", ".plain-5veRjf"}) {
    EXPECT_FALSE(isArriving(name, "plain")) << name;
  }
}

class TransferProgressMeterTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(host_.files.makeFolder(Pool));
    folder_ = *host_.files.open(Pool);
  }
  void arrive(const AwaitedFile& file) {
    host_.files.save(Pool + file.path, std::string(file.size, 'x'), file.modTimes.back());
  }
  SimulatedPlatform host_;
  std::unique_ptr<Folder> folder_;
};

TEST_F(TransferProgressMeterTest, followsTenThousandFilesWithFewLooks) {
  std::vector<AwaitedFile> files;
  for (int number = 0; number < 10'000; ++number) {
    char path[32];
    std::snprintf(path, sizeof path, "%02d/%04d", number / 1000, number);
    files.push_back({path, 4, {500, 1000}});
  }
  TransferProgressMeter meter(*folder_, "bob@beta.local", files, 0);
  // Some never arrive: one alone, and a run of them. Others were here before in another state.
  const auto isLeftOut = [](std::size_t index) {
    return index == 5 || (index >= 4000 && index < 4050);
  };
  host_.files.save(Pool + files[9'000].path, "1234", 77);
  host_.files.save(Pool + files[9'001].path, "12345", 1000);
  std::size_t next = 0;
  double now = 0;
  for (const std::size_t until : {3UL, 3UL, 2'000UL, 4'000UL, 4'070UL, 9'999UL, 10'000UL}) {
    for (; next < until; ++next) {
      if (!isLeftOut(next)) arrive(files[next]);
    }
    const std::size_t before = host_.files.faults.calls();
    const TransferProgress progress = meter.tick(++now);
    EXPECT_LT(host_.files.faults.calls() - before, 100U);
    EXPECT_EQ(until, progress.filesDone);
    EXPECT_EQ(until * 4, progress.bytesDone);
    EXPECT_EQ(40'000U, progress.bytesWanted);
  }
}

TEST_F(TransferProgressMeterTest, seesALargeFileGrowAndAveragesTheRate) {
  constexpr std::uint64_t Size = 10U << 20;
  const std::string name = std::string(250, 'n');  // the tool cuts it, to make room
  TransferProgressMeter meter(*folder_, "bob@beta.local",
                              {{"sub/" + name, Size, {1000}}, {".env", 8, {1000}}}, 0);
  arrive({".env", 8, {1000}});
  EXPECT_EQ(8U, meter.tick(1).bytesDone);
  const std::string temporary = Pool + "sub/." + name.substr(0, 246) + ".aB3xYz";
  double now = 1;
  TransferProgress progress;
  for (std::uint64_t megabytes = 1; megabytes <= 9; ++megabytes) {
    host_.files.write(temporary, std::string(megabytes << 20, 'x'));
    progress = meter.tick(++now);
  }
  EXPECT_EQ((9U << 20) + 8, progress.bytesDone);
  EXPECT_EQ(1U, progress.filesDone);
  EXPECT_NEAR(1 << 20, progress.bytesPerSecond, 200 << 10);
  for (int tick = 0; tick < 20; ++tick) progress = meter.tick(++now);
  EXPECT_LT(progress.bytesPerSecond, 100 << 10) << "nothing moves any more";
  host_.files.move(temporary, Pool + "sub/" + name);
  EXPECT_GE(meter.tick(++now).bytesDone, (9U << 20) + 8) << "never backwards";
}

}  // namespace
}  // namespace zolvar
