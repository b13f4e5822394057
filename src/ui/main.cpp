#include <CLI/CLI.hpp>
#include <QApplication>
#include <optional>

#include "app/Application.h"
#include "cli/ControlSocketPath.h"
#include "cli/EngineProgram.h"
#include "ui/MainWindow.h"
#include "ui/SingleInstance.h"
#include "ui/SpeakingWorkspace.h"
#include "ui/SpokenWindow.h"

// The engine with a window.

namespace zolvar {
namespace {

std::string windowSocketPath() {
  const std::string control = controlSocketPath();
  return control.empty() ? control : control.substr(0, control.rfind('/') + 1) + "window.sock";
}

/// Shows the window while the event loop runs; returns the loop's status.
int runWindow(EngineProgram& program, SingleInstance& instance, bool isHidden) {
  SpokenWindow spoken(program.application(), program.operations());
  instance.listen([&spoken] { spoken.window().comeToFront(); });
  QObject::connect(&spoken, &SpokenWindow::quitWanted, [&program] {
    // The end of the session closes windows too, and says nothing about the next one.
    program.stop(qApp->isSavingSession() ? EngineProgram::Ending::BySystem
                                         : EngineProgram::Ending::ByHand);
  });
  program.application().start();
  if (!isHidden || !spoken.hasTray()) spoken.window().comeToFront();
  return QCoreApplication::exec();
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
