#include "pool/TransferRun.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "platform/Hosts.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/ProcessLauncher.h"
#include "pool/LineSplitter.h"
#include "util/InconsistencyError.h"
#include "util/PathRules.h"
#include "util/hexHash.h"

namespace zolvar {

namespace {

constexpr std::string_view GuestPassword = "guestpass";
constexpr std::size_t MostErrorLines = 200;    ///< passed on a run
constexpr std::size_t LongestErrorLine = 500;  ///< bytes

/// One run's standard error: passed on to the log, and read for what the exit status hides.
class ErrorReader {
 public:
  explicit ErrorReader(Log& log)
      : log_(log),
        lines_(TransferRun::LongestLine, [this](std::string_view line) { take(line); }) {}

  void add(std::string_view bytes) { lines_.add(bytes); }
  void finish() {
    lines_.finish();
    if (count_ > MostErrorLines) {
      log_.warning("The transfer tool wrote {} more lines.", count_ - MostErrorLines);
    }
  }
  /// The daemon refuses a wrong password and one client too many with the same status.
  [[nodiscard]] bool saysAuthenticationFailed() const { return authenticationFailed_; }

 private:
  void take(std::string_view line) {
    if (line.empty()) return;
    if (line.find("auth failed") != std::string_view::npos) authenticationFailed_ = true;
    if (++count_ > MostErrorLines) return;
    std::string text(line.substr(0, LongestErrorLine));
    for (char& character : text) {
      if (static_cast<unsigned char>(character) < ' ' || character == '\x7f') character = ' ';
    }
    log_.warning("Transfer tool: {}", text);
  }

  Log& log_;
  LineSplitter lines_;
  std::size_t count_ = 0;
  bool authenticationFailed_ = false;
};

}  // namespace

std::string transferUrl(const ParticipantAddress& participant, const std::string& poolName,
                        bool logsOnly) {
  const std::string module =
      logsOnly ? joinPath(poolName, std::string(MetadataFolderName)) : poolName;
  return fmt::format("rsync://{}@{}:{}/{}", hexHash(poolName), participant.hostName,
                     participant.port, module);
}

std::vector<std::string> logLoadArguments(const std::string& ownLogPath, const std::string& url,
                                          const std::string& folder) {
  return {"-r",      "--times",  "--exclude", ownLogPath, "--include",
          "*.fplog", "--update", url,         folder};
}

std::vector<std::string> listingArguments(const std::string& url) { return {"--recursive", url}; }

std::vector<std::string> copyArguments(const CopyOptions& options, const std::string& url,
                                       const std::string& folder) {
  std::vector<std::string> arguments;
  if (options.bandwidthLimit != 0) {
    arguments.push_back(fmt::format("--bwlimit={}", options.bandwidthLimit));
  }
  for (const char* fixed : {"--files-from", "-", "--times", "--links", "--safe-links", "-E"}) {
    arguments.emplace_back(fixed);
  }
  if (options.updatesOnly) arguments.emplace_back("--update");
  if (!options.backupFolder.empty()) {
    arguments.emplace_back("--backup");
    arguments.push_back("--backup-dir=" + options.backupFolder);
  }
  arguments.push_back(url);
  arguments.push_back(folder);
  return arguments;
}

bool TransferRun::canFind(const ParticipantAddress& participant) {
  const auto address = platform_.hosts.lookUp(participant.hostName);
  if (!address) platform_.log.warning("Host {} not (no longer?) found.", participant.hostName);
  return address.has_value();
}

int TransferRun::run(const Request& request) {
  if (isTerminated()) return TransferStatus::Ended;
  const auto tool = platform_.processes.clientToolPath();
  if (!tool) throw InconsistencyError("Could not find included zolvar tool.");

  ProcessRequest start;
  start.program = *tool;
  start.arguments = request.arguments;
  start.environment["RSYNC_PASSWORD"] =
      request.password.empty() ? std::string(GuestPassword) : request.password;
  start.input = request.input;
  start.wantsOutput = static_cast<bool>(request.line);
  auto started = platform_.processes.start(start);
  if (!started) {
    platform_.log.warning("{}", started.error().message());
    return TransferStatus::NoConnection;
  }
  const std::shared_ptr<Process> process = std::move(*started);
  {
    const std::lock_guard guard(mutex_);
    process_ = process;
    if (isTerminated_) process->terminate();
  }

  LineSplitter lines(LongestLine, [&request](std::string_view line) { request.line(line); });
  ErrorReader errors(platform_.log);
  ProcessSinks sinks;
  if (request.line) sinks.output = [&lines](std::string_view bytes) { lines.add(bytes); };
  sinks.errors = [&errors](std::string_view bytes) { errors.add(bytes); };
  sinks.tick = request.tick;
  const ProcessEnd end = process->wait({ConnectingLimit, SilenceLimit}, sinks);
  {
    const std::lock_guard guard(mutex_);
    process_.reset();
  }
  if (request.line) lines.finish();
  errors.finish();

  platform_.log.debug("The transfer tool ended with status {}.", end.status);
  if (end.silenced) {
    platform_.log.warning("A transfer stood still for too long and was ended; it is tried again.");
    return TransferStatus::Silent;
  }
  if (end.status == TransferStatus::NotServed && errors.saysAuthenticationFailed()) {
    return TransferStatus::NoAuthentication;
  }
  return end.status;
}

void TransferRun::allow() {
  const std::lock_guard guard(mutex_);
  isTerminated_ = false;
}

void TransferRun::terminate() {
  const std::lock_guard guard(mutex_);
  isTerminated_ = true;
  if (process_) process_->terminate();
}

bool TransferRun::isTerminated() const {
  const std::lock_guard guard(mutex_);
  return isTerminated_;
}

}  // namespace zolvar
