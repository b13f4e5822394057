// Does looking for changes cost what looking at the files must cost? Scans a pool of 100,000 files
// that have not changed, and compares with `find FOLDER -printf '%T@ %p\n'` over the same files, in
// turn. The files are one second's work for the first scan, which is not counted.

#include <unistd.h>

#include <QCoreApplication>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "Measure.h"
#include "platform/Clock.h"
#include "platform/Platform.h"
#include "platform/qt/SystemPlatform.h"
#include "pool/KDPoolState.h"
#include "support/QuietListener.h"

namespace {

using namespace zolvar;

constexpr int Folders = 1'000;
constexpr int FilesAFolder = 100;
constexpr int Rounds = 5;
constexpr double Budget = 1.3;

}  // namespace

int main(int argc, char** argv) {
  std::string home = (std::filesystem::temp_directory_path() / "zolvar-bench-XXXXXX").string();
  if (mkdtemp(home.data()) == nullptr) return 1;
  setenv("HOME", home.c_str(), 1);
  unsetenv("XDG_DATA_HOME");
  unsetenv("XDG_CONFIG_HOME");
  const QCoreApplication application(argc, argv);
  auto system = SystemPlatform::make({});
  if (!system) return 1;
  const std::string folder = home + "/Docs";
  std::filesystem::create_directories(folder + "/.Zolvar");
  std::ofstream(folder + "/.Zolvar/me@here.local.fplog").close();
  for (int directory = 0; directory < Folders; ++directory) {
    const std::string below =
        fmt::format("{}/project {}/part {:02}", folder, directory / 50, directory % 50);
    std::filesystem::create_directories(below);
    for (int file = 0; file < FilesAFolder; ++file) {
      std::ofstream(fmt::format("{}/a file of work {:03}.txt", below, file)) << "content\n";
    }
  }

  std::shared_ptr<const PoolSnapshot> snapshot;
  Pace pace;
  pace.freshFiles = 0;
  Platform& platform = (*system)->platform();
  KDPoolState state({"Docs", folder, "me@here.local", pace}, platform,
                    std::make_unique<QuietListener>(snapshot));
  if (const auto activated = state.activate(); !activated) {
    fmt::print(stderr, "{}\n", activated.error().message());
    return 1;
  }
  constexpr std::uint64_t Expected = Folders * FilesAFolder + Folders + Folders / 50;
  if (snapshot->fileCount != Expected) {
    fmt::print(stderr, "{} paths logged instead of {}\n", snapshot->fileCount, Expected);
    return 1;
  }

  const std::string command = fmt::format("find '{}' -printf '%T@ %p\\n' > /dev/null", folder);
  const auto find = [&] {
    if (std::system(command.c_str()) != 0) std::exit(1);
  };
  std::vector<double> scans;
  std::vector<double> finds;
  for (int round = -1; round < Rounds; ++round) {
    platform.clock.sleepUntil(platform.clock.now() + 2.1);  // or the scan itself would wait
    const double scan = bench::secondsOf([&] { state.checkFileSystemChanges(); });
    const double found = bench::secondsOf(find);
    if (round < 0) continue;
    scans.push_back(scan);
    finds.push_back(found);
  }
  fmt::print("scan {:.3f} s, find {:.3f} s\n", bench::median(scans), bench::median(finds));
  bench::printBudget("scanning 100,000 unchanged files against find",
                     bench::median(scans) / bench::median(finds), Budget, " x");
  state.leave();
  (*system)->finish(5);
  std::filesystem::remove_all(home);
  return 0;
}
