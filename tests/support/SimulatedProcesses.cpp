#include "support/SimulatedProcesses.h"

#include <csignal>
#include <sstream>
#include <stdexcept>

#include "net/DaemonConfiguration.h"
#include "support/SimulatedPlatform.h"

namespace zolvar {
namespace {

constexpr const char* ToolPath = "/usr/libexec/zolvar/zolvar";
constexpr int Terminated = 20;
constexpr int BrokenStream = 12;

using Parameters = std::map<std::string, std::string>;

std::string valueOf(const Parameters& parameters, const std::string& key) {
  const auto found = parameters.find(key);
  return found == parameters.end() ? std::string() : found->second;
}

/// The sections by name, "" for the global part. The lab's real daemons check the reader used here.
std::map<std::string, Parameters> readConfiguration(const std::string& text) {
  const auto sections = parseDaemonConfiguration(text);
  if (!sections) throw std::logic_error(sections.error().message());
  std::map<std::string, Parameters> byName;
  for (const ParsedSection& section : *sections) byName[section.name] = section.parameters;
  return byName;
}

/// Whether the secrets file has the line "USER:PASSWORD" and nobody else can read it.
bool isLetIn(const SimulatedFileSystem& files, const std::string& secretsPath,
             const std::string& user, const std::string& password) {
  const auto attributes = files.attributesOf(secretsPath);
  if (!attributes || (attributes->mode & 07U) != 0 || password.empty()) return false;
  const std::string lines = "\n" + files.readAll(secretsPath).value_or("") + "\n";
  return lines.find("\n" + user + ":" + password + "\n") != std::string::npos;
}

/// What the sender finds for the wanted names, their directories included.
std::map<std::string, SimulatedTree::Node> pick(SimulatedTree& tree,
                                                const SimulatedTree::Node& root,
                                                const std::string& input, std::string& errors) {
  std::map<std::string, SimulatedTree::Node> items;
  std::istringstream lines(input);
  for (std::string path; std::getline(lines, path);) {
    if (path.empty() || path.starts_with('/') || path.find("..") == 0 ||
        path.find("/..") != std::string::npos) {
      throw std::logic_error("Never ask the transfer tool for '" + path + "'.");
    }
    const auto node = tree.find(root, path);
    if (!node) {
      errors += "rsync: link_stat \"" + path + "\" failed: No such file or directory (2)\n";
      continue;
    }
    items[path] = *node;
    for (auto slash = path.find('/'); slash != std::string::npos;
         slash = path.find('/', slash + 1)) {
      items[path.substr(0, slash)] = *tree.find(root, path.substr(0, slash));
    }
  }
  return items;
}

void collect(const SimulatedTree::Node& node, const std::string& path,
             std::map<std::string, SimulatedTree::Node>& items) {
  items[path] = node;
  for (const auto& [name, child] : node->children) collect(child, path + "/" + name, items);
}

}  // namespace

/// A program that has done its work when it is waited for.
class SimulatedProcesses::SimpleRun : public Process {
 public:
  SimpleRun(int pid, int status, std::string error, std::string output = {})
      : pid_(pid), status_(status), error_(std::move(error)), output_(std::move(output)) {}
  [[nodiscard]] int pid() const override { return pid_; }
  void terminate() override {}
  ProcessEnd wait(const SilenceLimits& /*limits*/, const ProcessSinks& sinks) override {
    if (sinks.output && !output_.empty()) sinks.output(output_);
    if (sinks.errors && !error_.empty()) sinks.errors(error_);
    return {status_, false};
  }

 private:
  int pid_;
  int status_;
  std::string error_;
  std::string output_;
};

class SimulatedProcesses::ClientRun : public Process {
 public:
  ClientRun(SimulatedProcesses& owner, ProcessRequest request, int pid)
      : owner_(owner),
        request_(std::move(request)),
        order_(TransferOrder::parse(request_.arguments)),
        pid_(pid),
        index_(owner.runs.size()) {
    const auto password = request_.environment.find("RSYNC_PASSWORD");
    if (password != request_.environment.end()) password_ = password->second;
    owner_.runs.push_back({request_.arguments, request_.input, password_, -1, {}});
  }
  [[nodiscard]] int pid() const override { return pid_; }
  void terminate() override { isTerminated_ = true; }

  ProcessEnd wait(const SilenceLimits& limits, const ProcessSinks& sinks) override {
    const ProcessEnd end = work(limits, sinks);
    owner_.runs[index_].status = end.status;
    return end;
  }

