// What does reading a log into a store cost on top of taking its lines apart? Compares a bare
// csv_parse with counting callbacks with KDLogFile::readTolerantly over the same file, in turn.
//
// 1,000,000 lines over as many paths of 43 bytes are a log of the largest kind we think of, 86 MB:
// it does not fit any cache, every path is new, and the store's table grows to its full size. Half
// of the entries have a parent. A run takes some tenths of a second; the first round only warms up,
// since memory that was never used before costs much more, and the medians of the next five count.

#include <csv.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "Measure.h"
#include "log/KDLogFile.h"
#include "platform/qt/PosixFileSystem.h"
#include "platform/qt/QtRunLoop.h"

namespace {

using namespace zolvar;

constexpr std::size_t Lines = 1'000'000;
constexpr std::size_t PieceSize = 1U << 20U;
constexpr int Rounds = 5;
constexpr double Budget = 0.6;
constexpr const char* LogName = "author@machine.local.fplog";

void writeLog(const std::string& path) {
  std::ofstream out(path);
  for (std::uint32_t line = 0; line < Lines; ++line) {
    const std::uint32_t time = 1'700'000'000 + line / 3;
    out << fmt::format(
        "\"{}\",\"{}\",\"Projects/{:02}/section-{:02}/report-{:08x}.txt\",\"{}\",\"\",\"\"\n", time,
        line % 2 == 0 ? 0 : time - 9'000'000, line % 37, line / 7 % 53, line * 2654435761U,
        1'680'000'000 + line);
  }
}

struct Counts {
  std::size_t fields = 0;
  std::size_t rows = 0;
};

void countField(void*, std::size_t, void* counts) { ++static_cast<Counts*>(counts)->fields; }
void countRow(int, void* counts) { ++static_cast<Counts*>(counts)->rows; }

void parseBare(const std::string& path) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  const auto piece = std::make_unique<char[]>(PieceSize);
  csv_parser parser;
  csv_init(&parser, 0);
  Counts counts;
  for (ssize_t size = 0; (size = read(file, piece.get(), PieceSize)) > 0;) {
    csv_parse(&parser, piece.get(), static_cast<std::size_t>(size), countField, countRow, &counts);
  }
  csv_free(&parser);
  close(file);
  if (counts.rows != Lines) std::exit(1);
}

}  // namespace

int main() {
  std::string folderPath =
      (std::filesystem::temp_directory_path() / "zolvar-bench-XXXXXX").string();
  if (mkdtemp(folderPath.data()) == nullptr) return 1;
  const std::string path = folderPath + "/" + LogName;
  writeLog(path);

  bench::NoLog log;
  QtRunLoop loop(log);
  PosixFileSystem files(loop);
  const auto folder = files.open(folderPath);
  if (!folder) return 1;
  KDLogFile file(**folder, LogName, nullptr, log);
  std::unique_ptr<KDEntryStore> store;

  std::vector<double> bare;
  std::vector<double> full;
  for (int round = -1; round < Rounds; ++round) {
    const double bareSeconds = bench::secondsOf([&] { parseBare(path); });
    store = std::make_unique<KDEntryStore>();  // frees the last one outside the measured time
    const double fullSeconds = bench::secondsOf([&] {
      const auto summary = file.readTolerantly(0, *store);
      if (!summary || summary->entries.size() != Lines) std::exit(1);
    });
    if (round < 0) continue;
    bare.push_back(bareSeconds);
    full.push_back(fullSeconds);
  }
  const double megabytes = static_cast<double>(std::filesystem::file_size(path)) / 1e6;
  std::filesystem::remove_all(folderPath);
  fmt::print("bare csv_parse {:.0f} MB/s, into a store {:.0f} MB/s\n",
             megabytes / bench::median(bare), megabytes / bench::median(full));
  bench::printBudget("reading a log, share of the speed of bare parsing",
                     bench::median(bare) / bench::median(full), Budget, "", true);
  return 0;
}
