// Random schedules of what people, networks and disks do, and the recorded ones that once failed.

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

#include "sim/ScheduleRun.h"

namespace zolvar {
namespace {

TEST(Schedules, recordedFaultsStayMended) {
  for (const auto& file : std::filesystem::directory_iterator(SCHEDULES)) {
    std::ifstream text(file.path());
    const std::string all((std::istreambuf_iterator<char>(text)), {});
    EXPECT_EQ(ScheduleRun(Schedule::parse(all)).problems(), "") << file.path().filename();
  }
}

TEST(Schedules, readAsTheyAreWritten) {
  for (std::uint64_t seed = 1; seed <= 20; ++seed) {
    const Schedule schedule = Schedule::random(seed);
    EXPECT_GE(schedule.operations.size(), 40U);
    EXPECT_EQ(Schedule::parse(schedule.text()).operations, schedule.operations);
  }
}

/// For a while, each time with schedules that nobody has run before. SIM_SECONDS sets another
/// while, SIM_SEED the first seed.
TEST(Schedules, randomOnesLoseNothing) {
  const char* const seconds = std::getenv("SIM_SECONDS");
  const char* const given = std::getenv("SIM_SEED");
  std::uint64_t seed = given != nullptr ? std::stoull(given) : std::random_device()();
  const auto end = std::chrono::steady_clock::now() +
                   std::chrono::duration<double>(seconds != nullptr ? std::stod(seconds) : 40);
  Counters counters;
  std::size_t runs = 0;
  for (; std::chrono::steady_clock::now() < end && !HasFailure(); ++seed, ++runs) {
    const Schedule schedule = Schedule::random(seed);
    ScheduleRun run(schedule);
    const std::string problems = run.problems();
    for (const auto& [name, count] : run.counters()) counters[name] += count;
    if (problems.empty()) continue;
    const Schedule smallest =
        schedule.shrunk([](const Schedule& part) { return !ScheduleRun(part).problems().empty(); });
    ADD_FAILURE() << "Seed " << seed << ": " << problems << "The same in short, for a file that "
                  << "tests/sim/replay takes:\n"
                  << smallest.text() << ScheduleRun(smallest).problems();
  }
  // What is to be tested has happened: so often at least in 100 runs.
  const Counters least = {{"partition", 200},         {"crash", 50},
                          {"power cut", 15},          {"conflict in the end", 20},
                          {"crossed drops", 1},       {"re-created at once", 50},
                          {"cut load", 20},           {"kind change", 150},
                          {"late subscription", 30},  {"copied by hand", 10},
                          {"left for ever", 5},       {"unsubscribed", 10},
                          {"worked meanwhile", 10000}};
  for (const auto& [name, count] : least) {
    if (runs < 100) break;
    EXPECT_GE(counters[name] * 100, count * runs) << name << " in " << runs << " runs";
  }
}

}  // namespace
}  // namespace zolvar