 private:
  ProcessEnd work(const SilenceLimits& limits, const ProcessSinks& sinks) {
    TransferTroubles& troubles = owner_.troubles;
    pass(troubles.secondsPerRun, sinks);
    if (isTerminated_) return {Terminated, false};
    if (const auto status = std::exchange(troubles.nextStatus, std::nullopt))
      return {*status, false};
    SimulatedNetwork& network = owner_.host_.world.network;
    SimulatedProcesses* const server = network.reach(owner_.name_, order_.host);
    if (server == nullptr || !server->isServing(order_.port)) {
      tell(sinks.errors,
           "rsync: failed to connect to " + order_.host + ": Connection refused (111)\n");
      return {10, false};
    }
    const Served served = server->serve(order_.port, order_.module, order_.user, password_);
    if (served.status != 0) {
      tell(sinks.errors, served.error);
      return {served.status, false};
    }
    SimulatedTree::Node root = served.root;
    if (order_.isMetadataOnly) {
      const auto metadata = served.files->tree().find(root, ".Zolvar");
      if (!metadata || !(*metadata)->isDirectory()) {
        tell(sinks.errors, "rsync: change_dir \".Zolvar\" failed: No such file or directory (2)\n");
        return {23, false};
      }
      root = *metadata;
    }
    if (order_.kind == TransferOrder::Kind::Listing) {
      if (troubles.stallAfterFiles) return stall(limits, sinks);
      const std::string text =
          listingText(root, order_.isMetadataOnly ? ".Zolvar" : ".", troubles.escapesUtf8);
      for (std::size_t at = 0; at < text.size() && request_.wantsOutput; at += 900) {
        tell(sinks.output, text.substr(at, 900));
      }
      return {0, false};
    }
    std::string errors;
    std::map<std::string, SimulatedTree::Node> items;
    if (order_.kind == TransferOrder::Kind::LogLoad) {
      collect(root, ".Zolvar", items);
    } else {
      items = pick(served.files->tree(), root, request_.input, errors);
    }
    TransferReceiver receiver(owner_.host_.files.tree(), order_, troubles);
    receiver.errors = errors;
    const ProcessEnd end = receiveAll(items, *server, receiver, limits, sinks);
    tell(sinks.errors, receiver.errors);
    return end;
  }

  ProcessEnd receiveAll(const std::map<std::string, SimulatedTree::Node>& items,
                        const SimulatedProcesses& server, TransferReceiver& receiver,
                        const SilenceLimits& limits, const ProcessSinks& sinks) {
    TransferTroubles& troubles = owner_.troubles;
    bool isPartial = !receiver.errors.empty();
    if (const int status = receiver.openDestination(); status != 0) return {status, false};
    const auto isDue = [](std::optional<std::size_t>& countdown) {
      if (countdown != 0U) return false;
      countdown.reset();
      return true;
    };
    for (const auto& [path, node] : items) {
      if (const auto& inBetween = owner_.host_.files.faults.inBetween) inBetween();
      if (isTerminated_) return {Terminated, false};
      if (!owner_.host_.world.network.canReach(owner_.name_, server.name_))
        return stall(limits, sinks);
      if (node->kind != FileKind::Directory) {
        if (isDue(troubles.cutAfterFiles)) return {BrokenStream, false};
        if (troubles.stallAfterFiles == 0U) return stall(limits, sinks);
      }
      const auto outcome = receiver.receive(path, node);
      if (outcome == TransferReceiver::Outcome::Killed) return {128 + SIGKILL, false};
      if (outcome == TransferReceiver::Outcome::Failed) isPartial = true;
      if (outcome == TransferReceiver::Outcome::Transferred) {
        owner_.runs[index_].transferred.push_back(path);
        for (auto* countdown :
             {&troubles.cutAfterFiles, &troubles.killAfterFiles, &troubles.stallAfterFiles}) {
          if (*countdown) --**countdown;
        }
        pass(troubles.secondsPerFile, sinks);
      }
    }
    receiver.finish();
    return {isPartial ? 23 : 0, false};
  }

  /// Nothing moves until the silence limit ends the run.
  ProcessEnd stall(const SilenceLimits& limits, const ProcessSinks& sinks) {
    owner_.troubles.stallAfterFiles.reset();
    if (limits.silent <= 0) throw std::logic_error("A stalled run would be waited for for ever.");
    pass(limits.silent, sinks);
    return {Terminated, true};
  }

  void pass(double seconds, const ProcessSinks& sinks) {
    constexpr double Tick = 0.5;
    for (; seconds > 0 && !isTerminated_; seconds -= Tick) {
      owner_.host_.lanes.pause(std::min(seconds, Tick));
      if (sinks.tick) sinks.tick();
    }
  }

  static void tell(const std::function<void(std::string_view)>& sink, const std::string& text) {
    if (sink && !text.empty()) sink(text);
  }

