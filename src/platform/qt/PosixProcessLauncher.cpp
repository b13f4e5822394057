#include "platform/qt/PosixProcessLauncher.h"

#include <fcntl.h>
#include <netdb.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>

#include "util/InconsistencyError.h"

namespace zolvar {

namespace {

constexpr const char* ToolBelowLibexec = "libexec/zolvar/zolvar";
#ifdef ZOLVAR_LIBEXEC_DIR
constexpr const char* InstalledTool = ZOLVAR_LIBEXEC_DIR "/zolvar/zolvar";
#else
constexpr const char* InstalledTool = "";
#endif

std::vector<std::string> mergedEnvironment(const std::map<std::string, std::string>& additions) {
  std::vector<std::string> merged;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string text = *entry;
    if (!additions.contains(text.substr(0, text.find('=')))) merged.push_back(text);
  }
  for (const auto& [name, value] : additions) merged.push_back(name + "=" + value);
  return merged;
}

/// Makes a pipe; `ours` does not block.
bool makePipe(Descriptor& reader, Descriptor& writer, const Descriptor& ours) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return false;
  reader.reset(ends[0]);
  writer.reset(ends[1]);
  return fcntl(ours.get(), F_SETFL, O_NONBLOCK) == 0;
}

}  // namespace

PosixProcessLauncher::PosixProcessLauncher(const ProcessPace& pace)
    : pace_(pace), keeper_(std::make_shared<ChildKeeper>(pace.patience)) {
  ::signal(SIGPIPE, SIG_IGN);
}

PosixProcessLauncher::~PosixProcessLauncher() = default;

Result<std::shared_ptr<Process>> PosixProcessLauncher::start(const ProcessRequest& request) {
  require(request.program.starts_with('/'), "request.program.starts_with('/')");
  PosixProcess::Pipes ours;
  Descriptor input;
  Descriptor output;
  Descriptor errors;
  if ((!request.input.empty() && !makePipe(input, ours.input, ours.input)) ||
      (request.wantsOutput && !makePipe(ours.output, output, ours.output)) ||
      !makePipe(ours.errors, errors, ours.errors)) {
    return tl::unexpected(failureFromErrno(errno, "start the program", request.program));
  }
  ChildPlan plan;
  plan.program = request.program;
  plan.arguments.push_back(request.program);
  plan.arguments.insert(plan.arguments.end(), request.arguments.begin(), request.arguments.end());
  plan.environment = mergedEnvironment(request.environment);
  plan.input = input.get();
  plan.output = output.get();
  plan.errors = errors.get();
  auto child = keeper_->spawn(plan);
  if (!child) return tl::unexpected(child.error());
  return std::make_shared<PosixProcess>(keeper_, std::move(*child), std::move(ours), request.input,
                                        pace_);
}

Result<std::string> PosixProcessLauncher::clientToolPath() const {
  std::error_code ignored;
  const auto program = std::filesystem::read_symlink("/proc/self/exe", ignored);
  const auto above = program.parent_path().parent_path();
  for (const auto& candidate :
       {(above / ToolBelowLibexec).string(), (above.parent_path() / ToolBelowLibexec).string(),
        std::string(InstalledTool)}) {
    if (!candidate.empty() && access(candidate.c_str(), X_OK) == 0) return candidate;
  }
  return fail(FailureKind::Absent, "find the transfer tool", InstalledTool, "it is not installed");
}

std::vector<std::string> PosixProcessLauncher::commandLine(int pid) const {
  std::vector<std::string> arguments;
  if (pid <= 0) return arguments;
  std::ifstream file("/proc/" + std::to_string(pid) + "/cmdline", std::ios::binary);
  for (std::string argument; std::getline(file, argument, '\0');) arguments.push_back(argument);
  return arguments;
}

bool PosixProcessLauncher::signal(int pid, int signalNumber) {
  return pid > 0 && kill(pid, signalNumber) == 0;  // 0 and below would mean whole groups
}

bool PosixProcessLauncher::waitGone(int pid, double seconds) {
  if (pid <= 0) return true;
  const Descriptor process(static_cast<int>(syscall(SYS_pidfd_open, pid, 0)));
  if (!process) return errno == ESRCH;
  const double milliseconds =
      std::clamp(std::ceil(seconds * 1000), 0.0, double{std::numeric_limits<int>::max()});
  pollfd ended = {process.get(), POLLIN, 0};
  return poll(&ended, 1, static_cast<int>(milliseconds)) > 0;
}

bool PosixProcessLauncher::canBind(unsigned port) const {
  if (port == 0 || port > std::numeric_limits<std::uint16_t>::max()) return false;
  addrinfo hints = {};
  hints.ai_flags = AI_PASSIVE | AI_NUMERICSERV;
  hints.ai_family = AF_INET;
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  if (getaddrinfo(nullptr, std::to_string(port).c_str(), &hints, &found) != 0) return false;
  bool isBound = false;
  for (const addrinfo* each = found; each != nullptr && !isBound; each = each->ai_next) {
    const Descriptor probe(
        socket(each->ai_family, each->ai_socktype | SOCK_CLOEXEC, each->ai_protocol));
    const int on = 1;
    isBound = probe && setsockopt(probe.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) == 0 &&
              bind(probe.get(), each->ai_addr, each->ai_addrlen) == 0;
  }
  freeaddrinfo(found);
  return isBound;
}

}  // namespace zolvar
