// Runs recorded or random schedules outside of the tests:
//   sim-search FILE...               replays these, telling what goes wrong
//   sim-search --seconds S [--seed N] [--keep FOLDER] random ones; failing ones are shrunk and kept
//   sim-search --print SEED          the schedule of a seed

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>

#include "sim/ScheduleRun.h"

namespace {

using zolvar::Counters;
using zolvar::Schedule;
using zolvar::ScheduleRun;

using SteadyClock = std::chrono::steady_clock;

double secondsSince(SteadyClock::time_point start) {
  return std::chrono::duration<double>(SteadyClock::now() - start).count();
}

/// The first line names the kind of the fault: while shrinking it must stay the same fault.
std::string kindOf(const std::string& problems) {
  std::string kind = problems.substr(0, problems.find_first_of(":\n"));
  if (problems.starts_with("After")) kind = "On the way";
  const auto second = problems.find('\n');
  for (const char* sign :
       {" is lost", "not logged", "trees of", " misses ", " lacks ", " has chosen no",
        ", and chose ", " asks about", "still", "outside", "Exception"}) {
    if (problems.find(sign, second == std::string::npos ? 0 : second) != std::string::npos)
      return kind + sign;
  }
  return kind;
}

int replay(const char* name) {
  std::ifstream file(name);
  const std::string text((std::istreambuf_iterator<char>(file)), {});
  ScheduleRun run(Schedule::parse(text));
  const std::string problems = run.problems();
  std::cout << name << ": " << (problems.empty() ? "all is well\n" : problems);
  if (std::getenv("SIM_LOGS") != nullptr) {
    for (auto* peer : run.net.peers()) {
      for (auto* author : run.net.peers()) {
        std::cout << "at " << peer->name() << ", by " << author->name() << ":\n"
                  << peer->host.files.readAll(peer->logPath("Docs", *author)).value_or("(none)\n");
      }
    }
  }
  return problems.empty() ? 0 : 1;
}

int search(double seconds, std::uint64_t seed, const std::string& folder, bool shrinks) {
  const auto start = SteadyClock::now();
  Counters counters;
  std::size_t runs = 0;
  std::size_t failures = 0;
  for (; secondsSince(start) < seconds; ++runs, ++seed) {
    if (runs % 5000 == 0 && runs > 0) {
      std::cout << runs << " schedules, " << failures << " failed" << std::endl;
    }
    const Schedule schedule = Schedule::random(seed);
    ScheduleRun run(schedule);
    const std::string problems = run.problems();
    for (const auto& [name, count] : run.counters()) counters[name] += count;
    if (problems.empty()) continue;
    ++failures;
    const std::string kind = kindOf(problems);
    std::cout << "seed " << seed << " fails: " << problems << std::flush;
    if (!shrinks) continue;
    const auto shrinkStart = SteadyClock::now();
    const Schedule smallest = schedule.shrunk([&](const Schedule& part) {
      return secondsSince(shrinkStart) < 25 && kindOf(ScheduleRun(part).problems()) == kind;
    });
    std::cout << smallest.text() << ScheduleRun(smallest).problems() << std::endl;
    if (!folder.empty()) {
      std::ofstream(folder + "/" + std::to_string(seed) + ".txt")
          << "# " << kind << ", seed " << seed << "\n"
          << smallest.text();
    }
  }
  std::cout << runs << " schedules in " << static_cast<int>(secondsSince(start)) << " s, "
            << failures << " failed\n";
  for (const auto& [name, count] : counters) std::cout << "  " << name << ": " << count << "\n";
  return failures == 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  double seconds = 0;
  std::uint64_t seed = std::random_device()();
  std::string folder;
  bool shrinks = true;
  int status = 0;
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    const std::string value = i + 1 < argc ? argv[i + 1] : "";
    if (word == "--seconds")
      seconds = std::stod(value), ++i;
    else if (word == "--seed")
      seed = std::stoull(value), ++i;
    else if (word == "--keep")
      folder = value, ++i;
    else if (word == "--plain")
      shrinks = false;
    else if (word == "--print")
      std::cout << Schedule::random(std::stoull(value)).text(), ++i;
    else
      status |= replay(argv[i]);
  }
  if (seconds > 0) status |= search(seconds, seed, folder, shrinks);
  return status;
}
