// Does a walk through a folder cost what a walk must cost? Compares Folder::walk with a visitor
// that looks at every path and time against `find DIR -printf '%T@ %p\n'` over the same files, in
// turn.
//
// 100,000 files in 1,000 folders of three levels is a large home folder; a run takes some tenths of
// a second, long enough for the start of find's process not to matter. The tree is made afresh, the
// first round only warms the caches, and the medians of the next five count.

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "platform/Log.h"
#include "platform/qt/PosixFileSystem.h"
#include "platform/qt/QtRunLoop.h"

namespace {

constexpr int Files = 100'000;
constexpr int FilesAFolder = 100;
constexpr int Rounds = 5;
constexpr double Budget = 1.3;

class NoLog : public zolvar::Log {
 public:
  void write(Level, std::string_view) override {}
};

/// Makes the tree in a fresh folder and removes it at the end.
class Tree {
 public:
  Tree() {
    std::string pattern = (std::filesystem::temp_directory_path() / "zolvar-bench-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) std::exit(1);
    path_ = pattern;
    for (int folder = 0; folder < Files / FilesAFolder; ++folder) {
      const std::string below =
          fmt::format("{}/project {}/part {:02}/notes", path_, folder / 50, folder % 50);
      std::filesystem::create_directories(below);
      for (int file = 0; file < FilesAFolder; ++file) {
        const std::string name = fmt::format("{}/a file of work {:03}.txt", below, file);
        const int descriptor = open(name.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
        if (descriptor < 0 || write(descriptor, "content\n", 8) != 8) std::exit(1);
        close(descriptor);
      }
    }
  }
  ~Tree() { std::filesystem::remove_all(path_); }
  [[nodiscard]] const std::string& path() const { return path_; }

 private:
  std::string path_;
};

template <class Action>
double secondsOf(const Action& action) {
  const auto begin = std::chrono::steady_clock::now();
  action();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

double median(std::array<double, Rounds> values) {
  std::sort(values.begin(), values.end());
  return values[Rounds / 2];
}

}  // namespace

int main() {
  NoLog log;
  zolvar::QtRunLoop runLoop(log);
  zolvar::PosixFileSystem fileSystem(runLoop);
  const Tree tree;
  const auto folder = fileSystem.open(tree.path());
  if (!folder) return 1;

  std::uint64_t seen = 0;
  std::uint64_t sum = 0;
  const auto walk = [&] {
    seen = 0;
    (*folder)->walk(
        "",
        [&](std::string_view path, const zolvar::FileAttributes& attributes) {
          if (attributes.kind == zolvar::FileKind::Regular) ++seen;
          sum += path.size() + static_cast<std::uint64_t>(attributes.modTime) + attributes.size;
          return zolvar::Folder::Visit::Enter;
        },
        [](std::string_view, const zolvar::Failure& failure) {
          fmt::print(stderr, "{}\n", failure.message());
        });
  };
  const std::string command = fmt::format("find '{}' -printf '%T@ %p\\n' > /dev/null", tree.path());
  const auto find = [&] {
    if (std::system(command.c_str()) != 0) std::exit(1);
  };

  walk();
  find();
  std::array<double, Rounds> walks{};
  std::array<double, Rounds> finds{};
  for (int round = 0; round < Rounds; ++round) {
    walks[round] = secondsOf(walk);
    finds[round] = secondsOf(find);
  }
  const double ratio = median(walks) / median(finds);
  fmt::print("walk {:.3f} s, find {:.3f} s, {} files (sum {})\n", median(walks), median(finds),
             seen, sum);
  fmt::print("BUDGET scan of {} files against find | measured {:.2f} x | budget {:.2f} x | {}\n",
             Files, ratio, Budget, ratio <= Budget && seen == Files ? "ok" : "MISSED");
  return seen == Files ? 0 : 1;
}
