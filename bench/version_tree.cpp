// What does it cost to read all logs of a folder into its version tree, and does a file with a long
// history cost more than many files? 1,000,000 entries over 1,000,000 paths are a folder of the
// largest kind we think of; the paths have 40 bytes, as in a home folder. Memory is measured before
// time, in a fresh process, since freed memory would hide what is used.

#include <csv.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>

#include "Measure.h"
#include "log/KDLogFile.h"
#include "platform/qt/PosixFileSystem.h"
#include "platform/qt/QtRunLoop.h"
#include "pool/KDVersionTree.h"

namespace {

using namespace zolvar;

constexpr int Entries = 1'000'000;
constexpr int Versions = 100'000;
constexpr int Rounds = 5;
constexpr const char* LogName = "author@machine.local.fplog";

double residentBytes() {
  std::ifstream statm("/proc/self/statm");
  double total = 0;
  double resident = 0;
  statm >> total >> resident;
  return resident * static_cast<double>(sysconf(_SC_PAGESIZE));
}

void writeLog(const std::string& path) {
  std::ofstream out(path);
  for (int entry = 0; entry < Entries; ++entry) {
    out << fmt::format(
        "\"{}\",\"0\",\"project {:03}/chapter {:02}/notes {:08}.txt\",\"{}\",\"\",\"\"\n",
        1'600'000'000 + entry / 3, entry / 10'000, entry / 100 % 100, entry, 1'590'000'000 + entry);
  }
}

struct Loaded {
  KDEntryStore store;
  KDVersionTree tree{store, "me@here.local"};
};

std::unique_ptr<Loaded> load(Folder& folder, Log& log) {
  auto loaded = std::make_unique<Loaded>();
  KDLogFile file(folder, LogName, nullptr, log);
  auto summary = file.readTolerantly(0, loaded->store);
  if (!summary) std::exit(1);
  loaded->tree.appendAll(summary->entries);
  loaded->tree.repairAll();
  return loaded;
}

double bareParse(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::vector<char> piece(1 << 20);
  csv_parser parser;
  csv_init(&parser, 0);
  std::size_t fields = 0;
  while (in.read(piece.data(), static_cast<std::streamsize>(piece.size())) || in.gcount() > 0) {
    csv_parse(
        &parser, piece.data(), static_cast<std::size_t>(in.gcount()),
        [](void*, std::size_t, void* count) { ++*static_cast<std::size_t*>(count); },
        [](int, void*) {}, &fields);
  }
  csv_free(&parser);
  return static_cast<double>(fields);
}

/// Merges versions that were made before, so that only merging is timed.
double merge(bool isOnePath) {
  Loaded loaded;
  std::vector<KDLogFileEntry*> entries;
  for (int version = 1; version <= Versions; ++version) {
    const std::string path = isOnePath ? "one path" : fmt::format("path {}", version);
    KDEntryFields fields;
    fields.logTime = version;
    fields.plogTime = isOnePath ? version - 1 : 0;
    fields.path = path;
    fields.modTime = version + 1000;
    fields.userId = version % 2 ? "a@x.local" : "b@y.local";
    fields.puserId = version % 2 ? "b@y.local" : "a@x.local";
    entries.push_back(loaded.store.add(fields));
  }
  return bench::secondsOf([&] { loaded.tree.appendAll(entries); });
}

}  // namespace

int main() {
  std::string pattern = (std::filesystem::temp_directory_path() / "zolvar-bench-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) return 1;
  const std::string log = pattern + "/" + LogName;
  writeLog(log);
  bench::NoLog noLog;
  QtRunLoop runLoop(noLog);
  PosixFileSystem fileSystem(runLoop);
  const auto folder = fileSystem.open(pattern);
  if (!folder) return 1;

  const double before = residentBytes();
  auto kept = load(**folder, noLog);
  const double perEntry = (residentBytes() - before) / Entries;
  if (kept->store.pathCount() != Entries) return 1;
  kept.reset();

  const auto [all, bare] = bench::compare(
      Rounds, [&] { load(**folder, noLog).reset(); }, [&] { bareParse(log); });
  fmt::print("read all logs {:.2f} s, bare parse {:.2f} s\n", all, bare);
  bench::printBudget("reading 1,000,000 entries into the tree against a bare parse", all / bare, 4,
                     " x");
  bench::printBudget("resident memory an entry", perEntry, 250, " bytes");

  std::vector<double> one;
  std::vector<double> many;
  for (int round = -1; round < Rounds; ++round) {
    const double single = merge(true);
    const double spread = merge(false);
    if (round < 0) continue;
    one.push_back(single);
    many.push_back(spread);
  }
  bench::printBudget("merging 100,000 versions of one path against 100,000 paths",
                     bench::median(one) / bench::median(many), 2, " x");
  std::filesystem::remove_all(pattern);
  return 0;
}