  SimulatedProcesses& owner_;
  ProcessRequest request_;
  TransferOrder order_;
  int pid_;
  std::size_t index_;
  std::string password_;
  bool isTerminated_ = false;
};

SimulatedProcesses::SimulatedProcesses(SimulatedPlatform& host, std::string name)
    : host_(host), name_(std::move(name)) {
  host_.world.network.join(name_, *this);
}
SimulatedProcesses::~SimulatedProcesses() { host_.world.network.leave(name_); }

Result<std::shared_ptr<Process>> SimulatedProcesses::start(const ProcessRequest& request) {
  if (auto failure = faults.next("start", request.program)) return tl::unexpected(*failure);
  if (request.program != ToolPath || !isToolInstalled) {
    return fail(FailureKind::Absent, "start", request.program);
  }
  if (request.arguments == std::vector<std::string>{"--version"}) {
    return std::make_shared<SimpleRun>(
        nextPid_++, 0, "", "rsync  version " + toolVersion + "  protocol version 32\nmore\n");
  }
  for (const std::string& argument : request.arguments) {
    if (argument != "--daemon") continue;
    std::string error;
    const int status = launchDaemon(request.arguments, error);
    return std::make_shared<SimpleRun>(nextPid_++, status, error);
  }
  return std::make_shared<ClientRun>(*this, request, nextPid_++);
}

Result<std::string> SimulatedProcesses::clientToolPath() const {
  if (!isToolInstalled) return fail(FailureKind::Absent, "find", ToolPath);
  return std::string(ToolPath);
}

int SimulatedProcesses::launchDaemon(const std::vector<std::string>& arguments,
                                     std::string& error) {
  const std::size_t first = !arguments.empty() && arguments[0].starts_with("--bwlimit=") ? 1 : 0;
  if (arguments.size() != first + 3 || arguments[first] != "--daemon" ||
      !arguments[first + 1].starts_with("--port=") ||
      !arguments[first + 2].starts_with("--config=/")) {
    throw std::logic_error("The transfer daemon is not started like this.");
  }
  Living daemon;
  daemon.commandLine = arguments;
  daemon.commandLine.insert(daemon.commandLine.begin(), ToolPath);
  daemon.port = static_cast<unsigned>(std::stoul(arguments[first + 1].substr(7)));
  daemon.configPath = arguments[first + 2].substr(9);
  const auto text = host_.files.readAll(daemon.configPath);
  if (!text) {
    error = "rsync: [Receiver] failed to open " + daemon.configPath + "\n";
    return 1;
  }
  auto modules = readConfiguration(*text);
  if (!canBind(daemon.port)) return 0;  // found out only after going into the background
  daemon.pidPath = valueOf(modules[""], "pidfile");
  const int pid = nextPid_++;
  if (!daemon.pidPath.empty()) host_.files.save(daemon.pidPath, std::to_string(pid) + "\n");
  living_[pid] = std::move(daemon);
  return 0;
}

SimulatedProcesses::Served SimulatedProcesses::serve(unsigned port, const std::string& module,
                                                     const std::string& user,
                                                     const std::string& password) {
  const auto refused = [](const std::string& text) {
    return Served{nullptr, nullptr, 5, "@ERROR: " + text + "\n"};
  };
  for (const auto& [pid, daemon] : living_) {
    if (daemon.port != port) continue;
    const auto text = host_.files.readAll(daemon.configPath);  // read at each connection
    if (!text) return refused("failed to open the config file");
    const auto modules = readConfiguration(*text);
    const auto found = modules.find(module);
    if (found == modules.end() || module.empty()) return refused("Unknown module '" + module + "'");
    const Parameters& parameters = found->second;
    if (const std::string users = valueOf(parameters, "authusers"); !users.empty()) {
      if (users != user ||
          !isLetIn(host_.files, valueOf(parameters, "secretsfile"), user, password)) {
        return refused("auth failed on module " + module);
      }
    }
    const std::string most = valueOf(parameters, "maxconnections");
    if (const auto held = heldConnections.find(module);
        !most.empty() && held != heldConnections.end() && held->second >= std::stoi(most)) {
      return refused("max connections (" + most + ") reached -- try again later");
    }
    const auto root = host_.files.tree().resolve(valueOf(parameters, "path"));
    if (!root || !(*root)->isDirectory()) return refused("chdir failed");
    return {&host_.files, *root, 0, {}};
  }
  return {nullptr, nullptr, 10, "rsync: connection refused\n"};
}

std::vector<std::string> SimulatedProcesses::commandLine(int pid) const {
  const auto found = living_.find(pid);
  return found == living_.end() ? std::vector<std::string>() : found->second.commandLine;
}

bool SimulatedProcesses::signal(int pid, int signalNumber) {
  if (faults.next("signal", std::to_string(pid))) return false;
  const auto found = living_.find(pid);
  if (found == living_.end()) return false;
  if (signalNumber == 0 || (signalNumber == SIGTERM && ignoresTerminate)) return true;
  if (signalNumber == SIGTERM && found->second.port != 0) host_.files.remove(found->second.pidPath);
  living_.erase(found);
  return true;
}

bool SimulatedProcesses::waitGone(int pid, double seconds) {
  if (!living_.contains(pid)) return true;
  host_.clock.advance(seconds);
  return false;
}

bool SimulatedProcesses::canBind(unsigned port) const {
  return !faults.next("canBind", std::to_string(port)) && !takenPorts.contains(port) &&
         !isServing(port);
}

bool SimulatedProcesses::isServing(unsigned port) const {
  for (const auto& [pid, living] : living_) {
    if (living.port == port && port != 0) return true;
  }
  return false;
}

int SimulatedProcesses::startStranger(std::vector<std::string> commandLine) {
  living_[nextPid_] = {std::move(commandLine), 0, {}, {}};
  return nextPid_++;
}

void SimulatedProcesses::killAll() { living_.clear(); }

}  // namespace zolvar
