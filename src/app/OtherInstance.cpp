#include "app/OtherInstance.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <string_view>
#include <system_error>

#include "platform/FileSystem.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/ProcessLauncher.h"
#include "util/PathRules.h"

namespace zolvar {
namespace {

constexpr std::string_view Programs[] = {"zolvar-desktop", "zolvard"};
constexpr double LongestEnd = 45;  // seconds
constexpr std::uint64_t LongestPid = 32;

/// 0 when the file tells none.
int pidIn(FileSystem& files, const std::string& lockPath) {
  const auto folder = files.open(std::string(parentPath(lockPath)));
  if (!folder) return 0;
  const auto text = (*folder)->read(lastPathComponent(lockPath), 0, LongestPid);
  if (!text) return 0;
  int pid = 0;
  const char* const end = text->data() + text->size();
  const auto [rest, error] = std::from_chars(text->data(), end, pid);
  const bool isWhole = error == std::errc() && (rest == end || *rest == '\n');
  return isWhole && pid > 1 ? pid : 0;
}

bool isOurs(const ProcessLauncher& processes, int pid) {
  const auto commandLine = processes.commandLine(pid);
  if (commandLine.empty()) return false;
  const auto name = lastPathComponent(commandLine.front());
  return std::find(std::begin(Programs), std::end(Programs), name) != std::end(Programs);
}

}  // namespace

bool killOtherInstances(Platform& platform, const std::string& lockPath) {
  const int pid = pidIn(platform.fileSystem, lockPath);
  if (pid == 0 || pid == ::getpid() || !isOurs(platform.processes, pid)) return false;
  platform.log.debug("Ending the Zolvar that runs already, process {}.", pid);
  if (!platform.processes.signal(pid, SIGTERM)) {
    platform.log.debug("Error while killing process: {}", std::generic_category().message(errno));
    return false;
  }
  return platform.processes.waitGone(pid, LongestEnd);
}

}  // namespace zolvar
