#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "app/Application.h"
#include "platform/Platform.h"
#include "util/Failure.h"

namespace CLI {
class App;
}

namespace zolvar {

class ControlServer;
class LogReporter;
class Operations;
class SignalPipe;
class SystemPlatform;

/// What every program with an engine does: its arguments, the real platform, the application, the
/// control socket, and an orderly end. One a program, on main's stack, after Qt's application
/// object. Main thread.
class EngineProgram {
 public:
  struct Options {
    std::string name;
    bool isDebug = false;
    bool hasWindow = false;
    /// Takes the place of the real desktop's; called once. May be null.
    std::function<Workspace&(Workspace&)> wrapWorkspace;
  };
  /// Who ends the program: by hand it is the person, who then does not want it at the next login.
  enum class Ending { ByHand, BySystem };

  /// Reads the arguments into `options`, adding what all programs have to `arguments`, and readies
  /// the process. A number: the program ends now, with that status.
  static std::optional<int> begin(CLI::App& arguments, int argc, char** argv, Options& options);

  EngineProgram();
  ~EngineProgram();
  EngineProgram(const EngineProgram&) = delete;
  EngineProgram& operator=(const EngineProgram&) = delete;

  /// Makes everything and listens. Fails with what the person is to be told.
  Result<> make(const Options& options);
  [[nodiscard]] Platform& platform() { return *platform_; }
  [[nodiscard]] Application& application() { return *application_; }
  [[nodiscard]] Operations& operations() { return *operations_; }

  /// Ends the event loop when all is stopped, after 20 seconds at the latest.
  void stop(Ending ending);
  /// Waits, after the event loop, for what is still to be written. Does not return when that takes
  /// too long: ends the process with `status` instead. Returns `status`.
  int finish(int status);

  /// Tells on standard error why the program does not start; returns its status.
  static int refuse(const Failure& failure);

 private:
  std::unique_ptr<SystemPlatform> system_;
  std::optional<Platform> platform_;
  std::unique_ptr<Application> application_;
  std::unique_ptr<LogReporter> reporter_;
  std::unique_ptr<Operations> operations_;
  std::unique_ptr<SignalPipe> signals_;
  std::unique_ptr<ControlServer> server_;
  bool isEnding_ = false;
};

}  // namespace zolvar
