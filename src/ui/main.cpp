#include <unistd.h>

#include <CLI/CLI.hpp>
#include <QApplication>
#include <csignal>
#include <iostream>

#include "app/Application.h"
#include "app/LogReporter.h"
#include "app/Operations.h"
#include "app/Outcomes.h"
#include "app/SheetsController.h"
#include "cli/ControlServer.h"
#include "cli/ControlSocketPath.h"
#include "cli/SignalPipe.h"
#include "net/NetworkTime.h"
#include "platform/Log.h"
#include "platform/qt/SystemPlatform.h"
#include "ui/FolderNews.h"
#include "ui/MainWindow.h"
#include "ui/PlainSheets.h"
#include "ui/SingleInstance.h"
#include "ui/Texts.h"
#include "ui/TrayIcon.h"
#include "ui/WindowFrontEnd.h"

// The engine with a window.

namespace zolvar {
namespace {

constexpr double LongestShutDown = 20;  // seconds, for the daemon and the running transfer to end
constexpr double LongestFinish = 20;    // seconds, for what is queued on the lanes

struct Choices {
  bool isDebug = false;
  bool isHidden = false;  ///< start without the window, where there is a tray
};

int refuse(const Failure& failure) {
  std::cerr << refusalText(failure) << '\n';
  return 1;
}

std::string windowSocketPath() {
  const std::string control = controlSocketPath();
  return control.empty() ? control : control.substr(0, control.rfind('/') + 1) + "window.sock";
}

int run(const Choices& choices) {
  SingleInstance instance(windowSocketPath());
  if (instance.showOther()) return 0;
  SystemPlatform::Options options;
  options.programName = "zolvar-desktop";
  options.isDebug = choices.isDebug;
  auto system = SystemPlatform::make(options);
  if (!system) return refuse(system.error());
  Platform& platform = (*system)->platform();

  Application::Settings settings;
  settings.version = ZOLVAR_VERSION;
  settings.asksPeople = true;
  settings.startsAtLogin = true;
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
    application->shutDown([] { QCoreApplication::exit(); });
    platform.runLoop.after(LongestShutDown, [] { QCoreApplication::exit(); });
  };
  SignalPipe signalPipe(platform.runLoop, stop);
  ControlServer server(*application, *operations, stop);
  if (const auto listening = server.listen(controlSocketPath()); !listening) {
    return refuse(listening.error());
  }

  int status = 0;
  {
    FolderNews news(*application);
    SheetsController sheetsController(*application, *operations);
    WindowContext context{*application,     *operations, application->outcomes(),
                          sheetsController, platform,    news};
    MainWindow window(context);
    PlainSheets sheets(window, context);
    window.setSheets(&sheets);
    WindowFrontEnd frontEnd(window, sheets);
    application->outcomes().setFrontEnd(&frontEnd);
    instance.listen([&window] { window.comeToFront(); });
    QObject::connect(&window, &MainWindow::quitWanted, stop);
    std::unique_ptr<TrayIcon> tray;
    if (QSystemTrayIcon::isSystemTrayAvailable()) {
      tray = std::make_unique<TrayIcon>(context, window);
      window.setHasTray(true);
    }
    application->start();
    if (!choices.isHidden || !tray) window.comeToFront();
    status = QCoreApplication::exec();
    application->outcomes().setFrontEnd(nullptr);
    window.setSheets(nullptr);
    window.hide();
  }

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
  CLI::App arguments{"Keeps shared folders in step, with a window.", "zolvar-desktop"};
  zolvar::Choices choices;
  arguments.add_flag("--debug", choices.isDebug,
                     "Write debug lines, and all lines to standard error");
  arguments.add_flag("--hidden", choices.isHidden, "Start in the tray, without the window");
  // What our own clock check starts; an empty group hides it from the help.
  std::string timeServer;
  arguments.add_option("--time-query", timeServer)->group("");
  arguments.set_version_flag("--version", "zolvar-desktop " ZOLVAR_VERSION);
  arguments.allow_extras();  // the toolkit's own options
  try {
    arguments.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return arguments.exit(error) == 0 ? 0 : 2;
  }
  if (!timeServer.empty()) return zolvar::answerTimeQuery(timeServer);
  // No file operation may depend on where we were started.
  if (::chdir("/") != 0) std::cerr << "Could not change the directory to '/'.\n";
  std::signal(SIGPIPE, SIG_IGN);
  QApplication application(argc, argv);
  QApplication::setApplicationName("Zolvar");
  QApplication::setApplicationDisplayName("Zolvar");
  QApplication::setOrganizationName("Zolvar");
  QApplication::setDesktopFileName("zolvar");
  QApplication::setQuitOnLastWindowClosed(false);
  zolvar::EnglishPlurals plurals;
  QCoreApplication::installTranslator(&plurals);
  return zolvar::run(choices);
}
