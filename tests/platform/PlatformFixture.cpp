#include "PlatformFixture.h"

#include <unistd.h>

#include <QCoreApplication>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace zolvar {

namespace fs = std::filesystem;

namespace {

/// Keeps the tests out of the developer's own settings, Trash and run-time folder. Where the tests'
/// services run, they have brought a home of their own.
class HomeEnvironment : public testing::Environment {
 public:
  HomeEnvironment() {
    if (std::getenv("ZOLVAR_TEST_SERVICES") != nullptr) return;
    const std::string home = folder_.path();
    setenv("HOME", home.c_str(), 1);
    setenv("XDG_DATA_HOME", (home + "/data").c_str(), 1);
    setenv("XDG_CONFIG_HOME", (home + "/config").c_str(), 1);
    setenv("XDG_RUNTIME_DIR", home.c_str(), 1);
    fs::create_directories(home + "/data");
  }

 private:
  TemporaryFolder folder_;

 public:
  const std::string dataHome = folder_.path("data");
};

// Before main: the desktop's libraries read the environment once.
const auto* const homeEnvironment =
    static_cast<HomeEnvironment*>(testing::AddGlobalTestEnvironment(new HomeEnvironment));

}  // namespace

std::string memoryFolder() { return access("/dev/shm", W_OK) == 0 ? "/dev/shm" : ""; }

std::string testDataHome() { return homeEnvironment->dataHome; }

TemporaryFolder::TemporaryFolder(const std::string& above) {
  const fs::path parent = above.empty() ? fs::temp_directory_path() : fs::path(above);
  std::string pattern = (parent / "zolvar-test-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder");
  path_ = pattern;
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

void TemporaryFolder::write(const std::string& below, const std::string& content) const {
  fs::create_directories(fs::path(path(below)).parent_path());
  std::ofstream(path(below), std::ios::binary) << content;
}

void TemporaryFolder::makeFolder(const std::string& below) const {
  fs::create_directories(path(below));
}

std::string TemporaryFolder::content(const std::string& below) const {
  std::ifstream file(path(below), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

bool TemporaryFolder::exists(const std::string& below) const {
  return fs::symlink_status(path(below)).type() != fs::file_type::not_found;
}

bool LoopTest::runUntil(const std::function<bool()>& condition, double seconds) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
  }
  return true;
}

void LoopTest::turn() { QCoreApplication::processEvents(); }

}  // namespace zolvar
