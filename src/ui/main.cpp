#include <CLI/CLI.hpp>
#include <QApplication>
#include <optional>

#include "app/Application.h"
#include "app/Operations.h"
#include "app/Outcomes.h"
#include "app/SheetsController.h"
#include "cli/ControlSocketPath.h"
#include "cli/EngineProgram.h"
#include "platform/UserDefaults.h"
#include "ui/FolderNews.h"
#include "ui/Languages.h"
#include "ui/MainWindow.h"
#include "ui/SingleInstance.h"
#include "ui/SpeakingWorkspace.h"
#include "ui/TrayIcon.h"
#include "ui/WindowFrontEnd.h"
#include "ui/sheets/WindowSheets.h"

// The engine with a window.

namespace zolvar {
namespace {

std::string windowSocketPath() {
  const std::string control = controlSocketPath();
  return control.empty() ? control : control.substr(0, control.rfind('/') + 1) + "window.sock";
}

/// Shows the window while the event loop runs; returns the loop's status.
int runWindow(EngineProgram& program, SingleInstance& instance, bool isHidden) {
  Application& application = program.application();
  const SpokenLanguage language(program.platform().defaults.string("Language").value_or(""));
  FolderNews news(application);
  SheetsController sheetsController(application, program.operations());
  WindowContext context{application,      program.operations(), application.outcomes(),
                        sheetsController, program.platform(),   news};
  MainWindow window(context);
  WindowSheets sheets(window, context);
  window.setSheets(&sheets);
  WindowFrontEnd frontEnd(window, sheets);
  application.outcomes().setFrontEnd(&frontEnd);
  instance.listen([&window] { window.comeToFront(); });
  QObject::connect(&window, &MainWindow::quitWanted, [&program] {
    // The end of the session closes windows too, and says nothing about the next one.
    program.stop(qApp->isSavingSession() ? EngineProgram::Ending::BySystem
                                         : EngineProgram::Ending::ByHand);
  });
  std::optional<TrayIcon> tray;
  if (QSystemTrayIcon::isSystemTrayAvailable()) {
    tray.emplace(context, window);
    window.setHasTray(true);
  }
  application.start();
  if (!isHidden || !tray) window.comeToFront();
  const int status = QCoreApplication::exec();
  application.outcomes().setFrontEnd(nullptr);
  window.setSheets(nullptr);
  window.hide();
  return status;
}

int run(EngineProgram::Options options, bool isHidden) {
  SingleInstance instance(windowSocketPath());
  if (instance.showOther()) return 0;
  std::optional<SpeakingWorkspace> workspace;
  options.wrapWorkspace = [&workspace](Workspace& desktop) -> Workspace& {
    return workspace.emplace(desktop);
  };
  EngineProgram program;
  if (const auto made = program.make(options); !made) return EngineProgram::refuse(made.error());
  return program.finish(runWindow(program, instance, isHidden));
}

}  // namespace
}  // namespace zolvar

int main(int argc, char** argv) {
  using zolvar::EngineProgram;
  CLI::App arguments{"Keeps shared folders in step, with a window.", "zolvar-desktop"};
  EngineProgram::Options options;
  options.name = "zolvar-desktop";
  options.hasWindow = true;
  bool isHidden = false;
  arguments.add_flag("--hidden", isHidden, "Start in the tray, without the window");
  arguments.allow_extras();  // the toolkit's own options
  if (const auto status = EngineProgram::begin(arguments, argc, argv, options)) return *status;
  const QApplication application(argc, argv);
  QApplication::setApplicationName("Zolvar");
  QApplication::setApplicationDisplayName("Zolvar");
  QApplication::setOrganizationName("Zolvar");
  QApplication::setDesktopFileName("zolvar");
  QApplication::setQuitOnLastWindowClosed(false);
  return zolvar::run(std::move(options), isHidden);
}
