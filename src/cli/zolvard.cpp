#include <unistd.h>

#include <CLI/CLI.hpp>
#include <QCoreApplication>
#include <csignal>
#include <iostream>

#include "app/Application.h"
#include "app/LogReporter.h"
#include "app/Operations.h"
#include "cli/ControlServer.h"
#include "cli/ControlSocketPath.h"
#include "cli/SignalPipe.h"
#include "net/NetworkTime.h"
#include "platform/Log.h"
#include "platform/qt/SystemPlatform.h"

// The engine without a window, in the foreground: for servers, storage boxes and tests.

namespace zolvar {
namespace {

constexpr double LongestShutDown = 20;  // seconds, for the daemon and the running transfer to end
constexpr double LongestFinish = 20;    // seconds, for what is queued on the lanes

int refuse(const Failure& failure) {
  std::cerr << refusalText(failure) << '\n';
  return 1;
}

int run(bool isDebug) {
  SystemPlatform::Options options;
  options.programName = "zolvard";
  options.isDebug = isDebug;
  auto system = SystemPlatform::make(options);
  if (!system) return refuse(system.error());
  Platform& platform = (*system)->platform();

  Application::Settings settings;
  settings.version = ZOLVAR_VERSION;
  settings.resourceFolder =
      (QCoreApplication::applicationDirPath() + "/../share/zolvar").toStdString();
  settings.ownProgram = QCoreApplication::applicationFilePath().toStdString();
  auto made = Application::make(std::move(settings), platform);
  if (!made) return refuse(made.error());
  std::unique_ptr<Application> application = std::move(*made);
  auto reporter = std::make_unique<LogReporter>(platform.log);
  application->addObserver(*reporter);
  auto operations = std::make_unique<Operations>(*application);

  bool isEnding = false;
  const auto stop = [&] {
    if (std::exchange(isEnding, true)) return;
    platform.log.debug("Ending.");
    application->shutDown([] { QCoreApplication::quit(); });
    platform.runLoop.after(LongestShutDown, [] { QCoreApplication::quit(); });
  };
  SignalPipe signalPipe(platform.runLoop, stop);
  ControlServer server(*application, *operations, stop);
  if (const auto listening = server.listen(controlSocketPath()); !listening) {
    return refuse(listening.error());
  }
  application->start();
  const int status = QCoreApplication::exec();

  server.endConversations();
  operations.reset();
  application->removeObserver(*reporter);
  application.reset();  // its pools leave what they still have to write on the lanes
  if (!(*system)->finish(LongestFinish)) {
    platform.log.warning("A folder's work did not end in time.");
    std::_Exit(status);
  }
  return status;
}

}  // namespace
}  // namespace zolvar

int main(int argc, char** argv) {
  CLI::App arguments{
      "Keeps shared folders in step; runs in the foreground until it is told to end.", "zolvard"};
  bool isDebug = false;
  arguments.add_flag("--debug", isDebug, "Write debug lines, and all lines to standard error");
  // What our own clock check starts; an empty group hides it from the help.
  std::string timeServer;
  arguments.add_option("--time-query", timeServer)->group("");
  arguments.set_version_flag("--version", "zolvard " ZOLVAR_VERSION);
  try {
    arguments.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return arguments.exit(error) == 0 ? 0 : 2;
  }
  if (!timeServer.empty()) return zolvar::answerTimeQuery(timeServer);
  // No file operation may depend on where we were started.
  if (::chdir("/") != 0) std::cerr << "Could not change the directory to '/'.\n";
  std::signal(SIGPIPE, SIG_IGN);
  int noArguments = 1;
  QCoreApplication application(noArguments, argv);
  return zolvar::run(isDebug);
}
