#include "cli/EngineProgram.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <QCoreApplication>
#include <csignal>
#include <iostream>
#include <utility>

#include "addressbook/AddressBookChoice.h"
#include "app/LogReporter.h"
#include "app/Operations.h"
#include "cli/ControlServer.h"
#include "cli/ControlSocketPath.h"
#include "cli/SignalPipe.h"
#include "net/NetworkTime.h"
#include "platform/Log.h"
#include "platform/ProcessLauncher.h"
#include "platform/Workspace.h"
#include "platform/qt/SystemPlatform.h"
#include "util/PathRules.h"

namespace zolvar {
namespace {

constexpr double LongestShutDown = 20;  // seconds, for the daemon and the running transfer to end
constexpr double LongestFinish = 20;    // seconds, for what is queued on the lanes

}  // namespace

std::optional<int> EngineProgram::begin(CLI::App& arguments, int argc, char** argv,
                                        Options& options) {
  arguments.add_flag("--debug", options.isDebug,
                     "Write debug lines, and all lines to standard error");
  // What our own clock check starts; an empty group hides it from the help.
  std::string timeServer;
  arguments.add_option("--time-query", timeServer)->group("");
  arguments.set_version_flag("--version", options.name + " " ZOLVAR_VERSION);
  try {
    arguments.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return arguments.exit(error) == 0 ? 0 : 2;
  }
  if (!timeServer.empty()) return answerTimeQuery(timeServer);
  // No file operation may depend on where we were started.
  if (::chdir("/") != 0) std::cerr << "Could not change the directory to '/'.\n";
  std::signal(SIGPIPE, SIG_IGN);
  return std::nullopt;
}

EngineProgram::EngineProgram() = default;

EngineProgram::~EngineProgram() = default;

Result<> EngineProgram::make(const Options& options) {
  SystemPlatform::Options wanted;
  wanted.programName = options.name;
  wanted.isDebug = options.isDebug;
  auto system = SystemPlatform::make(wanted);
  if (!system) return tl::unexpected(system.error());
  system_ = std::move(*system);
  const Platform& real = system_->platform();
  platform_.emplace(
      Platform{real.clock, real.random, real.runLoop, real.lanes, real.fileSystem, real.processes,
               real.services, real.hosts, real.secrets, real.defaults,
               options.wrapWorkspace ? options.wrapWorkspace(real.workspace) : real.workspace,
               real.network, real.firewall, real.log, real.isTestModeActive});

  Application::Settings settings;
  settings.version = ZOLVAR_VERSION;
  settings.asksPeople = options.hasWindow;
  settings.startsAtLogin = options.hasWindow;
  settings.resourceFolder =
      (QCoreApplication::applicationDirPath() + "/../share/zolvar").toStdString();
  settings.ownProgram = QCoreApplication::applicationFilePath().toStdString();
  settings.addressBook = [](Platform& platform, NotificationCenter& center) {
    // Modules lie where the transfer tool does.
    const auto tool = platform.processes.clientToolPath();
    return makeAddressBook(platform, center, tool ? std::string(parentPath(*tool)) : "");
  };
  auto made = Application::make(std::move(settings), *platform_);
  if (!made) return tl::unexpected(made.error());
  application_ = std::move(*made);
  reporter_ = std::make_unique<LogReporter>(platform_->log);
  application_->addObserver(*reporter_);
  operations_ = std::make_unique<Operations>(*application_);
  signals_ = std::make_unique<SignalPipe>(platform_->runLoop, [this] { stop(Ending::BySystem); });
  server_ = std::make_unique<ControlServer>(*application_, *operations_,
                                            [this] { stop(Ending::ByHand); });
  return server_->listen(controlSocketPath());
}

void EngineProgram::stop(Ending ending) {
  if (std::exchange(isEnding_, true)) return;
  platform_->log.debug("Ending.");
  if (ending == Ending::ByHand && application_->settings().startsAtLogin) {
    if (const auto left = platform_->workspace.setAutostart(false); !left) {
      platform_->log.warning("{}", left.error().message());
    }
  }
  application_->shutDown([] { QCoreApplication::quit(); });
  platform_->runLoop.after(LongestShutDown, [] { QCoreApplication::quit(); });
}

int EngineProgram::finish(int status) {
  server_->endConversations();
  operations_.reset();
  application_->removeObserver(*reporter_);
  application_.reset();  // its pools leave what they still have to write on the lanes
  if (!system_->finish(LongestFinish)) {
    platform_->log.warning("A folder's work did not end in time.");
    std::_Exit(status);
  }
  return status;
}

int EngineProgram::refuse(const Failure& failure) {
  std::cerr << refusalText(failure) << '\n';
  return 1;
}

}  // namespace zolvar
