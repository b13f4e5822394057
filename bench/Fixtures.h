#pragma once

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <thread>

#include "platform/Platform.h"
#include "platform/ProcessLauncher.h"

/// What the benchmarks of real folders share: a place of their own, files, a serving daemon.
namespace zolvar::bench {

namespace fs = std::filesystem;

[[noreturn]] inline void giveUp(const std::string& text) {
  fmt::print(stderr, "{}\n", text);
  std::exit(1);
}

/// A folder of its own for everything, gone at the end.
class Scratch {
 public:
  Scratch() {
    std::string pattern = (fs::temp_directory_path() / "zolvar-bench-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) giveUp("no temporary folder");
    path_ = pattern;
  }
  ~Scratch() { fs::remove_all(path_); }
  [[nodiscard]] std::string fresh(const std::string& name) {
    const std::string path = fmt::format("{}/{}-{}", path_, name, ++count_);
    fs::create_directories(path);
    return path;
  }

 private:
  std::string path_;
  int count_ = 0;
};

/// `count` files of `size` bytes in directories of a hundred, with a time long past.
inline void makeFiles(const std::string& folder, int count, std::size_t size) {
  std::string content(size, '\0');
  constexpr long Age = 1'000'000;  // seconds; no file is fresh
  const time_t past = time(nullptr) - Age;
  for (int number = 0; number < count; ++number) {
    const std::string directory = fmt::format("{}/part {:03}", folder, number / 100);
    if (number % 100 == 0) fs::create_directories(directory);
    for (std::size_t at = 0; at + 8 <= size; at += 8) {
      const std::uint64_t word = (at + static_cast<std::size_t>(number)) * 0x9E3779B97F4A7C15ULL;
      std::memcpy(content.data() + at, &word, sizeof word);
    }
    const std::string path = fmt::format("{}/file {:06}.dat", directory, number);
    std::ofstream(path, std::ios::binary) << content;
    const timespec times[2] = {{past, 0}, {past, 0}};
    utimensat(AT_FDCWD, path.c_str(), times, 0);
  }
}

/// The transfer tool as daemon, serving one folder.
class Daemon {
 public:
  Daemon(Platform& platform, const std::string& base, const std::string& folder, unsigned port) {
    const std::string config = base + "/daemon.conf";
    std::ofstream file(config);
    file << "use chroot = no\nlog file = " << base << "/daemon.log\n";
    if (geteuid() == 0) file << "uid = 0\ngid = 0\n";
    file << "[Docs]\npath = " << folder << "\nread only = yes\n";
    file.close();
    ProcessRequest request;
    request.program = *platform.processes.clientToolPath();
    request.arguments = {"--daemon", "--no-detach", "--config=" + config,
                         fmt::format("--port={}", port), "--address=localhost"};
    auto started = platform.processes.start(request);
    if (!started) giveUp(started.error().message());
    process_ = std::move(*started);
    waiter_ = std::thread([this] { process_->wait({}, {}); });
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
  }
  ~Daemon() {
    process_->terminate();
    waiter_.join();
  }

 private:
  std::shared_ptr<Process> process_;
  std::thread waiter_;
};

}  // namespace zolvar::bench
