#include "net/TransferDaemon.h"

#include <fmt/format.h>

#include <charconv>
#include <csignal>

#include "platform/Clock.h"
#include "platform/FileSystem.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/ProcessLauncher.h"
#include "util/PathRules.h"
#include "util/hexHash.h"

namespace zolvar {

namespace {

constexpr double LongestWait = 10;    // seconds, for each thing waited for
constexpr double KillWait = 2;        // seconds, after a kill
constexpr double PidFilePoll = 0.05;  // seconds
constexpr double StopPause = 0.1;     // seconds, so that the port is free when a start follows
constexpr unsigned HighestPort = 65535;
constexpr std::uint32_t PrivateMode = 0600;
constexpr std::uint64_t LargestLog = 8 << 20;  // bytes
constexpr std::uint64_t KeptLog = 1 << 20;     // bytes of its end

}  // namespace

TransferDaemon::TransferDaemon(Platform& platform, const std::string& supportFolder,
                               const std::string& basePath)
    : platform_(platform), supportFolder_(supportFolder), stem_("instance-" + hexHash(basePath)) {}

std::string TransferDaemon::fileName(const char* extension) const {
  return stem_ + "." + extension;
}

std::string TransferDaemon::path(const char* extension) const {
  return joinPath(supportFolder_, fileName(extension));
}

int TransferDaemon::serverPid() {
  const auto folder = platform_.fileSystem.open(supportFolder_);
  if (!folder) return 0;
  const auto text = (*folder)->read(fileName("fppid"), 0, 64);
  if (!text) return 0;
  int pid = 0;
  std::from_chars(text->data(), text->data() + text->size(), pid);
  return pid > 0 ? pid : 0;
}

bool TransferDaemon::isOurs(int pid) const {
  const std::string ours = configFilePath();
  for (const std::string& argument : platform_.processes.commandLine(pid)) {
    if (argument.find(ours) != std::string::npos) return true;
  }
  return false;
}

int TransferDaemon::runningPid() {
  const int pid = serverPid();
  return pid > 0 && isOurs(pid) ? pid : 0;
}

Result<unsigned> TransferDaemon::start(const DaemonStart& wanted) {
  boundLog();
  if (serverPid() > 0) {  // left by an earlier run: it serves what was shared then
    if (auto ended = stop(); !ended) return tl::unexpected(ended.error());
  } else {
    removeFiles();  // the tool refuses to start over a pid file, an empty one included
  }
  unsigned port = wanted.port;
  while (port <= HighestPort && !platform_.processes.canBind(port)) ++port;
  if (port > HighestPort) {
    return fail(FailureKind::Transient, "start the transfer daemon", "",
                fmt::format("no port from {} on is free", wanted.port));
  }
  if (auto written = writeFiles(wanted); !written) {
    platform_.log.error("Unable to launch daemon - could not create config file. {}",
                        written.error().message());
    removeFiles();
    return tl::unexpected(written.error());
  }
  if (auto launched = launch(port, wanted.bandwidthLimit); !launched) {
    platform_.log.error("{}", launched.error().message());
    return tl::unexpected(launched.error());
  }
  return port;
}

void TransferDaemon::boundLog() {
  const auto folder = platform_.fileSystem.open(supportFolder_);
  if (!folder) return;
  const std::string name = fileName("fplog");
  const auto log = (*folder)->attributes(name);
  if (!log || log->size <= LargestLog) return;
  // The daemon goes on appending to the same file.
  const auto end = (*folder)->read(name, log->size - KeptLog, 2 * KeptLog);
  if (end) (void)(*folder)->replace(fileName("fplog.old"), *end, PrivateMode);
  if (const auto cleared = (*folder)->clear(name); !cleared) {
    platform_.log.debug("{}", cleared.error().message());
  }
}

Result<> TransferDaemon::writeFiles(const DaemonStart& wanted) {
  const std::string content = configFileContent(wanted.configuration);
  if (auto verified = verifyDaemonConfiguration(content, wanted.configuration); !verified) {
    return verified;
  }
  const auto folder = platform_.fileSystem.open(supportFolder_);
  if (!folder) return tl::unexpected(folder.error());
  const std::string passwordFile = fileName("passwd");
  if (wanted.passwordFileContent.empty()) {
    (void)(*folder)->removeFile(passwordFile);
  } else if (auto written =
                 (*folder)->replace(passwordFile, wanted.passwordFileContent, PrivateMode);
             !written) {
    return written;
  }
  return (*folder)->replace(fileName("fpcfg"), content, PrivateMode);
}

Result<> TransferDaemon::launch(unsigned port, unsigned bandwidthLimit) {
  const auto tool = platform_.processes.clientToolPath();
  if (!tool) return tl::unexpected(tool.error());
  ProcessRequest request;
  request.program = *tool;
  request.arguments = {"--daemon", fmt::format("--port={}", port), "--config=" + configFilePath()};
  if (bandwidthLimit != 0) {
    request.arguments.insert(request.arguments.begin(),
                             fmt::format("--bwlimit={}", bandwidthLimit));
  }
  const std::string joined = fmt::format("{}", fmt::join(request.arguments, " "));
  platform_.log.debug("Launching daemon:\nzolvar {}", joined);

  // The tool forks into the background, the process we start ends at once.
  const auto process = platform_.processes.start(request);
  if (!process) return tl::unexpected(process.error());
  std::string errors;
  ProcessSinks sinks;
  sinks.errors = [&errors](std::string_view text) { errors += text; };
  const ProcessEnd end = (*process)->wait({LongestWait, LongestWait}, sinks);
  if (end.status != 0 || end.silenced) {
    if (!errors.empty()) platform_.log.error("{}", errors);
    return fail(FailureKind::Transient, "start the transfer daemon", "",
                fmt::format("Error: Server did not start (exitcode {})", end.status));
  }
  const double deadline = platform_.clock.now() + LongestWait;
  while (runningPid() == 0) {
    const double now = platform_.clock.now();
    if (now >= deadline || !platform_.clock.sleepUntil(now + PidFilePoll)) {
      return fail(FailureKind::Transient, "start the transfer daemon", "",
                  "it did not write its pid file; its log is " + logFilePath());
    }
  }
  platform_.log.debug("Launched daemon:\nzolvar {}", joined);
  return {};
}

Result<> TransferDaemon::stop() {
  Result<> ended;
  const int pid = serverPid();
  if (pid > 0) {
    if (isOurs(pid)) {
      ended = endProcess(pid);
    } else {
      platform_.log.debug("The pid {} in {} is not our daemon's. Not signalled.", pid,
                          pidFilePath());
    }
  }
  if (ended) removeFiles();  // else a later stop finds it by them
  platform_.clock.sleepUntil(platform_.clock.now() + StopPause);
  return ended;
}

Result<> TransferDaemon::endProcess(int pid) {
  if (!platform_.processes.signal(pid, SIGTERM)) return {};
  if (platform_.processes.waitGone(pid, LongestWait)) return {};
  if (isOurs(pid) && platform_.processes.signal(pid, SIGKILL) &&
      platform_.processes.waitGone(pid, KillWait)) {
    return {};
  }
  if (!isOurs(pid)) return {};
  return fail(FailureKind::Transient, "stop the transfer daemon", std::to_string(pid),
              "it does not end");
}

void TransferDaemon::removeFiles() {
  const auto folder = platform_.fileSystem.open(supportFolder_);
  if (!folder) return;
  for (const char* extension : {"fppid", "fplck", "fpcfg", "passwd"}) {
    (void)(*folder)->removeFile(fileName(extension));
  }
}

}  // namespace zolvar
